#include "graphics/SolidPaint.h"

#include "graphics/Multiplier.h"
#include "graphics/Solid.h"

namespace tw {

void SolidColourPaint::draw(const PaintStyle& style, const Matrix&, PaintTarget& target, const RealRect&,
                            Renderer8& coverage) const {
    Solid32 colour(scale32(colour_, style.opacity));
    Multiplier32x8 pixels(colour, coverage);
    target.drawPixels(pixels);
}

void SolidMaskPaint::draw(const PaintStyle& style, const Matrix&, PaintTarget& target, const RealRect&,
                          Renderer8& coverage) const {
    Solid8 value(mul8(style.opacity, value_));
    Multiplier8x8 mask(value, coverage);
    target.drawMask(mask);
}

}  // namespace tw
