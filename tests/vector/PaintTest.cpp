#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <numbers>

#include "graphics/RenderProbe.h"
#include "graphics/SavePicture.h"
#include "tests/Failure.h"
#include "graphics/CanvasTarget.h"
#include "graphics/CoverageChain.h"
#include "graphics/GradientPaint.h"
#include "graphics/LinearRamp8.h"
#include "vector/MaskTarget.h"
#include "vector/PatternTarget.h"
#include "graphics/PolygonMask.h"
#include "graphics/RadialRamp8.h"
#include "graphics/Solid.h"
#include "graphics/SolidPaint.h"
#include "vector/KetchException.h"

using namespace tw;
using tw::test::probe;
using tw::test::row;

namespace {

// Fills a path on a target the way the painter does: closed, masked by coverage, painted.
void fill(VectorPath path, PaintTarget& target, const PaintStyle& style, const Matrix& ctx = {},
          const GammaTable* gamma = nullptr, Renderer8* mask = nullptr) {
    const RealRect shape = path.bounds();
    path.closeAll();
    path.transform(ctx);
    PolygonMask coverage(path, target.getBounds(), FillRule::nonZero());
    CoverageChain chain(coverage, gamma, mask);
    style.paint->draw(style, ctx, target, shape, chain.coverage());
}

PaintStyle styleOf(std::shared_ptr<const Paint> paint, std::uint8_t opacity = 255) {
    PaintStyle s;
    s.paint = std::move(paint);
    s.opacity = opacity;
    return s;
}

}  // namespace

TEST(Tables, GammaLiftsOrLowersPartialCoverageOnly) {
    EXPECT_FALSE(GammaTable::forGamma(1.00005));
    const GammaTable up = *GammaTable::forGamma(2.2), down = *GammaTable::forGamma(0.5);
    EXPECT_EQ(up.table[0], 0);
    EXPECT_EQ(up.table[255], 255);
    EXPECT_EQ(down.table[255], 255);
    EXPECT_GT(up.table[64], 64);
    EXPECT_LT(down.table[64], 64);
    EXPECT_EQ(down.table[64], std::uint8_t(std::floor(std::pow(64 / 255.0, 2) * 255 + 0.5)));
}

TEST(Tables, GradientTablesInterpolateAndHoldTheirEnds) {
    const GradientStop ramp[] = {{0, 0}, {1, 255}};
    const GradientTable8 t(ramp);
    EXPECT_EQ(t.entries[0], 0);
    EXPECT_EQ(t.entries[128], (128 * (0x40000000 / 255) >> 22) * 255 >> 8);
    EXPECT_EQ(t.entries[255], 255);
    const GradientStop middle[] = {{0.25, 0xFF0000FFu}, {0.75, 0x80800000u}};
    const GradientTable32 c(middle);
    EXPECT_EQ(c.entries[0], 0xFF0000FFu);
    EXPECT_EQ(c.entries[63], 0xFF0000FFu);
    EXPECT_EQ(c.entries[192], 0x80800000u);
    EXPECT_EQ(c.entries[255], 0x80800000u);
    EXPECT_FALSE(c.allOpaque);
    EXPECT_TRUE(c.visible);
    const GradientStop none[] = {{0, 0}, {1, 0}};
    EXPECT_FALSE(GradientTable32(none).visible);
}

