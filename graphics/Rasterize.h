// Runs a renderer tree into a raster: the last step of every drawing. The destination's
// own rows are handed to the tree as output pixels, so renderers that compute pixels
// write straight into the image, and spans that point there already are not copied.
#pragma once

#include "graphics/Raster.h"

namespace tw {

// Rasterises the intersection of the renderer's bounds, the destination and `clip`.
void rasterize32(Renderer32& renderer, Raster32& destination, const IntRect& clip = FullRect);
void rasterize8(Renderer8& renderer, Raster8& destination, const IntRect& clip = FullRect);

// Draws `top` over the destination in place, within `clip`: the pixels that rasterising
// Blender32(top, destination) into the destination gives, without the blender's merge,
// since the blender's bottom is the very place its answer goes.
void blend32(Renderer32& top, Raster32& destination, const IntRect& clip = FullRect);

}  // namespace tw
