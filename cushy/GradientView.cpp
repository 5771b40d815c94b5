#include "cushy/GradientView.h"

#include "cushy/ShapeFill.h"
#include "graphics/CanvasTarget.h"
#include "graphics/FillRule.h"
#include "graphics/GradientPaint.h"
#include "graphics/Image.h"
#include "graphics/PaintTarget.h"
#include "graphics/PolygonMask.h"
#include "platform/Exception.h"
#include "speclang/SpecColor.h"
#include "speclang/SpecExpression.h"

#include <algorithm>

namespace tw {

namespace {

// The view's canvas, met by the view's blend mode: the gradient adds or multiplies as the
// rectangle's fill does.
class BlendTarget : public PaintTarget {
public:
    BlendTarget(Raster32& canvas, BlendMode mode) : canvas_(canvas), mode_(mode) {}

    PaintKind paintKind() const override { return PaintKind::colour; }
    void drawPixels(Renderer32& pixels) override {
        const IntRect area = intersectionOf(pixels.calcBounds(), canvas_.bounds());
        if (!area.isEmpty()) compositeOnto(canvas_, pixels, area, area.left, area.top, mode_, 255);
    }
    void drawMask(Renderer8&) override {}
    void defineBounds(const IntRect&) override {}
    IntRect getBounds() const override { return canvas_.bounds(); }

private:
    Raster32& canvas_;
    BlendMode mode_;
};

}  // namespace

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
    PaintStyle style;
    style.paint = paint_;
    const RealRect box{0, 0, double(size_.width), double(size_.height)};
    if (blend_ == BlendMode::normal) {
        CanvasTarget target(canvas);
        paint_->draw(style, Matrix::identity(), target, box, mask);
    } else {
        BlendTarget target(canvas, blend_);
        paint_->draw(style, Matrix::identity(), target, box, mask);
    }
    strokeShape(canvas, shape, frame_, blend_);
}

}  // namespace tw
