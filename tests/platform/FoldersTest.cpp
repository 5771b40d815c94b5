#include "platform/Folders.h"

#include "tests/platform/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace tw;
using tw::test::TempFolder;

namespace {

// Sets an environment variable for one test and puts the old value back.
struct ScopedEnv {
    std::string name;
    std::optional<std::string> old;
    ScopedEnv(const char* n, const std::string& value) : name(n) {
        if (const char* v = std::getenv(n)) old = v;
        ::setenv(n, value.c_str(), 1);
    }
    ~ScopedEnv() {
        if (old)
            ::setenv(name.c_str(), old->c_str(), 1);
        else
            ::unsetenv(name.c_str());
    }
};

}  // namespace

TEST(Folders, DocumentsFolderFromUserDirs) {
    const std::string home = "/home/ana/";
    EXPECT_EQ(documentsFolderFromUserDirs("# comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\n"
                                          "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n",
                                          home)
                  .toString(),
              "/home/ana/Dokumente/");
    EXPECT_EQ(documentsFolderFromUserDirs("XDG_DOCUMENTS_DIR=\"/data/My \\\"Docs\\\"\"", home).toString(),
              "/data/My \"Docs\"/");
    EXPECT_TRUE(documentsFolderFromUserDirs("XDG_DOCUMENTS_DIR=\"$HOME/\"", home).empty()) << "home itself means none";
    EXPECT_TRUE(documentsFolderFromUserDirs("XDG_DOCUMENTS_DIR=\"relative\"", home).empty());
    EXPECT_TRUE(documentsFolderFromUserDirs("XDG_DOCUMENTS_DIR=\"$HOME/unclosed", home).empty());
    EXPECT_TRUE(documentsFolderFromUserDirs("", home).empty());
}

TEST(Folders, StandardFoldersFollowTheEnvironment) {
    TempFolder dir;
    ScopedEnv home("HOME", dir.str() + "home");
    ScopedEnv config("XDG_CONFIG_HOME", dir.str() + "cfg");
    ScopedEnv documents("XDG_DOCUMENTS_DIR", dir.str() + "docs");
    EXPECT_EQ(homeFolder(), dir.str() + "home/");
    EXPECT_EQ(sharedStoreFile().toString(), dir.str() + "cfg/Marlin Works/MarlinWorks.store");

    StandardFolders folders = standardFolders();
    EXPECT_EQ(folders.binaryDir.toString(), binaryDir());
    EXPECT_EQ(folders.patchesDir.toString(), binaryDir());
    EXPECT_EQ(folders.supportDir.toString(), binaryDir());
    EXPECT_EQ(folders.documentationDir.toString(), binaryDir());
    EXPECT_EQ(folders.userRoot.toString(), dir.str() + "docs/Marlin Works/");
    EXPECT_EQ(folders.userRoot.kind(), Path::Kind::folder) << "the user root is created";
    EXPECT_EQ(factoryPatchesFolder("Tidewake").toString(), binaryDir() + "Tidewake Patches/");
}

TEST(Folders, DocumentsFromUserDirsFileOrDefault) {
    TempFolder dir;
    ScopedEnv home("HOME", dir.str() + "home");
    ScopedEnv config("XDG_CONFIG_HOME", dir.str() + "cfg");
    ::unsetenv("XDG_DOCUMENTS_DIR");
    EXPECT_EQ(documentsFolder().toString(), dir.str() + "home/Documents/");
    dir.write("cfg/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Papiers\"\n");
    EXPECT_EQ(documentsFolder().toString(), dir.str() + "home/Papiers/");
}
