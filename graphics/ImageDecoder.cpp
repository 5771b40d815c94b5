#include "graphics/ImageDecoder.h"

#include "graphics/BlendImage.h"
#include "graphics/Inverter.h"
#include "graphics/Multiplier.h"
#include "graphics/Optimizer.h"
#include "graphics/PlainImage.h"
#include "graphics/QvxPNG.h"
#include "graphics/Rasterize.h"
#include "graphics/Solid.h"

#include <cmath>
#include <type_traits>
#include <vector>

namespace tw {

namespace {

void rasterizeInPlace(Renderer32& renderer, Raster32& raster) {
    rasterize32(renderer, raster, raster.bounds());
}

void rasterizeInPlace(Renderer8& renderer, Raster8& raster) {
    rasterize8(renderer, raster, raster.bounds());
}

// A source scaled by a weight, in the argument order of each depth's multiplier.
struct Scaled32 : Multiplier32x8 {
    Scaled32(Renderer32& source, Renderer8& weight) : Multiplier32x8(source, weight) {}
};
struct Scaled8 : Multiplier8x8 {
    Scaled8(Renderer8& source, Renderer8& weight) : Multiplier8x8(weight, source) {}
};
template <class Pixel>
using Scaled = std::conditional_t<sizeof(Pixel) == 4, Scaled32, Scaled8>;

// Scales every pixel by the opacity, in place. For the multiply blend the picture fades
// to white instead, which is what multiply leaves unchanged.
template <class Pixel>
void applyOpacity(Raster<Pixel>& raster, std::uint8_t opacity, BlendMode blend) {
    Solid8 weight(opacity);
    if (blend == BlendMode::multiply) {
        Inverter<Pixel> inverted(raster);
        Scaled<Pixel> scaled(inverted, weight);
        Inverter<Pixel> faded(scaled);
        rasterizeInPlace(faded, raster);
    } else {
        Scaled<Pixel> scaled(raster, weight);
        rasterizeInPlace(scaled, raster);
    }
}

template <class Pixel>
std::shared_ptr<Image> finish(Raster<Pixel>& raster, const ImageKey& key, std::uint8_t opacity) {
    if (opacity < 255) applyOpacity(raster, opacity, key.blend);
    if (!key.rle) return std::make_shared<PlainImage<Raster<Pixel>>>(raster);
    Optimizer<Pixel> runs(raster);
    RLERaster<Pixel> compressed(runs, raster.bounds());
    return std::make_shared<PlainImage<RLERaster<Pixel>>>(compressed);
}

template <class Pixel>
std::shared_ptr<Image> readPixels(QvxPNG& png, const ImageKey& key, std::uint8_t opacity) {
    // A colour picture without alpha stays opaque unless it is made see-through.
    const bool opaque = sizeof(Pixel) == 4 && (png.channels() == 1 || png.channels() == 3) && opacity == 255;
    Raster<Pixel> raster(IntRect{0, 0, png.width(), png.height()}, opaque);
    std::vector<Pixel*> rows(std::size_t(png.height()));
    for (std::int32_t y = 0; y < png.height(); ++y) rows[std::size_t(y)] = raster.at(0, y);
    if constexpr (sizeof(Pixel) == 4) {
        png.read32(rows.data());
    } else {
        png.read8(rows.data());
    }
    return finish(raster, key, opacity);
}

}  // namespace

std::shared_ptr<Image> decodeImage(const std::uint8_t* data, std::size_t size, const ImageKey& key) {
    QvxPNG png(data, size);
    if (key.gamma != 0) png.setGamma(key.gamma);
    const double scaled = std::floor(key.opacity * 255 + 0.5);
    const std::uint8_t opacity = scaled >= 255 ? 255 : scaled > 0 ? std::uint8_t(scaled) : 0;
    std::shared_ptr<Image> image =
        key.mask ? readPixels<std::uint8_t>(png, key, opacity) : readPixels<std::uint32_t>(png, key, opacity);
    if (key.blend != BlendMode::normal) image = std::make_shared<BlendImage>(std::move(image), key.blend, 255);
    return image;
}

}  // namespace tw
