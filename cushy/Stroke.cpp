#include "cushy/Stroke.h"

#include "speclang/SpecExpression.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"
#include "speclang/SpecColor.h"
#include "platform/Exception.h"

namespace tw {

namespace {

// A number that must not be negative (or, with `positive`, must be above 0); NaN fails.
double checkedNumber(const SpecMap& map, const char* key, double defaultValue, const char* message,
                     bool positive = false) {
    const std::string& raw = lookup(map, key);
    const double value = evaluateDouble(raw, defaultValue);
    if (positive ? !(value > 0) : !(value >= 0)) throw FormatException(message + quote(raw));
    return value;
}

}  // namespace

Stroke parseStroke(const std::string& raw, std::uint32_t defaultColor) {
    Stroke stroke;
    if (raw.empty()) return stroke;
    if (raw[0] != '{') {
        stroke.color = parseColor(raw, defaultColor);
        stroke.width = 1;
        return stroke;
    }
    const SpecMap map = parseMap(raw);
    stroke.color = parseColor(lookup(map, "color"), defaultColor);
    stroke.width = checkedNumber(map, "stroke", 1, "Invalid stroke: ");

    const std::string caps = unquote(lookup(map, "caps"));
    if (caps == "round") {
        stroke.caps = StrokeCaps::round;
    } else if (caps == "square") {
        stroke.caps = StrokeCaps::square;
    } else if (!caps.empty() && caps != "butt") {
        throw FormatException("Invalid caps: " + quote(caps));
    }

    const std::string joints = unquote(lookup(map, "joints"));
    if (joints == "bevel") {
        stroke.joints = StrokeJoints::bevel;
    } else if (joints == "curve") {
        stroke.joints = StrokeJoints::curve;
    } else if (!joints.empty() && joints != "miter") {
        throw FormatException("Invalid joints: " + quote(joints));
    }
    if (stroke.joints == StrokeJoints::miter) stroke.miterLimit = evaluateDouble(lookup(map, "miterLimit"), 2);

    stroke.quality = checkedNumber(map, "quality", 1, "Invalid quality: ", true);

    const std::string& dash = lookup(map, "dash");
    if (!dash.empty() && unquote(dash) != "none") {
        stroke.dash = checkedNumber(map, "dash", 0, "Invalid dash: ");
        stroke.gap = checkedNumber(map, "gap", stroke.dash, "Invalid gap: ");
        stroke.dashOffset = checkedNumber(map, "dashOffset", 0, "Invalid dashOffset: ");
    }
    return stroke;
}

}  // namespace tw
