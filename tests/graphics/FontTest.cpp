#include "graphics/AngelCodeFont.h"
#include "graphics/FilmFont.h"
#include "graphics/PixelMath.h"
#include "graphics/PlainImage.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace tw;

namespace {

// A font of three glyphs on one page of 5 by 3: 'A' (full coverage), 'B' (half) and '?'.
// Lines are 10 high with the baseline at 8; glyphs stand 5 below a line's top.
std::shared_ptr<AngelCodeFace> tinyFace() {
    auto face = std::make_shared<AngelCodeFace>();
    FontFile& f = face->file;
    f.common.lineHeight = 10;
    f.common.base = 8;
    f.chars[65] = {0, 0, 2, 3, 0, 5, 3, 0, 0};
    f.chars[66] = {2, 0, 2, 3, 1, 5, 4, 0, 0};
    f.chars[63] = {4, 0, 1, 3, 0, 5, 2, 0, 0};
    f.kerning[{65, 66}] = -1;
    f.kerning[{63, 65}] = -2;
    f.kerning[{66, 67}] = 5;  // 'C' is not in the font: never applies
    Raster8 page(IntRect{0, 0, 5, 3});
    for (std::int32_t y = 0; y < 3; ++y) {
        *page.at(0, y) = *page.at(1, y) = 255;
        *page.at(2, y) = *page.at(3, y) = 128;
        *page.at(4, y) = 200;
    }
    face->pages[0] = std::make_shared<MaskImage>(page);
    return face;
}

struct Canvas {
    Raster32 raster;
    Canvas(std::int32_t width, std::int32_t height) : raster(IntRect{0, 0, width, height}) {}
    std::uint32_t at(std::int32_t x, std::int32_t y) { return *raster.at(x, y); }
    // The columns of row y that are not transparent.
    std::vector<std::int32_t> inkedColumns(std::int32_t y) {
        std::vector<std::int32_t> columns;
        for (std::int32_t x = 0; x < raster.bounds().width; ++x)
            if (at(x, y) != 0) columns.push_back(x);
        return columns;
    }
};

}  // namespace

TEST(AngelCodeFont, EmptyTextIsALineHighAndNothingWide) {
    AngelCodeFont font(tinyFace(), 0, 0xFF000000);
    std::int32_t height = 0, ascent = 0;
    font.getMetrics(height, ascent);
    EXPECT_EQ(height, 11);
    EXPECT_EQ(ascent, 8);
    EXPECT_EQ(font.measure(Point{10, 20}, u"", true), (IntRect{10, 12, 0, 11}));
    // The point is rounded to the nearest pixel.
    EXPECT_EQ(font.measure(Point{9.5, 19.4}, u"", false), (IntRect{10, 11, 0, 11}));
}

TEST(AngelCodeFont, MeasureWithKerningAndAdvance) {
    AngelCodeFont font(tinyFace(), 0, 0xFF000000);
    // A at 10 (2 wide, advance 3); B kerned back to 12, drawn at 13 (2 wide), advance 4.
    EXPECT_EQ(font.measure(Point{10, 8}, u"AB", false), (IntRect{10, 0, 5, 11}));
    EXPECT_EQ(font.measure(Point{10, 8}, u"AB", true), (IntRect{10, 0, 6, 11}));
    // B's glyph starts one pixel right of its pen, so alone it measures from there.
    EXPECT_EQ(font.measure(Point{0, 8}, u"B", false), (IntRect{0, 0, 3, 11}));
    // The font's spacing joins every advance.
    auto spaced = tinyFace();
    spaced->file.info.spacing[0] = 2;
    EXPECT_EQ(AngelCodeFont(spaced, 0, 0).measure(Point{0, 8}, u"AA", true).width, 10);
}

TEST(AngelCodeFont, KerningOnlyBetweenCharactersThatExist) {
    AngelCodeFont font(tinyFace(), 0, 0xFF000000);
    // C has no glyph: it is skipped, and A still kerns with B across it.
    EXPECT_EQ(font.measure(Point{0, 8}, u"ACB", true), font.measure(Point{0, 8}, u"AB", true));
    // The pair (B, C) never applies; A follows B with no kerning at all.
    EXPECT_EQ(font.measure(Point{0, 8}, u"BCA", true), (IntRect{0, 0, 7, 11}));
}

TEST(AngelCodeFont, ReplacementStandsInAndKernsAsItself) {
    AngelCodeFont plain(tinyFace(), 0, 0xFF000000);
    AngelCodeFont replacing(tinyFace(), u'?', 0xFF000000);
    // With no replacement, C vanishes: A alone.
    EXPECT_EQ(plain.measure(Point{0, 8}, u"CA", true), (IntRect{0, 0, 3, 11}));
    // With '?', C measures as '?' and kerns with A by the pair ('?', 'A').
    EXPECT_EQ(replacing.measure(Point{0, 8}, u"CA", true), replacing.measure(Point{0, 8}, u"?A", true));
    EXPECT_EQ(replacing.measure(Point{0, 8}, u"CA", true), (IntRect{0, 0, 3, 11}));
    EXPECT_EQ(replacing.measure(Point{0, 8}, u"C", true), (IntRect{0, 0, 2, 11}));
    // A character beyond Latin-1 is just another missing one.
    EXPECT_EQ(replacing.measure(Point{0, 8}, u"\u20AC", false), replacing.measure(Point{0, 8}, u"?", false));
}

