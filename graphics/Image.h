// A picture that views draw: a knob's film strip, a background, a glyph page. Images are
// shared (the resource manager's cache holds one reference, views hold others) and drawn
// only on the window thread, since drawing moves the read cursor of compressed rasters.
#pragma once

#include "graphics/BlendMode.h"
#include "graphics/IntRect.h"
#include "graphics/Raster.h"

#include <cstdint>

namespace tw {

class Image {
public:
    virtual ~Image() = default;

    // Where the picture's pixels are; plain pictures start at 0, 0.
    virtual IntRect getBounds() const = 0;

    // Draws the whole picture with its top-left corner at (x, y) of the canvas, within the
    // canvas's bounds.
    virtual void draw(Raster32& canvas, std::int32_t x, std::int32_t y);

    // Draws the part `source` of the picture (in its own coordinates) with the part's
    // top-left corner at (x, y).
    virtual void drawPart(Raster32& canvas, const IntRect& source, std::int32_t x, std::int32_t y);

    // 1 for a plain picture; clips and blends tell the count of the picture they wrap.
    virtual std::int32_t imageCount() const { return 1; }

    // The colour raster behind the picture, or the coverage raster of a mask, where there
    // is one (Raster or RLERaster); null otherwise.
    virtual Renderer32* getRenderer() { return nullptr; }
    virtual Renderer8* getMask() { return nullptr; }

    // Draws `source` as drawPart does, meeting the canvas by `mode` and scaled by
    // `opacity`. A picture with a raster behind it draws that; wrappers forward.
    virtual void drawBlended(Raster32& canvas, const IntRect& source, std::int32_t x, std::int32_t y, BlendMode mode,
                             std::uint8_t opacity);
};

// Puts the part `source` of `pixels` on the canvas with its top-left corner at (x, y):
// over it (normal), added with saturation (add), or multiplying it (multiply). Below full
// opacity the pixels are first scaled; for multiply they fade to white instead, which
// leaves the canvas as it is.
void compositeOnto(Raster32& canvas, Renderer32& pixels, const IntRect& source, std::int32_t x, std::int32_t y,
                   BlendMode mode, std::uint8_t opacity);

}  // namespace tw
