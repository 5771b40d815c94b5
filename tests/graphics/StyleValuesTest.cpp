#include "graphics/BlendMode.h"
#include "graphics/Color.h"
#include "graphics/Cursor.h"
#include "graphics/EllipsisSide.h"
#include "graphics/Rounded.h"
#include "graphics/Stroke.h"
#include "graphics/TextAlignment.h"

#include "graphics/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::failure;
using tw::test::formatFailure;

TEST(ParseColor, EmptyGivesTheDefault) {
    EXPECT_EQ(parseColor("", 0x80402010), 0x80402010u);
}

TEST(ParseColor, IntegerLiteralIsThePremultipliedValue) {
    EXPECT_EQ(parseColor("0xFF000000", 1), 0xFF000000u);
    EXPECT_EQ(parseColor("0x00000000", 1), 0u);
    EXPECT_EQ(parseColor("0xF4E0E0DA", 1), 0xF4E0E0DAu);
    EXPECT_EQ(parseColor("0", 1), 0u);
    EXPECT_EQ(parseColor("037700000000", 1), 0xFF000000u);  // octal
    EXPECT_EQ(formatFailure([] { parseColor("0x80FF0000", 0); }), "Invalid pre-multiplied argb: 0x80FF0000");
    EXPECT_EQ(formatFailure([] { parseColor("0x00000001", 0); }), "Invalid pre-multiplied argb: 0x00000001");
    EXPECT_EQ(parseColor("0x1000100", 0), 0x01000100u);
    EXPECT_EQ(formatFailure([] { parseColor("0x1000200", 0); }), "Invalid pre-multiplied argb: 0x01000200");
}

TEST(ParseColor, ComponentsArePremultiplied) {
    EXPECT_EQ(parseColor("{ 255, 0, 0 }", 0), 0xFFFF0000u);
    // alpha 0.5 is 128, weighted 129: 255 * 129 >> 8 = 128.
    EXPECT_EQ(parseColor("{ 255, 0, 0, 0.5 }", 0), 0x80800000u);
    EXPECT_EQ(parseColor("{ 10, 20, 30, 1 }", 0), 0xFF0A141Eu);
    EXPECT_EQ(parseColor("{ 200, 100, 50, 0 }", 0), 0u);
    // Out of range components and alphas are clamped.
    EXPECT_EQ(parseColor("{ 300, -5, 255, 2 }", 0), 0xFFFF00FFu);
    EXPECT_EQ(parseColor("{ 255, 255, 255, -1 }", 0), 0u);
}

TEST(ParseColor, DollarIsTheComponentOfTheDefault) {
    EXPECT_EQ(parseColor("{ $, $/2, $+1 }", 0xFF204060), 0xFF202061u);
    EXPECT_EQ(parseColor("{ $, $, $, 0.25 }", 0xFFFFFFFF), 0x403F3F3Fu);
    EXPECT_EQ(parseColor("{ $, , $ }", 0xFF112233), 0xFF112233u);
}

TEST(ParseColor, ComponentCountMustBeThreeOrFour) {
    EXPECT_EQ(formatFailure([] { parseColor("{ 1, 2 }", 0); }), "Invalid number of color components: \"{ 1, 2 }\"");
    EXPECT_EQ(formatFailure([] { parseColor("{1,2,3,4,5}", 0); }),
              "Invalid number of color components: \"{1,2,3,4,5}\"");
    // Evaluator faults keep their own message.
    EXPECT_EQ(failure([] { parseColor("{ x, 0, 0 }", 0); }), "Undefined symbol: \"x\"");
}

TEST(ParseColor, NamesAreCaseSensitive) {
    EXPECT_EQ(parseColor("transparent", 1), 0u);
    EXPECT_EQ(parseColor("red", 0), 0xFFFF0000u);
    EXPECT_EQ(parseColor("\"navy\"", 0), 0xFF000080u);
    EXPECT_EQ(parseColor("'silver'", 0), 0xFFC0C0C0u);
    EXPECT_EQ(parseColor("yellow", 0), 0xFFFFFF00u);
    EXPECT_EQ(parseColor("fuchsia", 0), 0xFFFF00FFu);
    EXPECT_EQ(formatFailure([] { parseColor("\"Red\"", 0); }), "Invalid color: \"Red\"");
    EXPECT_EQ(formatFailure([] { parseColor("light blue", 0); }), "Invalid color: \"light blue\"");
    EXPECT_EQ(formatFailure([] { parseColor("-1", 0); }), "Invalid color: \"-1\"");
    EXPECT_EQ(formatFailure([] { parseColor("0xFF00000G", 0); }), "Invalid color: \"0xFF00000G\"");
}

