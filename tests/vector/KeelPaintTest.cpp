#include "KeelCanvas.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

#include "graphics/PixelMath.h"
#include "vector/KeelColor.h"

using namespace tw;
using namespace tw::testing;

namespace {

std::uint32_t colour(std::string_view text) {
    KeelCanvas c;
    return parseKeelColor(c.frame, text);
}

template <class E>
std::string colourFault(std::string_view text) {
    return test::failure<E>([text] { colour(text); });
}

template <class E>
std::string opacityFault(std::string_view text) {
    return test::failure<E>([text] { parseKeelOpacity(text); });
}

}  // namespace

TEST(KeelColors, HexDigitsAndThePremultipliedCheck) {
    EXPECT_EQ(colour("#ff8000"), 0xFFFF8000u);
    EXPECT_EQ(colour("#80400000"), 0x80400000u);
    EXPECT_EQ(colour("#00000000"), 0u);
    EXPECT_EQ(colourFault<Ketch::SyntaxException>("#80ff0000"), "Invalid pre-multiplied alpha color");
    EXPECT_EQ(colourFault<Ketch::SyntaxException>("#7f7f7f80"), "Invalid pre-multiplied alpha color");
    for (const char* bad : {"#fff", "#", "#ff80001", "#ff80zz", "#ff8000ff0"}) {
        EXPECT_EQ(colourFault<Ketch::SyntaxException>(bad), "Invalid color") << bad;
    }
}

TEST(KeelColors, FunctionsTakeFractions) {
    EXPECT_EQ(colour("rgb(1,0.5,0)"), 0xFFFF8000u);
    EXPECT_EQ(colour("rgb(1 0.25 0.999)"), 0xFFFF40FFu);
    EXPECT_EQ(colour("rgb(1,0,0,0.5)"), scale32(0xFFFF0000u, 128)) << "the fourth premultiplies";
    EXPECT_EQ(colour("hsv(0,1,1)"), 0xFFFF0000u);
    EXPECT_EQ(colour("hsv(0.5,1,1)"), 0xFF00FFFFu);
    EXPECT_EQ(colour("hsv(1,1,1)"), 0xFFFF0000u) << "a full turn is red again";
    EXPECT_EQ(colour("hsv(0,0,1)"), 0xFFFFFFFFu);
    // Sector 1 at its middle: q = 0.25, v = 0.5, p = 0; each times 255.99999999.
    EXPECT_EQ(colour("hsv(0.25,1,0.5)"), 0xFF3F7F00u);
    EXPECT_EQ(colour("hsv(0.25,1,0.5,0.5)"), scale32(0xFF3F7F00u, 128));
    EXPECT_EQ(colourFault<Ketch::RunTimeException>("rgb(1.5,0,0)"), "Value out of range");
    EXPECT_EQ(colourFault<Ketch::RunTimeException>("hsv(0,-0.1,0)"), "Value out of range");
    EXPECT_EQ(colourFault<Ketch::SyntaxException>("rgb(1,0)"), "Too few list elements");
    EXPECT_EQ(colourFault<Ketch::SyntaxException>("rgb(1,0,x)"), "Invalid number");
    EXPECT_EQ(colourFault<Ketch::SyntaxException>("rgb(1,0,0"), "Invalid color");
    EXPECT_EQ(colourFault<Ketch::SyntaxException>("cmy(1,0,0)"), "Invalid color");
}

TEST(KeelColors, Names) {
    EXPECT_EQ(colour("none"), 0u);
    EXPECT_EQ(colour("fuchsia"), 0xFFFF00FFu);
    EXPECT_EQ(colour("navy"), 0xFF000080u);
    for (const char* bad : {"Red", "transparent", "", "re"}) {
        EXPECT_EQ(colourFault<Ketch::SyntaxException>(bad), "Invalid color") << bad;
    }
}

