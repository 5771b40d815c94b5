// Where a line of text sits in its rectangle: read by captions, buttons and the bubble.
#pragma once

#include <string>

namespace tw {

enum class TextAlignment { left, center, right };

// "left", "center" or "right"; an empty value gives `defaultValue`. Throws FormatException.
TextAlignment parseTextAlignment(const std::string& raw, TextAlignment defaultValue);

}  // namespace tw
