// Saturating sum of two renderers: the "add" blend of pictures, and the two weighted
// frames of an interpolated film. A solid fully-set input decides alone.
#pragma once

#include "graphics/Combiner.h"

namespace tw {

template <class Pixel>
struct AddPolicy {
    using First = Pixel;
    using Out = Pixel;
    static constexpr bool kUnion = true;
    static constexpr bool kJoinAlone = true;
    static constexpr Pixel kAloneValue = kFullPixel<Pixel>;
    static bool forwardsSecond(Pixel a) { return a == 0; }
    static bool alone(const Span<Pixel>& a) { return a.solid() && *a.pixels == kFullPixel<Pixel>; }
    static PairResult pick(const SpanPiece<Pixel>& a, const SpanPiece<Pixel>& b) {
        if (a.solid && a.value == 0) return PairResult::Second;
        if (b.solid && b.value == 0) return PairResult::First;
        if ((a.solid && a.value == kFullPixel<Pixel>) || (b.solid && b.value == kFullPixel<Pixel>)) return PairResult::Full;
        return PairResult::Compute;
    }
    static Pixel op(Pixel a, Pixel b) {
        if constexpr (sizeof(Pixel) == 4) {
            return add32(a, b);
        } else {
            return add8(a, b);
        }
    }
    static bool computedOpaque(const SpanPiece<Pixel>& a, const SpanPiece<Pixel>& b) { return a.opaque || b.opaque; }
};

class Adder32 : public Combiner<AddPolicy<std::uint32_t>> {
public:
    Adder32(Renderer32& a, Renderer32& b) : Combiner(a, b) {}
};

class Adder8 : public Combiner<AddPolicy<std::uint8_t>> {
public:
    Adder8(Renderer8& a, Renderer8& b) : Combiner(a, b) {}
};

extern template class Combiner<AddPolicy<std::uint32_t>>;
extern template class Combiner<AddPolicy<std::uint8_t>>;

}  // namespace tw
