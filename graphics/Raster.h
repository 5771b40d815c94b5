// A rectangle of pixels in memory, owned or borrowed (a window tile, a picture). As a
// renderer it hands out spans that point straight into its pixels; nothing is copied.
// It is also the destination of rasterize, and the source of the image transformer.
#pragma once

#include <cstddef>
#include <memory>

#include "graphics/Renderer.h"

namespace tw {

template <class Pixel>
class Raster : public Renderer<Pixel> {
public:
    // An empty raster.
    Raster() = default;
    // Owned pixels, all transparent. A size that overflows 32 bits throws std::bad_alloc.
    explicit Raster(const IntRect& bounds, bool opaque = false);
    // Borrowed pixels: `pixels` is the top-left pixel of `bounds`, rows `stride` pixels apart.
    Raster(Pixel* pixels, std::int32_t stride, const IntRect& bounds, bool opaque = false);

    Raster(Raster&& other) noexcept { swap(other); }
    Raster& operator=(Raster&& other) noexcept {
        swap(other);
        return *this;
    }
    void swap(Raster& other) noexcept;

    IntRect calcBounds() const override { return bounds_; }
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) override {
        renderWithin(bounds_, x, y, length, out, [&](std::int32_t start, std::int32_t n) {
            out.append(std::uint32_t(n) | (opaque_ ? kSpanOpaque : 0u), at(start, y));
        });
    }

    const IntRect& bounds() const { return bounds_; }
    std::int32_t stride() const { return stride_; }
    // Whether all pixels are known to be opaque.
    bool opaque() const { return opaque_; }
    // The pixel at absolute coordinates (x, y), which must lie inside the bounds.
    Pixel* at(std::int32_t x, std::int32_t y) {
        return pixels_ + (std::ptrdiff_t(y - bounds_.top) * stride_ + (x - bounds_.left));
    }
    const Pixel* at(std::int32_t x, std::int32_t y) const {
        return pixels_ + (std::ptrdiff_t(y - bounds_.top) * stride_ + (x - bounds_.left));
    }

private:
    struct AlignedFree {
        void operator()(Pixel* p) const;
    };

    Pixel* pixels_ = nullptr;
    std::int32_t stride_ = 0;
    IntRect bounds_;
    bool opaque_ = false;
    std::unique_ptr<Pixel[], AlignedFree> owned_;
};

using Raster32 = Raster<std::uint32_t>;
using Raster8 = Raster<std::uint8_t>;

extern template class Raster<std::uint32_t>;
extern template class Raster<std::uint8_t>;

}  // namespace tw
