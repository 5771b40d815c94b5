// A film that shows a value between its frames: index i means frame i / 256, blended
// with the next frame by i % 256. Knobs with `interpolate` turn smoothly with few frames.
#pragma once

#include "graphics/Film.h"

namespace tw {

// One in-between frame: the picture's rows `top` to `top + height`, weighted by
// 255 - frac, plus the next frame's rows weighted by frac. The frame after the last is
// the first, so that a full turn closes.
class FilmFrame : public Image {
public:
    FilmFrame(std::shared_ptr<Image> image, std::int32_t top, std::int32_t height, std::uint8_t frac)
        : image_(std::move(image)), top_(top), height_(height), frac_(frac) {}

    IntRect getBounds() const override { return IntRect{0, 0, image_->getBounds().width, height_}; }
    void drawBlended(Raster32& canvas, const IntRect& source, std::int32_t x, std::int32_t y, BlendMode mode,
                     std::uint8_t opacity) override;

private:
    std::shared_ptr<Image> image_;
    std::int32_t top_;
    std::int32_t height_;
    std::uint8_t frac_;
};

class InterpolatedFilm : public Film {
public:
    // A picture of `frames` frames (1 to 2^23 - 1) gives (frames << 8) - 255 indices.
    InterpolatedFilm(std::shared_ptr<Image> image, std::int32_t frames);

    std::int32_t frameCount() const override { return (frameCount_ << 8) - 255; }
    std::shared_ptr<Image> getFrame(std::int32_t index) override;
    void drawFrame(Raster32& canvas, std::int32_t index, std::int32_t x, std::int32_t y) override;

private:
    FilmFrame frame(std::int32_t index) const;
};

}  // namespace tw
