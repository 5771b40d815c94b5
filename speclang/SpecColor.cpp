#include "speclang/SpecColor.h"

#include "speclang/NamedColors.h"

#include "speclang/SpecExpression.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecNumber.h"
#include "speclang/SpecQuote.h"
#include "platform/Exception.h"

#include <cmath>
#include <cstdio>
#include <string_view>

namespace tw {

namespace {

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
    std::uint32_t color;
    if (name == "transparent") return 0;
    if (findNamedColor(name, color)) return color;
    throw FormatException("Invalid color: " + quote(name));
}

}  // namespace tw
