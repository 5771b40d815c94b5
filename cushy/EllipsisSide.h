// Where a text that is too wide for its view loses characters to "...": read by captions
// and text fields.
#pragma once

#include <string>

namespace tw {

enum class EllipsisSide { none, left, right, both, middle };

// "none", "left", "right", "both" or "middle"; an empty value gives `defaultValue`.
// Throws FormatException.
EllipsisSide parseEllipsisSide(const std::string& raw, EllipsisSide defaultValue);

}  // namespace tw
