#include "graphics/Optimizer.h"

namespace tw {

namespace {

template <class Pixel>
bool fourEqual(const Pixel* p, std::int32_t i, std::int32_t n) {
    return i + 4 <= n && p[i] == p[i + 1] && p[i] == p[i + 2] && p[i] == p[i + 3];
}

template <class Pixel>
bool fourOpaque(const Pixel* p, std::int32_t i, std::int32_t n) {
    return i + 4 <= n && isOpaque(p[i]) && isOpaque(p[i + 1]) && isOpaque(p[i + 2]) && isOpaque(p[i + 3]);
}

template <class Pixel>
void put(Span<Pixel>* spans, std::int32_t at, std::uint32_t lengthFlags, const Pixel* pixels) {
    spans[at] = Span<Pixel>{lengthFlags, pixels};
    spans[at + std::int32_t(lengthFlags & kSpanLengthMask) - 1] = Span<Pixel>{lengthFlags, pixels};
}

}  // namespace

template <class Pixel>
void Optimizer<Pixel>::render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) {
    Span<Pixel>* spans = out.spanCursor;
    source_.render(x, y, length, out);
    // Each plain span is rewritten within its own entries, so the walk stays valid.
    for (std::int32_t at = 0; at < length;) {
        const Span<Pixel> s = spans[at];
        const std::int32_t n = s.length();
        if (!s.solid()) {
            const Pixel* p = s.pixels;
            for (std::int32_t i = 0; i < n;) {
                std::int32_t j = i;
                std::uint32_t flags = 0;
                if (fourEqual(p, i, n)) {
                    j = i + 4;
                    while (j < n && p[j] == p[i]) ++j;
                    flags = solidFlags(p[i]);
                } else if (fourOpaque(p, i, n)) {
                    j = i + 4;
                    while (j < n && isOpaque(p[j]) && !fourEqual(p, j, n)) ++j;
                    flags = kSpanOpaque;
                } else {
                    j = i + 1;
                    while (j < n && !fourEqual(p, j, n) && !fourOpaque(p, j, n)) ++j;
                    flags = s.lengthFlags & kSpanOpaque;
                }
                put(spans, at + i, std::uint32_t(j - i) | flags, p + i);
                i = j;
            }
        }
        at += n;
    }
}

template class Optimizer<std::uint32_t>;
template class Optimizer<std::uint8_t>;

}  // namespace tw
