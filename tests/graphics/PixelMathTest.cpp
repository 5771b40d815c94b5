#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "graphics/PixelMath.h"
#include "graphics/PixelRuns.h"

using namespace tw;

namespace {

std::uint32_t channel(std::uint32_t p, int i) { return (p >> (8 * i)) & 0xFFu; }

// A random premultiplied colour.
std::uint32_t randomColour(std::mt19937& rng) {
    const std::uint32_t a = rng() & 0xFF;
    std::uint32_t p = a << 24;
    for (int i = 0; i < 3; ++i) p |= (a == 0 ? 0 : std::uint32_t(rng() % (a + 1))) << (8 * i);
    return p;
}

}  // namespace

TEST(PixelMath, Mul8IsAnExactProductAtTheEndsAndCloseInBetween) {
    for (std::uint32_t a = 0; a < 256; ++a) {
        for (std::uint32_t b = 0; b < 256; ++b) {
            const std::uint32_t m = mul8(a, b);
            ASSERT_LE(std::fabs(double(m) - a * b / 255.0), 1.0) << a << " " << b;
            if (b > 0) {
                ASSERT_GE(m, mul8(a, b - 1));
            }
        }
        EXPECT_EQ(mul8(255, a), a);
        EXPECT_EQ(mul8(a, 255), a);
        EXPECT_EQ(mul8(0, a), 0);
        EXPECT_EQ(mul8(a, 0), 0);
    }
}

TEST(PixelMath, Over32MatchesItsFormulaChannelByChannel) {
    // Every top alpha against every bottom channel value, in all four channels at once:
    // the packed two-channel multiplies must not leak between channels.
    for (std::uint32_t ta = 0; ta < 256; ++ta) {
        const std::uint32_t A = a256(ta);
        for (std::uint32_t cb = 0; cb < 256; ++cb) {
            for (std::uint32_t ct : {ta, ta / 2, 0u}) {
                const std::uint32_t top = (ta << 24) | ct * 0x010101u;
                const std::uint32_t bottom = (std::max(cb, 255u - cb) << 24) | (cb << 16) | ((255 - cb) << 8) | (cb / 3);
                const std::uint32_t r = over32(top, bottom);
                for (int i = 0; i < 4; ++i) {
                    const std::uint32_t t = channel(top, i), b = channel(bottom, i);
                    ASSERT_EQ(channel(r, i), t + b - ((b * A) >> 8)) << std::hex << top << " " << bottom;
                }
            }
        }
    }
    std::mt19937 rng(1);
    for (int i = 0; i < 200000; ++i) {
        const std::uint32_t top = randomColour(rng), bottom = randomColour(rng);
        const std::uint32_t r = over32(top, bottom);
        const std::uint32_t A = a256(top >> 24);
        for (int c = 0; c < 4; ++c) {
            ASSERT_EQ(channel(r, c), channel(top, c) + channel(bottom, c) - ((channel(bottom, c) * A) >> 8));
        }
        ASSERT_LE(channel(r, 0), channel(r, 3));  // stays premultiplied
    }
}

TEST(PixelMath, Over32IsExactForOpaqueAndEmptyTops) {
    std::mt19937 rng(2);
    for (int i = 0; i < 10000; ++i) {
        const std::uint32_t bottom = randomColour(rng);
        const std::uint32_t top = 0xFF000000u | (rng() & 0xFFFFFF);
        EXPECT_EQ(over32(top, bottom), top);
        EXPECT_EQ(over32(0, bottom), bottom);
    }
}

TEST(PixelMath, Scale32AndMul32MatchTheirFormulas) {
    for (std::uint32_t m = 0; m < 256; ++m) {
        for (std::uint32_t c = 0; c < 256; ++c) {
            const std::uint32_t p = (c << 24) | ((255 - c) << 16) | (c << 8) | (c ^ 0x5A);
            const std::uint32_t s = scale32(p, m);
            const std::uint32_t q = (m << 24) | (c << 16) | ((255 - m) << 8) | (m ^ 0xA5);
            const std::uint32_t r = mul32(p, q);
            for (int i = 0; i < 4; ++i) {
                ASSERT_EQ(channel(s, i), (channel(p, i) * a256(m)) >> 8);
                ASSERT_EQ(channel(r, i), (a256(channel(q, i)) * channel(p, i)) >> 8);
            }
        }
    }
    EXPECT_EQ(scale32(0x80402010u, 255), 0x80402010u);
    EXPECT_EQ(mul32(0x80402010u, 0xFFFFFFFFu), 0x80402010u);
}

