// The pictures that own their pixels: a colour or a coverage raster, plain or compressed
// into runs. The resource manager makes them from PNG files; everything else that views
// draw (clips, blends, film frames) wraps one of them.
#pragma once

#include "graphics/Image.h"
#include "graphics/RLERaster.h"
#include "graphics/Raster.h"

#include <type_traits>

namespace tw {

template <class RasterType>
class PlainImage : public Image {
public:
    // Takes the raster's contents; `raster` is left empty.
    explicit PlainImage(RasterType& raster) { raster_.swap(raster); }

    IntRect getBounds() const override { return raster_.bounds(); }
    Renderer32* getRenderer() override {
        if constexpr (colour) {
            return &raster_;
        } else {
            return nullptr;
        }
    }
    Renderer8* getMask() override {
        if constexpr (!colour) {
            return &raster_;
        } else {
            return nullptr;
        }
    }

    RasterType& raster() { return raster_; }

private:
    static constexpr bool colour = std::is_base_of_v<Renderer32, RasterType>;

    RasterType raster_;
};

using RasterImage = PlainImage<Raster32>;
using MaskImage = PlainImage<Raster8>;
using RLEImage = PlainImage<RLERaster32>;
using RLEMaskImage = PlainImage<RLERaster8>;

}  // namespace tw
