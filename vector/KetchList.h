// Lists as Ketch writes them in one value: items separated by commas or blanks, such as the
// coordinates of "rect 0,0,10,10", the items of "for ... in:" and the gradient stops.
#pragma once

#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace tw::Ketch {

struct Frame;

// The items of the text, brackets nesting within an item. With expand, each item is taken
// as an argument value is ("[...]" expanded inside, else unescaped); without, as it stands.
// Two commas with nothing between give an empty item, dropped with skipEmpty. Fewer than
// min items throw "Too few list elements", more than max "Too many list elements".
std::vector<std::string> parseList(Frame& frame, std::string_view text, bool expand, bool skipEmpty, int min = 0,
                                   int max = std::numeric_limits<int>::max());

}  // namespace tw::Ketch
