#include "editor/ZoomChoice.h"

#include <cmath>
#include <string>

namespace tw {

namespace {

Zoom fromFactor(double factor) { return Zoom(std::int32_t(std::floor(factor * 100 + 0.5))); }

}  // namespace

Zoom chooseZoom(const ZoomSources& sources) {
    if (sources.host) return fromFactor(*sources.host);
    if (sources.user) return Zoom(*sources.user);
    if (sources.desktop) return fromFactor(*sources.desktop);
    return Zoom();
}

std::optional<double> hostScaleFactor(double scale) {
    if (!(scale > 0) || !std::isfinite(scale)) return std::nullopt;
    return scale > 8 ? scale / 100 : scale;
}

std::optional<std::int32_t> userZoom(const Prefs& prefs) {
    const std::optional<std::string> raw = prefs.get("zoom");
    if (!raw) return std::nullopt;
    const std::int32_t percent = toInt(*raw, 0);
    if (percent <= 0) return std::nullopt;
    return Zoom(percent).percent();
}

void setUserZoom(Prefs& prefs, std::optional<std::int32_t> percent) {
    if (percent) prefs.set("zoom", std::to_string(Zoom(*percent).percent()));
    else prefs.remove("zoom");
}

}  // namespace tw
