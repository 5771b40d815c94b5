#include "graphics/QvxAngelCode.h"

#include "tests/Failure.h"

#include <gtest/gtest.h>

#include <vector>

using namespace tw;
using tw::test::formatFailure;

namespace {

const char* const sample =
    "info face=\"Deja Vu\" size=11 bold=1 italic=0 charset=\"\" unicode=1 stretchH=100 smooth=1 aa=2 "
    "padding=1,2,3,4 spacing=1,-1\n"
    "common lineHeight=13 base=11 scaleW=256 scaleH=55 pages=2 packed=0\n"
    "page id=0 file=\"sans_0.png\"\n"
    "page id=1 file=\"sans_1.png\"\n"
    "chars count=2\n"
    "char id=65   x=10 y=20 width=7 height=8 xoffset=-1 yoffset=3 xadvance=7 page=0  chnl=15\n"
    "char id=86 x=0 y=0 width=7 height=8 xoffset=0 yoffset=3 xadvance=7 page=1 channel=4\n"
    "kernings count=1\n"
    "kerning first=65 second=86 amount=-1\n";

std::string messageFor(const std::string& text) {
    return formatFailure([&] { readAngelCodeFont(text); });
}

}  // namespace

TEST(AngelCode, ReadsAllTags) {
    const FontFile font = readAngelCodeFont(sample);
    EXPECT_EQ(font.info.face, "Deja Vu");
    EXPECT_TRUE(font.info.bold);
    EXPECT_EQ(font.info.padding[3], 4);
    EXPECT_EQ(font.info.spacing[1], -1);
    EXPECT_EQ(font.common.lineHeight, 13);
    EXPECT_EQ(font.common.base, 11);
    EXPECT_EQ(font.common.scaleH, 55);
    EXPECT_EQ(font.pages.at(1), "sans_1.png");
    const FontFile::Char& a = font.chars.at(65);
    EXPECT_EQ((std::vector<std::int32_t>{a.x, a.y, a.width, a.height, a.xoffset, a.yoffset, a.xadvance, a.page}),
              (std::vector<std::int32_t>{10, 20, 7, 8, -1, 3, 7, 0}));
    // Font tools write "chnl", which is not the key this reader asks for.
    EXPECT_EQ(a.channel, 0);
    EXPECT_EQ(font.chars.at(86).channel, 4);
    EXPECT_EQ(font.kerning.at({65, 86}), -1);
}

TEST(AngelCode, LineEndsQuotesAndLooseValues) {
    const FontFile font = readAngelCodeFont(
        "info face=\"open quote spacing=3,4\r\n"
        "\tcommon  base=5 lineHeight=+9 scaleW=12abc scaleH=x padding=1\r\n"
        "info padding=7,8 size= bold=yes\r"
        "something id=1\n\n"
        "char id=1 x=0 y=0 width=0 height=0 xoffset=0 yoffset=0 xadvance=3 page=0 stray id=2\n");
    EXPECT_EQ(font.info.face, "open quote spacing=3,4");
    EXPECT_EQ(font.info.spacing[0], 0);
    EXPECT_EQ(font.common.lineHeight, 9);
    EXPECT_EQ(font.common.base, 5);
    EXPECT_EQ(font.common.scaleW, 12);
    EXPECT_EQ(font.common.scaleH, 0);
    // "%d,%d,%d,%d" stops at the first mismatch and keeps what it read.
    EXPECT_EQ(font.info.padding[0], 7);
    EXPECT_EQ(font.info.padding[1], 8);
    EXPECT_EQ(font.info.padding[2], 0);
    EXPECT_FALSE(font.info.bold);
    // A key counts once, at its first occurrence.
    EXPECT_EQ(font.chars.count(1), 1u);
    EXPECT_EQ(font.chars.count(2), 0u);
}

TEST(AngelCode, RequiredKeys) {
    EXPECT_EQ(messageFor("common lineHeight=1\n"), "Missing 'base' value in AngelCode Font File");
    EXPECT_EQ(messageFor("common base=1\n"), "Missing 'lineHeight' value in AngelCode Font File");
    EXPECT_EQ(messageFor("common lineHeight=1 base=1\npage file=\"a.png\"\n"),
              "Missing 'id' value in AngelCode Font File");
    EXPECT_EQ(messageFor("char id=1 x=0 y=0 width=0 height=0 xoffset=0 yoffset=0 xadvance=3\n"),
              "Missing 'page' value in AngelCode Font File");
    EXPECT_EQ(messageFor("char id=1 x=0 y=0 width=0 xoffset=0 yoffset=0 xadvance=3 page=0\n"),
              "Missing 'height' value in AngelCode Font File");
    EXPECT_EQ(messageFor("kerning first=1 second=2\n"), "Missing 'amount' value in AngelCode Font File");
    EXPECT_EQ(messageFor("kerning first=1 amount=2\n"), "Missing 'second' value in AngelCode Font File");
    EXPECT_EQ(messageFor("info face=x\n"), "Missing common tag in AngelCode Font File");
    EXPECT_EQ(messageFor(""), "Missing common tag in AngelCode Font File");
    // Keys are case-sensitive, and so are tags.
    EXPECT_EQ(messageFor("common lineheight=1 base=1\n"), "Missing 'lineHeight' value in AngelCode Font File");
    EXPECT_EQ(messageFor("Common lineHeight=1 base=1\n"), "Missing common tag in AngelCode Font File");
}

TEST(AngelCode, Duplicates) {
    const std::string common = "common lineHeight=1 base=1\n";
    const std::string glyph = "char id=9 x=0 y=0 width=0 height=0 xoffset=0 yoffset=0 xadvance=3 page=0\n";
    EXPECT_EQ(messageFor(common + "page id=0 file=a\npage id=0 file=b\n"),
              "Duplicate page id found in AngelCode Font File");
    EXPECT_EQ(messageFor(common + glyph + glyph), "Duplicate character id found in AngelCode Font File");
    EXPECT_EQ(messageFor(common + "kerning first=1 second=2 amount=-1\nkerning first=1 second=2 amount=-2\n"),
              "Duplicate kerning pair (with different amount) found in AngelCode Font File");
    const FontFile same =
        readAngelCodeFont(common + "kerning first=1 second=2 amount=-1\nkerning first=1 second=2 amount=-1\n"
                                   "kerning first=2 second=1 amount=3\n");
    EXPECT_EQ(same.kerning.size(), 2u);
}
