// The target a pattern's body draws on: a raster at `resolution` device pixels per
// pattern unit, allocated when the body declares its bounds. Afterwards the raster
// becomes a wrapping texture through makePaint.
#pragma once

#include <memory>

#include "graphics/Paint.h"
#include "graphics/Raster.h"

namespace tw {

class PatternTarget : public PaintTarget {
public:
    PatternTarget(PaintKind kind, std::int32_t resolution) : kind_(kind), resolution_(resolution) {}

    // max(ceil(scale of ctx * patternResolution - 0.0001), 1): raster pixels per unit.
    static std::int32_t resolutionFor(const Matrix& ctx, double patternResolution);

    PaintKind paintKind() const override { return kind_; }
    // Blends over the colour raster; throws "Undeclared bounds" before a declaration.
    void drawPixels(Renderer32& pixels) override;
    // Adds into the mask raster; throws "Undeclared bounds" before a declaration.
    void drawMask(Renderer8& mask) override;
    // Declares the pattern's rectangle in pattern units and allocates the raster, clear.
    // Throws "Multiple bounds declarations" the second time, "Value out of range" for a
    // width or height that is not positive, or a raster of more than 2^20 pixels.
    void defineBounds(const IntRect& rect) override;
    // The raster's rectangle, in device pixels of the sub-painter.
    IntRect getBounds() const override;

    // The paint that tiles what was drawn; invisible when no bounds were declared.
    std::shared_ptr<const Paint> makePaint();

private:
    PaintKind kind_;
    std::int32_t resolution_;
    bool declared_ = false;
    std::shared_ptr<Raster32> colour_;
    std::shared_ptr<Raster8> mask_;
};

// Tiles a raster drawn at `resolution` pixels per unit: colours for colour targets,
// coverage for mask targets.
template <class Pixel>
class PatternPaint : public Paint {
public:
    PatternPaint(std::shared_ptr<const Raster<Pixel>> raster, std::int32_t resolution)
        : raster_(std::move(raster)), resolution_(resolution) {}

    bool isVisible() const override { return raster_ != nullptr; }
    void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
              Renderer8& coverage) const override;

private:
    std::shared_ptr<const Raster<Pixel>> raster_;
    std::int32_t resolution_;
};

using PatternColourPaint = PatternPaint<std::uint32_t>;
using PatternMaskPaint = PatternPaint<std::uint8_t>;

extern template class PatternPaint<std::uint32_t>;
extern template class PatternPaint<std::uint8_t>;

}  // namespace tw
