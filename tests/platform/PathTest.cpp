#include "platform/Path.h"

#include "platform/QvxFiles.h"
#include "tests/platform/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace tw;
using tw::test::TempFolder;

TEST(Path, FoldersEndInSlash) {
    EXPECT_TRUE(Path().empty());
    EXPECT_TRUE(Path::parse("").empty());
    EXPECT_EQ(Path::parse("/home/user/Patches/").toString(), "/home/user/Patches/");
    EXPECT_TRUE(Path::parse("/home/user/Patches/").isFolder());
    EXPECT_FALSE(Path::parse("/home/user/Patches").isFolder()) << "without the slash it is a file";
    EXPECT_EQ(Path::parse("/a/b/..").toString(), "/a/b/../");
    EXPECT_EQ(Path::parse(".").toString(), "./");
    EXPECT_EQ(Path::parse("/a/...").toString(), "/a/...") << "only . and .. are folders by name here";
    EXPECT_TRUE(Path::parse("/x").isAbsolute());
    EXPECT_FALSE(Path::parse("x/y").isAbsolute());
}

TEST(Path, TextThatCannotBeAPath) {
    try {
        Path::parse(std::string("a\0b", 3));
        FAIL() << "a NUL byte was accepted";
    } catch (const QvxFiles::Exception& e) {
        EXPECT_EQ(e.message(), std::string("Error interpreting path : a\0b", 29));
    }
    EXPECT_THROW(Path::parse(std::string(5000, 'a')), QvxFiles::Exception);
}

TEST(Path, ParentJoinNameStem) {
    Path file = Path::parse("/home/user/Tidewake Patches/MW Dr Dub.tidewake");
    EXPECT_EQ(file.parent().toString(), "/home/user/Tidewake Patches/");
    EXPECT_EQ(file.parent().parent().toString(), "/home/user/");
    EXPECT_EQ(file.fileName(), "MW Dr Dub.tidewake");
    EXPECT_EQ(file.stem(), "MW Dr Dub");
    EXPECT_EQ(file.extension(), "tidewake");
    EXPECT_EQ(file.parent().fileName(), "Tidewake Patches");
    EXPECT_EQ(file.parent().stem(), "Tidewake Patches");

    EXPECT_EQ(Path::parse("a.b.c").stem(), "a.b");
    EXPECT_EQ(Path::parse("/x/.hidden").stem(), ".hidden");
    EXPECT_EQ(Path::parse("/x/.hidden").extension(), "");
    EXPECT_TRUE(Path::parse("name").parent().empty());
    EXPECT_EQ(Path::parse("/top").parent().toString(), "/");
    EXPECT_TRUE(Path::parse("/").parent().empty());

    Path folder = Path::parse("/patches/");
    EXPECT_EQ(folder.join("sub/x.tidewake").toString(), "/patches/sub/x.tidewake");
    EXPECT_EQ(Path::parse("/patches").join("x").toString(), "/patches/x");
    EXPECT_EQ(folder.join("/elsewhere/y").toString(), "/elsewhere/y");
    EXPECT_EQ(folder.join("more/").toString(), "/patches/more/");
    EXPECT_EQ(folder.join("").toString(), "/patches/");
    EXPECT_EQ(Path().join("rel").toString(), "rel");
}

TEST(Path, CompareIgnoresCaseAndSortsByName) {
    Path a = Path::parse("/p/alpha.tidewake"), b = Path::parse("/p/Beta.tidewake"), c = Path::parse("/p/GAMMA.tidewake");
    EXPECT_EQ(a.compare(a), 0);
    EXPECT_EQ(Path::parse("/P/ALPHA.TIDEWAKE").compare(a), 0);
    EXPECT_TRUE(Path::parse("/p/Beta.tidewake").equals(Path::parse("/p/beta.TIDEWAKE")));
    EXPECT_LT(a.compare(b), 0);
    EXPECT_GT(c.compare(b), 0);
    std::vector<Path> list = {c, a, b};
    std::sort(list.begin(), list.end(), [](const Path& x, const Path& y) { return x.compare(y) < 0; });
    EXPECT_EQ(list[0].fileName(), "alpha.tidewake");
    EXPECT_EQ(list[1].fileName(), "Beta.tidewake");
    EXPECT_EQ(list[2].fileName(), "GAMMA.tidewake");
    EXPECT_NE(Path::parse("/p/\xff").compare(Path::parse("/p/\xfe")), 0) << "bytes that are no UTF-8 still order";
    EXPECT_LT(Path().compare(a), 0);
}

TEST(Path, ListsFilesByExtensionOnly) {
    TempFolder dir;
    dir.write("One.tidewake", "1");
    dir.write("two.TIDEWAKE", "2");
    dir.write("notes.txt", "x");
    dir.write(".hidden.tidewake", "h");
    dir.write("sub.tidewake/inner.tidewake", "folder with the extension");
    std::filesystem::create_symlink(dir.path / "One.tidewake", dir.path / "link.tidewake");
    std::filesystem::create_symlink(dir.path / "sub.tidewake", dir.path / "folderlink.tidewake");

    Path folder = Path::parse(dir.str());
    std::vector<std::string> names;
    for (const Path& p : folder.list("tidewake")) {
        EXPECT_EQ(p.parent().toString(), dir.str());
        names.push_back(p.fileName());
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"One.tidewake", "link.tidewake", "two.TIDEWAKE"}));
    EXPECT_EQ(folder.list("").size(), 4u);
    EXPECT_EQ(Path::parse(dir.str().substr(0, dir.str().size() - 1)).list("txt").size(), 1u)
        << "a folder named without its slash lists all the same";
    EXPECT_TRUE(folder.join("missing/").list("tidewake").empty());
    EXPECT_TRUE(folder.join("notes.txt/").list("").empty());

    // The folders beside them: a link to a folder counts, hidden ones and files don't.
    dir.write(".cache/x", "h");
    names.clear();
    for (const Path& p : folder.listFolders()) {
        EXPECT_TRUE(p.isFolder()) << p.toString();
        names.push_back(p.fileName());
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"folderlink.tidewake", "sub.tidewake"}));
    EXPECT_TRUE(folder.join("missing/").listFolders().empty());
}

TEST(Path, KindAndFolderCreation) {
    TempFolder dir;
    dir.write("file", "x");
    Path base = Path::parse(dir.str());
    EXPECT_EQ(base.kind(), Path::Kind::folder);
    EXPECT_EQ(base.join("file").kind(), Path::Kind::file);
    EXPECT_EQ(base.join("nothing").kind(), Path::Kind::absent);
    EXPECT_EQ(base.join("file/below").kind(), Path::Kind::absent);

    Path deep = base.join("a/b/c/");
    deep.createFolder();
    EXPECT_EQ(deep.kind(), Path::Kind::folder);
    deep.createFolder();  // no error when it exists
    try {
        base.join("file/sub/").createFolder();
        FAIL() << "a folder was made below a file";
    } catch (const QvxFiles::Exception& e) {
        EXPECT_EQ(e.message(), "Error creating file");
        EXPECT_NE(e.osError(), 0);
    }
}
