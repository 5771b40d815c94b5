#include "graphics/GradientPaint.h"

#include <cmath>
#include <vector>

#include "graphics/GammaFilter8.h"
#include "graphics/LinearRamp8.h"
#include "graphics/Lookup8to32.h"
#include "graphics/OpacityCoverage.h"
#include "graphics/RadialRamp8.h"

namespace tw {

namespace {

// The ramp of a linear gradient under matrix M. Its iso-lines stay parallel to the image
// of the axis' perpendicular, also under a skew; a mirroring matrix turns D round.
LinearRamp8 linearRamp(const Matrix& m, Point p0, Point p1) {
    const Point a = m.apply(p0.x, p0.y), b = m.apply(p1.x, p1.y);
    const Point q = m.apply(p0.x - (p1.y - p0.y), p0.y + (p1.x - p0.x));
    const double px = q.x - a.x, py = q.y - a.y;
    const double p2 = px * px + py * py;
    const double t = p2 == 0 ? 0 : std::fabs((b.x - a.x) * py - (b.y - a.y) * px) / p2;
    const double dx = t * py, dy = -t * px;
    const double d2 = dx * dx + dy * dy;
    const double s = (d2 == 0 ? 0 : 1 / d2) * 65536;
    return LinearRamp8(a.x, a.y, dx * s, dy * s);
}

// The ramp gives 255 at the centre: positions become 1 - p, in reverse order.
std::vector<GradientStop> rampOrder(std::span<const GradientStop> stops) {
    std::vector<GradientStop> r(stops.rbegin(), stops.rend());
    for (GradientStop& s : r) s.position = 1 - s.position;
    return r;
}

struct RadialGeometry {
    Point centre;
    double rx, ry;
};

// The ellipse stays axis-aligned on the device: the matrix's rotation does not turn it.
RadialGeometry radialGeometry(const Matrix& m, Point c, double rx, double ry) {
    const Point centre = m.apply(c.x, c.y);
    const Point ex = m.apply(c.x + rx, c.y), ey = m.apply(c.x, c.y + ry);
    return {centre, std::hypot(ex.x - centre.x, ex.y - centre.y), std::hypot(ey.x - centre.x, ey.y - centre.y)};
}

}  // namespace

void LinearColourPaint::draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
                             Renderer8& coverage) const {
    LinearRamp8 ramp = linearRamp(effectivePaintMatrix(style, ctx, shapeBounds), p0_, p1_);
    OpacityCoverage scaled(coverage, style.opacity);
    Lookup8to32 colours(ramp, table_.entries, table_.allOpaque);
    Multiplier32x8 pixels(colours, scaled.get());
    target.drawPixels(pixels);
}

void LinearMaskPaint::draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
                           Renderer8& coverage) const {
    LinearRamp8 ramp = linearRamp(effectivePaintMatrix(style, ctx, shapeBounds), p0_, p1_);
    OpacityCoverage scaled(coverage, style.opacity);
    GammaFilter8 values(ramp, table_.entries);
    Multiplier8x8 mask(values, scaled.get());
    target.drawMask(mask);
}

RadialColourPaint::RadialColourPaint(Point centre, double rx, double ry, std::span<const GradientStop> stops)
    : centre_(centre), rx_(rx), ry_(ry), table_(rampOrder(stops)) {}

void RadialColourPaint::draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
                             Renderer8& coverage) const {
    const RadialGeometry g = radialGeometry(effectivePaintMatrix(style, ctx, shapeBounds), centre_, rx_, ry_);
    if (g.rx == 0 || g.ry == 0) {
        Solid32 colour(scale32(table_.entries[0], style.opacity));
        Multiplier32x8 pixels(colour, coverage);
        target.drawPixels(pixels);
        return;
    }
    RadialRamp8 ramp(g.centre.x, g.centre.y, g.rx, g.ry);
    OpacityCoverage scaled(coverage, style.opacity);
    Lookup8to32 colours(ramp, table_.entries, table_.allOpaque);
    Multiplier32x8 pixels(colours, scaled.get());
    target.drawPixels(pixels);
}

RadialMaskPaint::RadialMaskPaint(Point centre, double rx, double ry, std::span<const GradientStop> stops)
    : centre_(centre), rx_(rx), ry_(ry), table_(rampOrder(stops)) {}

void RadialMaskPaint::draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
                           Renderer8& coverage) const {
    const RadialGeometry g = radialGeometry(effectivePaintMatrix(style, ctx, shapeBounds), centre_, rx_, ry_);
    if (g.rx == 0 || g.ry == 0) {
        Solid8 value(mul8(style.opacity, table_.entries[0]));
        Multiplier8x8 mask(value, coverage);
        target.drawMask(mask);
        return;
    }
    RadialRamp8 ramp(g.centre.x, g.centre.y, g.rx, g.ry);
    OpacityCoverage scaled(coverage, style.opacity);
    GammaFilter8 values(ramp, table_.entries);
    Multiplier8x8 mask(values, scaled.get());
    target.drawMask(mask);
}

}  // namespace tw
