// The anti-aliasing gamma of the vector painter: a table applied to shape coverage (not
// to masks) through GammaFilter8. A gamma within 0.0001 of 1 has no table at all.
#pragma once

#include <cstdint>
#include <optional>

namespace tw {

struct GammaTable {
    std::uint8_t table[256];
    std::uint8_t flag = 0;

    // t[i] = floor(pow(i / 255, 1 / gamma) * 255 + 0.5); none when |gamma - 1| < 0.0001.
    static std::optional<GammaTable> forGamma(double gamma);
};

}  // namespace tw
