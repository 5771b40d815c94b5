#include "cushy/GradientView.h"

#include "cushy/ShapeFill.h"
#include "graphics/CanvasTarget.h"
#include "graphics/FillRule.h"
#include "graphics/GradientPaint.h"
#include "graphics/PolygonMask.h"
#include "platform/Exception.h"
#include "speclang/SpecColor.h"
#include "speclang/SpecExpression.h"

#include <algorithm>

namespace tw {

GradientView::GradientView(const IntRect& rect, const SpecMap& spec)
    : frame_(parseStroke(lookup(spec, "frame"), 0xFF000000)), blend_(parseBlendMode(lookup(spec, "blend"))),
      rounded_(parseRounded(lookup(spec, "rounded"), IntRect{0, 0, rect.width, rect.height})) {
    for (const std::string& item : parseList(lookup(spec, "stops"))) {
        SpecList stop = parseList(item);
        stop.resize(2);
        stops_.push_back({std::clamp(evaluateDouble(stop[0], 0), 0.0, 1.0), parseColor(stop[1], 0)});
    }
    if (stops_.empty()) throw FormatException("No stops defined for gradient");
    std::stable_sort(stops_.begin(), stops_.end(),
                     [](const GradientStop& a, const GradientStop& b) { return a.position < b.position; });
    const double w = rect.width, h = rect.height;
    if (const std::string& start = lookup(spec, "start"); !start.empty()) {
        const auto [x0, y0] = parsePair(start, {0, 0});
        const auto [x1, y1] = parsePair(lookup(spec, "end"), {x0, h});
        paint_ = std::make_shared<LinearColourPaint>(Point{x0, y0}, Point{x1, y1}, stops_);
    } else {
        const auto [cx, cy] = parsePair(lookup(spec, "center"), {w / 2, h / 2});
        auto [rx, ry] = parsePair(lookup(spec, "size"), {w / 2, h / 2});
        rx = evaluateDouble(lookup(spec, "width"), rx);
        ry = evaluateDouble(lookup(spec, "height"), ry);
        paint_ = std::make_shared<RadialColourPaint>(Point{cx, cy}, rx, ry, stops_);
    }
}

GradientView::~GradientView() = default;

void GradientView::paint(Raster32& canvas, const IntRect&) {
    double rx, ry;
    rounded_.radiiFor(size_, rx, ry);
    VectorPath shape;
    const double inset = frame_.width / 2;
    shape.addRoundedRect(inset, inset, size_.width - 2 * inset, size_.height - 2 * inset, rx, ry, 1);
    PolygonMask mask(shape, canvas.bounds(), FillRule::nonZero());
    CanvasTarget target(canvas);
    PaintStyle style;
    style.paint = paint_;
    paint_->draw(style, Matrix::identity(), target, RealRect{0, 0, double(size_.width), double(size_.height)}, mask);
    strokeShape(canvas, shape, frame_, blend_);
}

}  // namespace tw
