// The skeleton shared by the two-input renderers (Blender, Adder, Multiplier). The first
// input is rendered first; the stretches at both ends that it decides alone are answered
// without asking the second input, which is only rendered, straight into the output,
// for the middle. The two span lists are then merged pairwise, and a policy decides each
// pair: pass one side, a known constant, or compute.
#pragma once

#include <algorithm>
#include <type_traits>

#include "graphics/DirectInput.h"

namespace tw {

// One side of a pair of spans: its flags and, when solid, its value.
template <class Pixel>
struct SpanPiece {
    bool solid;
    bool opaque;
    Pixel value;
};

enum class PairResult { First, Second, Zero, Full, Compute };

// A Policy has: types First, Out; kUnion (bounds are the union, else the intersection);
// forwardsSecond(value) for a first input that is one solid span; alone(span) for the
// first's spans that decide their pixels without the second, and kJoinAlone with
// kAloneValue when such stretches become one solid span; pick(a, b); op(a, b); and
// computedOpaque(a, b) for the opaque flag of computed spans. It may add run(a, b, dst,
// n) for whole runs (in SIMD), taking a solid side as a value.
template <class Policy>
class Combiner : public Renderer<typename Policy::Out> {
public:
    using First = typename Policy::First;
    using Out = typename Policy::Out;

    Combiner(Renderer<First>& first, Renderer<Out>& second)
        : first_(first), second_(second), firstRows_(first.calcBounds()), secondRows_(second.calcBounds()),
          bounds_(Policy::kUnion ? unionOf(first.calcBounds(), second.calcBounds())
                                 : intersectionOf(first.calcBounds(), second.calcBounds())) {}

    IntRect calcBounds() const override { return bounds_; }

    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Out>& out) override {
        if constexpr (Policy::kUnion) {
            const std::int64_t end = std::int64_t(x) + length;
            const bool touchesFirst = firstRows_.touches(x, y, end);
            const bool touchesSecond = secondRows_.touches(x, y, end);
            if (touchesFirst && touchesSecond) {
                combine(x, y, length, out);
            } else if (touchesSecond) {
                second_.render(x, y, length, out);
            } else if (touchesFirst) {
                first_.render(x, y, length, out);
            } else {
                out.appendTransparent(length);
            }
        } else {
            renderWithin(bounds_, x, y, length, out,
                         [&](std::int32_t start, std::int32_t n) { combine(start, y, n, out); });
        }
    }

protected:
    DirectInput<First>& first() { return first_; }
    const DirectInput<Out>& second() const { return second_; }

private:
    static constexpr bool kSameType = std::is_same_v<First, Out>;
    static constexpr bool kHasRuns = requires(const First* a, const Out* b, Out* d) { Policy::run(a, b, d, 0); };

    static void put(Span<Out>* spans, std::int32_t position, std::uint32_t lengthFlags, const Out* pixels) {
        spans[position] = Span<Out>{lengthFlags, pixels};
        spans[position + std::int32_t(lengthFlags & kSpanLengthMask) - 1] = Span<Out>{lengthFlags, pixels};
    }

    // Joins the first's spans in [from, to) that decide alone into one, when the policy
    // says so; otherwise, of one pixel type, they already stand in the answer.
    static void putAlone(Span<Out>* spans, std::int32_t from, std::int32_t to) {
        if constexpr (Policy::kJoinAlone) {
            if (from < to) put(spans, from, std::uint32_t(to - from) | solidFlags(Policy::kAloneValue), &Policy::kAloneValue);
        }
    }

    // A first input known to be one span may decide the whole request at once.
    [[gnu::always_inline]] void combine(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Out>& out) {
        Span<First> whole;
        if (!first_.oneSpan(x, y, length, whole)) {
            combineSpans(x, y, length, out, nullptr);
        } else if (whole.solid() && Policy::forwardsSecond(*whole.pixels)) {
            second_.render(x, y, length, out);
        } else if (Policy::alone(whole)) {
            if constexpr (Policy::kJoinAlone) {
                putAlone(out.spanCursor, 0, length);
            } else {
                put(out.spanCursor, 0, whole.lengthFlags, whole.pixels);
            }
            out.spanCursor += length;
            out.pixelCursor += length;
        } else {
            combineSpans(x, y, length, out, &whole);
        }
    }

