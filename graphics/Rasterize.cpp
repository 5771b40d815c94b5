#include "graphics/Rasterize.h"

#include <algorithm>
#include <cstring>

namespace tw {

namespace {

template <class Pixel>
void rasterize(Renderer<Pixel>& renderer, Raster<Pixel>& destination, const IntRect& clip) {
    const IntRect area = intersectionOf(intersectionOf(renderer.calcBounds(), destination.bounds()), clip);
    if (area.isEmpty()) return;
    Span<Pixel> spans[kMaxSpanLength];
    for (std::int32_t y = area.top; y < area.bottom(); ++y) {
        for (std::int32_t x = area.left; x < area.right(); x += kMaxSpanLength) {
            const std::int32_t length = std::int32_t(std::min<std::int64_t>(kMaxSpanLength, area.right() - x));
            Pixel* row = destination.at(x, y);
            SpanBuffer<Pixel> out(spans, row);
            renderer.render(x, y, length, out);
            for (std::int32_t i = 0; i < length;) {
                const Span<Pixel> s = spans[i];
                const std::int32_t n = s.length();
                if (s.solid()) {
                    std::fill_n(row + i, n, *s.pixels);
                } else if (s.pixels != row + i) {
                    std::memmove(row + i, s.pixels, std::size_t(n) * sizeof(Pixel));
                }
                i += n;
            }
        }
    }
}

}  // namespace

void rasterize32(Renderer32& renderer, Raster32& destination, const IntRect& clip) {
    rasterize(renderer, destination, clip);
}

void rasterize8(Renderer8& renderer, Raster8& destination, const IntRect& clip) {
    rasterize(renderer, destination, clip);
}

}  // namespace tw
