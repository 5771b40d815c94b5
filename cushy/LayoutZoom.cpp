#include "cushy/LayoutZoom.h"

#include "speclang/SpecNumber.h"
#include "speclang/SpecQuote.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tw {

namespace {

// Keys whose value is a rectangle, zoomed edge by edge.
bool isRectKey(std::string_view key) { return key == "bounds" || key == "rect" || key == "clip"; }

// Keys whose numbers are all lengths in layout pixels.
bool isLengthKey(std::string_view key) {
    return key == "rounded" || key == "corners" || key == "offset" || key == "margins" || key == "paddings" ||
           key == "minHeight" || key == "maxHeight" || key == "lineSpacing" || key == "size" || key == "width" ||
           key == "height" || key == "thickness" || key == "radius" || key == "center" || key == "padding" ||
           key == "margin" || key == "tailSize";
}

// Points of a slit or a gradient; a marker's start is an angle.
bool isPointKey(std::string_view key, std::string_view type) {
    return (key == "start" || key == "end") && type != "marker";
}

// Keys that name a picture or a font the build makes at every zoom.
bool isResourceKey(std::string_view key) { return key == "fnt" || key == "image" || key == "name"; }

// Keys of an outline whose width defaults to one pixel when the spec gives none.
bool isOutlineKey(std::string_view key) { return key == "frame" || key == "underline"; }

// The number that is the whole of `raw`, blanks aside; none for an expression or a word.
std::optional<double> plainNumber(const std::string& raw) {
    const char* p = raw.c_str();
    while (isCSpace(*p)) ++p;
    double value = 0;
    const char* end = scanDouble(p, value);
    if (end == p) return std::nullopt;
    while (isCSpace(*end)) ++end;
    if (*end != '\0' || !std::isfinite(value)) return std::nullopt;
    return value;
}

// Whether a braced value is a map (its first entry a label and ':' or '='), not a list.
bool looksLikeMap(const std::string& raw) {
    if (raw.empty() || raw[0] != '{') return false;
    const char* p = skipWhite(raw.c_str() + 1, false);
    if (*p == '{' || *p == '}' || *p == '\0') return false;
    std::string label;
    const char* behind = scanLabel(p, label);
    if (behind == p) return false;
    behind = skipWhite(behind, true);
    return *behind == ':' || *behind == '=';
}

std::string joinList(const SpecList& items) {
    std::string text = "{ ";
    for (std::size_t i = 0; i < items.size(); ++i) text += (i == 0 ? "" : ", ") + items[i];
    return text + " }";
}

std::string braced(const SpecMap& map) { return "{\n" + formatMap(map) + "}"; }

}  // namespace

Zoom::Zoom(std::int32_t percent) {
    percent_ = levels[0];
    for (const std::int32_t level : levels)
        if (std::abs(level - percent) < std::abs(percent_ - percent)) percent_ = level;
}

std::int32_t Zoom::length(double units) const {
    const double pixels = std::floor(units * percent_ / 100.0 + 0.5);
    // Held to 32 bits, as every length of a layout is; a layout may write any number.
    if (!(pixels == pixels)) return 0;
    return pixels >= 2147483647.0 ? 2147483647 : pixels <= -2147483648.0 ? -2147483647 - 1 : std::int32_t(pixels);
}

std::int32_t Zoom::lineWidth(double units) const {
    if (units <= 0) return 0;
    return std::max(length(units), 1);
}

std::string Zoom::resourceName(std::string_view name) const {
    if (isIdentity()) return std::string(name);
    return std::string(name) + "_x" + std::to_string(percent_);
}

std::string Zoom::zoomName(const std::string& raw) const {
    if (raw.empty() || raw[0] == '{') return raw;
    return quote(resourceName(unquote(raw)));
}

std::string Zoom::zoomLengths(const std::string& raw, bool lineWidths) const {
    if (isIdentity()) return raw;
    auto one = [&](const std::string& item) {
        const std::optional<double> value = plainNumber(item);
        if (!value) return item;
        return std::to_string(lineWidths ? lineWidth(*value) : length(*value));
    };
    if (raw.empty() || raw[0] != '{') return one(raw);
    SpecList items = parseList(raw);
    for (std::string& item : items) item = one(item);
    return joinList(items);
}

std::string Zoom::zoomRect(const std::string& raw) const {
    if (isIdentity()) return raw;
    SpecList items = parseList(raw);
    std::optional<double> n[4];
    bool plain = items.size() == 4;
    for (std::size_t i = 0; plain && i < 4; ++i) plain = (n[i] = plainNumber(items[i])).has_value();
    if (!plain) return zoomLengths(raw, false);
    const std::int32_t left = edge(*n[0]), top = edge(*n[1]);
    return joinList({std::to_string(left), std::to_string(top), std::to_string(edge(*n[0] + *n[2]) - left),
                     std::to_string(edge(*n[1] + *n[3]) - top)});
}

std::string Zoom::zoomMap(const std::string& raw, std::string_view type) const {
    return braced(zoomEntries(parseMap(raw), type));
}

SpecMap Zoom::zoomEntries(SpecMap map, std::string_view type) const {
    for (auto& [key, value] : map) {
        if (isRectKey(key)) {
            value = zoomRect(value);
        } else if (isLengthKey(key) || isPointKey(key, type)) {
            value = zoomLengths(value, false);
        } else if (key == "stroke") {
            value = zoomLengths(value, true);
        } else if (isResourceKey(key) && !value.empty() && value[0] != '{') {
            value = zoomName(value);
        } else if (key == "views") {
            SpecList views = parseList(value);
            for (std::string& view : views) view = braced(zoomView(parseMap(view)));
            value = joinList(views);
        } else if (key == "scale" && type == "vector") {
            if (const std::optional<double> percent = plainNumber(value)) value = formatDouble(*percent * factor(), 15);
            else if (value.empty()) value = std::to_string(percent_);
        } else if (isOutlineKey(key) && !value.empty() && !looksLikeMap(value)) {
            value = "{ color: " + value + ", stroke: " + std::to_string(lineWidth(1)) + " }";
        } else if (looksLikeMap(value)) {
            value = zoomMap(value, "");
            // An outline without a width is one pixel at 100 %; a font without a face of
            // its own is the product's small font, which has its sizes too.
            if (isOutlineKey(key) && lookup(parseMap(value), "stroke").empty())
                value.insert(1, "\nstroke: " + std::to_string(lineWidth(1)));
            if (key == "font" && lookup(parseMap(value), "fnt").empty() && lookup(parseMap(value), "film").empty())
                value.insert(1, "\nzoom: " + std::to_string(percent_));
        }
    }
    // A vector view without a scale of its own draws at 100 %.
    if (type == "vector" && map.find("scale") == map.end()) map.emplace("scale", std::to_string(percent_));
    return map;
}

SpecMap Zoom::zoomView(const SpecMap& view) const {
    if (isIdentity()) return view;
    return zoomEntries(view, unquote(lookup(view, "type")));
}

SpecMap Zoom::zoomLayout(const SpecMap& layout) const {
    if (isIdentity()) return layout;
    SpecMap zoomed = layout;
    if (const auto bounds = zoomed.find("bounds"); bounds != zoomed.end()) bounds->second = zoomRect(bounds->second);
    if (const auto views = zoomed.find("views"); views != zoomed.end()) {
        SpecList items = parseList(views->second);
        for (std::string& view : items) view = braced(zoomView(parseMap(view)));
        views->second = joinList(items);
    }
    return zoomed;
}

}  // namespace tw
