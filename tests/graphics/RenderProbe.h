// Test helpers: ask a renderer for a row segment, check that its span array is well
// formed in both directions, and expand it into plain pixels.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "graphics/Renderer.h"

namespace tw::test {

template <class Pixel>
struct Answer {
    std::vector<Span<Pixel>> spans;  // in order
    std::vector<Pixel> pixels;       // expanded
};

// Renders one request into fresh buffers and checks the forward and backward walks.
template <class Pixel>
Answer<Pixel> probe(Renderer<Pixel>& r, std::int32_t x, std::int32_t y, std::int32_t length) {
    Span<Pixel> spans[kMaxSpanLength];
    Pixel pixels[kMaxSpanLength];
    SpanBuffer<Pixel> out(spans, pixels);
    r.render(x, y, length, out);
    Answer<Pixel> a;
    EXPECT_EQ(out.spanCursor - spans, length) << "span cursor";
    EXPECT_EQ(out.pixelCursor - pixels, length) << "pixel cursor";
    std::vector<std::int32_t> starts;
    for (std::int32_t i = 0; i < length;) {
        const Span<Pixel> s = spans[i];
        const std::int32_t n = s.length();
        if (n <= 0 || i + n > length) {
            ADD_FAILURE() << "bad span length " << n << " at " << i;
            break;
        }
        EXPECT_EQ(spans[i + n - 1].lengthFlags, s.lengthFlags) << "end entry at " << i;
        EXPECT_EQ(spans[i + n - 1].pixels, s.pixels) << "end entry pointer at " << i;
        a.spans.push_back(s);
        starts.push_back(i);
        for (std::int32_t k = 0; k < n; ++k) {
            const Pixel p = s.solid() ? *s.pixels : s.pixels[k];
            a.pixels.push_back(p);
            if (s.opaque()) {
                EXPECT_TRUE(isOpaque(p)) << "opaque flag on a pixel that is not, at " << i + k;
            }
        }
        i += n;
    }
    // Backward walk: the entry before each end tells the last run's length.
    std::size_t index = starts.size();
    for (std::int32_t end = length; end > 0 && index > 0;) {
        const std::int32_t n = spans[end - 1].length();
        --index;
        EXPECT_EQ(end - n, starts[index]) << "backward walk";
        end -= n;
    }
    return a;
}

template <class Pixel>
std::vector<Pixel> row(Renderer<Pixel>& r, std::int32_t x, std::int32_t y, std::int32_t length) {
    return probe(r, x, y, length).pixels;
}

}  // namespace tw::test