TEST(PixelMath, AddsSaturatePerByte) {
    for (std::uint32_t a = 0; a < 256; ++a) {
        for (std::uint32_t b = 0; b < 256; ++b) {
            ASSERT_EQ(add8(a, b), std::min(a + b, 255u));
            const std::uint32_t x = (a << 24) | (b << 16) | ((255 - a) << 8) | (a ^ b);
            const std::uint32_t y = (b << 24) | (a << 16) | (b << 8) | (255 - b);
            const std::uint32_t r = add32(x, y);
            for (int i = 0; i < 4; ++i) ASSERT_EQ(channel(r, i), std::min(channel(x, i) + channel(y, i), 255u));
        }
    }
}

TEST(PixelMath, OpaqueTestsAcceptAlpha254ForColourOnly) {
    EXPECT_TRUE(isOpaque(std::uint32_t(0xFE000000u)));
    EXPECT_FALSE(isOpaque(std::uint32_t(0xFDFFFFFFu)));
    EXPECT_TRUE(isOpaque(std::uint8_t(255)));
    EXPECT_FALSE(isOpaque(std::uint8_t(254)));
}

// The run forms against plain loops of the formulas, for every length up to a few SIMD
// steps, with pixels that are not premultiplied (so that carries between channels would
// show) and alphas of 0 and 255 among them, both sides solid or not, and sources that
// overlap the destination before it, on it, or after it: a plain loop reads what it
// wrote when the source trails.
TEST(PixelMath, RunsEqualPlainLoopsOfTheFormulas) {
    std::mt19937 rng(7);
    constexpr std::int32_t kSlack = 8;
    for (std::int32_t n = 0; n <= 21; ++n) {
        for (std::int32_t shift = -kSlack; shift <= kSlack; ++shift) {
            const std::size_t size = std::size_t(n);
            std::vector<std::uint32_t> buffer(size + 3 * kSlack), other(size);
            std::vector<std::uint8_t> mask(size);
            for (auto& p : buffer) p = rng();
            for (auto& p : other) {
                const std::uint32_t kind = rng() % 3;
                p = kind == 0 ? 0xFF000000u | rng() : kind == 1 ? rng() & 0x00FFFFFFu : rng();
            }
            for (auto& m : mask) m = std::uint8_t(rng() % 4 == 0 ? 255 * (rng() % 2) : rng());
            const std::uint32_t solid = rng();
            const std::uint8_t solidMask = std::uint8_t(rng());
            const auto check = [&](const char* what, auto run, auto formula) {
                std::vector<std::uint32_t> got = buffer, want = buffer;
                std::uint32_t* dst = got.data() + kSlack;
                run(got.data() + kSlack + shift, dst);
                std::uint32_t* plain = want.data() + kSlack;
                const std::uint32_t* source = want.data() + kSlack + shift;
                for (std::int32_t k = 0; k < n; ++k) plain[k] = formula(source, k);
                ASSERT_EQ(got, want) << what << " n=" << n << " shift=" << shift;
            };
            check(
                "over, bottom overlapping", [&](const std::uint32_t* src, std::uint32_t* dst) { overRun(other.data(), src, dst, n); },
                [&](const std::uint32_t* src, std::int32_t k) { return over32(other[k], src[k]); });
            check(
                "over, top overlapping", [&](const std::uint32_t* src, std::uint32_t* dst) { overRun(src, other.data(), dst, n); },
                [&](const std::uint32_t* src, std::int32_t k) { return over32(src[k], other[k]); });
            check(
                "over, solid top", [&](const std::uint32_t* src, std::uint32_t* dst) { overRun(solid, src, dst, n); },
                [&](const std::uint32_t* src, std::int32_t k) { return over32(solid, src[k]); });
            check(
                "over, solid bottom", [&](const std::uint32_t* src, std::uint32_t* dst) { overRun(src, solid, dst, n); },
                [&](const std::uint32_t* src, std::int32_t k) { return over32(src[k], solid); });
            check(
                "scale", [&](const std::uint32_t* src, std::uint32_t* dst) { scaleRun(src, mask.data(), dst, n); },
                [&](const std::uint32_t* src, std::int32_t k) { return scale32(src[k], mask[k]); });
            check(
                "scale, solid colour", [&](const std::uint32_t*, std::uint32_t* dst) { scaleRun(solid, mask.data(), dst, n); },
                [&](const std::uint32_t*, std::int32_t k) { return scale32(solid, mask[k]); });
            if (shift == 0) {
                std::vector<std::uint32_t> got = buffer, want = buffer;
                overScaledRun(solid, mask.data(), got.data() + kSlack, n);
                for (std::int32_t k = 0; k < n; ++k) want[kSlack + k] = over32(scale32(solid, mask[k]), want[kSlack + k]);
                ASSERT_EQ(got, want) << "over scaled n=" << n;
            }
            check(
                "scale, solid mask", [&](const std::uint32_t* src, std::uint32_t* dst) { scaleRun(src, solidMask, dst, n); },
                [&](const std::uint32_t* src, std::int32_t k) { return scale32(src[k], solidMask); });
        }
    }
}
