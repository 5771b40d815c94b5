#include "cushy/Rounded.h"

#include "speclang/SpecExpression.h"

namespace tw {

void Rounded::radiiFor(const IntRect& rect, double& x, double& y) const {
    if (!relative) {
        x = rx;
        y = ry;
        return;
    }
    x = percent / 100 * rect.width / 2;
    y = percent / 100 * rect.height / 2;
}

Rounded parseRounded(const std::string& raw, const IntRect& rect) {
    Rounded rounded;
    if (raw.empty()) return rounded;
    if (raw[0] == '{') {
        const std::pair<double, double> radii = parsePair(raw, {0, 0});
        rounded.rx = radii.first;
        rounded.ry = radii.second;
        return rounded;
    }
    const double percent = evaluateDouble(raw, 0);
    rounded.relative = true;
    rounded.percent = percent > 100 ? 100 : percent > 0 ? percent : 0;
    rounded.radiiFor(rect, rounded.rx, rounded.ry);
    return rounded;
}

}  // namespace tw
