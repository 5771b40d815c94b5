// The pull-model renderer: all drawing is a tree of these, asked for one row segment of
// at most 256 pixels at a time. Nodes hold their inputs by reference and own none of
// them; the caller keeps the whole tree alive while it rasterises. Renderer32 answers
// premultiplied colour pixels, Renderer8 coverage bytes.
#pragma once

#include <cstdint>

#include "graphics/IntRect.h"
#include "graphics/Span.h"

namespace tw {

template <class Pixel>
class Renderer {
public:
    // The smallest known rectangle outside which only transparent pixels come.
    virtual IntRect calcBounds() const = 0;
    // Appends spans covering pixels x .. x+length-1 of row y, 1 <= length <= 256. Rows
    // are asked in ascending order, and strips within a row from left to right.
    virtual void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) = 0;
    virtual ~Renderer() = default;
};

// Answers a request against a rectangle: transparent spans for the parts outside, and
// inner(start, length) for the part inside, if any. Inlined, since every bounded renderer
// passes through it on each request.
template <class Pixel, class Inner>
[[gnu::always_inline]] inline void renderWithin(const IntRect& rect, std::int32_t x, std::int32_t y,
                                                std::int32_t length, SpanBuffer<Pixel>& out, Inner&& inner) {
    const std::int64_t end = std::int64_t(x) + length;
    const std::int64_t start = rect.left > x ? rect.left : x;
    const std::int64_t stop = rect.right() < end ? rect.right() : end;
    if (y < rect.top || y >= rect.bottom() || start >= stop) {
        out.appendTransparent(length);
        return;
    }
    if (start > x) out.appendTransparent(std::int32_t(start - x));
    inner(std::int32_t(start), std::int32_t(stop - start));
    if (stop < end) out.appendTransparent(std::int32_t(end - stop));
}

using Renderer32 = Renderer<std::uint32_t>;
using Renderer8 = Renderer<std::uint8_t>;

}  // namespace tw