    // With one pixel type, the first's spans are written where the answer goes and the
    // second's into our own array; otherwise the first's go to our array and the
    // second's into the answer. Either way the merge writes the answer over entries it
    // has read: a result never ends beyond the spans it came from. `whole` is the first's
    // answer when it is already known to be that one span.
    [[gnu::noinline]] void combineSpans(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Out>& out,
                                        const Span<First>* whole) {
        Span<Out>* spans = out.spanCursor;
        Out* pixels = out.pixelCursor;
        Span<First>* firstSpans;
        Span<Out>* secondSpans;
        if constexpr (kSameType) {
            firstSpans = spans;
            secondSpans = firstSpans_;
        } else {
            firstSpans = firstSpans_;
            secondSpans = spans;
        }
        if (whole) {
            firstSpans[0] = *whole;
            firstSpans[length - 1] = *whole;
        } else {
            SpanBuffer<First> firstOut(firstSpans, firstPixels_);
            first_.renderer().render(x, y, length, firstOut);
            const Span<First> s = firstSpans[0];
            if (s.length() == length && s.solid() && Policy::forwardsSecond(*s.pixels)) {
                second_.render(x, y, length, out);
                return;
            }
        }
        if (const Out* value = second_.solidValue()) {
            // A solid second input is met by each of the first's spans in one walk.
            const Span<Out> s{std::uint32_t(length) | solidFlags(*value), value};
            mergeWithOne<true>(firstSpans, s, spans, pixels, 0, length);
            out.spanCursor = spans + length;
            out.pixelCursor = pixels + length;
            return;
        }
        std::int32_t lead = 0;
        while (lead < length && Policy::alone(firstSpans[lead])) lead += firstSpans[lead].length();
        std::int32_t tail = length;
        while (tail > lead && Policy::alone(firstSpans[tail - 1])) tail -= firstSpans[tail - 1].length();
        putAlone(spans, 0, lead);
        if (lead < tail) {
            Span<Out> s;
            if (!second_.oneSpan(x + lead, y, tail - lead, s)) {
                SpanBuffer<Out> middle(secondSpans + lead, pixels + lead);
                second_.renderer().render(x + lead, y, tail - lead, middle);
                s = secondSpans[lead];
            }
            if (s.length() != tail - lead) {
                merge(firstSpans, secondSpans, spans, pixels, lead, tail);
            } else if (s.solid()) {
                mergeWithOne<true>(firstSpans, s, spans, pixels, lead, tail);
            } else {
                mergeWithOne<false>(firstSpans, s, spans, pixels, lead, tail);
            }
        }
        putAlone(spans, tail, length);
        out.spanCursor = spans + length;
        out.pixelCursor = pixels + length;
    }

    // Merges the two span lists pairwise. A solid value is read when its span is reached,
    // since computed pixels may overwrite the place it was kept in.
    static void merge(const Span<First>* firstSpans, const Span<Out>* secondSpans, Span<Out>* spans, Out* pixels,
                      std::int32_t from, std::int32_t to) {
        std::int32_t firstLeft = 0, secondLeft = 0;
        std::uint32_t firstFlags = 0, secondFlags = 0;
        const First* firstPtr = nullptr;
        const Out* secondPtr = nullptr;
        SpanPiece<First> a{};
        SpanPiece<Out> b{};
        for (std::int32_t i = from; i < to;) {
            if (firstLeft == 0) {
                const Span<First> s = firstSpans[i];
                firstLeft = s.length();
                firstFlags = s.lengthFlags & ~kSpanLengthMask;
                firstPtr = s.pixels;
                a = SpanPiece<First>{s.solid(), s.opaque(), s.solid() ? *s.pixels : First(0)};
            }
            if (secondLeft == 0) {
                const Span<Out> s = secondSpans[i];
                secondLeft = s.length();
                secondFlags = s.lengthFlags & ~kSpanLengthMask;
                secondPtr = s.pixels;
                b = SpanPiece<Out>{s.solid(), s.opaque(), s.solid() ? *s.pixels : Out(0)};
            }
            const std::int32_t n = std::min(firstLeft, secondLeft);
            placePair(spans, pixels, i, n, a, firstFlags, firstPtr, b, secondFlags, secondPtr);
            firstLeft -= n;
            secondLeft -= n;
            if (!a.solid) firstPtr += n;
            if (!b.solid) secondPtr += n;
            i += n;
        }
    }