TEST(StyleWords, BlendModeNeverComplains) {
    EXPECT_EQ(parseBlendMode("add"), BlendMode::add);
    EXPECT_EQ(parseBlendMode("\"multiply\""), BlendMode::multiply);
    EXPECT_EQ(parseBlendMode("Add"), BlendMode::normal);
    EXPECT_EQ(parseBlendMode(""), BlendMode::normal);
    EXPECT_EQ(parseBlendMode("screen"), BlendMode::normal);
}

TEST(StyleWords, TextAlignment) {
    EXPECT_EQ(parseTextAlignment("", TextAlignment::center), TextAlignment::center);
    EXPECT_EQ(parseTextAlignment("left", TextAlignment::center), TextAlignment::left);
    EXPECT_EQ(parseTextAlignment("\"right\"", TextAlignment::left), TextAlignment::right);
    EXPECT_EQ(parseTextAlignment("center", TextAlignment::left), TextAlignment::center);
    EXPECT_EQ(formatFailure([] { parseTextAlignment("centre", TextAlignment::left); }),
              "Invalid text alignment: \"centre\"");
}

TEST(StyleWords, EllipsisSide) {
    EXPECT_EQ(parseEllipsisSide("", EllipsisSide::right), EllipsisSide::right);
    EXPECT_EQ(parseEllipsisSide("none", EllipsisSide::right), EllipsisSide::none);
    EXPECT_EQ(parseEllipsisSide("left", EllipsisSide::none), EllipsisSide::left);
    EXPECT_EQ(parseEllipsisSide("both", EllipsisSide::none), EllipsisSide::both);
    EXPECT_EQ(parseEllipsisSide("'middle'", EllipsisSide::none), EllipsisSide::middle);
    EXPECT_EQ(formatFailure([] { parseEllipsisSide("Middle", EllipsisSide::none); }),
              "Invalid ellipsis side: \"Middle\"");
}

TEST(StyleWords, EveryCursorNameIsFound) {
    const std::pair<const char*, Cursor> all[] = {
        {"arrow", Cursor::arrow},       {"iBeam", Cursor::iBeam},     {"wait", Cursor::wait},
        {"cross", Cursor::cross},       {"upArrow", Cursor::upArrow}, {"sizeAll", Cursor::sizeAll},
        {"sizeNWSE", Cursor::sizeNWSE}, {"sizeNESW", Cursor::sizeNESW}, {"sizeWE", Cursor::sizeWE},
        {"sizeNS", Cursor::sizeNS},     {"no", Cursor::no},           {"hand", Cursor::hand},
        {"appStarting", Cursor::appStarting}, {"help", Cursor::help},
    };
    for (const auto& [name, cursor] : all) EXPECT_EQ(parseCursor(name, Cursor::arrow), cursor) << name;
    EXPECT_EQ(parseCursor("", Cursor::hand), Cursor::hand);
}

TEST(StyleWords, UnknownCursorNames) {
    // Names that land in a used slot of the hash, and names that land in an empty one.
    EXPECT_EQ(formatFailure([] { parseCursor("Hand", Cursor::arrow); }), "Unrecognized cursor: \"Hand\"");
    EXPECT_EQ(formatFailure([] { parseCursor("hanD", Cursor::arrow); }), "Unrecognized cursor: \"hanD\"");
    EXPECT_EQ(formatFailure([] { parseCursor("pointer", Cursor::arrow); }), "Unrecognized cursor: \"pointer\"");
    EXPECT_EQ(formatFailure([] { parseCursor("\"\"", Cursor::arrow); }), "Unrecognized cursor: \"\"");
}

