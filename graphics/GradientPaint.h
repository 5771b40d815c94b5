// Gradient paints: a ramp (the position along a linear axis, or the closeness to a radial
// centre) looked up in a gradient table. The colour flavour holds a table of colours and
// draws pixels; the mask flavour holds a table of coverage bytes and draws masks. Stops
// are given in ascending position from 0 to 1, as written in the paint spec; for
// radial gradients 0 is the centre and 1 the rim (the paint turns them round for its ramp).
#pragma once

#include <span>

#include "graphics/GradientTable.h"
#include "graphics/Paint.h"

namespace tw {

template <class Table>
class LinearGradientPaint : public Paint {
public:
    LinearGradientPaint(Point p0, Point p1, std::span<const GradientStop> stops) : p0_(p0), p1_(p1), table_(stops) {}

    bool isVisible() const override { return table_.visible; }
    void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
              Renderer8& coverage) const override;

private:
    Point p0_, p1_;
    Table table_;
};

template <class Table>
class RadialGradientPaint : public Paint {
public:
    RadialGradientPaint(Point centre, double rx, double ry, std::span<const GradientStop> stops);

    bool isVisible() const override { return table_.visible; }
    void draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
              Renderer8& coverage) const override;

private:
    Point centre_;
    double rx_, ry_;
    Table table_;
};

using LinearColourPaint = LinearGradientPaint<GradientTable32>;
using LinearMaskPaint = LinearGradientPaint<GradientTable8>;
using RadialColourPaint = RadialGradientPaint<GradientTable32>;
using RadialMaskPaint = RadialGradientPaint<GradientTable8>;

extern template class LinearGradientPaint<GradientTable32>;
extern template class LinearGradientPaint<GradientTable8>;
extern template class RadialGradientPaint<GradientTable32>;
extern template class RadialGradientPaint<GradientTable8>;

}  // namespace tw
