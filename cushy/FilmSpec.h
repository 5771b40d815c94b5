// The film that the `film` key of an animation, a knob or a slider names: the picture with
// its frames stacked, how many there are, and whether a value between two frames blends
// them.
#pragma once

#include <memory>

#include "graphics/Film.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;

// Reads `image`, `frames` (default 1) and `interpolate` of the map; the picture comes
// through the layout's host, with its faults.
std::unique_ptr<Film> readFilm(CushyView& layout, const SpecMap& film);

}  // namespace tw
