#include "graphics/CanvasTarget.h"

#include "graphics/Blender.h"
#include "graphics/Rasterize.h"

namespace tw {

void CanvasTarget::drawPixels(Renderer32& pixels) {
    // The canvas answers spans that point at itself, so untouched pixels are not copied.
    Blender32 over(pixels, canvas_);
    rasterize32(over, canvas_, pixels.calcBounds());
}

}  // namespace tw
