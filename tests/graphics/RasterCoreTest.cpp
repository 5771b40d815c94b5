#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "RenderProbe.h"
#include "graphics/Adder.h"
#include "graphics/Blender.h"
#include "graphics/Clipper.h"
#include "graphics/Converter8to32.h"
#include "graphics/GammaFilter8.h"
#include "graphics/Inverter.h"
#include "graphics/Lookup8to32.h"
#include "graphics/Multiplier.h"
#include "graphics/Offsetter.h"
#include "graphics/Optimizer.h"
#include "graphics/RLERaster.h"
#include "graphics/Rasterize.h"
#include "graphics/Solid.h"

using namespace tw;
using tw::test::probe;
using tw::test::row;

namespace {

// A picture with flat stretches, opaque stretches, transparent holes and noise, so that
// compressed and optimised forms of it answer every kind of span.
template <class Pixel>
Raster<Pixel> patchwork(const IntRect& bounds, std::uint32_t seed) {
    Raster<Pixel> r(bounds);
    std::mt19937 rng(seed);
    for (std::int32_t y = bounds.top; y < bounds.bottom(); ++y) {
        Pixel* p = r.at(bounds.left, y);
        for (std::int32_t x = 0; x < bounds.width;) {
            const std::int32_t n = std::min<std::int32_t>(1 + rng() % 40, bounds.width - x);
            const int kind = rng() % 4;
            Pixel flat = 0;
            for (std::int32_t k = 0; k < n; ++k) {
                Pixel v = 0;
                if constexpr (sizeof(Pixel) == 4) {
                    const std::uint32_t a = kind == 1 ? 255 : rng() % 256;
                    v = (a << 24) | (a ? (rng() % (a + 1)) * 0x010101u & 0xFFFFFF : 0);
                } else {
                    v = Pixel(kind == 1 ? 255 : rng() % 256);
                }
                if (kind == 0) v = 0;
                if (kind == 2) v = k == 0 ? (flat = v) : flat;
                p[x + k] = v;
            }
            x += n;
        }
    }
    return r;
}

// Records the requests it is asked, answering transparent.
template <class Pixel>
class Spy : public Renderer<Pixel> {
public:
    IntRect calcBounds() const override { return FullRect; }
    void render(std::int32_t x, std::int32_t, std::int32_t length, SpanBuffer<Pixel>& out) override {
        for (std::int32_t i = 0; i < length; ++i) asked.push_back(x + i);
        out.appendSolidValue(length, Pixel(0x33));
    }
    std::vector<std::int32_t> asked;
};

// Answers one solid one-pixel span per pixel: it drives RLE runs to any length.
class OnePixelSpans : public Renderer8 {
public:
    IntRect calcBounds() const override { return FullRect; }
    void render(std::int32_t, std::int32_t, std::int32_t length, SpanBuffer8& out) override {
        for (std::int32_t i = 0; i < length; ++i) out.appendSolid(1, &value_);
    }

private:
    std::uint8_t value_ = 7;
};

}  // namespace

TEST(IntRect, UnionIgnoresEmptyAndIntersectionOfDisjointIsZero) {
    const IntRect a{0, 0, 10, 10}, b{20, 5, 5, 5}, empty{100, 100, 0, 4};
    EXPECT_EQ(unionOf(a, empty), a);
    EXPECT_EQ(unionOf(empty, b), b);
    EXPECT_EQ(unionOf(a, b), (IntRect{0, 0, 25, 10}));
    EXPECT_EQ(intersectionOf(a, b), IntRect{});
    EXPECT_EQ(intersectionOf(a, IntRect{5, -5, 10, 8}), (IntRect{5, 0, 5, 3}));
    EXPECT_EQ(intersectionOf(FullRect, a), a);
    EXPECT_EQ(unionOf(FullRect, a), FullRect);
    EXPECT_EQ(FullRect.left, -1073741824);
    EXPECT_EQ(FullRect.width, 2147483647);
}

