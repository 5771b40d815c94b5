#include "KeelCanvas.h"

#include <gtest/gtest.h>

#include "graphics/PixelMath.h"

using namespace tw;
using namespace tw::testing;

namespace {

struct Fault {
    const char* script;
    const char* message;
};

// Every fault is a syntax fault except those that say a value is out of range.
void expectFaults(std::initializer_list<Fault> faults, bool runTime = false) {
    for (const Fault& f : faults) {
        if (runTime) {
            EXPECT_EQ(faultOf<Ketch::RunTimeException>(f.script), f.message);
        } else {
            EXPECT_EQ(faultOf<Ketch::SyntaxException>(f.script), f.message);
        }
    }
}

constexpr const char* kMissing = "Missing argument(s)";
constexpr const char* kLeftOver = "Unrecognized labels or too many arguments";
constexpr const char* kTooFew = "Too few list elements";
constexpr const char* kTooMany = "Too many list elements";
constexpr const char* kRange = "Value out of range";

}  // namespace

TEST(KeelInstructions, ShapeArgumentFaults) {
    expectFaults({
        {"rect", kMissing},
        {"rect 0,0,10", kTooFew},
        {"rect 0,0,10,10,5", kTooMany},
        {"rect 0,0,a,10", "Invalid number"},
        {"rect 0,0,10,10 round:2", kLeftOver},
        {"rect 0,0,10,10 rounded:1,2,3", kTooMany},
        {"ellipse 1,2", kTooFew},
        {"star 1,2,5.5,4", "Invalid integer"},
        {"star 1,2,5,4 rotation:north", "Invalid number"},
        {"path", "Invalid PATH arguments"},
        {"path [M 0 0 L 1 1]", "Invalid PATH arguments"},
        {"path svg:[M 0 0 X]", "Invalid command in svg path data"},
        {"path svg:[M 0 0 L 1 1] fill:red", kLeftOver},
    });
    expectFaults({{"star 1,2,0,4", kRange}, {"star 1,2,10001,4", kRange}}, true);
}

TEST(KeelInstructions, PenAndFillArgumentFaults) {
    expectFaults({
        {"pen", kMissing},
        {"pen caps:flat", "Unrecognized stroke caps"},
        {"pen joints:sharp", "Unrecognized stroke joints"},
        {"pen dash:1,2,3", kTooMany},
        {"pen red blue", kLeftOver},
        {"fill", kMissing},
        {"fill rule:winding", "Unrecognized fill rule"},
        {"fill reddish", "Invalid color"},
    });
    expectFaults({
        {"pen width:-1", "Negative stroke width"},
        {"pen miter-limit:0.5", kRange},
        {"pen dash:-1", kRange},
        {"pen dash:4,-2", kRange},
    }, true);
}

TEST(KeelInstructions, TransformArgumentFaults) {
    expectFaults({
        {"matrix 1,0,0,1,0", kTooFew},
        {"scale", kMissing},
        {"scale 1,2,3", kTooMany},
        {"rotate 1,2", "Invalid transform"},
        {"rotate 1,2,3,4", "Invalid transform"},
        {"offset 1", kTooFew},
        {"shear 1,2,3", kTooMany},
    });
}

TEST(KeelInstructions, StateArgumentFaults) {
    expectFaults({
        {"context", kMissing},
        {"wipe", kMissing},
        {"wipe opacity:0.5", kMissing},
        {"wipe red relative:no", "Relative paint is not allowed with wipe"},
        {"options speed:1", kLeftOver},
        {"options aa-gamma:x", "Invalid number"},
        {"reset now", kLeftOver},
        {"mask", kMissing},
        {"mask [rect 0,0,1,1] inverted:maybe", "Invalid boolean (should be 'yes' or 'no')"},
        {"bounds 0,0,10", kTooFew},
        {"bounds 0,0,1.5,10", "Invalid integer"},
    });
    expectFaults({
        {"options aa-gamma:0", kRange},
        {"options curve-quality:100", kRange},
        {"options pattern-resolution:0.00005", kRange},
        {"mask [bounds 0,0,10,10]", "Bounds cannot be declared for mask"},
    }, true);
}

TEST(KeelInstructions, NamesAreCaseInsensitiveAndUnknownOnesFallThrough) {
    KeelCanvas c;
    c.run("FILL red; Rect 0,0,20,20");
    EXPECT_EQ(c.at(10, 10), 0xFFFF0000u);
    EXPECT_EQ(faultOf<Ketch::SyntaxException>("circle 1,2,3"), "Unrecognized instruction");
    c.run("meta author:someone");
}

