#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "RenderProbe.h"
#include "graphics/PolygonMask.h"

using namespace tw;
using tw::test::probe;
using tw::test::row;

namespace {

const IntRect kClip{-50, -50, 700, 600};

// Sum of all coverage in the mask's bounds, in pixels, rendered in strips of `strip`.
double coverageArea(PolygonMask& mask, std::int32_t strip = 256) {
    const IntRect b = mask.calcBounds();
    double sum = 0;
    for (std::int32_t y = b.top; y < b.bottom(); ++y) {
        for (std::int32_t x = b.left; x < b.right(); x += strip) {
            const std::int32_t n = std::int32_t(std::min<std::int64_t>(strip, b.right() - x));
            for (std::uint8_t v : row(mask, x, y, n)) sum += v;
        }
    }
    return sum / 255;
}

VectorPath square(double x, double y, double size, bool clockwise = true) {
    VectorPath p;
    if (clockwise) {
        p.addRect(x, y, size, size);
    } else {
        p.moveTo(x, y);
        p.lineTo(x, y + size);
        p.lineTo(x + size, y + size);
        p.lineTo(x + size, y);
        p.close();
    }
    return p;
}

}  // namespace

TEST(PolygonMask, PixelAlignedSquareIsExactWithSolidInterior) {
    PolygonMask mask(square(10, 20, 30), kClip, FillRule::nonZero());
    EXPECT_EQ(mask.calcBounds(), (IntRect{10, 20, 30, 30}));
    for (std::int32_t y = 15; y < 55; ++y) {
        const auto a = probe(mask, 0, y, 60);
        for (std::int32_t x = 0; x < 60; ++x) {
            const bool inside = x >= 10 && x < 40 && y >= 20 && y < 50;
            ASSERT_EQ(a.pixels[x], inside ? 255 : 0) << x << "," << y;
        }
        if (y >= 20 && y < 50) {
            // The interior between the edge pixels is one solid opaque span.
            bool found = false;
            for (const Span8& s : a.spans) found |= s.solid() && s.opaque() && s.length() >= 28;
            EXPECT_TRUE(found) << "row " << y;
        }
    }
}

TEST(PolygonMask, RandomPolygonsCoverTheirArea) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> coord(150, 390), radius(5, 150);
    for (int trial = 0; trial < 40; ++trial) {
        // A star-shaped polygon around a random centre: simple, so its area is exact.
        const double cx = coord(rng), cy = coord(rng);
        const int n = 3 + int(rng() % 40);
        VectorPath p;
        double area = 0, px = 0, py = 0, fx = 0, fy = 0;
        for (int i = 0; i < n; ++i) {
            const double angle = 2 * std::numbers::pi * i / n, r = radius(rng);
            const double x = cx + r * std::cos(angle), y = cy + r * std::sin(angle);
            if (i == 0) {
                p.moveTo(x, y);
                fx = x, fy = y;
            } else {
                p.lineTo(x, y);
                area += px * y - x * py;
            }
            px = x, py = y;
        }
        area += px * fy - fx * py;
        p.close();
        area = std::fabs(area) / 2;
        PolygonMask mask(p, kClip, trial % 2 ? FillRule::evenOdd() : FillRule::nonZero());
        const double covered = coverageArea(mask, trial % 3 ? 256 : 37);
        EXPECT_NEAR(covered, area, 0.0005 * area + 1) << "trial " << trial;
    }
}

TEST(PolygonMask, OverlapsFollowTheFillRule) {
    VectorPath twice = square(0, 0, 20);
    twice.append(square(0, 0, 20));
    PolygonMask nonZero(twice, kClip, FillRule::nonZero());
    PolygonMask evenOdd(twice, kClip, FillRule::evenOdd());
    EXPECT_EQ(row(nonZero, 0, 5, 20), std::vector<std::uint8_t>(20, 255));
    EXPECT_EQ(row(evenOdd, 0, 5, 20), std::vector<std::uint8_t>(20, 0));

    VectorPath opposite = square(0, 0, 20);
    opposite.append(square(5, 5, 10, false));
    PolygonMask hole(opposite, kClip, FillRule::nonZero());
    const auto r = row(hole, 0, 10, 20);
    EXPECT_EQ(r[2], 255);
    EXPECT_EQ(r[10], 0);
    VectorPath same = square(0, 0, 20);
    same.append(square(5, 5, 10));
    PolygonMask filled(same, kClip, FillRule::nonZero());
    EXPECT_EQ(row(filled, 0, 10, 20)[10], 255);
}

