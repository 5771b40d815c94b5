// A rectangle cut from another picture, possibly moved: the images of specs with `clip`
// or `offset`, and the frames of a film strip.
#pragma once

#include "graphics/Image.h"

#include <memory>

namespace tw {

class SubImage : public Image {
public:
    // `rect` (in the parent's coordinates) is cut to the parent's bounds; a rectangle with
    // nothing inside makes an empty image that draws nothing. The picture is drawn moved
    // by (offsetX, offsetY) from where it is asked for.
    SubImage(std::shared_ptr<Image> parent, const IntRect& rect, std::int32_t offsetX = 0, std::int32_t offsetY = 0);

    // 0, 0 and the size of the cut rectangle.
    IntRect getBounds() const override { return IntRect{0, 0, rect_.width, rect_.height}; }
    std::int32_t imageCount() const override { return parent_->imageCount(); }
    void drawBlended(Raster32& canvas, const IntRect& source, std::int32_t x, std::int32_t y, BlendMode mode,
                     std::uint8_t opacity) override;

    const IntRect& rect() const { return rect_; }

private:
    std::shared_ptr<Image> parent_;
    IntRect rect_;
    std::int32_t offsetX_;
    std::int32_t offsetY_;
};

}  // namespace tw
