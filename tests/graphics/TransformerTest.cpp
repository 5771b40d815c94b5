#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "RenderProbe.h"
#include "graphics/Transformer.h"

using namespace tw;
using tw::test::probe;
using tw::test::row;

namespace {

Raster32 picture(const IntRect& bounds, bool opaque) {
    Raster32 r(bounds, opaque);
    std::mt19937 rng(5);
    for (std::int32_t y = bounds.top; y < bounds.bottom(); ++y) {
        for (std::int32_t x = bounds.left; x < bounds.right(); ++x) {
            const std::uint32_t a = opaque ? 255 : rng() % 256;
            *r.at(x, y) = (a << 24) | (a ? (rng() % (a + 1)) * 0x010101u & 0xFFFFFF : 0);
        }
    }
    return r;
}

std::int64_t fixed(double v) { return std::int64_t(std::floor((v + 1.1641532182693481e-10) * 4294967296.0)); }

// Straightforward bilinear sampling at pixel centres, vertical then horizontal,
// transparent outside the source, with the sample positions in 32.32 fixed point.
std::uint32_t reference(const Raster32& source, const Matrix& inverse, std::int32_t x, std::int32_t y) {
    const double* m = inverse.m;
    const IntRect& b = source.bounds();
    const std::int64_t fx0 = fixed(m[0] * 0.5 + m[1] * 0.5 + m[2] - 0.5 - b.left) + x * fixed(m[0]) + y * fixed(m[1]);
    const std::int64_t fy0 = fixed(m[3] * 0.5 + m[4] * 0.5 + m[5] - 0.5 - b.top) + x * fixed(m[3]) + y * fixed(m[4]);
    const std::int64_t ix = fx0 >> 32, iy = fy0 >> 32;
    const std::uint32_t fx = std::uint32_t(fx0 >> 24) & 255, fy = std::uint32_t(fy0 >> 24) & 255;
    const auto at = [&](std::int64_t i, std::int64_t j) -> std::uint32_t {
        if (i < 0 || j < 0 || i >= b.width || j >= b.height) return 0;
        return *source.at(b.left + std::int32_t(i), b.top + std::int32_t(j));
    };
    std::uint32_t r = 0;
    for (int c = 0; c < 32; c += 8) {
        const auto ch = [&](std::uint32_t v) { return (v >> c) & 255; };
        const std::uint32_t left = (ch(at(ix, iy)) * (256 - fy) + ch(at(ix, iy + 1)) * fy) >> 8;
        const std::uint32_t right = (ch(at(ix + 1, iy)) * (256 - fy) + ch(at(ix + 1, iy + 1)) * fy) >> 8;
        r |= ((left * (256 - fx) + right * fx) >> 8) << c;
    }
    return r;
}

}  // namespace

TEST(Transformer, ModesFollowTheMatrix) {
    Raster32 src = picture(IntRect{0, 0, 20, 10}, false);
    EXPECT_EQ(Transformer32(src, false, Matrix::scale(0, 1)).mode(), Transformer32::nothing);
    EXPECT_EQ(Transformer32(src, false, Matrix::translate(3, -2)).mode(), Transformer32::offset);
    EXPECT_EQ(Transformer32(src, false, Matrix::scale(1, -1)).mode(), Transformer32::nearest);
    EXPECT_EQ(Transformer32(src, false, Matrix::rotate(std::numbers::pi / 2)).mode(), Transformer32::nearest);
    EXPECT_EQ(Transformer32(src, false, Matrix::translate(0.5, 0)).mode(), Transformer32::horizontal);
    EXPECT_EQ(Transformer32(src, false, Matrix::scale(3, 3)).mode(), Transformer32::magnified);
    EXPECT_EQ(Transformer32(src, false, Matrix{{0.4, 0, 0, 0, 1, 0}}).mode(), Transformer32::horizontal);
    EXPECT_EQ(Transformer32(src, false, Matrix{{1, 0, 0, 0, 0.4, 0}}).mode(), Transformer32::vertical);
    // Pixel centres map to pixel centres: halving samples between two source pixels.
    EXPECT_EQ(Transformer32(src, false, Matrix::scale(0.5, 0.5)).mode(), Transformer32::bilinear);
    EXPECT_EQ(Transformer32(src, false, Matrix::rotate(0.3)).mode(), Transformer32::bilinear);
}