TEST(KeelInstructions, FormatIsKeelOneWithNothingElseRequired) {
    KeelCanvas c;
    c.run("format keel-1; format KEEL-1 uses:[fonts] requires:[ketch-1]");
    EXPECT_EQ(faultOf<Ketch::FormatException>("format ketch-1"), "Unsupported data format");
    EXPECT_EQ(faultOf<Ketch::FormatException>("format keel-1 requires:[fonts]"), "Unsupported data format");
}

TEST(KeelInstructions, TraceWritesLinesAndIncludeAsksTheLoader) {
    KeelCanvas c;
    c.files["dot.keel"] = "trace drawing $0; fill black; rect $0,0,1,1";
    c.run("trace start; include dot.keel 3; context [include dot.keel 5]");
    EXPECT_EQ(c.traces.str(), "start\ndrawing 3\ndrawing 5\n");
    EXPECT_EQ(c.at(3, 0), 0xFF000000u);
    EXPECT_EQ(c.at(5, 0), 0xFF000000u);
    EXPECT_EQ(faultOf<Ketch::RunTimeException>("include missing.keel"), "Could not include file");
}

TEST(KeelInstructions, FaultsCarryTheStatementTheyAroseIn) {
    KeelCanvas c;
    try {
        c.run("w=-2\ncontext [\n  fill red\n  pen width:$w\n]");
        FAIL() << "no fault";
    } catch (const Ketch::Exception& e) {
        EXPECT_EQ(e.message(), "Negative stroke width");
        EXPECT_EQ(e.statement(), "pen width:-2");
    }
    EXPECT_EQ(c.at(0, 0), 0u) << "nothing was drawn before the fault";
}

TEST(KeelPen, KeepsItsPaintWhenOnlyGeometryChanges) {
    KeelCanvas c;
    c.run("pen red opacity:0.5; pen width:4 caps:round");
    const PainterState& s = c.state();
    ASSERT_TRUE(s.pen.paint);
    EXPECT_EQ(s.pen.opacity, 128);
    EXPECT_EQ(s.width, 4);
    EXPECT_EQ(s.caps, StrokeCaps::round);
    c.run("path svg:[M 2 10 L 18 10]");
    EXPECT_EQ(c.at(10, 10), scale32(0xFFFF0000u, 128));

    c.run("pen blue");
    EXPECT_EQ(c.state().pen.opacity, 255) << "a new paint starts a new style";
    EXPECT_EQ(c.state().width, 4) << "but keeps the geometry";
    c.run("pen opacity:#40");
    EXPECT_EQ(c.state().pen.opacity, 0x40) << "an opacity alone changes the style it finds";
}

TEST(KeelPen, DashesTurnOnAndOffAgain) {
    KeelCanvas c(40, 4);
    c.run("pen black width:2 dash:4,2 dash-offset:-1; path svg:[M 0 2 L 40 2]");
    // The offset is normalised to 5 of the period 6: the line starts 1 into a gap.
    EXPECT_EQ(c.at(0, 1), 0u);
    EXPECT_EQ(c.at(2, 1), 0xFF000000u);
    EXPECT_EQ(c.at(5, 1), 0u);
    EXPECT_EQ(c.at(8, 1), 0xFF000000u);
    c.run("pen dash:none; path svg:[M 0 2 L 40 2]");
    EXPECT_EQ(c.state().gap, 0);
    for (int x = 0; x < 40; ++x) EXPECT_EQ(c.at(x, 1), 0xFF000000u) << x;
    c.run("pen dash:3");
    EXPECT_EQ(c.state().dash, 3);
    EXPECT_EQ(c.state().gap, 3) << "one number gives an equal gap";
}

TEST(KeelPen, StrokesAreBuiltInUserSpace) {
    KeelCanvas c(40, 10);
    // A pen of width 1 under a horizontal scale of 4 paints a vertical line 4 pixels wide.
    c.run("scale 4,1; pen black width:1; path svg:[M 2 0 L 2 10]");
    EXPECT_EQ(c.at(5, 5), 0u);
    for (int x = 6; x < 10; ++x) EXPECT_EQ(c.at(x, 5), 0xFF000000u) << x;
    EXPECT_EQ(c.at(10, 5), 0u);
}

