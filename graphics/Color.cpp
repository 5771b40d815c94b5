#include "graphics/Color.h"

#include "cushy/spec/SpecExpression.h"
#include "cushy/spec/SpecLanguage.h"
#include "cushy/spec/SpecNumber.h"
#include "cushy/spec/SpecQuote.h"
#include "platform/Exception.h"

#include <cmath>
#include <cstdio>
#include <string_view>

namespace tw {

namespace {

struct NamedColor {
    std::string_view name;
    std::uint32_t value;
};

constexpr NamedColor namedColors[] = {
    {"transparent", 0x00000000}, {"aqua", 0xFF00FFFF},   {"black", 0xFF000000},  {"blue", 0xFF0000FF},
    {"fuchsia", 0xFFFF00FF},     {"gray", 0xFF808080},   {"green", 0xFF008000},  {"lime", 0xFF00FF00},
    {"maroon", 0xFF800000},      {"navy", 0xFF000080},   {"olive", 0xFF808000},  {"purple", 0xFF800080},
    {"red", 0xFFFF0000},         {"silver", 0xFFC0C0C0}, {"teal", 0xFF008080},   {"white", 0xFFFFFFFF},
    {"yellow", 0xFFFFFF00},
};

std::int32_t clampByte(std::int32_t v) {
    return v < 0 ? 0 : v > 255 ? 255 : v;
}

std::uint32_t fromComponents(const std::string& raw, std::uint32_t defaultColor) {
    SpecList items = parseList(raw);
    if (items.size() != 3 && items.size() != 4)
        throw FormatException("Invalid number of color components: " + quote(raw));
    std::uint32_t rgb[3];
    for (int i = 0; i < 3; ++i) {
        const std::int32_t fallback = std::int32_t((defaultColor >> (16 - 8 * i)) & 0xFF);
        rgb[i] = std::uint32_t(clampByte(evaluateInt(items[i], fallback)));
    }
    const double alpha = items.size() == 4 ? evaluateDouble(items[3], 1.0) : 1.0;
    const double scaled = std::floor(alpha * 256 + 0.5);
    // NaN fails both comparisons and so ends up transparent.
    const std::uint32_t a = scaled >= 255 ? 255 : scaled > 0 ? std::uint32_t(scaled) : 0;
    // a + (a >> 7) maps 255 to 256, so that an opaque colour keeps its components.
    const std::uint32_t weight = a + (a >> 7);
    std::uint32_t color = a << 24;
    for (int i = 0; i < 3; ++i) color |= ((rgb[i] * weight) >> 8) << (16 - 8 * i);
    return color;
}

}  // namespace

std::uint32_t parseColor(const std::string& raw, std::uint32_t defaultColor) {
    if (raw.empty()) return defaultColor;

    std::uint32_t literal;
    if (scanIntegerLiteral(raw.c_str(), literal) == raw.c_str() + raw.size()) {
        const std::uint32_t a = literal >> 24;
        if (((literal >> 16) & 0xFF) > a || ((literal >> 8) & 0xFF) > a || (literal & 0xFF) > a) {
            char hex[9];
            std::snprintf(hex, sizeof hex, "%08X", literal);
            throw FormatException(std::string("Invalid pre-multiplied argb: 0x") + hex);
        }
        return literal;
    }

    if (raw[0] == '{') return fromComponents(raw, defaultColor);

    const std::string name = unquote(raw);
    for (const NamedColor& c : namedColors)
        if (c.name == name) return c.value;
    throw FormatException("Invalid color: " + quote(name));
}

}  // namespace tw
