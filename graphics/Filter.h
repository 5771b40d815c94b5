// A renderer that maps each pixel of one source to one output pixel (inversion, gamma,
// colour lookup). All filters share one render: a plain source span is filtered as a
// whole into the output pixels; a solid one is filtered as one pixel and stays solid.
#pragma once

#include <type_traits>

#include "graphics/Renderer.h"

namespace tw {

template <class In, class Out>
class Filter : public Renderer<Out> {
public:
    explicit Filter(Renderer<In>& source) : source_(source) {}

    IntRect calcBounds() const override { return source_.calcBounds(); }

    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Out>& out) final {
        if constexpr (std::is_same_v<In, Out>) {
            // The source answers into our own output; each span is then rewritten in place.
            Span<Out>* first = out.spanCursor;
            Out* firstPixel = out.pixelCursor;
            source_.render(x, y, length, out);
            for (std::int32_t i = 0; i < length;) {
                const Span<In> s = first[i];
                emit(s, first + i, firstPixel + i);
                i += s.length();
            }
        } else {
            SpanBuffer<In> in(spans_, pixels_);
            source_.render(x, y, length, in);
            for (std::int32_t i = 0; i < length;) {
                const Span<In> s = spans_[i];
                emit(s, out.spanCursor + i, out.pixelCursor + i);
                i += s.length();
            }
            out.spanCursor += length;
            out.pixelCursor += length;
        }
    }

    // Filters `length` pixels; opaqueOut tells whether all results are opaque.
    virtual void filterSpan(std::int32_t length, const In* source, Out* destination, bool& opaqueOut) = 0;

protected:
    Renderer<In>& source_;

private:
    void emit(const Span<In>& s, Span<Out>* entry, Out* pixel) {
        const std::int32_t n = s.length();
        std::uint32_t flags;
        if (s.solid()) {
            const In value = *s.pixels;
            bool opaque = false;
            filterSpan(1, &value, pixel, opaque);
            flags = std::uint32_t(n) | solidFlags(*pixel);
        } else {
            bool opaque = false;
            filterSpan(n, s.pixels, pixel, opaque);
            flags = std::uint32_t(n) | (opaque ? kSpanOpaque : 0u);
        }
        entry[0] = Span<Out>{flags, pixel};
        entry[n - 1] = Span<Out>{flags, pixel};
    }

    struct Nothing {};
    // A source of another pixel type needs span and pixel storage of its own.
    [[no_unique_address]] std::conditional_t<std::is_same_v<In, Out>, Nothing, Span<In>[kMaxSpanLength]> spans_;
    [[no_unique_address]] std::conditional_t<std::is_same_v<In, Out>, Nothing, In[kMaxSpanLength]> pixels_;
};

}  // namespace tw