    // The same for a second input that answered one span for the whole stretch, as a
    // solid colour or a canvas does: only the first's spans need walking.
    template <bool kSolid>
    [[gnu::always_inline]] static void mergeWithOne(const Span<First>* firstSpans, const Span<Out> s, Span<Out>* spans,
                                                    Out* pixels, std::int32_t from, std::int32_t to) {
        const std::uint32_t secondFlags = s.lengthFlags & ~kSpanLengthMask;
        const SpanPiece<Out> b{kSolid, s.opaque(), kSolid ? *s.pixels : Out(0)};
        for (std::int32_t i = from; i < to;) {
            const Span<First> f = firstSpans[i];
            const std::int32_t n = f.length();
            const SpanPiece<First> a{f.solid(), f.opaque(), f.solid() ? *f.pixels : First(0)};
            const Out* secondPtr = kSolid ? s.pixels : s.pixels + (i - from);
            placePair(spans, pixels, i, n, a, f.lengthFlags & ~kSpanLengthMask, f.pixels, b, secondFlags, secondPtr);
            i += n;
        }
    }

    // Places the result for n pixels at i of a piece of each input: one of the inputs'
    // spans as it stands, a known value, or pixels computed here.
    [[gnu::always_inline]] static void placePair(Span<Out>* spans, Out* pixels, std::int32_t i, std::int32_t n,
                                                 const SpanPiece<First>& a, std::uint32_t firstFlags,
                                                 const First* firstPtr, const SpanPiece<Out>& b,
                                                 std::uint32_t secondFlags, const Out* secondPtr) {
        switch (Policy::pick(a, b)) {
        case PairResult::First:
            if constexpr (kSameType) put(spans, i, std::uint32_t(n) | firstFlags, firstPtr);
            break;
        case PairResult::Second:
            if (b.solid) {
                pixels[i] = b.value;
                put(spans, i, std::uint32_t(n) | secondFlags, pixels + i);
            } else {
                put(spans, i, std::uint32_t(n) | secondFlags, secondPtr);
            }
            break;
        case PairResult::Zero:
            put(spans, i, std::uint32_t(n) | kSpanSolid, &kTransparentPixel<Out>);
            break;
        case PairResult::Full:
            put(spans, i, std::uint32_t(n) | kSpanSolid | kSpanOpaque, &kFullPixel<Out>);
            break;
        case PairResult::Compute:
            compute(spans, pixels + i, i, n, a, b, firstPtr, secondPtr);
            break;
        }
    }

    [[gnu::always_inline]] static void compute(Span<Out>* spans, Out* dst, std::int32_t i, std::int32_t n, const SpanPiece<First>& a,
                        const SpanPiece<Out>& b, const First* firstPtr, const Out* secondPtr) {
        if (a.solid && b.solid) {
            *dst = Policy::op(a.value, b.value);
            put(spans, i, std::uint32_t(n) | solidFlags(*dst), dst);
            return;
        }
        if constexpr (kHasRuns) {
            if (a.solid) {
                Policy::run(a.value, secondPtr, dst, n);
            } else if (b.solid) {
                Policy::run(firstPtr, b.value, dst, n);
            } else {
                Policy::run(firstPtr, secondPtr, dst, n);
            }
        } else if (a.solid) {
            // A second input that answered in place reads from the destination itself; the
            // loops are kept apart so that neither needs an overlap check to be vectorised.
            const First v = a.value;
            if (secondPtr == dst) {
                for (std::int32_t k = 0; k < n; ++k) dst[k] = Policy::op(v, dst[k]);
            } else {
                for (std::int32_t k = 0; k < n; ++k) dst[k] = Policy::op(v, secondPtr[k]);
            }
        } else if (b.solid) {
            const Out v = b.value;
            for (std::int32_t k = 0; k < n; ++k) dst[k] = Policy::op(firstPtr[k], v);
        } else if (secondPtr == dst) {
            for (std::int32_t k = 0; k < n; ++k) dst[k] = Policy::op(firstPtr[k], dst[k]);
        } else {
            for (std::int32_t k = 0; k < n; ++k) dst[k] = Policy::op(firstPtr[k], secondPtr[k]);
        }
        put(spans, i, std::uint32_t(n) | (Policy::computedOpaque(a, b) ? kSpanOpaque : 0u), dst);
    }

    DirectInput<First> first_;
    DirectInput<Out> second_;
    RectEdges firstRows_;
    RectEdges secondRows_;
    IntRect bounds_;
    Span<First> firstSpans_[kMaxSpanLength];  // the first's spans, or with one pixel type the second's
    First firstPixels_[kMaxSpanLength];
};

}  // namespace tw
