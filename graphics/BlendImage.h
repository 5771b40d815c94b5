// A picture that meets the canvas by adding to it or multiplying it rather than lying
// over it: the images of specs with `blend: add` or `blend: multiply`.
#pragma once

#include "graphics/Image.h"
#include "graphics/PixelMath.h"

#include <memory>

namespace tw {

class BlendImage : public Image {
public:
    BlendImage(std::shared_ptr<Image> image, BlendMode mode, std::uint8_t opacity)
        : image_(std::move(image)), mode_(mode), opacity_(opacity) {}

    IntRect getBounds() const override { return image_->getBounds(); }
    // The picture's own mode wins, also when a clip of it is drawn.
    void drawBlended(Raster32& canvas, const IntRect& source, std::int32_t x, std::int32_t y, BlendMode,
                     std::uint8_t opacity) override {
        image_->drawBlended(canvas, source, x, y, mode_, mul8(opacity_, opacity));
    }
    std::int32_t imageCount() const override { return image_->imageCount(); }
    Renderer32* getRenderer() override { return image_->getRenderer(); }
    Renderer8* getMask() override { return image_->getMask(); }

private:
    std::shared_ptr<Image> image_;
    BlendMode mode_;
    std::uint8_t opacity_;
};

}  // namespace tw
