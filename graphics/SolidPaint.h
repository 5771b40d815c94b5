// Solid paints: one colour (colour targets) or one coverage value (mask targets).
#pragma once

#include "graphics/Paint.h"

namespace tw {

class SolidColourPaint : public Paint {
public:
    // A premultiplied colour.
    explicit SolidColourPaint(std::uint32_t colour) : colour_(colour) {}

    bool isVisible() const override { return colour_ != 0; }
    void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
              Renderer8& coverage) const override;

private:
    std::uint32_t colour_;
};

class SolidMaskPaint : public Paint {
public:
    explicit SolidMaskPaint(std::uint8_t value) : value_(value) {}

    bool isVisible() const override { return value_ != 0; }
    void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
              Renderer8& coverage) const override;

private:
    std::uint8_t value_;
};

}  // namespace tw
