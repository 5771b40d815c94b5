// The colour canvas: pixels are blended over it in place. Masks draw nothing here, and a
// bounds declaration is ignored.
#pragma once

#include "graphics/PaintTarget.h"
#include "graphics/Raster.h"

namespace tw {

class CanvasTarget : public PaintTarget {
public:
    explicit CanvasTarget(Raster32& canvas) : canvas_(canvas) {}

    PaintKind paintKind() const override { return PaintKind::colour; }
    void drawPixels(Renderer32& pixels) override;
    void drawMask(Renderer8&) override {}
    void defineBounds(const IntRect&) override {}
    IntRect getBounds() const override { return canvas_.bounds(); }

private:
    Raster32& canvas_;
};

}  // namespace tw
