#include "platform/SharedStore.h"

#include "platform/Exception.h"
#include "platform/FileLock.h"
#include "platform/QvxFiles.h"
#include "tests/platform/TempFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <sys/stat.h>
#include <unistd.h>

using namespace tw;
using tw::test::runInChild;
using tw::test::TempFolder;

TEST(SharedStore, StartsEmptyAndKeepsWhatIsCommitted) {
    TempFolder dir;
    Path file = Path::parse(dir.str() + "config/Marlin Works/MarlinWorks.store");
    {
        SharedStore store(file);
        EXPECT_FALSE(store.get("TidewakePrefs").has_value());
        store.set("TidewakePrefs", "vcon: false");
        store.set("TidewakeStartupBank", std::string("\x91\x51\xb6\xa5\0\0", 6));
        EXPECT_EQ(store.get("TidewakePrefs"), "vcon: false") << "a reader sees its own write at once";
        EXPECT_EQ(dir.names(), "") << "nothing is written before commit";
        store.commit();
    }
    SharedStore again(file);
    EXPECT_EQ(again.get("TidewakePrefs"), "vcon: false");
    EXPECT_EQ(again.get("TidewakeStartupBank"), std::string("\x91\x51\xb6\xa5\0\0", 6));
    EXPECT_FALSE(again.get("BrowserDirectories").has_value());
}

TEST(SharedStore, CommitKeepsKeysWrittenMeanwhileByOthers) {
    TempFolder dir;
    Path file = Path::parse(dir.str() + "MarlinWorks.store");
    SharedStore early(file), late(file);
    late.set("BrowserDirectories", "b");
    late.commit();
    early.set("TidewakePrefs", "a");
    early.commit();
    SharedStore reader(file);
    EXPECT_EQ(reader.get("BrowserDirectories"), "b");
    EXPECT_EQ(reader.get("TidewakePrefs"), "a");
}

TEST(SharedStore, TwoProcessesWritingAtOnceKeepBothWrites) {
    TempFolder dir;
    Path file = Path::parse(dir.str() + "MarlinWorks.store");
    auto writer = [&](char name) {
        return [&, name] {
            for (int i = 0; i < 40; ++i) {
                SharedStore store(file);
                store.set(std::string(1, name) + std::to_string(i), std::string(1000 + i, name));
                store.commit();
            }
            return 0;
        };
    };
    pid_t children[2];
    for (int c = 0; c < 2; ++c) {
        children[c] = ::fork();
        if (children[c] == 0) ::_exit(runInChild(writer(c == 0 ? 'a' : 'b')));
    }
    for (pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    SharedStore store(file);
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(store.get("a" + std::to_string(i)), std::string(1000 + i, 'a'));
        EXPECT_EQ(store.get("b" + std::to_string(i)), std::string(1000 + i, 'b'));
    }
    EXPECT_EQ(dir.names(), "MarlinWorks.store MarlinWorks.store.lock");
}

TEST(SharedStore, LockHeldTooLongTimesOut) {
    TempFolder dir;
    Path lockFile = Path::parse(dir.str() + "MarlinWorks.store.lock");
    FileLock held(lockFile, 1000);
    auto before = std::chrono::steady_clock::now();
    try {
        FileLock waiting(lockFile, 50);
        FAIL() << "two holders of one lock";
    } catch (const Exception& e) {
        EXPECT_EQ(e.message(), "Time out when aquiring access to a shared resource");
    }
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(50));
}

TEST(SharedStore, DamagedFileIsRefusedAndLeftAlone) {
    TempFolder dir;
    Path file = Path::parse(dir.str() + "MarlinWorks.store");
    std::string good = SharedStore::encode({{"key", "blob"}});
    dir.write("MarlinWorks.store", good.substr(0, good.size() - 1));
    EXPECT_THROW(SharedStore{file}, EOFException);
    dir.write("MarlinWorks.store", "garbage of some length");
    EXPECT_THROW(SharedStore{file}, FormatException);

    // A store loaded before the damage does not overwrite what it can't read.
    dir.write("MarlinWorks.store", good);
    SharedStore store(file);
    dir.write("MarlinWorks.store", std::string("MWst\x02\0\0\0", 8));
    store.set("other", "x");
    EXPECT_THROW(store.commit(), FormatException);
    EXPECT_EQ(dir.read("MarlinWorks.store"), std::string("MWst\x02\0\0\0", 8));
}

TEST(SharedStore, SomethingElseInTheStoresPlaceIsUnreadableWithoutWaiting) {
    // A FIFO would block a plain open for reading until some writer came: the store is
    // opened in a child that an alarm ends, so that a regression fails instead of hanging.
    for (const char* name : {"MarlinWorks.store", "MarlinWorks.store.lock"}) {
        TempFolder fresh;
        ASSERT_EQ(::mkfifo((fresh.path / name).c_str(), 0600), 0);
        Path file = Path::parse(fresh.str() + "MarlinWorks.store");
        int code = runInChild([&] {
            ::alarm(5);
            try {
                SharedStore store(file);
                return store.get("key") ? 3 : 0;
            } catch (const QvxFiles::Exception& e) {
                return e.message().rfind("Error opening file", 0) == 0 ? 2 : 4;
            }
        });
        EXPECT_EQ(code, std::string(name) == "MarlinWorks.store" ? 2 : 0) << name;
    }
}

TEST(SharedStore, ByteFormat) {
    std::string bytes = SharedStore::encode({{"k", "vv"}, {"", ""}});
    EXPECT_EQ(bytes, std::string("MWst\1\0\0\0\2\0\0\0"
                                 "\0\0\0\0\0\0\0\0"
                                 "\1\0\0\0k\2\0\0\0vv",
                                 31));
    EXPECT_EQ(SharedStore::decode(bytes).size(), 2u);
    EXPECT_THROW(SharedStore::decode(bytes + "x"), FormatException) << "trailing bytes";
    EXPECT_THROW(SharedStore::decode(std::string("MWst\1\0\0\0\xff\xff\xff\xff", 12)), EOFException);
    EXPECT_THROW(SharedStore::decode(std::string("MWst\1\0\0\0\1\0\0\0\xff\xff\xff\x7f", 16)), EOFException);
    EXPECT_THROW(SharedStore::decode("MW"), EOFException);
}
