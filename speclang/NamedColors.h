// The sixteen HTML colour names, opaque 0xAARRGGBB: layouts, image and font specs and Keel
// programs all name colours with them (each adds its own word for "no colour").
#pragma once

#include <cstdint>
#include <string_view>

namespace tw {

// Exact, case-sensitive match; false for any other word.
bool findNamedColor(std::string_view name, std::uint32_t& color);

}  // namespace tw
