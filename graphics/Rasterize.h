// Runs a renderer tree into a raster: the last step of every drawing. The destination's
// own rows are handed to the tree as output pixels, so renderers that compute pixels
// write straight into the image, and spans that point there already are not copied.
#pragma once

#include "graphics/Raster.h"

namespace tw {

// Rasterises the intersection of the renderer's bounds, the destination and `clip`.
void rasterize32(Renderer32& renderer, Raster32& destination, const IntRect& clip = FullRect);
void rasterize8(Renderer8& renderer, Raster8& destination, const IntRect& clip = FullRect);

}  // namespace tw
