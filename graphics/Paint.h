// Paints turn a coverage (where to paint) into pixels on a PaintTarget: solid colours,
// linear and radial gradients, and patterns, each in a colour and a mask flavour. A
// PaintStyle holds one with its matrix, opacity and relative flag; the vector painter
// keeps one style for fills and one for the pen.
#pragma once

#include <cstdint>
#include <memory>

#include "graphics/Matrix.h"
#include "graphics/PaintTarget.h"
#include "graphics/VectorPath.h"

namespace tw {

class Paint;

struct PaintStyle {
    Matrix matrix;
    // The paint's coordinates are in units of the shape's bounding box.
    bool relative = false;
    std::uint8_t opacity = 255;
    // Paints are immutable once built, so styles copied between painter states share them.
    std::shared_ptr<const Paint> paint;
};

class Paint {
public:
    // False when drawing would leave no mark.
    virtual bool isVisible() const = 0;
    // Paints where `coverage` says, on `target`; `ctx` is the painter's current matrix
    // and `shapeBounds` the shape's box in user space (for relative styles).
    virtual void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
                      Renderer8& coverage) const = 0;
    virtual ~Paint() = default;
};

// The paint's matrix: ctx after the style's, with the shape's box between them when relative.
Matrix effectivePaintMatrix(const PaintStyle& style, const Matrix& ctx, const RealRect& shapeBounds);

}  // namespace tw