TEST(Ramps, LinearFlatEndsAreSpansAndRadialPeaksAtTheCentre) {
    LinearRamp8 ramp(100, 0, 65536.0 / 50, 0);  // 0 at x = 100, 255 from x = 150
    const auto a = probe(ramp, 0, 0, 256);
    ASSERT_EQ(a.spans.size(), 3u);
    EXPECT_EQ(a.spans[0].length(), 101);
    EXPECT_TRUE(a.spans[2].solid() && a.spans[2].opaque());
    // The step per pixel is the truncated 16.16 slope, so the middle runs a little slow.
    EXPECT_NEAR(a.pixels[125], 128, 1);
    EXPECT_NEAR(a.spans[2].length(), 256 - 150, 1);
    LinearRamp8 flat(3, 3, 0, 0);  // coincident axis ends: one flat entry
    EXPECT_EQ(probe(flat, -100, 7, 200).spans.size(), 1u);

    RadialRamp8 radial(50, 50, 40, 20);
    EXPECT_EQ(radial.calcBounds(), (IntRect{10, 30, 80, 40}));
    const auto r = row(radial, 0, 49, 100);
    EXPECT_GE(r[49], 245);
    EXPECT_EQ(r[5], 0);
    EXPECT_LT(r[88], 30);
    EXPECT_EQ(row(radial, 0, 75, 100), std::vector<std::uint8_t>(100, 0));
}

TEST(Paints, SolidOnCanvasWithOpacityAndGamma) {
    Raster32 canvas(IntRect{0, 0, 40, 20});
    CanvasTarget target(canvas);
    VectorPath square;
    square.addRect(5, 5, 10, 10);
    fill(square, target, styleOf(std::make_shared<SolidColourPaint>(0xFFFF0000u), 128));
    EXPECT_EQ(*canvas.at(7, 7), scale32(0xFFFF0000u, 128));
    EXPECT_EQ(*canvas.at(20, 7), 0u);
    // Partial coverage is lifted by a gamma above 1.
    VectorPath sliver;
    sliver.addRect(20.5, 5, 10, 10);
    const GammaTable gamma = *GammaTable::forGamma(2);
    fill(sliver, target, styleOf(std::make_shared<SolidColourPaint>(0xFFFFFFFFu)), {}, &gamma);
    EXPECT_EQ(*canvas.at(20, 7) >> 24, gamma.table[128]);  // half covered: 0x8000 >> 8
    EXPECT_EQ(*canvas.at(25, 7), 0xFFFFFFFFu);
}

TEST(Paints, MaskTargetAddsUpAndRefusesBounds) {
    MaskTarget target(IntRect{0, 0, 30, 10});
    VectorPath square;
    square.addRect(0, 0, 20, 10);
    fill(square, target, styleOf(std::make_shared<SolidMaskPaint>(100)));
    fill(square, target, styleOf(std::make_shared<SolidMaskPaint>(100)));
    EXPECT_EQ(row(target.mask(), 0, 5, 30)[3], 200);
    fill(square, target, styleOf(std::make_shared<SolidMaskPaint>(100)));
    EXPECT_EQ(row(target.mask(), 0, 5, 30)[3], 255);
    EXPECT_EQ(row(target.mask(), 0, 5, 30)[25], 0);
    EXPECT_EQ(test::failure<Ketch::Exception>([&] { target.defineBounds(IntRect{0, 0, 1, 1}); }), "Bounds cannot be declared for mask");

    // A mask limits a later fill but never widens it.
    Raster32 canvas(IntRect{0, 0, 30, 10});
    CanvasTarget colour(canvas);
    VectorPath wide;
    wide.addRect(10, 0, 20, 10);
    fill(wide, colour, styleOf(std::make_shared<SolidColourPaint>(0xFFFFFFFFu)), {}, nullptr, &target.mask());
    EXPECT_EQ(*canvas.at(5, 5), 0u);
    EXPECT_EQ(*canvas.at(15, 5), 0xFFFFFFFFu);
    EXPECT_EQ(*canvas.at(25, 5), 0u);
}

