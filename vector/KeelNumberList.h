// The number lists of Keel instructions: coordinates ("rect 0,0,10,10"), radii, dash
// patterns and transforms. Items are separated by commas or blanks, as Ketch lists are.
#pragma once

#include <string_view>

namespace tw::Ketch {
struct Frame;
}

namespace tw {

// Reads min..max numbers into out (room for max) and returns how many there were. Too
// few or too many items throw "Too few list elements", "Too many list elements"; an item
// that is no number "Invalid number".
int readNumberList(Ketch::Frame& frame, std::string_view text, int min, int max, double* out);

}  // namespace tw
