#include "graphics/GradientPaint.h"

#include <cmath>
#include <vector>

#include "graphics/GammaFilter8.h"
#include "graphics/LinearRamp8.h"
#include "graphics/Lookup8to32.h"
#include "graphics/Multiplier.h"
#include "graphics/OpacityCoverage.h"
#include "graphics/RadialRamp8.h"
#include "graphics/Solid.h"

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

// The last step of a gradient: the ramp through the table, times the coverage.
void drawRamp(Renderer8& ramp, const GradientTable32& table, Renderer8& coverage, PaintTarget& target) {
    Lookup8to32 colours(ramp, table.entries, table.allOpaque);
    Multiplier32x8 pixels(colours, coverage);
    target.drawPixels(pixels);
}

void drawRamp(Renderer8& ramp, const GradientTable8& table, Renderer8& coverage, PaintTarget& target) {
    GammaFilter8 values(ramp, table.entries);
    Multiplier8x8 mask(values, coverage);
    target.drawMask(mask);
}

// A gradient that has collapsed to its first entry, scaled by the opacity.
void drawFlat(const GradientTable32& table, std::uint8_t opacity, Renderer8& coverage, PaintTarget& target) {
    Solid32 colour(scale32(table.entries[0], opacity));
    Multiplier32x8 pixels(colour, coverage);
    target.drawPixels(pixels);
}

void drawFlat(const GradientTable8& table, std::uint8_t opacity, Renderer8& coverage, PaintTarget& target) {
    Solid8 value(mul8(opacity, table.entries[0]));
    Multiplier8x8 mask(value, coverage);
    target.drawMask(mask);
}

}  // namespace

template <class Table>
void LinearGradientPaint<Table>::draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target,
                                      const RealRect& shapeBounds, Renderer8& coverage) const {
    LinearRamp8 ramp = linearRamp(effectivePaintMatrix(style, ctx, shapeBounds), p0_, p1_);
    OpacityCoverage scaled(coverage, style.opacity);
    drawRamp(ramp, table_, scaled.get(), target);
}

template <class Table>
RadialGradientPaint<Table>::RadialGradientPaint(Point centre, double rx, double ry, std::span<const GradientStop> stops)
    : centre_(centre), rx_(rx), ry_(ry), table_(rampOrder(stops)) {}

// The ellipse stays axis-aligned on the device: the matrix's rotation does not turn it.
template <class Table>
void RadialGradientPaint<Table>::draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target,
                                      const RealRect& shapeBounds, Renderer8& coverage) const {
    const Matrix m = effectivePaintMatrix(style, ctx, shapeBounds);
    const Point c = m.apply(centre_.x, centre_.y);
    const Point ex = m.apply(centre_.x + rx_, centre_.y), ey = m.apply(centre_.x, centre_.y + ry_);
    const double rx = std::hypot(ex.x - c.x, ex.y - c.y), ry = std::hypot(ey.x - c.x, ey.y - c.y);
    if (rx == 0 || ry == 0) {
        drawFlat(table_, style.opacity, coverage, target);
        return;
    }
    RadialRamp8 ramp(c.x, c.y, rx, ry);
    OpacityCoverage scaled(coverage, style.opacity);
    drawRamp(ramp, table_, scaled.get(), target);
}

template class LinearGradientPaint<GradientTable32>;
template class LinearGradientPaint<GradientTable8>;
template class RadialGradientPaint<GradientTable32>;
template class RadialGradientPaint<GradientTable8>;

}  // namespace tw
