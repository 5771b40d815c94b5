#include "graphics/Rasterize.h"

#include "graphics/DirectInput.h"
#include "graphics/Multiplier.h"
#include "graphics/PixelRuns.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace tw {

namespace {

// Fills a run with one value. Short colour runs go sixteen bytes at a time, the last
// store overlapping the one before rather than finishing pixel by pixel; long ones go to
// the C library, which picks the widest stores the processor has.
void fill(std::uint8_t* dst, std::int32_t n, std::uint8_t value) { std::memset(dst, value, std::size_t(n)); }

[[gnu::always_inline]] inline void fill(std::uint32_t* dst, std::int32_t n, std::uint32_t value) {
    if (n < 4) {
        dst[0] = value;
        if (n > 1) dst[1] = value;
        if (n > 2) dst[2] = value;
        return;
    }
    if (n >= 64) {
        static_assert(sizeof(wchar_t) == sizeof(std::uint32_t));
        std::wmemset(reinterpret_cast<wchar_t*>(dst), wchar_t(value), std::size_t(n));
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

// A top's span over the destination, as a blender with the destination below would
// have it: a translucent span is blended in place, a transparent one leaves it alone.
[[gnu::always_inline]] inline void blendTranslucent(const Span32& s, std::uint32_t* dst, std::int32_t n) {
    if (s.opaque()) return;
    if (!s.solid()) {
        overRun(s.pixels, dst, dst, n);
    } else if (*s.pixels != 0) {
        overRun(*s.pixels, dst, dst, n);
    }
}

// An opaque span replaces the destination.
[[gnu::always_inline]] inline void writeOpaque(const Span32& s, std::uint32_t* dst, std::int32_t n) {
    if (!s.opaque()) return;
    if (s.solid()) {
        fill(dst, n, *s.pixels);
    } else if (s.pixels != dst) {
        std::memmove(dst, s.pixels, std::size_t(n) * sizeof(std::uint32_t));
    }
}

// Calls strip(x, y, length, row) for each strip of at most 256 pixels of the area, in
// rows from the top and strips from the left; unless whole(y, row) has done the row.
template <class Pixel, class Whole, class Strip>
void forEachStrip(Raster<Pixel>& destination, const IntRect& area, Whole whole, Strip strip) {
    if (area.isEmpty()) return;
    const std::int32_t width = area.width;
    for (std::int32_t y = area.top; y < area.bottom(); ++y) {
        Pixel* const row = destination.at(area.left, y);
        if (whole(y, row)) continue;
        for (std::int32_t done = 0; done < width; done += kMaxSpanLength) {
            strip(area.left + done, y, std::min(kMaxSpanLength, width - done), row + done);
        }
    }
}

template <class Pixel>
bool noWholeRows(std::int32_t, Pixel*) {
    return false;
}

template <class Pixel>
void rasterize(Renderer<Pixel>& renderer, Raster<Pixel>& destination, const IntRect& clip) {
    const IntRect area = intersectionOf(intersectionOf(renderer.calcBounds(), destination.bounds()), clip);
    Span<Pixel> spans[kMaxSpanLength];
    forEachStrip(destination, area, noWholeRows<Pixel>, [&](std::int32_t x, std::int32_t y, std::int32_t length, Pixel* strip) {
        SpanBuffer<Pixel> out(spans, strip);
        renderer.render(x, y, length, out);
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
    });
}

}  // namespace

void rasterize32(Renderer32& renderer, Raster32& destination, const IntRect& clip) {
    rasterize(renderer, destination, clip);
}

void rasterize8(Renderer8& renderer, Raster8& destination, const IntRect& clip) {
    rasterize(renderer, destination, clip);
}

namespace {

// A solid colour through a coverage over the destination in place, as a blender over a
// Multiplier32x8 of the colour and the coverage would have it. Each coverage span says
// what the multiplier's span would be: nothing, the colour, the colour scaled once, or
// the colour scaled pixel by pixel; and each of those meets the destination as a
// blender would meet it. Nothing is copied from elsewhere, so one pass does.
void blendInked(std::uint32_t colour, const Span8* spans, std::uint32_t* dst, std::int32_t length) {
    const auto solid = [&](std::uint32_t value, std::int32_t i, std::int32_t n) {
        if (isOpaque(value)) {
            fill(dst + i, n, value);
        } else if (value != 0) {
            overRun(value, dst + i, dst + i, n);
        }
    };
    for (std::int32_t i = 0; i < length;) {
        const Span8 s = spans[i];
        const std::int32_t n = s.length();
        if (s.opaque()) {
            solid(colour, i, n);
        } else if (s.solid()) {
            if (*s.pixels != 0) solid(scale32(colour, *s.pixels), i, n);
        } else {
            overScaledRun(colour, s.pixels, dst + i, n);
        }
        i += n;
    }
}

}  // namespace

void blend32(Renderer32& top, Raster32& destination, const IntRect& clip) {
    // The strips are those of rasterising the blender, whose bounds take in the whole
    // destination: a top that reads the destination sees the same writes before it.
    // Where the top has nothing, the blender would answer the destination itself.
    const IntRect area = intersectionOf(destination.bounds(), clip);
    const RectEdges topEdges(top.calcBounds());
    DirectInput<std::uint32_t> input(top);
    auto* inked = dynamic_cast<Multiplier32x8*>(&top);
    if (inked && inked->solidColour()) {
        const std::uint32_t colour = *inked->solidColour();
        Renderer8& mask = inked->mask();
        Span8 maskSpans[kMaxSpanLength];
        std::uint8_t coverage[kMaxSpanLength];
        // No coverage reads the destination, so the strips may start at the coverage's
        // own edge: its requests then lie within its bounds, where it answers directly.
        const IntRect covered = intersectionOf(area, top.calcBounds());
        forEachStrip(destination, covered, noWholeRows<std::uint32_t>,
                     [&](std::int32_t x, std::int32_t y, std::int32_t length, std::uint32_t* strip) {
            SpanBuffer8 out(maskSpans, coverage);
            mask.render(x, y, length, out);
            blendInked(colour, maskSpans, strip, length);
        });
        return;
    }
    Span32 spans[kMaxSpanLength];
    std::uint32_t pixels[kMaxSpanLength];
    std::int32_t opaqueAt[kMaxSpanLength];  // where the opaque spans of a strip start
    // A picture or a solid that answers a whole row as one span is drawn a row at a
    // time: the same pixels as strip by strip, unless the picture shares memory with the
    // destination, where copies strip by strip would read what earlier strips wrote.
    const bool rowsAtOnce = !input.sharesMemoryWith(destination);
    const auto whole = [&](std::int32_t y, std::uint32_t* row) {
        Span32 one;
        if (!rowsAtOnce || !input.oneSpan(area.left, y, area.width, one)) return false;
        if (one.opaque() && !one.solid()) {
            // Apart from the destination, so a plain copy.
            std::memcpy(row, one.pixels, std::size_t(area.width) * sizeof(std::uint32_t));
            return true;
        }
        blendTranslucent(one, row, area.width);
        writeOpaque(one, row, area.width);
        return true;
    };
    forEachStrip(destination, area, whole, [&](std::int32_t x, std::int32_t y, std::int32_t length, std::uint32_t* strip) {
        if (!topEdges.touches(x, y, std::int64_t(x) + length)) return;
        Span32 one;
        if (input.oneSpan(x, y, length, one)) {
            blendTranslucent(one, strip, length);
            writeOpaque(one, strip, length);
            return;
        }
        SpanBuffer32 out(spans, pixels);
        input.renderer().render(x, y, length, out);
        // A blender would compute the translucent spans into the destination while
        // merging, and the rasterising step then write the opaque ones: the same order
        // here, which matters only to a top that reads the destination elsewhere.
        std::int32_t opaque = 0;
        for (std::int32_t i = 0; i < length;) {
            const Span32 s = spans[i];
            blendTranslucent(s, strip + i, s.length());
            if (s.opaque()) opaqueAt[opaque++] = i;
            i += s.length();
        }
        for (std::int32_t k = 0; k < opaque; ++k) {
            const std::int32_t i = opaqueAt[k];
            writeOpaque(spans[i], strip + i, spans[i].length());
        }
    });
}

}  // namespace tw
