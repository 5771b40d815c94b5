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
// inner(start, length) for the part inside, if any.
template <class Pixel, class Inner>
void renderWithin(const IntRect& rect, std::int32_t x, std::int32_t y, std::int32_t length,
                  SpanBuffer<Pixel>& out, Inner&& inner) {
    if (!rect.touchesRow(x, y, length)) {
        out.appendTransparent(length);
        return;
    }
    const std::int64_t end = std::int64_t(x) + length;
    const std::int32_t start = rect.left > x ? rect.left : x;
    const std::int32_t stop = std::int32_t(rect.right() < end ? rect.right() : end);
    if (start > x) out.appendTransparent(start - x);
    inner(start, stop - start);
    if (stop < end) out.appendTransparent(std::int32_t(end - stop));
}

using Renderer32 = Renderer<std::uint32_t>;
using Renderer8 = Renderer<std::uint8_t>;

}  // namespace tw
