// How a picture meets what lies below it: views' `blend` key and image specs read it, and
// images bake it into the way they draw.
#pragma once

#include <cstdint>
#include <string>

namespace tw {

enum class BlendMode : std::int32_t { normal = 0, add = 1, multiply = 2 };

// "add" and "multiply"; any other word, the empty value included, is normal.
BlendMode parseBlendMode(const std::string& raw);

}  // namespace tw
