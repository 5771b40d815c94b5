// Filling and stroking a vector shape on a view's canvas in one colour: what rectangles,
// buttons, knob caps and the bubble draw their panels, frames and dials with.
#pragma once

#include <cstdint>

#include "cushy/Stroke.h"
#include "graphics/BlendMode.h"
#include "graphics/Raster.h"
#include "graphics/VectorPath.h"

namespace tw {

// Nothing for a colour of 0.
void fillShape(Raster32& canvas, const VectorPath& path, std::uint32_t colour, BlendMode blend);
// The outline of `path` by `stroke`, dashed if it says so; nothing for an invisible stroke.
void strokeShape(Raster32& canvas, const VectorPath& path, const Stroke& stroke, BlendMode blend);

}  // namespace tw
