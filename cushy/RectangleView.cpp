#include "cushy/RectangleView.h"

#include "cushy/ShapeFill.h"
#include "speclang/SpecColor.h"

namespace tw {

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
    fillShape(canvas, shape, fill_, blend_);
    strokeShape(canvas, shape, frame_, blend_);
}

}  // namespace tw
