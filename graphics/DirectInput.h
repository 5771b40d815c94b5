// A renderer used as an input by the combiners and by blend32, with solids and rasters
// answered in place: the commonest inputs cost no call per request.
#pragma once

#include "graphics/Raster.h"
#include "graphics/Solid.h"

namespace tw {

// An input of a combiner or of blend32. A solid or a raster (a paint's colour, a
// picture, the canvas under a blend) is answered here, without a call through the
// renderer for every request. A raster's place and size are taken once: they do not
// change while the tree that uses it is alive.
template <class Pixel>
class DirectInput {
public:
    explicit DirectInput(Renderer<Pixel>& renderer)
        : renderer_(renderer), solid_(dynamic_cast<Solid<Pixel>*>(&renderer)) {
        if (Raster<Pixel>* raster = dynamic_cast<Raster<Pixel>*>(&renderer); raster && !raster->bounds().isEmpty()) {
            const IntRect& b = raster->bounds();
            rasterRows_ = RectEdges(b);
            rasterPixels_ = raster->at(b.left, b.top);
            rasterStride_ = raster->stride();
            rasterFlags_ = raster->opaque() ? kSpanOpaque : 0u;
        }
    }

    // The answer when it is known to be one span: a solid, or a raster that holds the
    // whole stretch.
    [[gnu::always_inline]] bool oneSpan(std::int32_t x, std::int32_t y, std::int32_t length, Span<Pixel>& span) const {
        if (solid_) {
            span = Span<Pixel>{std::uint32_t(length) | solidFlags(solid_->value()), &solid_->value()};
            return true;
        }
        if (rasterPixels_ && rasterRows_.holds(x, y, std::int64_t(x) + length)) {
            const Pixel* p = rasterPixels_ + ((y - rasterRows_.top) * rasterStride_ + (x - rasterRows_.left));
            span = Span<Pixel>{std::uint32_t(length) | rasterFlags_, p};
            return true;
        }
        return false;
    }

    [[gnu::always_inline]] void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) {
        Span<Pixel> span;
        if (oneSpan(x, y, length, span)) {
            out.append(span.lengthFlags, span.pixels);
        } else {
            renderer_.render(x, y, length, out);
        }
    }

    Renderer<Pixel>& renderer() { return renderer_; }
    // Whether the input is a raster whose memory overlaps that of `other`.
    bool sharesMemoryWith(Raster<Pixel>& other) const {
        const IntRect& b = other.bounds();
        if (!rasterPixels_ || b.isEmpty()) return false;
        const Pixel* const mine = rasterPixels_;
        const Pixel* const mineEnd = mine + (std::int64_t(rasterRows_.bottom - rasterRows_.top - 1) * rasterStride_ +
                                             (rasterRows_.right - rasterRows_.left));
        const Pixel* const theirs = other.at(b.left, b.top);
        const Pixel* const theirsEnd = theirs + (std::int64_t(b.height - 1) * other.stride() + b.width);
        // Compared as addresses: the two may come from different allocations.
        const auto address = [](const Pixel* p) { return reinterpret_cast<std::uintptr_t>(p); };
        return address(mine) < address(theirsEnd) && address(theirs) < address(mineEnd);
    }
    // The value of a solid input, or none.
    const Pixel* solidValue() const { return solid_ ? &solid_->value() : nullptr; }

private:
    Renderer<Pixel>& renderer_;
    Solid<Pixel>* solid_;
    RectEdges rasterRows_{IntRect{}};
    const Pixel* rasterPixels_ = nullptr;  // the top-left pixel, when the input is a raster
    std::int64_t rasterStride_ = 0;
    std::uint32_t rasterFlags_ = 0;
};

}  // namespace tw
