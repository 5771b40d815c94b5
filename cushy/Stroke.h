// How a view draws a frame line: colour, width, caps, joints and dashes, read from a
// `frame`-like spec value. The line itself is made by VectorPath::stroke and dash.
#pragma once

#include "graphics/VectorPath.h"

#include <cstdint>
#include <string>

namespace tw {

struct Stroke {
    std::uint32_t color = 0;
    double width = 0;  // 0 draws nothing
    StrokeCaps caps = StrokeCaps::butt;
    StrokeJoints joints = StrokeJoints::miter;
    double miterLimit = 2;
    double quality = 1;
    double dash = 0;  // a gap of 0 means no dashes
    double gap = 0;
    double dashOffset = 0;
};

// An empty value is an invisible stroke. A map has the keys `color`, `stroke` (the width,
// default 1), `caps`, `joints`, `miterLimit`, `quality`, `dash` ("none" or a length),
// `gap` (default the dash) and `dashOffset`. Anything else is a colour, stroked 1 pixel
// wide. Throws FormatException "Invalid stroke: ", "Invalid caps: ", "Invalid joints: ",
// "Invalid quality: ", "Invalid dash: ", "Invalid gap: ", "Invalid dashOffset: ", or a
// colour's message.
Stroke parseStroke(const std::string& raw, std::uint32_t defaultColor);

}  // namespace tw