TEST(PolygonMask, EdgesLeftOfTheClipStillFill) {
    PolygonMask mask(square(0, 0, 100), IntRect{50, 0, 100, 100}, FillRule::nonZero());
    EXPECT_EQ(mask.calcBounds(), (IntRect{50, 0, 50, 100}));
    EXPECT_EQ(row(mask, 50, 40, 50), std::vector<std::uint8_t>(50, 255));
    // Also when the left edge lies left of the strip asked for.
    PolygonMask wide(square(0, 0, 600), kClip, FillRule::nonZero());
    EXPECT_EQ(row(wide, 300, 10, 256), std::vector<std::uint8_t>(256, 255));
}

TEST(PolygonMask, SliversAndSlantsGiveProportionalCoverage) {
    VectorPath sliver;
    sliver.addRect(10.25, 0, 0.5, 10);
    PolygonMask thin(sliver, kClip, FillRule::nonZero());
    EXPECT_NEAR(row(thin, 10, 5, 1)[0], 127, 1);
    // A 45-degree edge through a pixel's corners covers half of each pixel it crosses.
    VectorPath slant;
    slant.moveTo(0, 0);
    slant.lineTo(20, 20);
    slant.lineTo(0, 20);
    slant.close();
    PolygonMask tri(slant, kClip, FillRule::nonZero());
    const auto r = row(tri, 0, 10, 20);
    EXPECT_NEAR(r[10], 127, 1);
    EXPECT_EQ(r[9], 255);
    EXPECT_EQ(r[11], 0);
}

TEST(PolygonMask, EmptyPathsAndRowOrder) {
    VectorPath flat;
    flat.moveTo(0, 5);
    flat.lineTo(50, 5);
    flat.close();
    PolygonMask none(flat, kClip, FillRule::nonZero());
    EXPECT_TRUE(none.calcBounds().isEmpty());
    EXPECT_EQ(probe(none, 0, 5, 100).spans.size(), 1u);
    PolygonMask nothing(VectorPath{}, kClip, FillRule::nonZero());
    EXPECT_EQ(row(nothing, 0, 0, 10), std::vector<std::uint8_t>(10, 0));

    VectorPath circle;
    circle.addCircle(100, 100, 60, 1);
    PolygonMask mask(circle, kClip, FillRule::nonZero());
    const auto later = row(mask, 40, 130, 120);
    const auto earlier = row(mask, 40, 70, 120);  // goes back: the scan restarts
    PolygonMask fresh(circle, kClip, FillRule::nonZero());
    EXPECT_EQ(earlier, row(fresh, 40, 70, 120));
    // Strips of one row in pieces give the same pixels as the whole row.
    const auto whole = row(fresh, 40, 130, 120);
    EXPECT_EQ(whole, later);
    std::vector<std::uint8_t> pieces;
    for (std::int32_t x = 40; x < 160; x += 7) {
        const auto part = row(fresh, x, 131, std::min(7, 160 - x));
        pieces.insert(pieces.end(), part.begin(), part.end());
    }
    PolygonMask again(circle, kClip, FillRule::nonZero());
    EXPECT_EQ(pieces, row(again, 40, 131, 120));
}

TEST(PolygonMask, ManyCrossingEdgesStayLinear) {
    // A zigzag whose edges reverse their order on every row.
    VectorPath zig;
    zig.moveTo(0, 0);
    for (int i = 0; i < 2000; ++i) zig.lineTo(i % 2 ? 0 : 500, i * 0.25);
    zig.close();
    PolygonMask mask(zig, kClip, FillRule::evenOdd());
    const double a = coverageArea(mask);
    EXPECT_GT(a, 0);
}
