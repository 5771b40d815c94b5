// The gradient of a Keel paint spec, the expanded text of its `gradient:` label:
// "linear x0,y0,x1,y1 stops:[0 white 1 black]" or "radial cx,cy,rx[,ry] from:white to:none".
// Stop values are colours on a colour target and opacities on a mask target.
#pragma once

#include <memory>
#include <string_view>

#include "graphics/Paint.h"

namespace tw::Ketch {
struct Frame;
}

namespace tw {

// Faults: "Unrecognized gradient type", "Invalid stops for gradient" (an odd count, or
// positions not ascending within 0..1), "Missing argument(s)" without stops or from and
// to, "Unrecognized labels or too many arguments", and those of the values.
std::shared_ptr<const Paint> parseKeelGradient(Ketch::Frame& frame, std::string_view spec, PaintKind kind);

}  // namespace tw