TEST(Renderers, SolidsAndRectsAnswerFewSpans) {
    Solid32 solid(0xFE000000u);
    const auto a = probe(solid, -5, 3, 256);
    ASSERT_EQ(a.spans.size(), 1u);
    EXPECT_TRUE(a.spans[0].solid() && a.spans[0].opaque());

    SolidRect32 rect(0x80402010u, IntRect{10, 0, 20, 5});
    const auto b = probe(rect, 0, 2, 40);
    ASSERT_EQ(b.spans.size(), 3u);
    EXPECT_EQ(b.spans[1].length(), 20);
    EXPECT_EQ(b.pixels[10], 0x80402010u);
    EXPECT_EQ(b.pixels[30], 0u);
    EXPECT_EQ(probe(rect, 0, 5, 40).spans.size(), 1u);  // row outside
}

TEST(Renderers, RasterSpansPointIntoItsPixels) {
    Raster32 r(IntRect{-4, -2, 8, 4});
    *r.at(0, 0) = 0xFF112233u;
    const auto a = probe(r, -10, 0, 20);
    ASSERT_EQ(a.spans.size(), 3u);
    EXPECT_EQ(a.spans[1].pixels, r.at(-4, 0));
    EXPECT_EQ(a.pixels[10], 0xFF112233u);
    EXPECT_EQ(probe(r, -10, 2, 20).spans.size(), 1u);
    EXPECT_THROW(Raster32(IntRect{0, 0, 70000, 70000}), std::bad_alloc);

    Raster32 empty;
    const auto e = probe(empty, 0, 0, 256);
    ASSERT_EQ(e.spans.size(), 1u);
    EXPECT_TRUE(e.spans[0].solid());
    EXPECT_EQ(e.pixels[0], 0u);
}

TEST(Renderers, RasterizeCopiesOnceAndWritesInPlace) {
    const IntRect bounds{3, 1, 600, 7};
    Raster32 source = patchwork<std::uint32_t>(bounds, 5);
    Raster32 copy(IntRect{0, 0, 700, 10});
    rasterize32(source, copy);
    for (std::int32_t y = 1; y < 8; ++y) {
        for (std::int32_t x = 3; x < 603; ++x) ASSERT_EQ(*copy.at(x, y), *source.at(x, y));
    }
    EXPECT_EQ(*copy.at(2, 1), 0u);
    // A raster drawn over itself: every span already lies at its destination.
    Blender32 self(source, source);
    Raster32 expected = patchwork<std::uint32_t>(bounds, 5);
    rasterize32(self, source);
    for (std::int32_t x = 3; x < 603; ++x) ASSERT_EQ(*source.at(x, 4), over32(*expected.at(x, 4), *expected.at(x, 4)));
}

