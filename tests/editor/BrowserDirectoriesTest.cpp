// Where the open and save dialogs were last: kept per dialog in the user's store.
#include "editor/BrowserDirectories.h"
#include "platform/SharedStore.h"
#include "tests/platform/TempFolder.h"

#include <gtest/gtest.h>

namespace tw {
namespace {

struct Store {
    test::TempFolder dir;
    Path file = Path::parse(dir.str() + "MarlinWorks.store");
};

TEST(BrowserDirectories, TwoFoldersPerDialogSharedByTheFamily) {
    Store s;
    EXPECT_TRUE(loadBrowserDirectories("TidewakePatches", s.file).open.empty()) << "no store yet";
    const Path odd = Path::parse("/home/u/Patches \"quoted\" & co\\/");
    saveBrowserDirectories("TidewakePatches", odd, Path::parse("/home/u/Saved/"), s.file);
    saveBrowserDirectories("OtherPatches", Path::parse("/x/"), Path(), s.file);
    BrowserFolders folders = loadBrowserDirectories("TidewakePatches", s.file);
    EXPECT_EQ(folders.open.toString(), odd.toString());
    EXPECT_EQ(folders.save.toString(), "/home/u/Saved/");
    BrowserFolders other = loadBrowserDirectories("OtherPatches", s.file);
    EXPECT_EQ(other.open.toString(), "/x/");
    EXPECT_TRUE(other.save.empty());
    EXPECT_TRUE(loadBrowserDirectories("Unknown", s.file).open.empty());

    SharedStore store(s.file);
    store.set("BrowserDirectories", "TidewakePatches: { \"/only/one/\" }\nBroken: {");
    store.commit();
    folders = loadBrowserDirectories("TidewakePatches", s.file);
    EXPECT_EQ(folders.open.toString(), "/only/one/");
    EXPECT_TRUE(folders.save.empty()) << "fewer than two items are filled up";
}

}  // namespace
}  // namespace tw
