// The editor's zoom: a layout written for 100 % drawn at 125 to 200 % without scaling one
// pixel. Before its views are made, a layout's geometry is multiplied out to whole pixels and
// every picture and font it names is swapped for the one made at that size (the build draws
// each at every zoom), so that views, hit areas and text are all at their target size. The
// helper windows and the few lengths that views hold in code take the same factor.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "speclang/SpecLanguage.h"

namespace tw {

class Zoom {
public:
    // The levels the build makes pictures and fonts for.
    static constexpr std::int32_t levels[] = {100, 125, 150, 175, 200};

    Zoom() = default;
    // One of the levels; anything else is held to the nearest.
    explicit Zoom(std::int32_t percent);

    std::int32_t percent() const { return percent_; }
    double factor() const { return percent_ / 100.0; }
    bool isIdentity() const { return percent_ == 100; }

    // A length of the 100 % layout at this zoom, to whole pixels, half up.
    std::int32_t length(double units) const;
    // A line width: never thinner than one pixel, so hairlines stay hairlines.
    std::int32_t lineWidth(double units) const;
    // An edge at this zoom: rectangles are zoomed edge by edge, so that neighbours stay
    // neighbours and a rectangle's width is what its edges say.
    std::int32_t edge(double units) const { return length(units); }
    // The name of a picture or font as the build makes it at this zoom: "<name>_x<percent>".
    std::string resourceName(std::string_view name) const;

    // One view's spec, with the specs of the views inside it, at this zoom.
    SpecMap zoomView(const SpecMap& view) const;
    // A whole layout: its bounds and views; transitions are proportions and stay.
    SpecMap zoomLayout(const SpecMap& layout) const;
    // A rectangle text `{ x, y, width, height }` of plain numbers at this zoom; an item that
    // is an expression stays as written (it then counts zoomed pixels).
    std::string zoomRect(const std::string& raw) const;

    bool operator==(const Zoom&) const = default;

private:
    std::string zoomMap(const std::string& raw, std::string_view type) const;
    SpecMap zoomEntries(SpecMap map, std::string_view type) const;
    std::string zoomLengths(const std::string& raw, bool lineWidths) const;
    std::string zoomName(const std::string& raw) const;

    std::int32_t percent_ = 100;
};

}  // namespace tw
