#include "graphics/Rasterize.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>

namespace tw {

namespace {

// Fills a run with one value. Colour runs go sixteen bytes at a time, the last store
// overlapping the one before rather than finishing pixel by pixel.
void fill(std::uint8_t* dst, std::int32_t n, std::uint8_t value) { std::memset(dst, value, std::size_t(n)); }

void fill(std::uint32_t* dst, std::int32_t n, std::uint32_t value) {
    if (n < 4) {
        dst[0] = value;
        if (n > 1) dst[1] = value;
        if (n > 2) dst[2] = value;
        return;
    }
    const __m128i v = _mm_set1_epi32(std::int32_t(value));
    std::int32_t k = 0;
    for (; k + 8 <= n; k += 8) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + k), v);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + k + 4), v);
    }
    if (k + 4 <= n) _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + k), v);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + n - 4), v);
}

template <class Pixel>
void rasterize(Renderer<Pixel>& renderer, Raster<Pixel>& destination, const IntRect& clip) {
    const IntRect area = intersectionOf(intersectionOf(renderer.calcBounds(), destination.bounds()), clip);
    if (area.isEmpty()) return;
    Span<Pixel> spans[kMaxSpanLength];
    const std::int32_t width = area.width;
    for (std::int32_t y = area.top; y < area.bottom(); ++y) {
        Pixel* const row = destination.at(area.left, y);
        for (std::int32_t done = 0; done < width; done += kMaxSpanLength) {
            const std::int32_t length = std::min(kMaxSpanLength, width - done);
            Pixel* const strip = row + done;
            SpanBuffer<Pixel> out(spans, strip);
            renderer.render(area.left + done, y, length, out);
            for (std::int32_t i = 0; i < length;) {
                const Span<Pixel> s = spans[i];
                const std::int32_t n = s.length();
                if (s.solid()) {
                    fill(strip + i, n, *s.pixels);
                } else if (s.pixels != strip + i) {
                    std::memmove(strip + i, s.pixels, std::size_t(n) * sizeof(Pixel));
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
