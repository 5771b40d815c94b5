// Where a painter's output ends: the colour canvas of a view, a mask being built, or a
// pattern's raster. Paints hand it a finished renderer tree. Which kind of paint a target
// takes (colour or mask) tells the painter how to read paint specs.
#pragma once

#include "graphics/Renderer.h"

namespace tw {

enum class PaintKind { colour, mask };

class PaintTarget {
public:
    virtual PaintKind paintKind() const = 0;
    virtual void drawPixels(Renderer32& pixels) = 0;
    virtual void drawMask(Renderer8& mask) = 0;
    virtual void defineBounds(const IntRect& rect) = 0;
    virtual IntRect getBounds() const = 0;
    virtual ~PaintTarget() = default;
};

}  // namespace tw
