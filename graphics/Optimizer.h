// Prepares a source for compression into an RLERaster: plain spans are re-split so that
// four equal pixels in a row open a solid run and four opaque ones an opaque run. Fine-
// grained rendering (a picture, a vector drawing) thus becomes long runs.
#pragma once

#include "graphics/Renderer.h"

namespace tw {

template <class Pixel>
class Optimizer : public Renderer<Pixel> {
public:
    explicit Optimizer(Renderer<Pixel>& source) : source_(source) {}

    IntRect calcBounds() const override { return source_.calcBounds(); }
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) override;

private:
    Renderer<Pixel>& source_;
};

using Optimizer32 = Optimizer<std::uint32_t>;
using Optimizer8 = Optimizer<std::uint8_t>;

extern template class Optimizer<std::uint32_t>;
extern template class Optimizer<std::uint8_t>;

}  // namespace tw