TEST(KeelColors, Opacities) {
    EXPECT_EQ(parseKeelOpacity("#80"), 0x80);
    EXPECT_EQ(parseKeelOpacity("#fF"), 0xFF);
    EXPECT_EQ(parseKeelOpacity("0.5"), 128);
    EXPECT_EQ(parseKeelOpacity("1"), 255);
    EXPECT_EQ(parseKeelOpacity("0.999"), 255);
    for (const char* bad : {"#8", "#800", "#zz", "#"}) {
        EXPECT_EQ(opacityFault<Ketch::SyntaxException>(bad), "Invalid opacity") << bad;
    }
    EXPECT_EQ(opacityFault<Ketch::RunTimeException>("1.01"), "Value out of range");
    EXPECT_EQ(opacityFault<Ketch::SyntaxException>("half"), "Invalid number");
}

TEST(KeelGradients, StopsAreValidated) {
    const auto fault = [](const char* gradient) {
        return faultOf<Ketch::SyntaxException>(std::string("fill gradient:[") + gradient + "]");
    };
    EXPECT_EQ(fault("linear 0,0,1,0 stops:[0 red 1]"), "Invalid stops for gradient");
    EXPECT_EQ(fault("linear 0,0,1,0 stops:[]"), "Invalid stops for gradient");
    EXPECT_EQ(fault("linear 0,0,1,0 stops:[0.5 red 0.4 blue]"), "Invalid stops for gradient");
    EXPECT_EQ(fault("linear 0,0,1,0 stops:[0 red 1.5 blue]"), "Invalid stops for gradient");
    EXPECT_EQ(fault("linear 0,0,1,0 stops:[0 red x blue]"), "Invalid number");
    EXPECT_EQ(fault("linear 0,0,1,0 stops:[0 red 1 bleu]"), "Invalid color");
    EXPECT_EQ(fault("conic 0,0,1,0 from:red to:blue"), "Unrecognized gradient type");
    EXPECT_EQ(fault("linear 0,0,1,0 from:red"), "Missing argument(s)");
    EXPECT_EQ(fault("linear 0,0,1,0 stops:[0 red 1 blue] from:red"), "Unrecognized labels or too many arguments");
    EXPECT_EQ(fault("linear 0,0,1 from:red to:blue"), "Too few list elements");
    EXPECT_EQ(fault("radial 0,0,1,1,1 from:red to:blue"), "Too many list elements");
    // Equal positions make a hard edge, and the first stop need not be at 0.
    KeelCanvas c;
    c.run("fill gradient:[linear 0,0,20,0 stops:[0.25 red 0.5 red 0.5 blue]]; rect 0,0,20,20");
    EXPECT_EQ(c.at(2, 5), 0xFFFF0000u);
    EXPECT_EQ(c.at(8, 5), 0xFFFF0000u);
    EXPECT_EQ(c.at(12, 5), 0xFF0000FFu);
}

TEST(KeelGradients, LinearAndRadialOnTheCanvas) {
    KeelCanvas c(20, 20);
    c.run("fill gradient:[linear 0,0,20,0 from:black to:white]; rect 0,0,20,10");
    for (int x = 1; x < 20; ++x) EXPECT_GT(c.at(x, 5) & 0xFF, c.at(x - 1, 5) & 0xFF) << x;
    EXPECT_EQ(c.at(19, 5) >> 24, 0xFFu);
    c.run("fill gradient:[radial 10.5,15.5,5 from:white to:blue]; rect 0,10,20,10");
    EXPECT_EQ(c.at(10, 15), 0xFFFFFFFFu) << "the first stop is the centre";
    EXPECT_EQ(c.at(6, 11), 0xFF0000FFu) << "the last holds beyond the rim";
    EXPECT_EQ(c.at(1, 11), 0u) << "within the ramp's box only";
}

