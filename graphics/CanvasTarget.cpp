#include "graphics/CanvasTarget.h"

#include "graphics/Rasterize.h"

namespace tw {

void CanvasTarget::drawPixels(Renderer32& pixels) { blend32(pixels, canvas_, pixels.calcBounds()); }

}  // namespace tw
