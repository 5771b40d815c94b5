// Limits a source to a rectangle: glyphs cut from a font page, parts of pictures.
#pragma once

#include "graphics/Renderer.h"

namespace tw {

template <class Pixel>
class Clipper : public Renderer<Pixel> {
public:
    Clipper(Renderer<Pixel>& source, const IntRect& rect) : source_(source), rect_(rect) {}

    IntRect calcBounds() const override { return intersectionOf(source_.calcBounds(), rect_); }
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) override {
        renderWithin(rect_, x, y, length, out,
                     [&](std::int32_t start, std::int32_t n) { source_.render(start, y, n, out); });
    }

private:
    Renderer<Pixel>& source_;
    IntRect rect_;
};

using Clipper32 = Clipper<std::uint32_t>;
using Clipper8 = Clipper<std::uint8_t>;

}  // namespace tw
