// What a Keel painter draws with: the transform, the fill and the pen, the stroke geometry,
// the quality settings and the mask. A painter keeps the state it started with (for
// `reset`) and the current one; `context`, `mask` and pattern bodies run on copies.
#pragma once

#include <memory>

#include "graphics/GammaTable.h"
#include "graphics/Matrix.h"
#include "graphics/Paint.h"
#include "graphics/RLERaster.h"
#include "graphics/VectorPath.h"

namespace tw {

struct PainterState {
    Matrix matrix;
    double gamma = 1.0;
    // The coverage table of `gamma`; none when gamma is within 0.0001 of 1.
    std::shared_ptr<const GammaTable> gammaTable;
    double curveQuality = 1.0;
    double patternResolution = 1.0;
    bool evenOdd = false;
    PaintStyle fill;
    PaintStyle pen;
    double width = 1.0;
    StrokeCaps caps = StrokeCaps::butt;
    StrokeJoints joints = StrokeJoints::miter;
    double miterLimit = 2.0;
    // No dashes while gap is 0.
    double dash = 0;
    double gap = 0;
    double dashOffset = 0;
    // Coverage that every shape is multiplied by. Copies of the state share it; it is only
    // ever replaced whole, never drawn into.
    std::shared_ptr<RLERaster8> mask;
    // Rectangles' edges and their pens' widths put on whole device pixels: set for pictures
    // drawn at a zoom, where a hairline of the 100 % picture would otherwise fall between
    // pixels and blur.
    bool pixelGrid = false;
};

}  // namespace tw
