#include "graphics/BlendMode.h"
#include "speclang/SpecColor.h"
#include "cushy/Cursor.h"
#include "cushy/EllipsisSide.h"
#include "cushy/Rounded.h"
#include "cushy/Stroke.h"
#include "cushy/TextAlignment.h"

#include "tests/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::failure;
using tw::test::formatFailure;

TEST(ParseColor, LiteralsMustBePremultiplied) {
    EXPECT_EQ(parseColor("", 0x80402010), 0x80402010u);
    EXPECT_EQ(parseColor("0xFF000000", 1), 0xFF000000u);
    EXPECT_EQ(parseColor("0x00000000", 1), 0u);
    EXPECT_EQ(parseColor("0xF4E0E0DA", 1), 0xF4E0E0DAu);
    EXPECT_EQ(parseColor("037700000000", 1), 0xFF000000u);  // octal
    EXPECT_EQ(formatFailure([] { parseColor("0x80FF0000", 0); }), "Invalid pre-multiplied argb: 0x80FF0000");
    EXPECT_EQ(formatFailure([] { parseColor("0x1000200", 0); }), "Invalid pre-multiplied argb: 0x01000200");
}

TEST(ParseColor, ComponentsArePremultiplied) {
    EXPECT_EQ(parseColor("{ 255, 0, 0 }", 0), 0xFFFF0000u);
    // alpha 0.5 is 128, weighted 129: 255 * 129 >> 8 = 128.
    EXPECT_EQ(parseColor("{ 255, 0, 0, 0.5 }", 0), 0x80800000u);
    EXPECT_EQ(parseColor("{ 300, -5, 255, 2 }", 0), 0xFFFF00FFu);  // clamped
    EXPECT_EQ(parseColor("{ 255, 255, 255, -1 }", 0), 0u);
    // `$` is the component of the default; an empty item keeps it.
    EXPECT_EQ(parseColor("{ $, $/2, $+1 }", 0xFF204060), 0xFF202061u);
    EXPECT_EQ(parseColor("{ $, , $, 0.25 }", 0xFFFFFFFF), 0x403F3F3Fu);
    EXPECT_EQ(formatFailure([] { parseColor("{ 1, 2 }", 0); }), "Invalid number of color components: \"{ 1, 2 }\"");
    EXPECT_EQ(failure([] { parseColor("{ x, 0, 0 }", 0); }), "Undefined symbol: \"x\"");
}

TEST(ParseColor, NamesAreCaseSensitive) {
    EXPECT_EQ(parseColor("transparent", 1), 0u);
    EXPECT_EQ(parseColor("\"navy\"", 0), 0xFF000080u);
    EXPECT_EQ(parseColor("fuchsia", 0), 0xFFFF00FFu);
    EXPECT_EQ(formatFailure([] { parseColor("\"Red\"", 0); }), "Invalid color: \"Red\"");
    EXPECT_EQ(formatFailure([] { parseColor("-1", 0); }), "Invalid color: \"-1\"");
    EXPECT_EQ(formatFailure([] { parseColor("0xFF00000G", 0); }), "Invalid color: \"0xFF00000G\"");
}

TEST(StyleWords, BlendAlignmentAndEllipsis) {
    EXPECT_EQ(parseBlendMode("\"multiply\""), BlendMode::multiply);
    EXPECT_EQ(parseBlendMode("add"), BlendMode::add);
    EXPECT_EQ(parseBlendMode("Add"), BlendMode::normal);  // never a complaint
    EXPECT_EQ(parseTextAlignment("", TextAlignment::center), TextAlignment::center);
    EXPECT_EQ(parseTextAlignment("\"right\"", TextAlignment::left), TextAlignment::right);
    EXPECT_EQ(formatFailure([] { parseTextAlignment("centre", TextAlignment::left); }),
              "Invalid text alignment: \"centre\"");
    EXPECT_EQ(parseEllipsisSide("", EllipsisSide::right), EllipsisSide::right);
    EXPECT_EQ(parseEllipsisSide("'middle'", EllipsisSide::none), EllipsisSide::middle);
    EXPECT_EQ(formatFailure([] { parseEllipsisSide("Both", EllipsisSide::none); }), "Invalid ellipsis side: \"Both\"");
}