TEST(Paints, GradientsFollowTheirAxisAndRadius) {
    Raster32 canvas(IntRect{0, 0, 100, 10});
    CanvasTarget target(canvas);
    VectorPath all;
    all.addRect(0, 0, 100, 10);
    const GradientStop blackToWhite[] = {{0, 0xFF000000u}, {1, 0xFFFFFFFFu}};
    fill(all, target, styleOf(std::make_shared<LinearColourPaint>(Point{20, 0}, Point{80, 0}, blackToWhite)));
    EXPECT_EQ(*canvas.at(10, 3), 0xFF000000u);
    EXPECT_EQ(*canvas.at(90, 3), 0xFFFFFFFFu);
    EXPECT_NEAR(double(*canvas.at(50, 3) & 0xFF), 127, 3);
    // Relative: the axis is in units of the shape's box.
    Raster32 again(IntRect{0, 0, 100, 10});
    CanvasTarget relative(again);
    PaintStyle style = styleOf(std::make_shared<LinearColourPaint>(Point{0.2, 0}, Point{0.8, 0}, blackToWhite));
    style.relative = true;
    fill(all, relative, style);
    EXPECT_EQ(*again.at(50, 3), *canvas.at(50, 3));
    // A radial gradient of radius zero is its outermost stop.
    Raster32 dot(IntRect{0, 0, 10, 10});
    CanvasTarget dotTarget(dot);
    VectorPath small;
    small.addRect(0, 0, 10, 10);
    const GradientStop redToBlue[] = {{0, 0xFFFF0000u}, {1, 0xFF0000FFu}};
    fill(small, dotTarget, styleOf(std::make_shared<RadialColourPaint>(Point{5, 5}, 0, 4, redToBlue)));
    EXPECT_EQ(*dot.at(5, 5), 0xFF0000FFu);
    Raster32 disc(IntRect{0, 0, 40, 40});
    CanvasTarget discTarget(disc);
    VectorPath box;
    box.addRect(0, 0, 40, 40);
    fill(box, discTarget, styleOf(std::make_shared<RadialColourPaint>(Point{20, 20}, 15, 15, redToBlue)));
    EXPECT_GT((*disc.at(20, 20) >> 16) & 0xFF, 240u);
    // Beyond the rim the table's first entry shows, within the ramp's box only.
    EXPECT_EQ(*disc.at(6, 7), 0xFF0000FFu);
    EXPECT_EQ(*disc.at(2, 2), 0u);
}

TEST(Paints, PatternsDeclareBoundsOnceAndTile) {
    PatternTarget early(PaintKind::colour, 2);
    Solid32 red(0xFFFF0000u);
    EXPECT_EQ(test::failure<Ketch::Exception>([&] { early.drawPixels(red); }), "Undeclared bounds");
    EXPECT_FALSE(early.makePaint()->isVisible());
    EXPECT_EQ(test::failure<Ketch::Exception>([&] { early.defineBounds(IntRect{0, 0, 0, 4}); }), "Value out of range");
    early.defineBounds(IntRect{0, 0, 4, 4});
    EXPECT_EQ(early.getBounds(), (IntRect{0, 0, 8, 8}));
    EXPECT_EQ(test::failure<Ketch::Exception>([&] { early.defineBounds(IntRect{0, 0, 4, 4}); }), "Multiple bounds declarations");
    EXPECT_EQ(PatternTarget::resolutionFor(Matrix::scale(1.5, 0.5), 1), 2);
    EXPECT_EQ(PatternTarget::resolutionFor(Matrix::scale(0.1, 0.1), 1), 1);

    // A 4x4 tile whose top-left quarter is red, drawn at resolution 2, tiles the canvas.
    PatternTarget tile(PaintKind::colour, 2);
    tile.defineBounds(IntRect{0, 0, 4, 4});
    VectorPath quarter;
    quarter.addRect(0, 0, 2, 2);
    fill(quarter, tile, styleOf(std::make_shared<SolidColourPaint>(0xFFFF0000u)), Matrix::scale(2, 2));
    Raster32 canvas(IntRect{0, 0, 16, 16});
    CanvasTarget target(canvas);
    VectorPath all;
    all.addRect(0, 0, 16, 16);
    fill(all, target, styleOf(tile.makePaint()));
    for (std::int32_t y = 0; y < 16; ++y) {
        for (std::int32_t x = 0; x < 16; ++x) {
            ASSERT_EQ(*canvas.at(x, y), x % 4 < 2 && y % 4 < 2 ? 0xFFFF0000u : 0u) << x << "," << y;
        }
    }
}

