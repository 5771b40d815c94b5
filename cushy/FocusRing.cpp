#include "cushy/FocusRing.h"

#include "cushy/HelperLook.h"
#include "cushy/ShapeFill.h"

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

// The accent that a menu's hovered item is lit with: the ring nearly opaque, its glow a
// breath of it.
constexpr std::uint32_t ringColour = (look::accent & 0x00FFFFFF) | 0xF0000000;
constexpr std::uint32_t glowColour = (look::accent & 0x00FFFFFF) | 0x30000000;

}  // namespace

FocusRingGeometry focusRingGeometry(const IntRect& outline) {
    // As thin as the lit switches' edge, and far enough out that a knob's own value arc,
    // in the same accent, stays apart from it: a 48-unit knob gets a one-unit line three
    // units out, a 20-unit switch one a unit and a quarter out. Proportions of the
    // control, never below one pixel so that it shows.
    const double side = std::max(1, std::min(outline.width, outline.height));
    FocusRingGeometry g;
    g.width = std::max(1.0, side / 48);
    g.gap = std::max(1.0, side / 16) + g.width / 2;
    g.glow = g.width * 3;
    return g;
}

IntRect focusRingBounds(const IntRect& outline) {
    const FocusRingGeometry g = focusRingGeometry(outline);
    const auto reach = std::int32_t(std::ceil(g.gap + g.glow / 2)) + 1;
    return IntRect{outline.left - reach, outline.top - reach, outline.width + 2 * reach, outline.height + 2 * reach};
}

void paintFocusRing(Raster32& canvas, const IntRect& outline, double radius) {
    const FocusRingGeometry g = focusRingGeometry(outline);
    VectorPath ring;
    const double w = outline.width + 2 * g.gap, h = outline.height + 2 * g.gap;
    const double r = std::min(radius + g.gap, std::min(w, h) / 2);
    ring.addRoundedRect(outline.left - g.gap, outline.top - g.gap, w, h, r, r, 1);
    Stroke glow;
    glow.color = glowColour;
    glow.width = g.glow;
    strokeShape(canvas, ring, glow, BlendMode::normal);
    Stroke line;
    line.color = ringColour;
    line.width = g.width;
    strokeShape(canvas, ring, line, BlendMode::normal);
}

}  // namespace tw
