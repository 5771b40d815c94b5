#include "vector/KeelColor.h"

#include "graphics/PixelMath.h"
#include "platform/Ascii.h"
#include "speclang/NamedColors.h"
#include "vector/KetchException.h"
#include "vector/KeelNumberList.h"
#include "vector/KetchNumber.h"

namespace tw {

namespace {

// The digits after "#" as a number; false when one is no hex digit.
bool readHex(std::string_view digits, std::uint32_t& value) {
    value = 0;
    for (char c : digits) {
        const int d = hexDigitValue(c);
        if (d < 0) return false;
        value = value << 4 | std::uint32_t(d);
    }
    return true;
}

double unitValue(double v) {
    if (!(v >= 0 && v <= 1)) throw Ketch::RunTimeException("Value out of range");
    return v;
}

// The byte of a component or an opacity in 0..1.
std::uint32_t unitByte(double v) {
    const int b = int(unitValue(v) * 256);
    return std::uint32_t(b < 255 ? b : 255);
}

// Hue by sector h * 6, each channel scaled by 255.99999999 so that 1 gives 255.
std::uint32_t hsvToRgb(double h, double s, double v) {
    const double h6 = h * 6;
    int sector = int(h6);
    const double f = h6 - sector;
    if (sector == 6) sector = 0;
    const double p = v * (1 - s), q = v * (1 - s * f), t = v * (1 - s * (1 - f));
    double r, g, b;
    switch (sector) {
        case 0: r = v, g = t, b = p; break;
        case 1: r = q, g = v, b = p; break;
        case 2: r = p, g = v, b = t; break;
        case 3: r = p, g = q, b = v; break;
        case 4: r = t, g = p, b = v; break;
        default: r = v, g = p, b = q; break;
    }
    const auto channel = [](double c) { return std::uint32_t(c * 255.99999999); };
    return channel(r) << 16 | channel(g) << 8 | channel(b);
}

// "rgb(...)" or "hsv(...)": 3 or 4 numbers in 0..1; the fourth is an opacity that
// premultiplies the colour.
std::uint32_t colorFunction(Ketch::Frame& frame, std::string_view name, std::string_view inner) {
    double v[4];
    const int n = readNumberList(frame, inner, 3, 4, v);
    for (int i = 0; i < n; ++i) unitValue(v[i]);
    const std::uint32_t rgb = name == "rgb" ? unitByte(v[0]) << 16 | unitByte(v[1]) << 8 | unitByte(v[2])
                                            : hsvToRgb(v[0], v[1], v[2]);
    const std::uint32_t colour = 0xFF000000u | rgb;
    return n == 4 ? scale32(colour, unitByte(v[3])) : colour;
}

}  // namespace

std::uint32_t parseKeelColor(Ketch::Frame& frame, std::string_view text) {
    if (!text.empty() && text[0] == '#') {
        const std::string_view digits = text.substr(1);
        std::uint32_t value;
        if ((digits.size() != 6 && digits.size() != 8) || !readHex(digits, value)) {
            throw Ketch::SyntaxException("Invalid color");
        }
        if (digits.size() == 6) return 0xFF000000u | value;
        const std::uint32_t a = value >> 24;
        if (((value >> 16) & 0xFF) > a || ((value >> 8) & 0xFF) > a || (value & 0xFF) > a) {
            throw Ketch::SyntaxException("Invalid pre-multiplied alpha color");
        }
        return value;
    }
    if (text.size() >= 5 && text.back() == ')' && (text.starts_with("rgb(") || text.starts_with("hsv("))) {
        return colorFunction(frame, text.substr(0, 3), text.substr(4, text.size() - 5));
    }
    std::uint32_t named;
    if (text == "none") return 0;
    if (findNamedColor(text, named)) return named;
    throw Ketch::SyntaxException("Invalid color");
}

std::uint8_t parseKeelOpacity(std::string_view text) {
    if (!text.empty() && text[0] == '#') {
        std::uint32_t value;
        if (text.size() != 3 || !readHex(text.substr(1), value)) throw Ketch::SyntaxException("Invalid opacity");
        return std::uint8_t(value);
    }
    return std::uint8_t(unitByte(Ketch::toNumber(text)));
}

}  // namespace tw