// Drawing over a raster in place gives what rasterising a blender over it gives, also
// for tops that read the destination itself elsewhere in the row, where the order of
// writes shows: the destination is opaque, and a top copies some of it (through full
// coverage) next to pixels it blends.
TEST(Renderers, BlendingOntoARasterEqualsRasterisingABlender) {
    const IntRect bounds{-20, 0, 600, 9};
    Raster32 picture = patchwork<std::uint32_t>(IntRect{-100, 2, 500, 6}, 42);
    Raster8 maskPixels = patchwork<std::uint8_t>(IntRect{-30, -3, 600, 20}, 43);
    Optimizer8 mask(maskPixels);  // with opaque runs, so that full coverage passes pixels on
    SolidRect32 rect(0x80FF0000u, IntRect{5, 1, 200, 4});
    // Pictures that hold whole rows of the canvas, translucent and opaque, go a row at
    // a time.
    Raster32 wide = patchwork<std::uint32_t>(IntRect{-40, -2, 700, 14}, 44);
    Raster32 opaquePixels = patchwork<std::uint32_t>(IntRect{-40, -2, 700, 14}, 45);
    for (std::int32_t y = -2; y < 12; ++y) {
        for (std::int32_t x = -40; x < 660; ++x) *opaquePixels.at(x, y) |= 0xFF000000u;
    }
    Raster32 wideOpaque(opaquePixels.at(-40, -2), opaquePixels.stride(), IntRect{-40, -2, 700, 14}, true);
    // Inks: translucent, opaque, opaque by the 254 rule, none; the ink kind draws the
    // colour through the coverage in one pass.
    const std::uint32_t inks[] = {0xC0604020u, 0xFF102030u, 0xFE0A0B0Cu, 0u};
    for (const IntRect& clip : {FullRect, IntRect{7, 1, 300, 5}}) {
        for (std::int32_t dx : {-300, -40, -3, 0, 2, 40}) {
            for (int kind = 0; kind < 10; ++kind) {
                Solid32 ink(inks[std::clamp(kind - 3, 0, 3)]);
                Raster32 results[2];
                for (int way = 0; way < 2; ++way) {
                    Raster32 canvas = patchwork<std::uint32_t>(bounds, 41);
                    for (std::int32_t y = bounds.top; y < bounds.bottom(); ++y) {
                        for (std::int32_t x = bounds.left; x < bounds.right(); ++x) *canvas.at(x, y) |= 0xFF000000u;
                    }
                    Raster32 view(canvas.at(bounds.left, bounds.top), canvas.stride(), bounds, true);
                    Offsetter32 shifted(view, dx, 0);
                    Multiplier32x8 inked(ink, mask);
                    Multiplier32x8 masked(shifted, mask);
                    // The canvas itself, moved: a picture in the destination's memory,
                    // which must not be read after it was written.
                    Raster32 moved(canvas.at(bounds.left, bounds.top), canvas.stride(),
                                   IntRect{bounds.left + dx, bounds.top, bounds.width, bounds.height}, true);
                    Renderer32* tops[] = {&picture, &masked, &rect, &inked, &inked, &inked, &inked, &wide, &wideOpaque, &moved};
                    if (way == 0) {
                        Blender32 over(*tops[kind], canvas);
                        rasterize32(over, canvas, clip);
                    } else {
                        blend32(*tops[kind], canvas, clip);
                    }
                    results[way] = std::move(canvas);
                }
                for (std::int32_t y = bounds.top; y < bounds.bottom(); ++y) {
                    for (std::int32_t x = bounds.left; x < bounds.right(); ++x) {
                        ASSERT_EQ(*results[1].at(x, y), *results[0].at(x, y)) << kind << " " << dx << " at " << x << "," << y;
                    }
                }
            }
        }
    }
}

TEST(RLERaster, ReadsBackTheSameInAnyOrderOfRequests) {
    const IntRect bounds{-300, 10, 700, 12};
    Raster32 picture = patchwork<std::uint32_t>(bounds, 9);
    Optimizer32 optimizer(picture);
    RLERaster32 rle(optimizer, bounds);
    EXPECT_LT(rle.runs().size(), std::size_t(700 * 12 / 3));
    std::mt19937 rng(3);
    for (int i = 0; i < 3000; ++i) {
        const std::int32_t y = bounds.top - 1 + std::int32_t(rng() % (bounds.height + 2));
        const std::int32_t length = 1 + std::int32_t(rng() % 256);
        const std::int32_t x = bounds.left - 300 + std::int32_t(rng() % 1100);
        const auto got = row(rle, x, y, length);
        const auto want = row(picture, x, y, length);
        ASSERT_EQ(got, want) << "request " << x << "," << y << " +" << length;
    }
}

