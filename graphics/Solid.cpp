#include "graphics/Solid.h"

namespace tw {

void SolidRect32::render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer32& out) {
    renderWithin(rect_, x, y, length, out, [&](std::int32_t, std::int32_t n) { out.appendSolid(n, &colour_); });
}

}  // namespace tw
