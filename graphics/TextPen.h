// Pen arithmetic shared by the fonts: pens move in 64 bits and are rounded from the
// caller's double coordinates, so that no font's numbers, however odd, overflow.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace tw {

inline std::int32_t clampToInt32(std::int64_t v) {
    constexpr std::int64_t low = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t high = std::numeric_limits<std::int32_t>::max();
    return std::int32_t(v < low ? low : v > high ? high : v);
}

// floor(v + 0.5), held to the 32-bit range (NaN gives 0).
inline std::int64_t roundPen(double v) {
    const double r = std::floor(v + 0.5);
    return r >= 2147483647.0 ? 2147483647 : r <= -2147483647.0 ? -2147483647 : r == r ? std::int64_t(r) : 0;
}

// Whether a glyph placed at, or cut from, this coordinate can be drawn: anything farther
// out is never on a canvas, and skipping it keeps every coordinate sum within 32 bits.
inline bool nearOrigin(std::int64_t v) {
    return v > -(1 << 29) && v < (1 << 29);
}

}  // namespace tw
