// The corners of a view's rectangle: fixed radii, or a percentage of the half sides that
// follows the rectangle when it changes size. Read from `rounded` values.
#pragma once

#include "graphics/IntRect.h"

#include <string>

namespace tw {

struct Rounded {
    double rx = 0;
    double ry = 0;
    bool relative = false;
    double percent = 0;  // of the half width and half height, when relative

    // The radii for `rect`: the fixed ones, or the percentage of its half sides.
    void radiiFor(const IntRect& rect, double& x, double& y) const;
};

// `{ rx, ry }` gives fixed radii in pixels; a number is a percentage, held to 0..100, of
// the half sides, here of `rect`. An empty value gives square corners.
Rounded parseRounded(const std::string& raw, const IntRect& rect);

}  // namespace tw
