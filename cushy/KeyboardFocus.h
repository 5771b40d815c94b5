// The keyboard focus over a layout's controls: the stops Tab walks in reading order (the
// order the layout lists its views: the header, then each panel), moving the focus among
// them, and the status line following the focused control as it follows the hovered one.
// The window's client and the controls use it; the view that holds the focus is View's.
#pragma once

#include <vector>

namespace tw {

class View;

namespace keyboardFocus {

// The stops under `root`, in order; while a modal layout shows, only its own.
std::vector<View*> stops(View& root);
// Moves the focus to the next (1) or previous (-1) stop, wrapping, starting from the
// first or last when no stop under `root` has it. Answers whether a stop took it.
bool step(View& root, int direction);
// Gives `view` the focus and writes the status line's variables as the hover area under
// it does.
void give(View& view);
// Takes the focus from whichever view under `root` has it; answers whether one had.
bool clear(View& root);
// Whether `view` lies under `root`.
bool isUnder(const View& view, const View& root);

}  // namespace keyboardFocus

}  // namespace tw
