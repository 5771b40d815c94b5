// Which zoom an editor is drawn at, and the user's own choice of it. The host's word comes
// first (it draws its own windows at that scale), then the choice the user made in the
// editor's "Zoom" menu, kept in the product's preferences for every new editor, then the
// desktop's scale, else 100 %.
#pragma once

#include <cstdint>
#include <optional>

#include "cushy/LayoutZoom.h"
#include "patch/Prefs.h"

namespace tw {

struct ZoomSources {
    std::optional<double> host;           // a factor: 1 is 100 %
    std::optional<std::int32_t> user;     // a percentage
    std::optional<double> desktop;        // a factor
};

Zoom chooseZoom(const ZoomSources& sources);

// A host's scale as a factor. Some hosts have sent the percentage itself (100 for 100 %):
// a scale above 8 is taken as one.
std::optional<double> hostScaleFactor(double scale);

// The preference key `zoom`: a percentage; absent, the editor follows the system.
std::optional<std::int32_t> userZoom(const Prefs& prefs);
void setUserZoom(Prefs& prefs, std::optional<std::int32_t> percent);

}  // namespace tw
