#include "graphics/Film.h"

#include "graphics/SubImage.h"

namespace tw {

Film::Film(std::shared_ptr<Image> image, std::int32_t frames)
    : image_(std::move(image)), frameCount_(frames < 1 ? 1 : frames) {}

std::int32_t Film::frameHeight() const {
    return image_->getBounds().height / frameCount_;
}

IntRect Film::frameRect(std::int32_t index) const {
    const std::int32_t h = frameHeight();
    if (index < 0 || index >= frameCount_) return IntRect{};
    const IntRect bounds = image_->getBounds();
    return IntRect{bounds.left, bounds.top + index * h, bounds.width, h};
}

std::shared_ptr<Image> Film::getFrame(std::int32_t index) {
    return std::make_shared<SubImage>(image_, frameRect(index));
}

void Film::drawFrame(Raster32& canvas, std::int32_t index, std::int32_t x, std::int32_t y) {
    const IntRect rect = frameRect(index);
    if (!rect.isEmpty()) image_->drawPart(canvas, rect, x, y);
}

}  // namespace tw
