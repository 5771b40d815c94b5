// Run-length spans: the answer of every renderer to a request for one row segment.
// A span array is indexed by pixel position within the request, not by span number: a
// run of length n at position p is written at index p and again at p+n-1, so that the
// array can be walked forward (add the length) and backward (read the entry before the
// end). Requests are at most 256 pixels, so 256 entries and 256 pixels always suffice.
#pragma once

#include <cstdint>

#include "graphics/PixelMath.h"

namespace tw {

constexpr int kMaxSpanLength = 256;

constexpr std::uint32_t kSpanSolid = 0x80000000u;   // pixels points to one pixel for the run
constexpr std::uint32_t kSpanOpaque = 0x40000000u;  // every pixel of the run is opaque
constexpr std::uint32_t kSpanLengthMask = 0x3FFFFFFFu;

template <class Pixel>
struct Span {
    std::uint32_t lengthFlags;
    const Pixel* pixels;  // never written through

    std::int32_t length() const { return std::int32_t(lengthFlags & kSpanLengthMask); }
    bool solid() const { return (lengthFlags & kSpanSolid) != 0; }
    bool opaque() const { return (lengthFlags & kSpanOpaque) != 0; }
};

// The one transparent pixel that every renderer may point at.
template <class Pixel> inline constexpr Pixel kTransparentPixel = 0;

// The flags of a solid span holding `value`.
template <class Pixel>
constexpr std::uint32_t solidFlags(Pixel value) {
    return kSpanSolid | (isOpaque(value) ? kSpanOpaque : 0u);
}

// Where a renderer writes its answer. Both cursors advance by the length of every span,
// so that pixelCursor is always the pixel of the span being written: a renderer that
// computes pixels writes them there (possibly straight into the final image), and may
// keep a solid span's one pixel there too. A renderer writes only into the pixels of the
// spans that it appends.
template <class Pixel>
struct SpanBuffer {
    Span<Pixel>* spanStart;
    Pixel* pixelStart;
    Span<Pixel>* spanCursor;
    Pixel* pixelCursor;

    SpanBuffer(Span<Pixel>* spans, Pixel* pixels)
        : spanStart(spans), pixelStart(pixels), spanCursor(spans), pixelCursor(pixels) {}

    void append(std::uint32_t lengthFlags, const Pixel* pixels) {
        const std::uint32_t n = lengthFlags & kSpanLengthMask;
        spanCursor[0] = Span<Pixel>{lengthFlags, pixels};
        spanCursor[n - 1] = Span<Pixel>{lengthFlags, pixels};
        spanCursor += n;
        pixelCursor += n;
    }
    void appendSolid(std::int32_t length, const Pixel* pixel) {
        append(std::uint32_t(length) | solidFlags(*pixel), pixel);
    }
    // A solid span whose value is written into the buffer's own pixel.
    void appendSolidValue(std::int32_t length, Pixel value) {
        *pixelCursor = value;
        appendSolid(length, pixelCursor);
    }
    void appendTransparent(std::int32_t length) {
        append(std::uint32_t(length) | kSpanSolid, &kTransparentPixel<Pixel>);
    }
};

using Span32 = Span<std::uint32_t>;
using Span8 = Span<std::uint8_t>;
using SpanBuffer32 = SpanBuffer<std::uint32_t>;
using SpanBuffer8 = SpanBuffer<std::uint8_t>;

}  // namespace tw
