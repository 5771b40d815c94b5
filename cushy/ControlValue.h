// The value model that knobs, sliders and clusters share: a value held inside its range,
// with the default a Control-click goes back to.
#pragma once

#include <algorithm>

namespace tw {

struct ControlValue {
    double lower = 0;
    double upper = 1;
    double value = 0;
    double defaultValue = 0;

    // Holds `v` to the range (either way round); answers whether the value changed.
    bool set(double v) {
        const double lo = std::min(lower, upper), hi = std::max(lower, upper);
        v = v != v ? lo : std::clamp(v, lo, hi);
        if (v == value) return false;
        value = v;
        return true;
    }
    // Where the value stands in the range, 0 to 1.
    double fraction() const {
        if (upper == lower) return 0;
        return std::clamp((value - lower) / (upper - lower), 0.0, 1.0);
    }
};

}  // namespace tw
