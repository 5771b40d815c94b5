#include "cushy/RasterView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "graphics/Image.h"
#include "speclang/SpecExpression.h"

#include <algorithm>
#include <cmath>

namespace tw {

RasterView::RasterView(CushyView& layout, const SpecMap& spec)
    : image_(layout.host().image(layout, lookup(spec, "image"))), blend_(parseBlendMode(lookup(spec, "blend"))) {
    const double alpha = std::floor(evaluateDouble(lookup(spec, "opacity"), 100) * 0.01 * 255 + 0.5);
    opacity_ = std::uint8_t(std::clamp(alpha != alpha ? 255.0 : alpha, 0.0, 255.0));
}

void RasterView::paint(Raster32& canvas, const IntRect&) {
    if (opacity_ == 0) return;
    if (opacity_ == 255 && blend_ == BlendMode::normal) {
        image_->draw(canvas, 0, 0);
        return;
    }
    const IntRect b = image_->getBounds();
    image_->drawBlended(canvas, b, b.left, b.top, blend_, opacity_);
}

}  // namespace tw