// Pictures to look at: build/pictures/graphics/*.png.
TEST(Pictures, StarGradientAndPattern) {
    const Matrix ctx = Matrix::identity();
    {
        Raster32 canvas(IntRect{0, 0, 240, 240});
        CanvasTarget target(canvas);
        VectorPath star;
        star.addStar(120, 125, 10, 100, 42, 0);
        const GradientStop gold[] = {{0, 0xFFFFE680u}, {1, 0xFFC06000u}};
        fill(star, target, styleOf(std::make_shared<RadialColourPaint>(Point{120, 110}, 90, 90, gold)));
        star.stroke(9, StrokeCaps::round, StrokeJoints::miter, 4, 1);
        PolygonMask outline(star, canvas.bounds(), FillRule::nonZero());
        const PaintStyle pen = styleOf(std::make_shared<SolidColourPaint>(0xFF203060u));
        pen.paint->draw(pen, ctx, target, {}, outline);
        VectorPath spiral;
        spiral.moveTo(120, 125);
        for (int i = 1; i < 200; ++i) {
            const double a = i * 0.12, r = i * 0.45;
            spiral.lineTo(120 + r * std::cos(a), 125 + r * std::sin(a));
        }
        spiral.dash(7, 5, 0);
        spiral.stroke(2.5, StrokeCaps::butt, StrokeJoints::curve, 2, 1);
        PolygonMask dashes(spiral, canvas.bounds(), FillRule::nonZero());
        const PaintStyle thin = styleOf(std::make_shared<SolidColourPaint>(0xC0FFFFFFu));
        thin.paint->draw(thin, ctx, target, {}, dashes);
        test::savePicture("stroked-star.png", canvas);
    }
    {
        Raster32 canvas(IntRect{0, 0, 525, 475});
        CanvasTarget target(canvas);
        VectorPath all;
        all.addRoundedRect(10, 10, 505, 455, 30, 30, 1);
        const GradientStop sky[] = {{0, 0xFF102040u}, {0.6, 0xFF4080C0u}, {1, 0xFFF0E0A0u}};
        PaintStyle style = styleOf(std::make_shared<LinearColourPaint>(Point{0, 0}, Point{0.3, 1}, sky));
        style.relative = true;
        fill(all, target, style);
        VectorPath sun;
        sun.addCircle(380, 330, 70, 1);
        const GradientStop glow[] = {{0, 0xFFFFFFFFu}, {0.5, 0xC0C0A040u}, {1, 0}};
        fill(sun, target, styleOf(std::make_shared<RadialColourPaint>(Point{380, 330}, 70, 70, glow)));
        test::savePicture("gradient.png", canvas);
    }
    {
        PatternTarget tile(PaintKind::colour, 1);
        tile.defineBounds(IntRect{0, 0, 24, 24});
        VectorPath check;
        check.addRect(0, 0, 12, 12);
        check.addRect(12, 12, 12, 12);
        fill(check, tile, styleOf(std::make_shared<SolidColourPaint>(0xFF304050u)));
        VectorPath dot;
        dot.addCircle(18, 6, 4, 1);
        fill(dot, tile, styleOf(std::make_shared<SolidColourPaint>(0xFFE08020u)));
        Raster32 canvas(IntRect{0, 0, 300, 200});
        CanvasTarget target(canvas);
        VectorPath blob;
        blob.addEllipse(150, 100, 140, 90, 1);
        PaintStyle style = styleOf(tile.makePaint());
        style.matrix = compose(Matrix::rotate(0.4), Matrix::scale(1.5, 1.5));
        fill(blob, target, style);
        test::savePicture("pattern.png", canvas);
    }
}
