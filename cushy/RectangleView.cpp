#include "cushy/RectangleView.h"

#include "graphics/FillRule.h"
#include "graphics/Image.h"
#include "graphics/Multiplier.h"
#include "graphics/PolygonMask.h"
#include "graphics/Solid.h"
#include "graphics/VectorPath.h"
#include "speclang/SpecColor.h"

namespace tw {

namespace {

void fillPath(Raster32& canvas, const VectorPath& path, std::uint32_t colour, BlendMode blend) {
    if (colour == 0) return;
    PolygonMask mask(path, canvas.bounds(), FillRule::nonZero());
    Solid32 ink(colour);
    Multiplier32x8 inked(ink, mask);
    const IntRect area = intersectionOf(inked.calcBounds(), canvas.bounds());
    if (area.isEmpty()) return;
    compositeOnto(canvas, inked, area, area.left, area.top, blend, 255);
}

}  // namespace

RectangleView::RectangleView(const IntRect& rect, const SpecMap& spec)
    : fill_(parseColor(lookup(spec, "fill"), 0)), frame_(parseStroke(lookup(spec, "frame"), 0xFF000000)),
      blend_(parseBlendMode(lookup(spec, "blend"))),
      rounded_(parseRounded(lookup(spec, "rounded"), IntRect{0, 0, rect.width, rect.height})) {}

void RectangleView::paint(Raster32& canvas, const IntRect&) {
    double rx, ry;
    rounded_.radiiFor(size_, rx, ry);
    VectorPath shape;
    // The frame's line lies wholly inside the view, so that the clip never cuts it.
    const double inset = frame_.width / 2;
    shape.addRoundedRect(inset, inset, size_.width - 2 * inset, size_.height - 2 * inset, rx, ry, 1);
    fillPath(canvas, shape, fill_, blend_);
    if (frame_.width <= 0 || frame_.color == 0) return;
    VectorPath line = shape;
    if (frame_.gap >= 1e-8) line.dash(frame_.dash, frame_.gap, frame_.dashOffset);
    line.stroke(frame_.width, frame_.caps, frame_.joints, frame_.miterLimit, frame_.quality);
    fillPath(canvas, line, frame_.color, blend_);
}

}  // namespace tw