TEST(RLERaster, RunsStopAt0x3FFFAndJoinAcrossStrips) {
    OnePixelSpans ones;
    RLERaster8 rle(ones, IntRect{0, 0, 0x3FFF + 300, 2});
    ASSERT_EQ(rle.runs().size(), 4u);
    EXPECT_EQ(rle.runs()[0], 0x8000 | 0x3FFF);
    EXPECT_EQ(rle.runs()[1], 0x8000 | 300);
    const auto a = probe(rle, 0x3FFF - 100, 1, 200);
    ASSERT_EQ(a.spans.size(), 2u);
    EXPECT_EQ(a.spans[0].length(), 100);

    Solid8 flat(9);
    Clipper8 clipped(flat, IntRect{0, 0, 1000, 3});
    RLERaster8 wide(clipped, IntRect{0, 0, 1000, 3});
    EXPECT_EQ(wide.runs().size(), 3u);  // one run per row, across four strips
    // Reading backwards in x, and switching rows, restart from the row's beginning.
    EXPECT_EQ(row(wide, 900, 1, 100), std::vector<std::uint8_t>(100, 9));
    EXPECT_EQ(row(wide, 0, 1, 10), std::vector<std::uint8_t>(10, 9));
    EXPECT_EQ(row(wide, 990, 2, 20), (std::vector<std::uint8_t>{9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Renderers, ClipperAndOffsetterMoveAndCut) {
    Raster8 r = patchwork<std::uint8_t>(IntRect{0, 0, 50, 5}, 4);
    Clipper8 clip(r, IntRect{10, 1, 20, 2});
    EXPECT_EQ(clip.calcBounds(), (IntRect{10, 1, 20, 2}));
    const auto c = row(clip, 0, 1, 50);
    for (std::int32_t x = 0; x < 50; ++x) EXPECT_EQ(c[x], x >= 10 && x < 30 ? *r.at(x, 1) : 0);
    EXPECT_EQ(row(clip, 0, 3, 50), std::vector<std::uint8_t>(50, 0));
    Offsetter8 moved(r, -7, 3);
    EXPECT_EQ(moved.calcBounds(), (IntRect{-7, 3, 50, 5}));
    EXPECT_EQ(row(moved, -7, 4, 50), row(r, 0, 1, 50));
}

// One combinator against its pixel formula, for requests at random positions.
template <class Make, class Formula, class A, class B>
void checkPair(Renderer<A>& a, Renderer<B>& b, Make make, Formula formula) {
    auto combined = make(a, b);
    std::mt19937 rng(11);
    for (std::int32_t y = -2; y < 14; ++y) {
        for (std::int32_t x = -300; x < 700;) {
            const std::int32_t length = 1 + std::int32_t(rng() % 256);
            const auto got = probe(combined, x, y, length).pixels;
            const auto pa = row(a, x, y, length);
            const auto pb = row(b, x, y, length);
            for (std::int32_t i = 0; i < length; ++i) {
                ASSERT_EQ(got[i], formula(pa[i], pb[i])) << "at " << x + i << "," << y;
            }
            x += length;
        }
    }
}

// Every combinator on inputs that answer all kinds of spans (compressed pictures), and
// on the inputs a combiner answers itself (plain pictures and solids, alone or mixed).
template <class Make, class Formula, class A, class B>
void checkCombinator(Raster<A>& a, Raster<B>& b, A solidA, B solidB, Make make, Formula formula) {
    Optimizer<A> oa(a);
    Optimizer<B> ob(b);
    RLERaster<A> ra(oa, a.bounds());
    RLERaster<B> rb(ob, b.bounds());
    Solid<A> sa(solidA);
    Solid<B> sb(solidB);
    checkPair(ra, rb, make, formula);
    checkPair(a, b, make, formula);
    checkPair(ra, b, make, formula);
    checkPair(a, rb, make, formula);
    checkPair(sa, b, make, formula);
    checkPair(a, sb, make, formula);
    checkPair(sa, rb, make, formula);
}

TEST(Combinators, EveryPixelFollowsTheFormula) {
    Raster32 a = patchwork<std::uint32_t>(IntRect{-200, 0, 500, 10}, 21);
    Raster32 b = patchwork<std::uint32_t>(IntRect{-100, 2, 600, 10}, 22);
    Raster8 m = patchwork<std::uint8_t>(IntRect{-150, 1, 550, 12}, 23);
    Raster8 n = patchwork<std::uint8_t>(IntRect{0, -1, 400, 8}, 24);
    Raster8 opaqueMask = patchwork<std::uint8_t>(IntRect{-150, 1, 550, 12}, 25);
    for (std::int32_t y = 1; y < 13; ++y) std::fill_n(opaqueMask.at(-150, y), 550, std::uint8_t(255));
    Raster32 opaque(IntRect{-200, 0, 500, 10}, true);
    for (std::int32_t y = 0; y < 10; ++y) {
        for (std::int32_t x = -200; x < 300; ++x) *opaque.at(x, y) = 0xFF000000u | std::uint32_t(x * 7919 + y);
    }
    const auto over = [](auto& x, auto& y) { return Blender32(x, y); };
    const auto scale = [](auto& x, auto& y) { return Multiplier32x8(x, y); };
    for (std::uint32_t solid : {0x80402010u, 0u, 0xFF123456u}) {
        checkCombinator(a, b, solid, solid, over, [](std::uint32_t t, std::uint32_t u) { return over32(t, u); });
        checkCombinator(opaque, b, solid, solid, over, [](std::uint32_t t, std::uint32_t u) { return over32(t, u); });
        checkCombinator(a, b, solid, solid, [](auto& x, auto& y) { return Adder32(x, y); },
                        [](std::uint32_t t, std::uint32_t u) { return add32(t, u); });
        checkCombinator(a, b, solid, solid, [](auto& x, auto& y) { return Multiplier32x32(x, y); },
                        [](std::uint32_t t, std::uint32_t u) { return mul32(t, u); });
    }
    for (std::uint8_t solid : {std::uint8_t(0), std::uint8_t(100), std::uint8_t(255)}) {
        checkCombinator(a, m, 0x80402010u, solid, scale, [](std::uint32_t t, std::uint8_t u) { return scale32(t, u); });
        checkCombinator(a, opaqueMask, 0xFFFFFFFFu, solid, scale, [](std::uint32_t t, std::uint8_t u) { return scale32(t, u); });
        checkCombinator(m, n, solid, solid, [](auto& x, auto& y) { return Blender8(x, y); },
                        [](std::uint8_t t, std::uint8_t u) { return add8(t, u); });
        checkCombinator(m, n, solid, solid, [](auto& x, auto& y) { return Adder8(x, y); },
                        [](std::uint8_t t, std::uint8_t u) { return add8(t, u); });
        checkCombinator(m, n, solid, solid, [](auto& x, auto& y) { return Multiplier8x8(x, y); },
                        [](std::uint8_t t, std::uint8_t u) { return mul8(t, u); });
    }
}

TEST(Combinators, AnOpaqueTopNeverAsksTheBottom) {
    Spy<std::uint32_t> bottom;
    Solid32 nearlyOpaque(0xFE102030u);
    Blender32 all(nearlyOpaque, bottom);
    const auto a = probe(all, 0, 0, 256);
    EXPECT_TRUE(bottom.asked.empty());
    EXPECT_EQ(a.pixels[17], 0xFE102030u);

    SolidRect32 left(0xFF00FF00u, IntRect{0, 0, 100, 1});
    SolidRect32 right(0xFF0000FFu, IntRect{200, 0, 100, 1});
    Blender32 both(left, right);
    Blender32 top(both, bottom);
    probe(top, 0, 0, 256);
    ASSERT_FALSE(bottom.asked.empty());
    EXPECT_EQ(bottom.asked.front(), 100);
    EXPECT_EQ(bottom.asked.back(), 199);
    EXPECT_EQ(bottom.asked.size(), 100u);
}

TEST(Combinators, BoundsLetWholeRowsSkipAnInput) {
    Spy<std::uint8_t> far;
    Clipper8 clipped(far, IntRect{0, 100, 10, 10});
    Solid8 half(128);
    Blender8 b(half, clipped);
    EXPECT_EQ(row(b, 0, 0, 50), std::vector<std::uint8_t>(50, 128));
    EXPECT_TRUE(far.asked.empty());
    // A multiplier is transparent outside the intersection and never asks there.
    Multiplier8x8 m(half, clipped);
    EXPECT_EQ(row(m, 20, 100, 50), std::vector<std::uint8_t>(50, 0));
    EXPECT_TRUE(far.asked.empty());
    // A first input of full coverage hands the request straight to the second.
    Solid8 full(255);
    Multiplier8x8 pass(full, clipped);
    row(pass, 0, 101, 10);
    EXPECT_EQ(far.asked.size(), 10u);
}

TEST(Filters, MapPixelsAndKeepSolidSpansSolid) {
    Raster8 m = patchwork<std::uint8_t>(IntRect{0, 0, 300, 2}, 31);
    Optimizer8 om(m);
    RLERaster8 rm(om, m.bounds());
    Inverter8 inv(rm);
    Converter8to32 grey(rm);
    std::uint8_t gammaTable[256];
    std::uint32_t colours[256];
    for (int i = 0; i < 256; ++i) {
        gammaTable[i] = std::uint8_t(255 - i / 2);
        colours[i] = 0xFF000000u | std::uint32_t(i);
    }
    GammaFilter8 gamma(rm, gammaTable);
    Lookup8to32 lookup(rm, colours, true);
    EXPECT_EQ(inv.calcBounds(), FullRect);
    EXPECT_EQ(gamma.calcBounds(), FullRect);  // the table lifts 0
    gammaTable[0] = 0;
    GammaFilter8 tight(rm, gammaTable);
    EXPECT_EQ(tight.calcBounds(), m.bounds());
    for (std::int32_t x = 0; x < 300; x += 100) {
        const auto source = probe(rm, x, 1, 100);
        const auto i = probe(inv, x, 1, 100);
        const auto g = probe(grey, x, 1, 100);
        const auto l = probe(lookup, x, 1, 100);
        EXPECT_EQ(source.spans.size(), i.spans.size());
        for (std::size_t k = 0; k < source.spans.size(); ++k) {
            EXPECT_EQ(source.spans[k].solid(), i.spans[k].solid());
            EXPECT_EQ(source.spans[k].solid(), l.spans[k].solid());
            if (!l.spans[k].solid()) {
                EXPECT_TRUE(l.spans[k].opaque());
            }
        }
        for (std::int32_t k = 0; k < 100; ++k) {
            EXPECT_EQ(i.pixels[k], std::uint8_t(~source.pixels[k]));
            EXPECT_EQ(g.pixels[k], source.pixels[k] * 0x01010101u);
            EXPECT_EQ(l.pixels[k], colours[source.pixels[k]]);
        }
    }
}

TEST(Optimizer, TurnsRepeatsIntoSolidRunsAndKeepsPixels) {
    Raster32 r(IntRect{0, 0, 40, 1});
    const std::uint32_t values[] = {1, 2, 5, 5, 5, 5, 5, 5, 0xFF000001u, 0xFF000002u, 0xFF000003u, 0xFF000004u, 0xFF000005u, 7};
    for (std::size_t i = 0; i < std::size(values); ++i) *r.at(std::int32_t(i), 0) = values[i];
    Optimizer32 o(r);
    const auto a = probe(o, 0, 0, 40);
    ASSERT_EQ(a.spans.size(), 5u);
    EXPECT_EQ(a.spans[0].length(), 2);
    EXPECT_TRUE(a.spans[1].solid());
    EXPECT_EQ(a.spans[1].length(), 6);
    EXPECT_TRUE(a.spans[2].opaque() && !a.spans[2].solid());
    EXPECT_EQ(a.spans[2].length(), 5);
    EXPECT_TRUE(a.spans[4].solid());  // the trailing zeros
    EXPECT_EQ(a.pixels, row(r, 0, 0, 40));
}
