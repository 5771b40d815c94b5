// Gradient paints: a ramp (the position along a linear axis, or the closeness to a radial
// centre) looked up in a gradient table, in a colour and a mask flavour. Stops are given
// in ascending position from 0 to 1, as written in the paint specification; for radial
// gradients 0 is the centre and 1 the rim (the paint turns them round for its ramp).
#pragma once

#include <span>

#include "graphics/GradientTable.h"
#include "graphics/Paint.h"

namespace tw {

class LinearColourPaint : public Paint {
public:
    LinearColourPaint(Point p0, Point p1, std::span<const GradientStop> stops) : p0_(p0), p1_(p1), table_(stops) {}

    bool isVisible() const override { return table_.visible; }
    void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
              Renderer8& coverage) const override;

private:
    Point p0_, p1_;
    GradientTable32 table_;
};

class LinearMaskPaint : public Paint {
public:
    LinearMaskPaint(Point p0, Point p1, std::span<const GradientStop> stops) : p0_(p0), p1_(p1), table_(stops) {}

    bool isVisible() const override { return table_.visible; }
    void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
              Renderer8& coverage) const override;

private:
    Point p0_, p1_;
    GradientTable8 table_;
};

class RadialColourPaint : public Paint {
public:
    RadialColourPaint(Point centre, double rx, double ry, std::span<const GradientStop> stops);

    bool isVisible() const override { return table_.visible; }
    void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
              Renderer8& coverage) const override;

private:
    Point centre_;
    double rx_, ry_;
    GradientTable32 table_;
};

class RadialMaskPaint : public Paint {
public:
    RadialMaskPaint(Point centre, double rx, double ry, std::span<const GradientStop> stops);

    bool isVisible() const override { return table_.visible; }
    void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
              Renderer8& coverage) const override;

private:
    Point centre_;
    double rx_, ry_;
    GradientTable8 table_;
};

}  // namespace tw
