// The small records in the shared store: a product's preferences with the version
// check's dates.
#include "patch/Prefs.h"
#include "product/TidewakeDescriptor.h"
#include "platform/SharedStore.h"
#include "tests/platform/TempFolder.h"

#include <gtest/gtest.h>

namespace tw {
namespace {

struct Store {
    test::TempFolder dir;
    Path file = Path::parse(dir.str() + "MarlinWorks.store");
};

TEST(Prefs, WrittenBackOnlyWhenChangedAndReadAfresh) {
    Store s;
    {
        Prefs prefs(tidewakeDescriptor(), s.file);
        EXPECT_FALSE(prefs.isDirty());
        prefs.set("vcon", "false");
        prefs.set("other", "\"kept\"");
    }
    EXPECT_EQ(SharedStore(s.file).get("TidewakePrefs"), "other: \"kept\"\nvcon: false\n");
    {
        // A second record that changes nothing writes nothing; one that changes a key
        // keeps the keys another one wrote meanwhile.
        Prefs reader(tidewakeDescriptor(), s.file);
        EXPECT_EQ(reader.get("other"), "\"kept\"");
        Prefs writer(tidewakeDescriptor(), s.file);
        writer.set("vcon", "true");
    }
    Prefs after(tidewakeDescriptor(), s.file);
    EXPECT_EQ(after.get("vcon"), "true");
    EXPECT_EQ(after.get("other"), "\"kept\"");

    s.dir.write("MarlinWorks.store", "not a store");
    Prefs unreadable(tidewakeDescriptor(), s.file);
    EXPECT_TRUE(unreadable.isDirty()) << "written afresh once the store can be read";
    EXPECT_FALSE(unreadable.get("vcon"));
}

TEST(Prefs, TheVersionCheckIsDueEveryThreeDaysEitherWay) {
    Store s;
    Prefs prefs(tidewakeDescriptor(), s.file);
    const std::time_t now = 1790000000;
    EXPECT_TRUE(isCheckEnabled(prefs));
    EXPECT_TRUE(isCheckDue(prefs, now)) << "never checked";
    markChecked(prefs, now);
    EXPECT_EQ(prefs.get("lavc"), "0x6ab13b80");
    EXPECT_FALSE(isCheckDue(prefs, now));
    EXPECT_FALSE(isCheckDue(prefs, now + 3 * 86400 - 1));
    EXPECT_TRUE(isCheckDue(prefs, now + 3 * 86400));
    EXPECT_FALSE(isCheckDue(prefs, now - 3 * 86400 + 1));
    EXPECT_TRUE(isCheckDue(prefs, now - 3 * 86400)) << "a clock set back";
    for (const char* unusable : {"0", "soon", ""}) {
        prefs.set("lavc", unusable);
        EXPECT_TRUE(isCheckDue(prefs, now)) << unusable;
    }
    prefs.set("lavc", std::to_string(now));
    EXPECT_FALSE(isCheckDue(prefs, now)) << "any base prefix reads";

    prefs.set("nxvc", "1");
    EXPECT_FALSE(toggleCheck(prefs));
    EXPECT_EQ(prefs.get("vcon"), "false");
    EXPECT_FALSE(prefs.get("nxvc"));
    EXPECT_FALSE(isCheckDue(prefs, now + 10 * 86400)) << "off is never due";
    EXPECT_TRUE(toggleCheck(prefs));
    EXPECT_EQ(prefs.get("vcon"), "true");
}


}  // namespace
}  // namespace tw
