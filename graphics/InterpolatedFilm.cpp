#include "graphics/InterpolatedFilm.h"

#include "graphics/Adder.h"
#include "graphics/Converter8to32.h"
#include "graphics/Multiplier.h"
#include "graphics/Offsetter.h"
#include "graphics/Solid.h"

#include <optional>

namespace tw {

void FilmFrame::drawBlended(Raster32& canvas, const IntRect& source, std::int32_t x, std::int32_t y, BlendMode mode,
                            std::uint8_t opacity) {
    const IntRect part = intersectionOf(source, getBounds());
    const std::int32_t imageHeight = image_->getBounds().height;
    if (part.isEmpty() || imageHeight <= 0) return;

    std::optional<Converter8to32> grey;
    Renderer32* pixels = image_->getRenderer();
    if (!pixels) {
        Renderer8* mask = image_->getMask();
        if (!mask) return;
        pixels = &grey.emplace(*mask);
    }
    const std::int32_t next = (top_ + height_) % imageHeight;
    Offsetter32 thisFrame(*pixels, 0, -top_);
    Offsetter32 nextFrame(*pixels, 0, -next);
    Solid8 thisWeight(std::uint8_t(255 - frac_));
    Solid8 nextWeight(frac_);
    Multiplier32x8 thisPart(thisFrame, thisWeight);
    Multiplier32x8 nextPart(nextFrame, nextWeight);
    Adder32 sum(nextPart, thisPart);
    compositeOnto(canvas, sum, part, x + (part.left - source.left), y + (part.top - source.top), mode, opacity);
}

// The count of indices must fit in 32 bits.
InterpolatedFilm::InterpolatedFilm(std::shared_ptr<Image> image, std::int32_t frames)
    : Film(std::move(image), frames > 0x7FFFFF ? 0x7FFFFF : frames) {}

FilmFrame InterpolatedFilm::frame(std::int32_t index) const {
    const std::int32_t h = image_->getBounds().height / frameCount_;
    // Far outside the film the top lies beyond the picture, and the frame is empty.
    const std::int64_t top = std::int64_t(index >> 8) * h;
    const bool inside = top >= 0 && top < image_->getBounds().height;
    return FilmFrame(image_, inside ? std::int32_t(top) : 0, inside ? h : 0, std::uint8_t(index & 0xFF));
}

std::shared_ptr<Image> InterpolatedFilm::getFrame(std::int32_t index) {
    return std::make_shared<FilmFrame>(frame(index));
}

void InterpolatedFilm::drawFrame(Raster32& canvas, std::int32_t index, std::int32_t x, std::int32_t y) {
    frame(index).draw(canvas, x, y);
}

}  // namespace tw
