#include "graphics/Raster.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace tw {

namespace {
constexpr std::size_t kAlignment = 32;
}

template <class Pixel>
void Raster<Pixel>::AlignedFree::operator()(Pixel* p) const {
    ::operator delete[](p, std::align_val_t(kAlignment));
}

template <class Pixel>
Raster<Pixel>::Raster(const IntRect& bounds, bool opaque) : opaque_(opaque) {
    if (bounds.isEmpty()) return;
    // The size is computed in 32 bits; one that does not fit is refused like a failed
    // allocation.
    const std::uint64_t bytes = std::uint64_t(std::uint32_t(bounds.width)) * std::uint32_t(bounds.height) * sizeof(Pixel);
    if (bytes > 0xFFFFFFFFu) throw std::bad_alloc();
    auto* block = static_cast<Pixel*>(::operator new[](std::size_t(bytes), std::align_val_t(kAlignment)));
    std::memset(block, 0, std::size_t(bytes));
    owned_.reset(block);
    pixels_ = block;
    stride_ = bounds.width;
    bounds_ = bounds;
}

template <class Pixel>
Raster<Pixel>::Raster(Pixel* pixels, std::int32_t stride, const IntRect& bounds, bool opaque)
    : pixels_(pixels), stride_(stride), bounds_(bounds), opaque_(opaque) {}

template <class Pixel>
void Raster<Pixel>::swap(Raster& other) noexcept {
    std::swap(pixels_, other.pixels_);
    std::swap(stride_, other.stride_);
    std::swap(bounds_, other.bounds_);
    std::swap(opaque_, other.opaque_);
    std::swap(owned_, other.owned_);
}

template class Raster<std::uint32_t>;
template class Raster<std::uint8_t>;

}  // namespace tw
