// Products of two renderers: a colour by a coverage (every paint through its shape), two
// coverages (gamma, masks, opacity), and two colours (the "multiply" blend of pictures).
// Zero in the first input decides alone, so the second is only rendered where needed.
#pragma once

#include "graphics/Combiner.h"
#include "graphics/PixelRuns.h"

namespace tw {

// First is the input rendered first; for a colour by a coverage that is the coverage.
template <class FirstPixel, class OutPixel>
struct MultiplyPolicy {
    using First = FirstPixel;
    using Out = OutPixel;
    static constexpr bool kUnion = false;
    static constexpr bool kJoinAlone = true;
    static constexpr Out kAloneValue = 0;
    static bool forwardsSecond(First a) { return a == kFullPixel<First>; }
    static bool alone(const Span<First>& a) { return a.solid() && *a.pixels == 0; }
    // A coverage that is opaque is all 255, the neutral factor; a colour is neutral only
    // when it is all ones.
    template <class Pixel>
    static bool neutral(const SpanPiece<Pixel>& p) {
        if constexpr (sizeof(Pixel) == 1) {
            return p.opaque;
        } else {
            return p.solid && p.value == kFullPixel<Pixel>;
        }
    }
    static PairResult pick(const SpanPiece<First>& a, const SpanPiece<Out>& b) {
        if ((a.solid && a.value == 0) || (b.solid && b.value == 0)) return PairResult::Zero;
        if (neutral(a)) return PairResult::Second;
        if constexpr (std::is_same_v<First, Out>) {
            if (neutral(b)) return PairResult::First;
        }
        return PairResult::Compute;
    }
    static Out op(First a, Out b) {
        if constexpr (sizeof(First) == 1 && sizeof(Out) == 1) {
            return mul8(a, b);
        } else if constexpr (sizeof(First) == 1) {
            return scale32(b, a);
        } else {
            return mul32(a, b);
        }
    }
    static bool computedOpaque(const SpanPiece<First>&, const SpanPiece<Out>&) { return false; }
    // A colour by a coverage goes four pixels at a time.
    template <class Mask, class Colour>
    [[gnu::always_inline]] static void run(Mask mask, Colour colour, Out* dst, std::int32_t n)
        requires(sizeof(First) == 1 && sizeof(Out) == 4)
    {
        scaleRun(colour, mask, dst, n);
    }
};

// mul32(p, q) per pixel; p is rendered first.
class Multiplier32x32 : public Combiner<MultiplyPolicy<std::uint32_t, std::uint32_t>> {
public:
    Multiplier32x32(Renderer32& p, Renderer32& q) : Combiner(p, q) {}
};

// scale32(colour, mask) per pixel; the mask is rendered first.
class Multiplier32x8 : public Combiner<MultiplyPolicy<std::uint8_t, std::uint32_t>> {
public:
    Multiplier32x8(Renderer32& colour, Renderer8& mask) : Combiner(mask, colour) {}

    // For blend32, which draws a solid colour through its mask in one pass.
    const std::uint32_t* solidColour() const { return second().solidValue(); }
    Renderer8& mask() { return first().renderer(); }
};

// mul8(a, b) per pixel; a is rendered first.
class Multiplier8x8 : public Combiner<MultiplyPolicy<std::uint8_t, std::uint8_t>> {
public:
    Multiplier8x8(Renderer8& a, Renderer8& b) : Combiner(a, b) {}
};

extern template class Combiner<MultiplyPolicy<std::uint32_t, std::uint32_t>>;
extern template class Combiner<MultiplyPolicy<std::uint8_t, std::uint32_t>>;
extern template class Combiner<MultiplyPolicy<std::uint8_t, std::uint8_t>>;

}  // namespace tw
