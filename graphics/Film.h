// A film strip: equal frames stacked vertically in one picture. Knobs, sliders and
// animations show a value as one of its frames, and film fonts draw characters with them.
// Frames are cut when drawn; only the picture is cached.
#pragma once

#include "graphics/Image.h"

#include <cstdint>
#include <memory>

namespace tw {

class Film {
public:
    // `frames` below 1 counts as 1.
    Film(std::shared_ptr<Image> image, std::int32_t frames);
    virtual ~Film() = default;

    virtual std::int32_t frameCount() const { return frameCount_; }
    // Rows index * h to (index + 1) * h of the picture, h being its height divided by the
    // frame count; rows left over at the bottom are never shown. An index outside the
    // film gives an empty picture.
    virtual std::shared_ptr<Image> getFrame(std::int32_t index);
    // Draws what getFrame(index) would, with its top-left corner at (x, y), without making
    // an object for the frame.
    virtual void drawFrame(Raster32& canvas, std::int32_t index, std::int32_t x, std::int32_t y);

    const std::shared_ptr<Image>& image() const { return image_; }
    // The size of one frame.
    std::int32_t frameWidth() const { return image_->getBounds().width; }
    virtual std::int32_t frameHeight() const;

protected:
    std::shared_ptr<Image> image_;
    std::int32_t frameCount_;

private:
    IntRect frameRect(std::int32_t index) const;
};

}  // namespace tw
