// Moves a source by whole pixels: images and glyphs drawn at a position.
#pragma once

#include "graphics/Renderer.h"

namespace tw {

template <class Pixel>
class Offsetter : public Renderer<Pixel> {
public:
    Offsetter(Renderer<Pixel>& source, std::int32_t dx, std::int32_t dy) : source_(source), dx_(dx), dy_(dy) {}

    IntRect calcBounds() const override {
        IntRect r = source_.calcBounds();
        if (r.isEmpty() || r == FullRect) return r;
        r.left += dx_;
        r.top += dy_;
        return r;
    }
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) override {
        source_.render(x - dx_, y - dy_, length, out);
    }

private:
    Renderer<Pixel>& source_;
    std::int32_t dx_;
    std::int32_t dy_;
};

using Offsetter32 = Offsetter<std::uint32_t>;
using Offsetter8 = Offsetter<std::uint8_t>;

}  // namespace tw
