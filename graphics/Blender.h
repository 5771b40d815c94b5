// Draws one renderer over another: Blender32 with "over" for colour, Blender8 with a
// saturating add for masks. Each input's bounds are cached, so that rows that miss one
// input skip it entirely, and an opaque top is never looked under.
#pragma once

#include "graphics/Combiner.h"
#include "graphics/PixelRuns.h"

namespace tw {

template <class Pixel>
struct BlendPolicy {
    using First = Pixel;
    using Out = Pixel;
    static constexpr bool kUnion = true;
    static constexpr bool kJoinAlone = false;
    static bool forwardsSecond(Pixel top) { return top == 0; }
    static bool alone(const Span<Pixel>& top) { return top.opaque(); }
    static PairResult pick(const SpanPiece<Pixel>& top, const SpanPiece<Pixel>&) {
        if (top.solid && top.value == 0) return PairResult::Second;
        if (top.opaque) return PairResult::First;
        return PairResult::Compute;
    }
    static Pixel op(Pixel top, Pixel bottom) {
        if constexpr (sizeof(Pixel) == 4) {
            return over32(top, bottom);
        } else {
            return add8(top, bottom);
        }
    }
    static bool computedOpaque(const SpanPiece<Pixel>&, const SpanPiece<Pixel>& bottom) { return bottom.opaque; }
    // Colour runs go four pixels at a time.
    template <class Top, class Bottom>
    [[gnu::always_inline]] static void run(Top top, Bottom bottom, Pixel* dst, std::int32_t n)
        requires(sizeof(Pixel) == 4)
    {
        overRun(top, bottom, dst, n);
    }
};

class Blender32 : public Combiner<BlendPolicy<std::uint32_t>> {
public:
    Blender32(Renderer32& top, Renderer32& bottom) : Combiner(top, bottom) {}
};

class Blender8 : public Combiner<BlendPolicy<std::uint8_t>> {
public:
    Blender8(Renderer8& top, Renderer8& bottom) : Combiner(top, bottom) {}
};

extern template class Combiner<BlendPolicy<std::uint32_t>>;
extern template class Combiner<BlendPolicy<std::uint8_t>>;

}  // namespace tw