TEST(KeelFill, ZeroOpacityOrNoPaintDoesNoWork) {
    KeelCanvas c;
    c.run("rect 0,0,10,10; ellipse 5,5,5; star 5,5,5,4,2; path svg:[M 0 0 L 9 9 L 0 9 Z]");
    EXPECT_EQ(c.target.draws, 0) << "neither fill nor pen is set";
    c.run("fill red opacity:0; rect 0,0,10,10; pen none; rect 0,0,10,10; pen blue width:0; rect 0,0,10,10");
    EXPECT_EQ(c.target.draws, 0);
    c.run("fill none; wipe none; wipe red opacity:0");
    EXPECT_EQ(c.target.draws, 0);
    EXPECT_EQ(c.at(5, 5), 0u);
    c.run("fill red opacity:1; rect 0,0,10,10");
    EXPECT_EQ(c.target.draws, 1);
}

TEST(KeelFill, RulesAndOpenShapes) {
    KeelCanvas c;
    // Two nested squares in the same direction: the even-odd rule leaves the inner one out.
    const char* squares = "path svg:[M 0 0 L 20 0 L 20 20 L 0 20 Z M 5 5 L 15 5 L 15 15 L 5 15 Z]";
    c.run(std::string("fill black rule:even-odd; ") + squares);
    EXPECT_EQ(c.at(2, 2), 0xFF000000u);
    EXPECT_EQ(c.at(10, 10), 0u);
    c.run(std::string("fill rule:non-zero; ") + squares);
    EXPECT_EQ(c.at(10, 10), 0xFF000000u);
    // A fill closes an open path straight back to its start.
    KeelCanvas open;
    open.run("fill black; path svg:[M 0 0 L 20 0 L 20 20]");
    EXPECT_EQ(open.at(15, 5), 0xFF000000u);
    EXPECT_EQ(open.at(5, 15), 0u);
}

TEST(KeelTransforms, ComposeSoThatTheNewOneAppliesFirst) {
    KeelCanvas c;
    c.run("offset 10,0; scale 2");
    Point p = c.state().matrix.apply(1, 0);
    EXPECT_DOUBLE_EQ(p.x, 12);
    c.run("reset; matrix 1,2,3,4,5,6");
    p = c.state().matrix.apply(1, 1);
    EXPECT_DOUBLE_EQ(p.x, 1 + 3 + 5);
    EXPECT_DOUBLE_EQ(p.y, 2 + 4 + 6);
    c.run("reset; rotate 90,5,5");
    p = c.state().matrix.apply(10, 5);
    EXPECT_NEAR(p.x, 5, 1e-12);
    EXPECT_NEAR(p.y, 10, 1e-12);
    c.run("reset; shear 0.5,0.25");
    p = c.state().matrix.apply(2, 4);
    EXPECT_DOUBLE_EQ(p.x, 2 + 0.5 * 4);
    EXPECT_DOUBLE_EQ(p.y, 0.25 * 2 + 4);
}

TEST(KeelState, ContextDiscardsItsChangesAndResetReturnsToTheStart) {
    KeelCanvas c(20, 20, 2);
    c.run("fill red; context [fill blue; offset 5,5; options aa-gamma:2; rect 0,0,1,1]; rect 0,0,1,1");
    EXPECT_EQ(c.at(11, 11), 0xFF0000FFu) << "the context drew with its own state";
    EXPECT_EQ(c.at(1, 1), 0xFFFF0000u) << "and the state was back afterwards";
    EXPECT_FALSE(c.state().gammaTable);
    c.run("offset 3,3; options aa-gamma:2 curve-quality:3 pattern-resolution:2; reset");
    EXPECT_EQ(c.state().matrix, Matrix::scale(2, 2)) << "the start keeps the view's scale";
    EXPECT_FALSE(c.state().fill.paint);
    EXPECT_EQ(c.state().curveQuality, 1);
    EXPECT_EQ(c.state().patternResolution, 1);
    c.run("options aa-gamma:1.00005");
    EXPECT_FALSE(c.state().gammaTable) << "a gamma this close to 1 needs no table";
    c.run("options aa-gamma:2.2");
    ASSERT_TRUE(c.state().gammaTable);
    EXPECT_EQ(c.state().gammaTable->table[64], GammaTable::forGamma(2.2)->table[64]);
}

TEST(KeelState, GammaRaisesPartialCoverageOnly) {
    KeelCanvas plain, raised;
    const char* half = "fill white; rect 0,0,10.5,10";
    plain.run(half);
    raised.run(std::string("options aa-gamma:2; ") + half);
    EXPECT_EQ(plain.at(5, 5), raised.at(5, 5));
    EXPECT_GT(raised.at(10, 5) >> 24, plain.at(10, 5) >> 24);
}

