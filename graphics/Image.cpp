#include "graphics/Image.h"

#include "graphics/Adder.h"
#include "graphics/Clipper.h"
#include "graphics/Converter8to32.h"
#include "graphics/Inverter.h"
#include "graphics/Multiplier.h"
#include "graphics/Offsetter.h"
#include "graphics/Rasterize.h"
#include "graphics/Solid.h"

namespace tw {

void Image::draw(Raster32& canvas, std::int32_t x, std::int32_t y) {
    const IntRect bounds = getBounds();
    drawPart(canvas, bounds, x + bounds.left, y + bounds.top);
}

void Image::drawPart(Raster32& canvas, const IntRect& source, std::int32_t x, std::int32_t y) {
    drawBlended(canvas, source, x, y, BlendMode::normal, 255);
}

void Image::drawBlended(Raster32& canvas, const IntRect& source, std::int32_t x, std::int32_t y, BlendMode mode,
                        std::uint8_t opacity) {
    if (Renderer32* pixels = getRenderer()) {
        compositeOnto(canvas, *pixels, source, x, y, mode, opacity);
    } else if (Renderer8* mask = getMask()) {
        Converter8to32 grey(*mask);
        compositeOnto(canvas, grey, source, x, y, mode, opacity);
    }
}

namespace {

// The last step: the prepared pixels meet the canvas in place. The pixels go first into
// each combiner, so that the canvas is rendered straight into itself and only read.
void meetCanvas(Raster32& canvas, Renderer32& top, const IntRect& area, BlendMode mode) {
    switch (mode) {
    case BlendMode::normal:
        blend32(top, canvas, area);
        break;
    case BlendMode::add: {
        Adder32 sum(top, canvas);
        rasterize32(sum, canvas, area);
        break;
    }
    case BlendMode::multiply: {
        Multiplier32x32 product(top, canvas);
        rasterize32(product, canvas, area);
        break;
    }
    }
}

}  // namespace

void compositeOnto(Raster32& canvas, Renderer32& pixels, const IntRect& source, std::int32_t x, std::int32_t y,
                   BlendMode mode, std::uint8_t opacity) {
    Clipper32 part(pixels, source);
    Offsetter32 placed(part, x - source.left, y - source.top);
    const IntRect area = placed.calcBounds();
    if (area.isEmpty()) return;
    if (opacity == 255) {
        meetCanvas(canvas, placed, area, mode);
        return;
    }
    Solid8 weight(opacity);
    if (mode == BlendMode::multiply) {
        Inverter32 inverted(placed);
        Multiplier32x8 scaled(inverted, weight);
        Inverter32 faded(scaled);
        meetCanvas(canvas, faded, area, mode);
    } else {
        Multiplier32x8 scaled(placed, weight);
        meetCanvas(canvas, scaled, area, mode);
    }
}

}  // namespace tw
