// The solid values of Keel paint specs: colours on a colour target, opacities on
// a mask target and in every `opacity:`. Gradient stops are read with the same two.
#pragma once

#include <cstdint>
#include <string_view>

namespace tw::Ketch {
struct Frame;
}

namespace tw {

// A premultiplied 0xAARRGGBB colour from "#rrggbb", "#aarrggbb" (already premultiplied),
// "rgb(r, g, b [, opacity])", "hsv(h, s, v [, opacity])" with components in 0..1, or one
// of the sixteen HTML names and "none". Faults: "Invalid color", "Invalid pre-multiplied
// alpha color" (Ketch::SyntaxException), "Value out of range" (Ketch::RunTimeException).
std::uint32_t parseKeelColor(Ketch::Frame& frame, std::string_view text);

// An opacity byte from "#hh" or a number in 0..1, taken as min(int(v * 256), 255). Faults:
// "Invalid opacity", "Invalid number", "Value out of range".
std::uint8_t parseKeelOpacity(std::string_view text);

}  // namespace tw
