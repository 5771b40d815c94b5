#include "platform/Resources.h"

#include "tests/platform/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;
using namespace tw;
using tw::test::TempFolder;

namespace {

std::string text(const std::optional<std::vector<std::uint8_t>>& bytes) {
    return bytes ? std::string(bytes->begin(), bytes->end()) : std::string("<none>");
}

}  // namespace

TEST(Resources, EmbeddedByTypeAndStemIgnoringCase) {
    const EmbeddedResource* r = findEmbeddedResource("CUSHY", "sample_MAIN");
    ASSERT_NE(r, nullptr);
    EXPECT_STREQ(r->type, "cushy");
    EXPECT_STREQ(r->name, "Sample_main");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(r->data), r->size), "Cushy { name: \"embedded\" }\n");
    EXPECT_EQ(r->data[r->size], 0) << "text resources end in a NUL past their size";
    EXPECT_EQ(findEmbeddedResource("txt", "Sample_main"), nullptr) << "type must match too";
    EXPECT_EQ(embeddedResources().size(), 2u);
}

TEST(Resources, FolderBesideTheBinary) {
    TempFolder bin;
    EXPECT_EQ(getResourceFolder("Tidewake", bin.str()), bin.str() + "Tidewake Resources/");
}

TEST(Resources, FolderNamedByPathFileWithLineEnds) {
    TempFolder bin, elsewhere;
    bin.write("Tidewake Resources Path.txt", elsewhere.path.string() + "\r\n");
    EXPECT_EQ(getResourceFolder("Tidewake", bin.str()), elsewhere.str());
}

TEST(Resources, PathFileThatIsAFolderIsIgnored) {
    TempFolder bin;
    fs::create_directories(bin.path / "Tidewake Resources Path.txt");
    EXPECT_EQ(getResourceFolder("Tidewake", bin.str()), bin.str() + "Tidewake Resources/");
}

TEST(Resources, FileInFolderWinsOverEmbedded) {
    TempFolder bin;
    std::string folder = getResourceFolder("Tidewake", bin.str());
    EXPECT_EQ(text(loadResource(folder, "txt", "Sample_text")), "embedded sample\n");
    bin.write("Tidewake Resources/Sample_text.txt", "replaced");
    EXPECT_EQ(text(loadResource(folder, "txt", "Sample_text")), "replaced");
    EXPECT_EQ(text(loadResource(folder, "cushy", "Sample_main")), "Cushy { name: \"embedded\" }\n");
    EXPECT_FALSE(loadResource(folder, "png", "Missing").has_value());
}