TEST(StyleWords, CursorHash) {
    const char* names[] = {"arrow",   "iBeam",  "wait",   "cross", "upArrow", "sizeAll",     "sizeNWSE",
                           "sizeNESW", "sizeWE", "sizeNS", "no",    "hand",    "appStarting", "help"};
    for (int i = 0; i < 14; ++i) EXPECT_EQ(parseCursor(names[i], Cursor::arrow), Cursor(i)) << names[i];
    EXPECT_EQ(parseCursor("", Cursor::hand), Cursor::hand);
    // "hanD" shares the slot of "hand"; "pointer" falls in an empty slot.
    EXPECT_EQ(formatFailure([] { parseCursor("hanD", Cursor::arrow); }), "Unrecognized cursor: \"hanD\"");
    EXPECT_EQ(formatFailure([] { parseCursor("pointer", Cursor::arrow); }), "Unrecognized cursor: \"pointer\"");
}

TEST(ParseStroke, ColourOrMap) {
    EXPECT_EQ(parseStroke("", 0xFF000000).width, 0);
    const Stroke green = parseStroke("green", 0), mapped = parseStroke("{ color: \"green\" }", 0);
    EXPECT_EQ(green.color, 0xFF008000u);
    EXPECT_EQ(mapped.color, green.color);
    EXPECT_EQ(mapped.width, 1);
    EXPECT_EQ(green.width, 1);
    const Stroke s = parseStroke("{ stroke: 2.5, caps: round, joints: bevel, miterLimit: 9, dash: 4, gap: 2 }", 0xFF112233);
    EXPECT_EQ(s.color, 0xFF112233u);
    EXPECT_EQ(s.width, 2.5);
    EXPECT_EQ(s.caps, StrokeCaps::round);
    EXPECT_EQ(s.joints, StrokeJoints::bevel);
    EXPECT_EQ(s.miterLimit, 2);  // read for miter joints only
    EXPECT_EQ(s.dash, 4);
    EXPECT_EQ(s.gap, 2);
    EXPECT_EQ(parseStroke("{ miterLimit: 9 }", 0).miterLimit, 9);
    EXPECT_EQ(parseStroke("{ dash: 3 }", 0).gap, 3);  // the gap follows the dash
    EXPECT_EQ(parseStroke("{ dash: none, gap: -4 }", 0).gap, 0);
}

TEST(ParseStroke, Faults) {
    EXPECT_EQ(formatFailure([] { parseStroke("{ stroke: -1 }", 0); }), "Invalid stroke: \"-1\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ caps: flat }", 0); }), "Invalid caps: \"flat\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ joints: Miter }", 0); }), "Invalid joints: \"Miter\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ quality: 0 }", 0); }), "Invalid quality: \"0\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ dash: 2-3 }", 0); }), "Invalid dash: \"2-3\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ dash: 2, gap: -1 }", 0); }), "Invalid gap: \"-1\"");
    EXPECT_EQ(formatFailure([] { parseStroke("{ dash: 2, dashOffset: -0.5 }", 0); }), "Invalid dashOffset: \"-0.5\"");
}

TEST(ParseRounded, FixedRadiiOrAPercentage) {
    double x = 0, y = 0;
    parseRounded("{ 3, 4 }", IntRect{0, 0, 200, 100}).radiiFor(IntRect{0, 0, 10, 10}, x, y);
    EXPECT_EQ(x, 3);
    EXPECT_EQ(y, 4);
    const Rounded relative = parseRounded("20", IntRect{0, 0, 200, 100});
    EXPECT_EQ(relative.rx, 20);  // 20% of the half width
    EXPECT_EQ(relative.ry, 10);
    relative.radiiFor(IntRect{0, 0, 50, 40}, x, y);  // and it follows the rectangle
    EXPECT_EQ(x, 5);
    EXPECT_EQ(y, 4);
    EXPECT_EQ(parseRounded("150", IntRect{0, 0, 200, 100}).rx, 100);
}
