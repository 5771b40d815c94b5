// The 256 entries of a gradient, interpolated from its stops in 16.16-style integer steps:
// bytes for mask paints, premultiplied colours for colour paints. Gradient paints hold
// one directly; a ramp's byte indexes it.
#pragma once

#include <cstdint>
#include <span>

namespace tw {

// A stop: position 0..1 and a value (a coverage byte, or a premultiplied colour).
struct GradientStop {
    double position;
    std::uint32_t value;
};

struct GradientTable8 {
    std::uint8_t entries[256];
    bool visible = false;  // any stop non-zero

    // Stops in ascending position; at least one.
    explicit GradientTable8(std::span<const GradientStop> stops);
};

struct GradientTable32 {
    std::uint32_t entries[256];
    bool allOpaque = true;
    bool visible = false;

    explicit GradientTable32(std::span<const GradientStop> stops);
};

}  // namespace tw
