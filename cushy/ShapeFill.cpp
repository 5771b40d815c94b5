#include "cushy/ShapeFill.h"

#include "graphics/CoverageChain.h"
#include "graphics/FillRule.h"
#include "graphics/Image.h"
#include "graphics/Multiplier.h"
#include "graphics/PolygonMask.h"
#include "graphics/Solid.h"
#include "platform/Exception.h"
#include "speclang/SpecExpression.h"

namespace tw {

void fillShape(Raster32& canvas, const VectorPath& path, std::uint32_t colour, BlendMode blend,
               const GammaTable* gamma) {
    if (colour == 0) return;
    PolygonMask mask(path, canvas.bounds(), FillRule::nonZero());
    CoverageChain coverage(mask, gamma, nullptr);
    Solid32 ink(colour);
    Multiplier32x8 inked(ink, coverage.coverage());
    const IntRect area = intersectionOf(inked.calcBounds(), canvas.bounds());
    if (area.isEmpty()) return;
    compositeOnto(canvas, inked, area, area.left, area.top, blend, 255);
}

void strokeShape(Raster32& canvas, const VectorPath& path, const Stroke& stroke, BlendMode blend,
                 const GammaTable* gamma) {
    if (stroke.width <= 0 || stroke.color == 0) return;
    VectorPath line = path;
    if (stroke.gap >= 1e-8) line.dash(stroke.dash, stroke.gap, stroke.dashOffset);
    line.stroke(stroke.width, stroke.caps, stroke.joints, stroke.miterLimit, stroke.quality);
    fillShape(canvas, line, stroke.color, blend, gamma);
}

std::optional<GammaTable> readShapeGamma(const SpecMap& spec) {
    const double gamma = evaluateDouble(lookup(spec, "gamma"), 1);
    if (!(gamma >= 0.0001 && gamma <= 99.9999)) throw FormatException("Value out of range");
    return GammaTable::forGamma(gamma);
}

}  // namespace tw
