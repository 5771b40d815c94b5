#include "cushy/ShapeFill.h"

#include "graphics/FillRule.h"
#include "graphics/Image.h"
#include "graphics/Multiplier.h"
#include "graphics/PolygonMask.h"
#include "graphics/Solid.h"

namespace tw {

void fillShape(Raster32& canvas, const VectorPath& path, std::uint32_t colour, BlendMode blend) {
    if (colour == 0) return;
    PolygonMask mask(path, canvas.bounds(), FillRule::nonZero());
    Solid32 ink(colour);
    Multiplier32x8 inked(ink, mask);
    const IntRect area = intersectionOf(inked.calcBounds(), canvas.bounds());
    if (area.isEmpty()) return;
    compositeOnto(canvas, inked, area, area.left, area.top, blend, 255);
}

void strokeShape(Raster32& canvas, const VectorPath& path, const Stroke& stroke, BlendMode blend) {
    if (stroke.width <= 0 || stroke.color == 0) return;
    VectorPath line = path;
    if (stroke.gap >= 1e-8) line.dash(stroke.dash, stroke.gap, stroke.dashOffset);
    line.stroke(stroke.width, stroke.caps, stroke.joints, stroke.miterLimit, stroke.quality);
    fillShape(canvas, line, stroke.color, blend);
}

}  // namespace tw
