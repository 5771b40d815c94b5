// A font that captions, buttons and the bubble measure and draw text with: a film of
// glyphs, an AngelCode bitmap font, or the system's font. The resource manager makes and
// caches them; the views decide on alignment and ellipsis.
#pragma once

#include "graphics/IntRect.h"
#include "graphics/Matrix.h"
#include "graphics/Raster.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tw {

class Font {
public:
    virtual ~Font() = default;

    // The height of a line, and the distance from its top to the baseline.
    virtual void getMetrics(std::int32_t& height, std::int32_t& ascent) const = 0;

    // The rectangle that `text` covers when drawn with its baseline's start at `point`;
    // with `includeAdvance` it reaches at least to where the pen ends.
    virtual IntRect measure(Point point, std::u16string_view text, bool includeAdvance) const = 0;

    // Draws `text` with its baseline's start at `point`, and answers where the pen ends.
    virtual Point draw(Raster32& canvas, Point point, std::u16string_view text) = 0;

    // Draws `count` single characters, each at its own point, one at a time through draw;
    // when `resultPoints` is given, each end position is stored there.
    virtual void drawChars(Raster32& canvas, std::size_t count, const Point* points, const char16_t* chars,
                           Point* resultPoints);
};

}  // namespace tw
