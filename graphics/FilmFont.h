// A font whose glyphs are the frames of a film strip, one character each, all with the
// same advance: the digit and label strips of layouts that want a drawn look.
#pragma once

#include "graphics/Film.h"
#include "graphics/Font.h"

#include <array>
#include <memory>
#include <optional>

namespace tw {

class FilmFont : public Font {
public:
    // Frame of each byte, -1 for none.
    using Charset = std::array<std::int32_t, 256>;

    // Without a charset, characters first .. first + frames - 1 show frames 0, 1, ...;
    // with one, the table says. Characters without a frame show the frame of `unknown`
    // (0: none), or nothing; the pen moves by `advance` either way.
    FilmFont(std::shared_ptr<Film> film, std::int32_t ascent, std::int32_t advance, std::uint8_t first,
             std::uint8_t unknown, std::optional<Charset> charset)
        : film_(std::move(film)), ascent_(ascent), advance_(advance), first_(first), unknown_(unknown),
          charset_(charset) {}

    void getMetrics(std::int32_t& height, std::int32_t& ascent) const override;
    IntRect measure(Point point, std::u16string_view text, bool includeAdvance) const override;
    Point draw(Raster32& canvas, Point point, std::u16string_view text) override;

private:
    // The frame that shows `c`, the replacement's included, or -1.
    std::int32_t frameOf(char16_t c) const;
    std::int32_t directFrame(char16_t c) const;

    std::shared_ptr<Film> film_;
    std::int32_t ascent_;
    std::int32_t advance_;
    std::uint8_t first_;
    std::uint8_t unknown_;
    std::optional<Charset> charset_;
};

}  // namespace tw
