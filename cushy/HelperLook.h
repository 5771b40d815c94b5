// The look of the editor's own helper windows (menus, message boxes, text entry, the hint):
// night-sea panels, near-white text and the aqua accent, drawn with the raster core and the
// product's fonts. One place, so that all of them match.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "cushy/LayoutZoom.h"
#include "graphics/Font.h"
#include "graphics/Raster.h"

namespace tw {

class CushyHost;
class CushyView;

namespace look {

constexpr std::uint32_t panel = 0xFF102436;
constexpr std::uint32_t panelEdge = 0xFF2E5A78;
constexpr std::uint32_t text = 0xFFE8F1F5;
constexpr std::uint32_t dimText = 0xFF6F8A9C;
constexpr std::uint32_t accent = 0xFF39D1C6;
constexpr std::uint32_t accentText = 0xFF06141C;
constexpr std::uint32_t field = 0xFF0B1620;
constexpr std::uint32_t selection = 0xFF1F6F78;

void fillRect(Raster32& canvas, const IntRect& rect, std::uint32_t colour);
// A line of `width` pixels just inside the rectangle.
void frameRect(Raster32& canvas, const IntRect& rect, std::uint32_t colour, std::int32_t width = 1);
// A panel: the fill and its lighter edge, `edge` pixels wide.
void drawPanel(Raster32& canvas, const IntRect& rect, std::int32_t edge = 1);

}  // namespace look

// The fonts the helper windows draw with: the product's own small font (a font spec with
// neither film nor fnt) in the text colour, the dim colour and the colour on the accent,
// made at the zoom of the layout that opens the window, which the window's sizes follow.
struct HelperFonts {
    std::shared_ptr<Font> regular, dim, onAccent;
    Zoom zoom;
    // A length of the window at 100 %, at the zoom; a line width never under one pixel.
    std::int32_t px(double units) const { return zoom.length(units); }
    std::int32_t line() const { return zoom.lineWidth(1); }

    static HelperFonts load(CushyHost& host, CushyView& view);
};

// UTF-8 text drawn with its baseline's start at (x, baseline); answers the width.
std::int32_t drawText(Raster32& canvas, Font& font, std::int32_t x, std::int32_t baseline, const std::string& utf8);
std::int32_t textWidth(const Font& font, const std::string& utf8);

}  // namespace tw

namespace tw::look {

// A push button of a dialog: the accent fill when it is the default (the one Enter
// presses), a framed panel otherwise, with its label centred.
void drawButton(Raster32& canvas, const IntRect& rect, const std::string& label, bool isDefault,
                const HelperFonts& fonts);

}  // namespace tw::look
