// Filling and stroking a vector shape on a view's canvas in one colour: what rectangles,
// buttons, knob caps, the bubble and the marker draw their panels, frames and dials with.
// A view may bend the shape's edge coverage by a gamma of its own.
#pragma once

#include <cstdint>
#include <optional>

#include "cushy/Stroke.h"
#include "graphics/BlendMode.h"
#include "graphics/GammaTable.h"
#include "graphics/Raster.h"
#include "graphics/VectorPath.h"
#include "speclang/SpecLanguage.h"

namespace tw {

// Nothing for a colour of 0; `gamma`, when given, applies to the edge's coverage.
void fillShape(Raster32& canvas, const VectorPath& path, std::uint32_t colour, BlendMode blend,
               const GammaTable* gamma = nullptr);
// The outline of `path` by `stroke`, dashed if it says so; nothing for an invisible stroke.
void strokeShape(Raster32& canvas, const VectorPath& path, const Stroke& stroke, BlendMode blend,
                 const GammaTable* gamma = nullptr);

// The table of a view's `gamma` key: none for 1 or no key. Throws FormatException
// "Value out of range" for a gamma outside 0.0001 to 99.9999.
std::optional<GammaTable> readShapeGamma(const SpecMap& spec);

}  // namespace tw
