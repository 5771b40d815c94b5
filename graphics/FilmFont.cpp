#include "graphics/FilmFont.h"

#include "graphics/TextPen.h"

#include <algorithm>

namespace tw {

// The font works on bytes: a character beyond 255 has no frame of its own.
std::int32_t FilmFont::directFrame(char16_t c) const {
    if (c > 255) return -1;
    if (charset_) return (*charset_)[c];
    const std::int32_t frame = std::int32_t(c) - first_;
    return frame >= 0 && frame < film_->frameCount() ? frame : -1;
}

std::int32_t FilmFont::frameOf(char16_t c) const {
    const std::int32_t frame = directFrame(c);
    if (frame >= 0 || unknown_ == 0) return frame;
    return directFrame(unknown_);
}

void FilmFont::getMetrics(std::int32_t& height, std::int32_t& ascent) const {
    height = film_->frameHeight();
    ascent = ascent_;
}

IntRect FilmFont::measure(Point point, std::u16string_view text, bool includeAdvance) const {
    const std::int64_t frameWidth = film_->frameWidth();
    std::int64_t x = 0;
    std::int64_t width = 0;
    std::int32_t height = 0;
    for (char16_t c : text) {
        if (frameOf(c) >= 0) {
            width = std::max(width, x + frameWidth);
            height = film_->frameHeight();
        }
        x += advance_;
    }
    if (includeAdvance) width = std::max(width, x);
    return IntRect{clampToInt32(roundPen(point.x)), clampToInt32(roundPen(point.y) - ascent_), clampToInt32(width), height};
}

Point FilmFont::draw(Raster32& canvas, Point point, std::u16string_view text) {
    std::int64_t x = roundPen(point.x);
    const std::int64_t y = roundPen(point.y);
    const std::int64_t top = y - ascent_;
    for (char16_t c : text) {
        const std::int32_t frame = frameOf(c);
        if (frame >= 0 && nearOrigin(x) && nearOrigin(top))
            film_->drawFrame(canvas, frame, std::int32_t(x), std::int32_t(top));
        x += advance_;
    }
    return Point{double(clampToInt32(x)), double(y)};
}

}  // namespace tw