TEST(KeelGradients, RelativeFollowsTheShapeAndTransformMovesThePaint) {
    KeelCanvas c(40, 20);
    c.run("fill gradient:[linear 0,0,1,0 from:black to:white] relative:yes; rect 0,0,10,10; rect 20,0,10,10");
    for (int x = 0; x < 10; ++x) EXPECT_EQ(c.at(x, 5), c.at(20 + x, 5)) << x;
    c.run("fill gradient:[linear 0,0,10,0 from:black to:white] transform:[scale 2]; rect 0,10,40,10");
    EXPECT_LT(c.at(17, 15) & 0xFF, 0xF0u) << "the axis is twice as long";
    EXPECT_EQ(c.at(21, 15), 0xFFFFFFFFu);
    EXPECT_EQ(faultOf<Ketch::SyntaxException>("fill red transform:[rect 0,0,1,1]"), "Unrecognized instruction");
    EXPECT_EQ(faultOf<Ketch::SyntaxException>("fill red transform:[rotate 1,2]"), "Invalid transform");
}

TEST(KeelGradients, MaskStopsAreOpacities) {
    KeelCanvas c(20, 4);
    c.run("mask [fill gradient:[linear 0,0,20,0 stops:[0 #ff 1 0]]; rect 0,0,20,4]; wipe white");
    EXPECT_EQ(c.at(0, 1), 0xFFFFFFFFu);
    EXPECT_LT(c.at(19, 1) >> 24, 0x10u);
    EXPECT_EQ(faultOf<Ketch::SyntaxException>("mask [fill gradient:[linear 0,0,1,0 from:white to:black]]"),
              "Invalid number");
}

TEST(KeelStyles, ANewPaintStartsAFreshStyle) {
    KeelCanvas c;
    c.run("fill red opacity:0.5; fill blue; rect 0,0,10,10");
    EXPECT_EQ(c.at(5, 5), 0xFF0000FFu);
    c.run("fill opacity:#80; rect 10,0,10,10");
    EXPECT_EQ(c.at(15, 5), scale32(0xFF0000FFu, 0x80));
    c.run("wipe red opacity:#40");
    EXPECT_EQ(c.at(15, 15), scale32(0xFFFF0000u, 0x40));
}

TEST(KeelPatterns, BoundsMustBeDeclaredOnceBeforeDrawing) {
    EXPECT_EQ(faultOf<Ketch::RunTimeException>("fill pattern:[fill red; rect 0,0,1,1]"), "Undeclared bounds");
    EXPECT_EQ(faultOf<Ketch::RunTimeException>("fill pattern:[bounds 0,0,1,1; bounds 0,0,2,2]"),
              "Multiple bounds declarations");
    EXPECT_EQ(faultOf<Ketch::RunTimeException>("fill pattern:[bounds 0,0,0,1]"), "Value out of range");
    EXPECT_EQ(faultOf<Ketch::RunTimeException>("fill pattern:[bounds 0,0,100000,100000]"), "Value out of range");
    // A body that declares nothing gives a paint that draws nothing.
    KeelCanvas c;
    c.run("fill pattern:[trace empty]; rect 0,0,10,10");
    EXPECT_EQ(c.target.draws, 0);
    EXPECT_EQ(c.traces.str(), "empty\n");
}

TEST(KeelPatterns, TileAtTheResolutionOfTheScale) {
    // Checks of one unit, at a scale of 2: two pixels each, tiled across negative offsets.
    KeelCanvas c(16, 16, 2);
    c.run("fill pattern:[bounds 0,0,2,2; fill black; rect 0,0,1,1; rect 1,1,1,1] ; offset -3,0; rect 0,0,11,8");
    for (int y = 0; y < 16; y += 3) {
        for (int x = 0; x < 16; x += 3) {
            // Device pixel x is user x / 2 + 3 in pattern units (the offset moves the paint too).
            const bool black = ((x / 2 + 3) % 2) == ((y / 2) % 2);
            EXPECT_EQ(c.at(x, y), black ? 0xFF000000u : 0u) << x << "," << y;
        }
    }
    // The body sees the frame's variables and starts with nothing to paint.
    KeelCanvas v;
    v.run("size=4; fill pattern:[bounds 0,0,$size,$size; rect 0,0,4,4; fill lime; rect 0,0,2,4]; rect 0,0,20,20");
    EXPECT_EQ(v.at(1, 1), 0xFF00FF00u);
    EXPECT_EQ(v.at(3, 1), 0u);
}
