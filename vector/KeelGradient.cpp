#include "vector/KeelGradient.h"

#include <vector>

#include "graphics/GradientPaint.h"
#include "vector/KetchException.h"
#include "vector/KeelColor.h"
#include "vector/KeelNumberList.h"
#include "vector/KetchArgumentList.h"
#include "vector/KetchList.h"
#include "vector/KetchNumber.h"

namespace tw {

namespace {

std::uint32_t stopValue(Ketch::Frame& frame, std::string_view text, PaintKind kind) {
    return kind == PaintKind::colour ? parseKeelColor(frame, text) : parseKeelOpacity(text);
}

// "position value" pairs, positions ascending within 0..1; equal positions make a hard edge.
std::vector<GradientStop> readStops(Ketch::Frame& frame, std::string_view text, PaintKind kind) {
    const std::vector<std::string> items = Ketch::parseList(frame, text, true, true);
    if (items.empty() || items.size() % 2 != 0) throw Ketch::SyntaxException("Invalid stops for gradient");
    std::vector<GradientStop> stops;
    stops.reserve(items.size() / 2);
    for (std::size_t i = 0; i < items.size(); i += 2) {
        const double position = Ketch::toNumber(items[i]);
        const double previous = stops.empty() ? 0 : stops.back().position;
        if (!(position >= previous && position <= 1)) throw Ketch::SyntaxException("Invalid stops for gradient");
        stops.push_back({position, stopValue(frame, items[i + 1], kind)});
    }
    return stops;
}

}  // namespace

std::shared_ptr<const Paint> parseKeelGradient(Ketch::Frame& frame, std::string_view spec, PaintKind kind) {
    Ketch::ArgumentList args(frame, spec);
    const std::string_view type = args.fetchRequired(0);
    const bool linear = type == "linear";
    if (!linear && type != "radial") throw Ketch::SyntaxException("Unrecognized gradient type");
    double v[4];
    const int n = readNumberList(frame, args.fetchRequired(1), linear ? 4 : 3, 4, v);
    std::vector<GradientStop> stops;
    if (const auto list = args.fetchOptional("stops")) {
        stops = readStops(frame, *list, kind);
    } else {
        const std::string_view from = args.fetchRequired("from"), to = args.fetchRequired("to");
        stops = {{0, stopValue(frame, from, kind)}, {1, stopValue(frame, to, kind)}};
    }
    args.finish();
    const bool colour = kind == PaintKind::colour;
    if (linear) {
        const Point p0{v[0], v[1]}, p1{v[2], v[3]};
        if (colour) return std::make_shared<LinearColourPaint>(p0, p1, stops);
        return std::make_shared<LinearMaskPaint>(p0, p1, stops);
    }
    const Point centre{v[0], v[1]};
    const double ry = n == 4 ? v[3] : v[2];
    if (colour) return std::make_shared<RadialColourPaint>(centre, v[2], ry, stops);
    return std::make_shared<RadialMaskPaint>(centre, v[2], ry, stops);
}

}  // namespace tw
