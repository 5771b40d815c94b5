// How a layout comes and goes in a "cushy" view with transitions: for each of the four
// events (open, close, swapIn, swapOut) the pace and the state at the far end (faded,
// scaled, moved, turned), read from the `transitions` block at the top of the layout.
#pragma once

#include <cstdint>
#include <optional>

#include "speclang/SpecLanguage.h"

namespace tw {

struct Transition {
    std::int32_t period = 50;  // milliseconds between frames
    double step = 0.05;        // progress per frame; positive coming in, negative going out
    double opacity = 1;        // the state at progress 0
    double scale = 1;
    double offsetX = 0, offsetY = 0;
    double rotation = 0;       // radians
    double offsetCurve = 0.5, scaleCurve = 0.5, opacityCurve = 0.5, rotationCurve = 0.5;
    bool restart = false;
};

// The records of a layout; an absent one makes its event happen at once.
struct Transitions {
    std::optional<Transition> open, close, swapIn, swapOut;
};

// An entry read over `base`: every key an expression in which `$` is the base's value in
// the key's unit. None when its `time` is 0. `incoming` gives the step its sign.
std::optional<Transition> readTransition(const SpecMap& entry, const Transition& base, bool incoming);

// The layout's `transitions` map: `default` over the built-in record, the four events over
// `default`, an event without an entry a copy of `default`. Throws expression faults.
Transitions readTransitions(const std::string& raw);

}  // namespace tw
