// A mask being drawn by the painter's `mask` instruction: coverage adds up, saturating
// at 255, in a compressed raster over the target's bounds. Colour pixels draw nothing.
#pragma once

#include "graphics/PaintTarget.h"
#include "graphics/RLERaster.h"

namespace tw {

class MaskTarget : public PaintTarget {
public:
    // Starts empty (all zero) over `bounds`.
    explicit MaskTarget(const IntRect& bounds) : bounds_(bounds) {}

    PaintKind paintKind() const override { return PaintKind::mask; }
    void drawPixels(Renderer32&) override {}
    void drawMask(Renderer8& mask) override;
    // Throws Ketch::RunTimeException "Bounds cannot be declared for mask".
    void defineBounds(const IntRect& rect) override;
    IntRect getBounds() const override { return bounds_; }

    RLERaster8& mask() { return mask_; }

private:
    IntRect bounds_;
    RLERaster8 mask_;
};

}  // namespace tw
