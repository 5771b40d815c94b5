#include "graphics/GammaTable.h"

#include <cmath>

namespace tw {

std::optional<GammaTable> GammaTable::forGamma(double gamma) {
    if (std::fabs(gamma - 1) < 0.0001) return std::nullopt;
    GammaTable g;
    for (int i = 0; i < 256; ++i) g.table[i] = std::uint8_t(std::floor(std::pow(i / 255.0, 1 / gamma) * 255 + 0.5));
    return g;
}

}  // namespace tw