TEST(KeelMask, LimitsWhatFollowsAndAddsUp) {
    KeelCanvas c;
    c.run("mask [rect 0,0,10,20]; wipe red; fill blue; rect 0,10,20,10");
    EXPECT_EQ(c.at(5, 5), 0xFFFF0000u);
    EXPECT_EQ(c.at(15, 5), 0u);
    EXPECT_EQ(c.at(5, 15), 0xFF0000FFu);
    EXPECT_EQ(c.at(15, 15), 0u) << "a mask never widens a shape";

    KeelCanvas inverse;
    inverse.run("mask inverted:yes [rect 0,0,10,20]; wipe red");
    EXPECT_EQ(inverse.at(5, 5), 0u);
    EXPECT_EQ(inverse.at(15, 5), 0xFFFF0000u);

    KeelCanvas sum;
    sum.run("mask [fill 0.5; rect 0,0,10,10; rect 5,0,10,10; path svg:[M 0 15.5 L 20 15.5]]; wipe white");
    EXPECT_EQ(sum.at(2, 5), scale32(0xFFFFFFFFu, 128));
    EXPECT_EQ(sum.at(7, 5), 0xFFFFFFFFu) << "128 + 128 saturates";
    EXPECT_EQ(sum.at(2, 15), 0u) << "the mask's painter starts with no pen";
    sum.run("reset; wipe black");
    EXPECT_EQ(sum.at(2, 15), 0xFF000000u) << "reset drops the mask";
}

TEST(KeelMask, BodiesReadOpacitiesNotColours) {
    EXPECT_EQ(faultOf<Ketch::SyntaxException>("mask [fill red]"), "Invalid number");
    EXPECT_EQ(faultOf<Ketch::SyntaxException>("mask [fill #8]"), "Invalid opacity");
    KeelCanvas c;
    c.run("mask [fill #40; rect 0,0,20,20]; wipe white");
    EXPECT_EQ(c.at(3, 3), scale32(0xFFFFFFFFu, 0x40));
}

TEST(KeelBounds, DoNothingOnACanvasAndFailInAMask) {
    KeelCanvas c;
    c.run("bounds 0,0,5,5; fill red; rect 0,0,20,20");
    EXPECT_EQ(c.at(15, 15), 0xFFFF0000u);
    EXPECT_EQ(faultOf<Ketch::RunTimeException>("mask [context [bounds 0,0,1,1]]"), "Bounds cannot be declared for mask");
}

// A picture drawn at 125 % with the grid on: a hairline frame and a one-pixel fill land on
// whole pixels, fully covered or not at all, where without the grid they fall between two.
TEST(KeelPixelGrid, RectanglesAndTheirPensLandOnWholePixelsAtAZoom) {
    const char* picture = "fill none; pen #FFFFFF width:1; rect 2.5,2.5,9,9; pen none; fill #FFFFFF; rect 0,14,16,1";
    auto coverage = [](std::uint32_t pixel) { return pixel >> 24; };
    KeelCanvas plain(20, 20, 1.25), snapped(20, 20, 1.25);
    snapped.painter.snapToPixels(true);
    plain.run(picture);
    snapped.run(picture);
    // Each row through the frame's left side and the bar: partial coverage without the grid.
    auto partial = [&](KeelCanvas& c) {
        int count = 0;
        for (std::int32_t x = 0; x < 20; ++x) count += coverage(c.at(x, 8)) % 255 != 0;
        for (std::int32_t y = 16; y < 20; ++y) count += coverage(c.at(5, y)) % 255 != 0;
        return count;
    };
    EXPECT_GT(partial(plain), 0);
    EXPECT_EQ(partial(snapped), 0);
    // The frame is one pixel wide on each side, and the bar one pixel high.
    int frameRow = 0, barColumn = 0;
    for (std::int32_t x = 0; x < 20; ++x) frameRow += coverage(snapped.at(x, 8)) == 255;
    for (std::int32_t y = 0; y < 20; ++y) barColumn += coverage(snapped.at(1, y)) == 255;
    EXPECT_EQ(frameRow, 2);
    EXPECT_EQ(barColumn, 1);
    // At 100 % the grid changes nothing: the pictures are drawn for it.
    KeelCanvas one(20, 20, 1), oneSnapped(20, 20, 1);
    oneSnapped.painter.snapToPixels(true);
    one.run(picture);
    oneSnapped.run(picture);
    for (std::int32_t y = 0; y < 20; ++y)
        for (std::int32_t x = 0; x < 20; ++x) ASSERT_EQ(one.at(x, y), oneSnapped.at(x, y)) << x << "," << y;
}
