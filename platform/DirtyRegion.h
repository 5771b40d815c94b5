// The part of a window that waits to be painted: a short list of rectangles. Every
// invalidation and every exposure lands here, and the next paint pass takes the list.
// Rectangles that overlap or nearly touch are merged when the merge paints few pixels
// that nobody asked for, so that a pass paints a handful of rectangles, not hundreds.
#pragma once

#include <cstdint>
#include <vector>

namespace tw {

struct DirtyRect {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;  // right and bottom exclusive

    std::int64_t area() const { return std::int64_t(right - left) * (bottom - top); }
    bool isEmpty() const { return right <= left || bottom <= top; }
    friend bool operator==(const DirtyRect&, const DirtyRect&) = default;
};

class DirtyRegion {
public:
    // At most this many rectangles are kept; one more merges the pair that wastes least.
    static constexpr std::size_t maxRects = 16;

    // The region is clipped to (0, 0, width, height).
    explicit DirtyRegion(std::int32_t width = 0, std::int32_t height = 0) : width_(width), height_(height) {}

    void resize(std::int32_t width, std::int32_t height);
    // Adds a rectangle; what lies outside the bounds is dropped, and an empty rest is
    // ignored.
    void add(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height);
    bool isEmpty() const { return rects_.empty(); }
    const std::vector<DirtyRect>& rects() const { return rects_; }
    // The rectangles to paint now; the region is empty after.
    std::vector<DirtyRect> take();
    std::int64_t area() const;

private:
    void insert(DirtyRect r);

    std::int32_t width_, height_;
    std::vector<DirtyRect> rects_;
};

}  // namespace tw
