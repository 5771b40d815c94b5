#include "platform/SafeFileWriter.h"

#include "platform/QvxFiles.h"
#include "tests/platform/TempFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace tw;
using tw::test::runInChild;
using tw::test::TempFolder;

namespace {

void save(const Path& target, const std::string& content) {
    SafeFileWriter writer(target);
    writer.write(0, content.data(), content.size());
    writer.commit();
}

// Run as root, permissions don't bind; a child that must be refused gives them up.
void becomeNobodyIfRoot() {
    if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) ::_exit(98);
}

// The failure message of a save made in a child, as its exit code: 0 when the save
// failed with `expected`, 2 when it succeeded, 3 for another message.
int failingSave(const Path& target, const std::string& content, const char* expected) {
    try {
        save(target, content);
        return 2;
    } catch (const QvxFiles::Exception& e) {
        return e.message() == expected && e.osError() != 0 ? 0 : 3;
    }
}

}  // namespace

TEST(SafeFileWriter, ReplacesTheTargetKeepingItsPermissions) {
    TempFolder dir;
    dir.write("patch.tidewake", "old content that is longer than the new");
    ::chmod((dir.path / "patch.tidewake").c_str(), 0640);
    Path target = Path::parse(dir.str() + "patch.tidewake");

    SafeFileWriter writer(target);
    writer.write(0, "new!", 4);
    writer.write(2, "W", 1);
    EXPECT_EQ(dir.read("patch.tidewake"), "old content that is longer than the new") << "nothing shows before commit";
    writer.commit();
    EXPECT_EQ(dir.read("patch.tidewake"), "neW!");
    EXPECT_EQ(dir.names(), "patch.tidewake");
    struct stat info {};
    ::stat((dir.path / "patch.tidewake").c_str(), &info);
    EXPECT_EQ(info.st_mode & 07777, 0640u);

    // The object now stands for the target and can still be read.
    EXPECT_EQ(writer.path().toString(), target.toString());
    EXPECT_TRUE(writer.temporaryPath().empty());
    char back[8] = {};
    EXPECT_EQ(writer.read(0, back, sizeof back), 4u);
    EXPECT_STREQ(back, "neW!");
    EXPECT_EQ(writer.size(), 4u);
}

TEST(SafeFileWriter, CreatesANewFile) {
    TempFolder dir;
    save(Path::parse(dir.str() + "fresh.tidewake"), "format: 1\r\n");
    EXPECT_EQ(dir.read("fresh.tidewake"), "format: 1\r\n");
    EXPECT_EQ(dir.names(), "fresh.tidewake");
}

TEST(SafeFileWriter, AbandonedWriteLeavesTargetAndNoStrayFile) {
    TempFolder dir;
    dir.write("keep", "original");
    {
        SafeFileWriter writer(Path::parse(dir.str() + "keep"));
        writer.write(0, "half a save", 11);
    }
    EXPECT_EQ(dir.read("keep"), "original");
    EXPECT_EQ(dir.names(), "keep");
}

TEST(SafeFileWriter, ReadOnlyFolderRefusesTheTemporaryFile) {
    TempFolder dir;
    dir.write("keep", "original");
    ::chmod(dir.path.c_str(), 0555);
    Path target = Path::parse(dir.str() + "keep");
    EXPECT_EQ(runInChild([&] {
                  becomeNobodyIfRoot();
                  return failingSave(target, "replacement", "Error creating temporary file");
              }),
              0);
    EXPECT_EQ(dir.read("keep"), "original");
    EXPECT_EQ(dir.names(), "keep");
}

TEST(SafeFileWriter, ReadOnlyTargetFailsInCommit) {
    TempFolder dir;
    dir.write("keep", "original");
    ::chmod((dir.path / "keep").c_str(), 0444);
    ::chmod(dir.path.c_str(), 0777);
    Path target = Path::parse(dir.str() + "keep");
    EXPECT_EQ(runInChild([&] {
                  becomeNobodyIfRoot();
                  return failingSave(target, "replacement", "Error committing file");
              }),
              0);
    EXPECT_EQ(dir.read("keep"), "original");
    EXPECT_EQ(dir.names(), "keep");
}

TEST(SafeFileWriter, FileSizeLimitActsAsAFullDisk) {
    TempFolder dir;
    dir.write("keep", "original");
    Path target = Path::parse(dir.str() + "keep");
    EXPECT_EQ(runInChild([&] {
                  std::signal(SIGXFSZ, SIG_IGN);
                  rlimit limit{4096, 4096};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  return failingSave(target, std::string(100000, 'x'), "Error writing to file");
              }),
              0);
    EXPECT_EQ(dir.read("keep"), "original");
    EXPECT_EQ(dir.names(), "keep");
}

TEST(SafeFileWriter, FullTmpfsLeavesTheOldFile) {
    TempFolder dir;
    // The tmpfs lives in a mount namespace of the child alone and vanishes with it.
    int code = runInChild([&] {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", dir.path.c_str(), "tmpfs", 0, "size=64k") != 0)
            return 77;
        dir.write("keep", "original");
        Path target = Path::parse(dir.str() + "keep");
        int result = failingSave(target, std::string(200000, 'x'), "Error writing to file");
        if (result != 0) return result;
        if (dir.read("keep") != "original") return 4;
        if (dir.names() != "keep") return 5;
        save(target, "fits");  // the space of the failed save came back
        return dir.read("keep") == "fits" ? 0 : 6;
    });
    if (code == 77) GTEST_SKIP() << "tmpfs cannot be mounted here";
    EXPECT_EQ(code, 0);
}

TEST(SafeFileWriter, ProcessKilledWhileWritingLeavesNothing) {
    TempFolder dir;
    dir.write("keep", "original");
    Path target = Path::parse(dir.str() + "keep");
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    pid_t child = ::fork();
    if (child == 0) {
        SafeFileWriter writer(target);
        std::string chunk(65536, 'x');
        writer.write(0, chunk.data(), chunk.size());
        (void)!::write(ready[1], "w", 1);
        for (;;) ::pause();
    }
    char signal = 0;
    ASSERT_EQ(::read(ready[0], &signal, 1), 1);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
    EXPECT_EQ(dir.read("keep"), "original");
    EXPECT_EQ(dir.names(), "keep");
}

TEST(SafeFileWriter, MissingFolderRefusesTheTemporaryFile) {
    TempFolder dir;
    try {
        SafeFileWriter writer(Path::parse(dir.str() + "no/such/file"));
        FAIL() << "a temporary file appeared in a folder that does not exist";
    } catch (const QvxFiles::Exception& e) {
        EXPECT_EQ(e.message(), "Error creating temporary file");
        EXPECT_EQ(e.osError(), ENOENT);
        EXPECT_EQ(e.path(), dir.str() + "no/such/file");
    }
}
