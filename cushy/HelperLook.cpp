#include "cushy/HelperLook.h"

#include "graphics/Rasterize.h"
#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "graphics/Solid.h"
#include "speclang/SpecQuote.h"

#include <algorithm>
#include <cstdio>

namespace tw {

namespace look {

void fillRect(Raster32& canvas, const IntRect& rect, std::uint32_t colour) {
    SolidRect32 solid(colour, rect);
    blend32(solid, canvas);
}

void frameRect(Raster32& canvas, const IntRect& rect, std::uint32_t colour, std::int32_t width) {
    if (rect.isEmpty()) return;
    const std::int32_t w = std::min({width, rect.width / 2, rect.height / 2});
    if (w <= 0) return fillRect(canvas, rect, colour);
    fillRect(canvas, {rect.left, rect.top, rect.width, w}, colour);
    fillRect(canvas, {rect.left, rect.top + rect.height - w, rect.width, w}, colour);
    fillRect(canvas, {rect.left, rect.top + w, w, rect.height - 2 * w}, colour);
    fillRect(canvas, {rect.left + rect.width - w, rect.top + w, w, rect.height - 2 * w}, colour);
}

void drawPanel(Raster32& canvas, const IntRect& rect, std::int32_t edge) {
    fillRect(canvas, rect, panel);
    frameRect(canvas, rect, panelEdge, edge);
}

}  // namespace look

HelperFonts HelperFonts::load(CushyHost& host, CushyView& view) {
    auto font = [&](std::uint32_t colour) {
        char spec[64];
        std::snprintf(spec, sizeof spec, "{ color: 0x%08X, zoom: %d }", unsigned(colour), int(view.zoom().percent()));
        return host.font(view, spec);
    };
    return HelperFonts{font(look::text), font(look::dimText), font(look::accentText), view.zoom()};
}

std::int32_t drawText(Raster32& canvas, Font& font, std::int32_t x, std::int32_t baseline, const std::string& utf8) {
    const Point end = font.draw(canvas, Point{double(x), double(baseline)}, fromUtf8(utf8));
    return std::int32_t(end.x) - x;
}

std::int32_t textWidth(const Font& font, const std::string& utf8) {
    const IntRect r = font.measure(Point{0, 0}, fromUtf8(utf8), true);
    return std::int32_t(r.right());
}

}  // namespace tw

namespace tw::look {

void drawButton(Raster32& canvas, const IntRect& rect, const std::string& label, bool isDefault,
                const HelperFonts& fonts) {
    if (isDefault) {
        fillRect(canvas, rect, accent);
    } else {
        fillRect(canvas, rect, field);
        frameRect(canvas, rect, panelEdge, fonts.line());
    }
    Font& font = isDefault ? *fonts.onAccent : *fonts.regular;
    std::int32_t height, ascent;
    font.getMetrics(height, ascent);
    const std::int32_t x = rect.left + (rect.width - textWidth(font, label)) / 2;
    drawText(canvas, font, x, rect.top + (rect.height - height) / 2 + ascent, label);
}

}  // namespace tw::look