TEST(AngelCodeFont, DrawsGlyphsFromThePage) {
    AngelCodeFont font(tinyFace(), 0, 0xFF0000FF);
    Canvas c(12, 10);
    const Point end = font.draw(c.raster, Point{1, 9}, u"AB");
    EXPECT_EQ(end.x, 7);  // 1 + 3 - 1 + 4
    EXPECT_EQ(end.y, 9);
    // The line's top is 9 - 8 = 1; glyphs stand 5 below: rows 6 to 8.
    EXPECT_TRUE(c.inkedColumns(5).empty());
    EXPECT_TRUE(c.inkedColumns(9).empty());
    EXPECT_EQ(c.inkedColumns(6), (std::vector<std::int32_t>{1, 2, 4, 5}));
    EXPECT_EQ(c.at(1, 8), 0xFF0000FFu);
    EXPECT_EQ(c.at(4, 7), scale32(0xFF0000FF, 128));
}

TEST(AngelCodeFont, DrawCharsPlacesEachCharacter) {
    AngelCodeFont font(tinyFace(), 0, 0xFFFFFFFF);
    Canvas c(20, 10);
    const Point points[] = {{0, 9}, {10, 9}};
    Point ends[2] = {};
    font.drawChars(c.raster, 2, points, u"AB", ends);
    EXPECT_EQ(c.inkedColumns(7), (std::vector<std::int32_t>{0, 1, 11, 12}));
    EXPECT_EQ(ends[1].x, 14);
}

namespace {

// A film of `frames` frames of 4 by 5; frame k is an opaque grey of 10 * (k + 1).
std::shared_ptr<Film> digitFilm(std::int32_t frames) {
    Raster32 strip(IntRect{0, 0, 4, 5 * frames});
    for (std::int32_t y = 0; y < 5 * frames; ++y)
        for (std::int32_t x = 0; x < 4; ++x) *strip.at(x, y) = 0xFF000000u | std::uint32_t(10 * (y / 5 + 1)) * 0x010101u;
    return std::make_shared<Film>(std::make_shared<RasterImage>(strip), frames);
}

std::uint32_t grey(std::int32_t frame) {
    return 0xFF000000u | std::uint32_t(10 * (frame + 1)) * 0x010101u;
}

}  // namespace

TEST(FilmFont, FramesFromFirst) {
    FilmFont font(digitFilm(3), 5, 6, '0', 0, std::nullopt);
    std::int32_t height = 0, ascent = 0;
    font.getMetrics(height, ascent);
    EXPECT_EQ(height, 5);
    EXPECT_EQ(ascent, 5);
    // Frames are 4 wide and the pen moves by 6.
    EXPECT_EQ(font.measure(Point{2, 10}, u"01", false), (IntRect{2, 5, 10, 5}));
    EXPECT_EQ(font.measure(Point{2, 10}, u"01", true), (IntRect{2, 5, 12, 5}));
    EXPECT_EQ(font.measure(Point{2, 10}, u"", true), (IntRect{2, 5, 0, 0}));

    Canvas c(20, 6);
    const Point end = font.draw(c.raster, Point{0, 5}, u"0x2");
    EXPECT_EQ(end.x, 18);
    // An unmapped character leaves a gap of one advance.
    EXPECT_EQ(c.inkedColumns(0), (std::vector<std::int32_t>{0, 1, 2, 3, 12, 13, 14, 15}));
    EXPECT_EQ(c.at(0, 4), grey(0));
    EXPECT_EQ(c.at(12, 0), grey(2));
    EXPECT_TRUE(c.inkedColumns(5).empty());
}

TEST(FilmFont, ReplacementAndCharset) {
    FilmFont replacing(digitFilm(3), 5, 4, '0', '1', std::nullopt);
    Canvas c(12, 5);
    replacing.draw(c.raster, Point{0, 5}, u"x\u0130");
    EXPECT_EQ(c.at(0, 0), grey(1));
    EXPECT_EQ(c.at(4, 0), grey(1));  // beyond a byte: no frame of its own

    FilmFont::Charset table;
    table.fill(-1);
    table['+'] = 0;
    table['-'] = 2;
    FilmFont charset(digitFilm(3), 5, 4, 0, 0, table);
    Canvas d(12, 5);
    charset.draw(d.raster, Point{0, 5}, u"-0+");
    EXPECT_EQ(d.at(0, 0), grey(2));
    EXPECT_EQ(d.at(4, 0), 0u);
    EXPECT_EQ(d.at(8, 0), grey(0));
}
