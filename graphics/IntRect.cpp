#include "graphics/IntRect.h"

#include <algorithm>

namespace tw {

namespace {

IntRect fromEdges(std::int64_t l, std::int64_t t, std::int64_t r, std::int64_t b) {
    const std::int64_t limit = 2147483647;
    return IntRect{std::int32_t(l), std::int32_t(t), std::int32_t(std::min(r - l, limit)),
                   std::int32_t(std::min(b - t, limit))};
}

}  // namespace

IntRect unionOf(const IntRect& a, const IntRect& b) {
    if (a.isEmpty()) return b;
    if (b.isEmpty()) return a;
    return fromEdges(std::min(a.left, b.left), std::min(a.top, b.top),
                     std::max(a.right(), b.right()), std::max(a.bottom(), b.bottom()));
}

IntRect intersectionOf(const IntRect& a, const IntRect& b) {
    const std::int64_t l = std::max(a.left, b.left);
    const std::int64_t t = std::max(a.top, b.top);
    const std::int64_t r = std::min(a.right(), b.right());
    const std::int64_t bt = std::min(a.bottom(), b.bottom());
    if (a.isEmpty() || b.isEmpty() || r <= l || bt <= t) return IntRect{};
    return fromEdges(l, t, r, bt);
}

}  // namespace tw