TEST(ParseStroke, EmptyIsInvisibleAndAColourIsOnePixel) {
    EXPECT_EQ(parseStroke("", 0xFF000000).width, 0);
    const Stroke green = parseStroke("green", 0);
    EXPECT_EQ(green.color, 0xFF008000u);
    EXPECT_EQ(green.width, 1);
    EXPECT_EQ(green.caps, StrokeCaps::butt);
    EXPECT_EQ(green.joints, StrokeJoints::miter);
    EXPECT_EQ(green.miterLimit, 2);
    EXPECT_EQ(green.quality, 1);
    EXPECT_EQ(green.gap, 0);
    const Stroke mapped = parseStroke("{ color: \"green\" }", 0);
    EXPECT_EQ(mapped.color, green.color);
    EXPECT_EQ(mapped.width, green.width);
    EXPECT_EQ(parseStroke("{ stroke: 2 }", 0xFF112233).color, 0xFF112233u);
}

TEST(ParseStroke, AllKeys) {
    const Stroke s = parseStroke(
        "{ color: red, stroke: 2.5, caps: round, joints: miter, miterLimit: 4, quality: 0.5, dash: 4, gap: 2,"
        " dashOffset: 1 }",
        0);
    EXPECT_EQ(s.color, 0xFFFF0000u);
    EXPECT_EQ(s.width, 2.5);
    EXPECT_EQ(s.caps, StrokeCaps::round);
    EXPECT_EQ(s.miterLimit, 4);
    EXPECT_EQ(s.quality, 0.5);
    EXPECT_EQ(s.dash, 4);
    EXPECT_EQ(s.gap, 2);
    EXPECT_EQ(s.dashOffset, 1);
    EXPECT_EQ(parseStroke("{ caps: square, joints: bevel, miterLimit: 9 }", 0).caps, StrokeCaps::square);
    // The limit is read for miter joints only.
    EXPECT_EQ(parseStroke("{ joints: bevel, miterLimit: 9 }", 0).miterLimit, 2);
    EXPECT_EQ(parseStroke("{ joints: curve }", 0).joints, StrokeJoints::curve);
    // The gap follows the dash; "none" turns dashes off.
    EXPECT_EQ(parseStroke("{ dash: 3 }", 0).gap, 3);
    const Stroke none = parseStroke("{ dash: none, gap: -4 }", 0);
    EXPECT_EQ(none.dash, 0);
    EXPECT_EQ(none.gap, 0);
}

TEST(ParseStroke, Faults) {
    EXPECT_EQ(formatFailure([] { parseStroke("{ stroke: -1 }", 0); }), "Invalid stroke: \"-1\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ caps: flat }", 0); }), "Invalid caps: \"flat\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ joints: Miter }", 0); }), "Invalid joints: \"Miter\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ quality: 0 }", 0); }), "Invalid quality: \"0\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ dash: 2-3 }", 0); }), "Invalid dash: \"2-3\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ dash: 2, gap: -1 }", 0); }), "Invalid gap: \"-1\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ dash: 2, dashOffset: -0.5 }", 0); }), "Invalid dashOffset: \"-0.5\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ color: pink }", 0); }), "Invalid color: \"pink\"");
    EXPECT_EQ(formatFailure([] { parseStroke("pink", 0); }), "Invalid color: \"pink\"");
}

TEST(ParseRounded, FixedRadiiOrAPercentage) {
    const IntRect rect{0, 0, 200, 100};
    const Rounded fixed = parseRounded("{ 3, 4 }", rect);
    EXPECT_FALSE(fixed.relative);
    double x = 0, y = 0;
    fixed.radiiFor(IntRect{0, 0, 10, 10}, x, y);
    EXPECT_EQ(x, 3);
    EXPECT_EQ(y, 4);

    const Rounded relative = parseRounded("20", rect);
    EXPECT_TRUE(relative.relative);
    EXPECT_EQ(relative.rx, 20);  // 20% of the half width
    EXPECT_EQ(relative.ry, 10);
    relative.radiiFor(IntRect{0, 0, 50, 40}, x, y);
    EXPECT_EQ(x, 5);
    EXPECT_EQ(y, 4);
    EXPECT_EQ(parseRounded("150", rect).rx, 100);
    EXPECT_EQ(parseRounded("-5", rect).rx, 0);
    EXPECT_EQ(parseRounded("", rect).rx, 0);
}
