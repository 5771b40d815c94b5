#include "cushy/FocusRing.h"

#include "cushy/ShapeFill.h"

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

// The face's accent (#39D1C6): the ring nearly opaque, its glow a breath of it.
constexpr std::uint32_t ringColour = 0xE639D1C6;
constexpr std::uint32_t glowColour = 0x4039D1C6;

}  // namespace

FocusRingGeometry focusRingGeometry(const IntRect& outline) {
    // A 20-unit switch gets a hairline one unit out, a 48-unit knob a two-unit line three
    // units out: proportions of the control, never below one pixel so that it shows.
    const double side = std::max(1, std::min(outline.width, outline.height));
    FocusRingGeometry g;
    g.width = std::max(1.0, side / 24);
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
