#include "graphics/ResourceManager.h"

#include "graphics/AngelCodeFont.h"
#include "graphics/FilmFont.h"
#include "graphics/SubImage.h"
#include "graphics/SystemFont.h"

#include "tests/Failure.h"
#include "graphics/PngEncoder.h"
#include "platform/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace tw;
using tw::test::encodePng;
using tw::test::formatFailure;
using tw::test::PngPicture;
using tw::test::TempFolder;

namespace {

// A product "Tidewake" whose binary is in a scratch folder, with a resource folder there
// when `withFolder`. Its embedded resources are the product's own: the generated fonts.
struct Product {
    TempFolder binary;
    std::string folder;
    explicit Product(bool withFolder = true) : folder(binary.str() + "Tidewake Resources/") {
        if (withFolder) std::filesystem::create_directories(folder);
    }
    // A grey picture of width by height in the resource folder.
    void writePng(const std::string& name, std::uint32_t width, std::uint32_t height, std::uint8_t grey = 200) const {
        PngPicture p;
        p.width = width;
        p.height = height;
        p.colorType = PNG_COLOR_TYPE_GRAY;
        p.rows.assign(std::size_t(width) * height, grey);
        const auto bytes = encodePng(p);
        std::ofstream(folder + name + ".png", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    }
    void writeText(const std::string& file, const std::string& text) const {
        std::ofstream(folder + file, std::ios::binary) << text;
    }
};

ImageKey named(const std::string& name) {
    ImageKey key;
    key.name = name;
    return key;
}

}  // namespace

TEST(ResourceManager, ResourceFolderOnlyWhenItExists) {
    Product with;
    EXPECT_EQ(ResourceManager("Tidewake", with.binary.str()).resourceDirectory(), with.folder);
    Product without(false);
    EXPECT_EQ(ResourceManager("Tidewake", without.binary.str()).resourceDirectory(), "");
    // A file of that name is not a folder.
    std::ofstream(without.binary.str() + "Tidewake Resources") << "x";
    EXPECT_EQ(ResourceManager::findResourceDirectory("Tidewake", without.binary.str()), "");
}

TEST(ResourceManager, FolderWinsOverEmbedded) {
    Product bare(false);
    ResourceManager embedded("Tidewake", bare.binary.str());
    const IntRect page = embedded.getImage(named("Tidewake_sans_11_0"))->getBounds();
    EXPECT_EQ(page.width, 256);
    EXPECT_GT(page.height, 20);

    Product setup;
    setup.writePng("Tidewake_sans_11_0", 3, 2);
    ResourceManager replaced("Tidewake", setup.binary.str());
    EXPECT_EQ(replaced.getImage(named("Tidewake_sans_11_0"))->getBounds(), (IntRect{0, 0, 3, 2}));
    EXPECT_NE(replaced.loadPNG("Tidewake_sans_11_0"), embedded.loadPNG("Tidewake_sans_11_0"));
    // Other resources still come from the binary.
    EXPECT_EQ(replaced.loadBinary("fnt", "Tidewake_sans_11"), embedded.loadBinary("fnt", "Tidewake_sans_11"));
    EXPECT_EQ(formatFailure([&] { replaced.loadBinary("png", "nothing"); }), "Resource not found: \"nothing.png\"");
    EXPECT_EQ(formatFailure([&] { replaced.getImage(named("nothing")); }), "Resource not found: \"nothing.png\"");
}

TEST(ResourceManager, ImagesAreCachedByKey) {
    Product setup;
    setup.writePng("grey", 4, 4);
    ResourceManager resources("Tidewake", setup.binary.str());
    const auto first = resources.getImage(named("grey"));
    EXPECT_EQ(resources.getImage(named("grey")), first);
    EXPECT_NE(resources.getImage(resources.parseImageSpec("{ name: grey, format: rle }")), first);
    // A key that is not kept is made anew each time.
    ImageKey passing = named("grey");
    passing.gamma = 2;
    passing.keep = false;
    EXPECT_NE(resources.getImage(passing), resources.getImage(passing));
    // Replacing the file does not change what the cache holds.
    setup.writePng("grey", 9, 9);
    EXPECT_EQ(resources.getImage(named("grey"))->getBounds().width, 4);
}

TEST(ResourceManager, ClipsAndOffsetsCutFromTheWholePicture) {
    Product setup;
    setup.writePng("strip", 10, 40);
    ResourceManager resources("Tidewake", setup.binary.str());
    const ImageKey key = resources.parseImageSpec("{ name: strip, clip: { 0, h/2, w/2, h/4 } }");
    EXPECT_EQ(key.clip, (SpecRect{0, 20, 5, 30}));
    const auto clipped = resources.getImage(key);
    EXPECT_NE(dynamic_cast<SubImage*>(clipped.get()), nullptr);
    EXPECT_EQ(clipped->getBounds(), (IntRect{0, 0, 5, 10}));

    const auto moved = resources.getImage(resources.parseImageSpec("{ name: strip, offset: { 2, 3 } }"));
    EXPECT_EQ(moved->getBounds(), (IntRect{0, 0, 10, 40}));
    Raster32 canvas(IntRect{0, 0, 4, 4});
    moved->draw(canvas, 0, 0);
    EXPECT_EQ(*canvas.at(1, 3), 0u);
    EXPECT_EQ(*canvas.at(2, 3), 0xFFC8C8C8u);

    const auto empty = resources.getImage(resources.parseImageSpec("{ name: strip, clip: { 5, 0, -1, h } }"));
    EXPECT_TRUE(empty->getBounds().isEmpty());
    empty->draw(canvas, 0, 0);
    EXPECT_EQ(*canvas.at(0, 0), 0u);
}

TEST(ResourceManager, FontSpecForms) {
    Product setup;
    setup.writePng("digits", 6, 70);  // 10 frames of 6 by 7
    ResourceManager resources("Tidewake", setup.binary.str());

    const auto film = resources.getFont("{ film: digits, first: 48, chars: 10 }");
    EXPECT_NE(dynamic_cast<FilmFont*>(film.get()), nullptr);
    EXPECT_EQ(film->measure(Point{0, 7}, u"12", true), (IntRect{0, 0, 12, 7}));  // ascent: the frame height
    EXPECT_EQ(resources.getFont("{ film: digits, first: 48, chars: 10 }"), film);
    const auto charset = resources.getFont("{ film: digits, charset: \"0123456789\", advance: 5, ascent: 6 }");
    EXPECT_EQ(charset->measure(Point{0, 7}, u"12", true), (IntRect{0, 1, 11, 7}));
    EXPECT_EQ(formatFailure([&] { resources.getFont("{ film: digits, charset: \"0123\", unknown: x }"); }),
              "Replacement char not found in charset");

    const auto angel = resources.getFont("{ fnt: Tidewake_sans_14_bold, gamma: 1.5, color: white }");
    EXPECT_NE(dynamic_cast<AngelCodeFont*>(angel.get()), nullptr);
    EXPECT_EQ(dynamic_cast<SystemFont*>(angel.get()), nullptr);
    const auto system = resources.getFont("{ color: red }");
    EXPECT_NE(dynamic_cast<SystemFont*>(system.get()), nullptr);
    EXPECT_NE(resources.getFont("{color: red}"), system);  // cached by the text as written
    EXPECT_EQ(formatFailure([&] { resources.getFont("{ fnt: missing }"); }), "Resource not found: \"missing.fnt\"");
}

TEST(ResourceManager, AngelCodeFontFromTheFolder) {
    Product setup;
    setup.writePng("tiny_page", 4, 4, 255);
    setup.writeText("tiny.fnt",
                    "common lineHeight=6 base=5\npage id=0 file=\"tiny_page.png\"\n"
                    "char id=120 x=0 y=0 width=4 height=4 xoffset=0 yoffset=1 xadvance=5 page=0\n");
    ResourceManager resources("Tidewake", setup.binary.str());
    const auto font = resources.getFont("{ fnt: tiny, color: { 0, 0, 255 }, unknown: x }");
    Raster32 canvas(IntRect{0, 0, 12, 6});
    const Point end = font->draw(canvas, Point{1, 5}, u"x?");
    EXPECT_EQ(end.x, 11);
    EXPECT_EQ(*canvas.at(1, 1), 0xFF0000FFu);
    EXPECT_EQ(*canvas.at(9, 4), 0xFF0000FFu);
    EXPECT_EQ(*canvas.at(5, 1), 0u);
    // The page is an image of the cache like any other: held there, by the font, and here.
    EXPECT_EQ(resources.getImage(resources.parseImageSpec("{ name: tiny_page, format: rlemask }")).use_count(), 3);
}

TEST(ResourceManager, GeneratedFontsKernAndDraw) {
    Product setup(false);
    ResourceManager resources("Tidewake", setup.binary.str());
    for (const char* name : {"Tidewake_sans_11", "Tidewake_sans_11_bold", "Tidewake_sans_14", "Tidewake_sans_14_bold"}) {
        const auto font = resources.getFont(std::string("{ fnt: ") + name + " }");
        std::int32_t height = 0, ascent = 0;
        font->getMetrics(height, ascent);
        EXPECT_GT(height, ascent) << name;
        // "To" kerns closer than its two letters side by side.
        const std::int32_t pair = font->measure(Point{0, 0}, u"To", true).width;
        const std::int32_t apart =
            font->measure(Point{0, 0}, u"T", true).width + font->measure(Point{0, 0}, u"o", true).width;
        EXPECT_LT(pair, apart) << name;
        EXPECT_GT(font->measure(Point{0, 0}, u"\u00C9t\u00E9 \u00E0 Z\u00FCrich", false).width, 40) << name;
    }
    // The system font draws with the small sans.
    const auto system = resources.getFont("{ color: black }");
    Raster32 canvas(IntRect{0, 0, 40, 16});
    system->draw(canvas, Point{1, 12}, u"Tide");
    std::int32_t inked = 0;
    for (std::int32_t y = 0; y < 16; ++y)
        for (std::int32_t x = 0; x < 40; ++x) inked += *canvas.at(x, y) != 0;
    EXPECT_GT(inked, 20);
    EXPECT_EQ(system->measure(Point{1, 12}, u"Tide", false),
              resources.getFont("{ fnt: Tidewake_sans_11 }")->measure(Point{1, 12}, u"Tide", false));
}
