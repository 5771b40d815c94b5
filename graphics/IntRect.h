// Integer rectangles: renderer bounds, clip and dirty areas. Empty when width or height
// is not positive; FullRect stands for "no bound at all".
#pragma once

#include <cstdint>

namespace tw {

struct IntRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    std::int64_t right() const { return std::int64_t(left) + width; }
    std::int64_t bottom() const { return std::int64_t(top) + height; }
    // Whether pixels x .. x+length-1 of row y touch the rectangle.
    bool touchesRow(std::int32_t x, std::int32_t y, std::int32_t length) const {
        return y >= top && y < bottom() && std::int64_t(x) + length > left && x < right();
    }
    friend bool operator==(const IntRect&, const IntRect&) = default;
};

// A rectangle's edges in 64 bits, so that asking whether a request touches it or lies
// within it is four plain compares.
struct RectEdges {
    std::int64_t left, top, right, bottom;

    explicit RectEdges(const IntRect& r) : left(r.left), top(r.top), right(r.right()), bottom(r.bottom()) {
        if (r.isEmpty()) top = bottom = 0;
    }
    bool touches(std::int64_t x, std::int64_t y, std::int64_t end) const {
        return y >= top && y < bottom && end > left && x < right;
    }
    bool holds(std::int64_t x, std::int64_t y, std::int64_t end) const {
        return y >= top && y < bottom && x >= left && end <= right;
    }
};

constexpr IntRect FullRect{-1073741824, -1073741824, 2147483647, 2147483647};

// An empty operand counts as absent: the result is the other one.
IntRect unionOf(const IntRect& a, const IntRect& b);
// Disjoint rectangles give all zeros.
IntRect intersectionOf(const IntRect& a, const IntRect& b);

}  // namespace tw
