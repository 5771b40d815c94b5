// A single colour or coverage everywhere: the paint of solid fills and the constant
// factor of opacity products.
#pragma once

#include "graphics/Renderer.h"

namespace tw {

template <class Pixel>
class Solid : public Renderer<Pixel> {
public:
    explicit Solid(Pixel value) : value_(value) {}

    IntRect calcBounds() const override { return FullRect; }
    void render(std::int32_t, std::int32_t, std::int32_t length, SpanBuffer<Pixel>& out) override {
        out.appendSolid(length, &value_);
    }

    const Pixel& value() const { return value_; }

private:
    Pixel value_;
};

using Solid32 = Solid<std::uint32_t>;
using Solid8 = Solid<std::uint8_t>;

// A colour over a rectangle, transparent elsewhere.
class SolidRect32 : public Renderer32 {
public:
    SolidRect32(std::uint32_t colour, const IntRect& rect) : colour_(colour), rect_(rect) {}

    IntRect calcBounds() const override { return rect_; }
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer32& out) override;

private:
    std::uint32_t colour_;
    IntRect rect_;
};

}  // namespace tw