TEST(Transformer, SingularMatrixIsTransparentAndIdentityCopiesNothing) {
    Raster32 src = picture(IntRect{5, 5, 20, 10}, true);
    Transformer32 none(src, false, Matrix::scale(1e-5, 1e-5));
    EXPECT_TRUE(none.calcBounds().isEmpty());
    EXPECT_EQ(row(none, 0, 6, 30), std::vector<std::uint32_t>(30, 0));
    Transformer32 same(src, false, Matrix::identity());
    const auto a = probe(same, 0, 7, 40);
    ASSERT_EQ(a.spans.size(), 3u);
    EXPECT_EQ(a.spans[1].pixels, src.at(5, 7));
    EXPECT_TRUE(a.spans[1].opaque());
    EXPECT_EQ(a.spans[1].length(), 20);
}

TEST(Transformer, EveryModeMatchesPlainBilinearSampling) {
    Raster32 src = picture(IntRect{-7, 3, 37, 23}, false);
    const Matrix matrices[] = {
        Matrix::translate(4, 2),           Matrix::translate(4.5, 2),       Matrix::translate(4, 2.25),
        Matrix{{0.5, 0, 3, 0, 0.5, 1}},    Matrix{{2.5, 0, -3, 0, 1.7, 2}}, Matrix{{-1, 0, 60, 0, 1.5, 0}},
        Matrix{{0.4, 0, 10, 0, 1, 0}},     Matrix{{1, 0, 0, 0, 0.3, 5}},    compose(Matrix::translate(20, 10), Matrix::rotate(0.7)),
        Matrix{{1.3, 0.4, -5, -0.2, 0.9, 8}},
    };
    for (const Matrix& m : matrices) {
        Transformer32 t(src, false, m);
        Matrix inverse;
        ASSERT_TRUE(m.invert(inverse));
        const IntRect b = t.calcBounds();
        for (std::int32_t y = b.top - 1; y <= b.bottom(); ++y) {
            for (std::int32_t x = b.left - 3; x < b.right() + 3; x += 61) {
                const auto got = row(t, x, y, 61);
                for (std::int32_t i = 0; i < 61; ++i) {
                    ASSERT_EQ(got[i], reference(src, inverse, x + i, y)) << "mode " << t.mode() << " at " << x + i << "," << y;
                }
            }
        }
    }
}

TEST(Transformer, WrapTilesAcrossNegativeCoordinates) {
    Raster32 tile = picture(IntRect{0, 0, 7, 5}, true);
    Transformer32 t(tile, true, Matrix::translate(3, 1));
    EXPECT_EQ(t.calcBounds(), FullRect);
    for (std::int32_t y = -12; y < 12; ++y) {
        const auto a = probe(t, -40, y, 80);
        for (std::int32_t i = 0; i < 80; ++i) {
            const std::int32_t sx = ((-40 + i - 3) % 7 + 7) % 7, sy = ((y - 1) % 5 + 5) % 5;
            ASSERT_EQ(a.pixels[i], *tile.at(sx, sy)) << -40 + i << "," << y;
        }
        for (const Span32& s : a.spans) EXPECT_GE(s.pixels, tile.at(0, 0));  // no copies
    }
    // Bilinear wrapping blends the last column with the first.
    Transformer32 half(tile, true, Matrix::translate(0.5, 0));
    const auto h = row(half, -7, 0, 14);
    const auto expected = [&](std::int32_t a, std::int32_t b) {
        std::uint32_t r = 0;
        for (int c = 0; c < 32; c += 8) r |= ((((*tile.at(a, 0) >> c) & 255) * 128 + ((*tile.at(b, 0) >> c) & 255) * 128) >> 8) << c;
        return r;
    };
    EXPECT_EQ(h[7], expected(6, 0));
    EXPECT_EQ(h[0], expected(6, 0));
    EXPECT_EQ(h[1], expected(0, 1));

    Raster8 mask(IntRect{0, 0, 4, 4});
    *mask.at(1, 2) = 200;
    Transformer8 m(mask, Matrix::translate(-1, -2));
    EXPECT_EQ(row(m, -8, -4, 9), (std::vector<std::uint8_t>{200, 0, 0, 0, 200, 0, 0, 0, 200}));
}
