#include "graphics/Font.h"

namespace tw {

void Font::drawChars(Raster32& canvas, std::size_t count, const Point* points, const char16_t* chars,
                     Point* resultPoints) {
    for (std::size_t i = 0; i < count; ++i) {
        const Point end = draw(canvas, points[i], std::u16string_view(chars + i, 1));
        if (resultPoints) resultPoints[i] = end;
    }
}

}  // namespace tw
