// The reader of SVG path data ("M 10 10 L 20 0 Z"), used by the vector painter's `path`
// instruction. Curves and arcs are flattened at `quality` as they are read.
#pragma once

#include <string_view>

#include "graphics/VectorPath.h"

namespace tw {

// Throws Ketch::SyntaxException on malformed data.
VectorPath parseSvgPath(std::string_view text, double quality);

}  // namespace tw
