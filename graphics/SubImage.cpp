#include "graphics/SubImage.h"

namespace tw {

SubImage::SubImage(std::shared_ptr<Image> parent, const IntRect& rect, std::int32_t offsetX, std::int32_t offsetY)
    : parent_(std::move(parent)), rect_(intersectionOf(rect, parent_->getBounds())), offsetX_(offsetX),
      offsetY_(offsetY) {}

void SubImage::drawBlended(Raster32& canvas, const IntRect& source, std::int32_t x, std::int32_t y, BlendMode mode,
                           std::uint8_t opacity) {
    const IntRect visible = intersectionOf(source, getBounds());
    if (visible.isEmpty()) return;
    const IntRect inParent{visible.left + rect_.left, visible.top + rect_.top, visible.width, visible.height};
    parent_->drawBlended(canvas, inParent, x + (visible.left - source.left) + offsetX_,
                         y + (visible.top - source.top) + offsetY_, mode, opacity);
}

}  // namespace tw
