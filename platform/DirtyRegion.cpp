#include "platform/DirtyRegion.h"

#include <algorithm>

namespace tw {

namespace {

// A merge may add this many pixels that nobody invalidated: two neighbouring controls
// with a gap between them paint as one rectangle, two distant ones stay apart.
constexpr std::int64_t mergeSlack = 1024;

DirtyRect unite(const DirtyRect& a, const DirtyRect& b) {
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

std::int64_t overlap(const DirtyRect& a, const DirtyRect& b) {
    DirtyRect o{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
    return o.isEmpty() ? 0 : o.area();
}

bool contains(const DirtyRect& outer, const DirtyRect& inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right && outer.bottom >= inner.bottom;
}

// Pixels that painting the union paints beyond the two rectangles.
std::int64_t waste(const DirtyRect& a, const DirtyRect& b) {
    return unite(a, b).area() - a.area() - b.area() + overlap(a, b);
}

}  // namespace

void DirtyRegion::resize(std::int32_t width, std::int32_t height) {
    width_ = width;
    height_ = height;
    std::vector<DirtyRect> old;
    old.swap(rects_);
    for (const DirtyRect& r : old) add(r.left, r.top, r.right - r.left, r.bottom - r.top);
}

void DirtyRegion::add(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) {
    if (width <= 0 || height <= 0) return;
    const std::int64_t right = std::int64_t(left) + width, bottom = std::int64_t(top) + height;
    DirtyRect r{std::max(left, 0), std::max(top, 0), std::int32_t(std::min<std::int64_t>(right, width_)),
                std::int32_t(std::min<std::int64_t>(bottom, height_))};
    if (r.isEmpty()) return;
    insert(r);
}

void DirtyRegion::insert(DirtyRect r) {
    // Absorb every rectangle that the new one holds or can merge with cheaply; a merge
    // grows the new one, which may then reach others, so look again until nothing moves.
    for (bool merged = true; merged;) {
        merged = false;
        for (std::size_t i = 0; i < rects_.size(); ++i) {
            const DirtyRect& e = rects_[i];
            if (contains(e, r)) return;
            if (contains(r, e) || waste(e, r) <= mergeSlack) {
                r = unite(r, e);
                rects_.erase(rects_.begin() + std::ptrdiff_t(i));
                merged = true;
                break;
            }
        }
    }
    rects_.push_back(r);
    if (rects_.size() <= maxRects) return;
    // Too many: merge the pair that costs least, and let the merged one absorb again.
    std::size_t bestA = 0, bestB = 1;
    std::int64_t best = waste(rects_[0], rects_[1]);
    for (std::size_t a = 0; a < rects_.size(); ++a)
        for (std::size_t b = a + 1; b < rects_.size(); ++b) {
            const std::int64_t w = waste(rects_[a], rects_[b]);
            if (w < best) best = w, bestA = a, bestB = b;
        }
    DirtyRect u = unite(rects_[bestA], rects_[bestB]);
    rects_.erase(rects_.begin() + std::ptrdiff_t(bestB));
    rects_.erase(rects_.begin() + std::ptrdiff_t(bestA));
    insert(u);
}

std::vector<DirtyRect> DirtyRegion::take() {
    std::vector<DirtyRect> out;
    out.swap(rects_);
    return out;
}

std::int64_t DirtyRegion::area() const {
    std::int64_t sum = 0;
    for (const DirtyRect& r : rects_) sum += r.area();
    return sum;
}

}  // namespace tw
