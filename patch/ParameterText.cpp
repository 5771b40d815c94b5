#include "patch/ParameterText.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

#include "platform/Ascii.h"
#include "speclang/SpecNumber.h"

namespace tw {

namespace {

bool isWhite(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\r' || c == '\n'; }

std::string_view trim(std::string_view s) {
    while (!s.empty() && isWhite(s.front())) s.remove_prefix(1);
    while (!s.empty() && isWhite(s.back())) s.remove_suffix(1);
    return s;
}

}  // namespace

std::string formatFixed(double value, int precision) {
    // Enough for the largest double in fixed notation.
    char buffer[400];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, precision);
    return std::string(buffer, result.ptr);
}

const char* scanNumber(const char* p, double& value) {
    const char* q = p;
    while (isCSpace(*q)) ++q;
    double number = 0;
    const char* end = scanDouble(q, number);
    if (end == q || std::isnan(number)) return p;
    value = number;
    return end;
}

float clampUnit(double value) {
    return value > 0 ? static_cast<float>(std::min(value, 1.0)) : 0.0f;
}

std::string formatGeneric(const ParameterSpec& row, float value, bool precise) {
    switch (row.kind) {
        case ParameterKind::boolean:
            return isOn(value) ? "On" : "Off";
        case ParameterKind::discrete: {
            int step = std::clamp(discreteStep(row, value), 0, static_cast<int>(row.labels.size()) - 1);
            return row.labels[static_cast<std::size_t>(step)];
        }
        case ParameterKind::continuous:
        case ParameterKind::custom:
            break;
    }
    double shown = double(row.displayMin) + double(value) * (double(row.displayMax) - double(row.displayMin));
    return formatFixed(shown, precise ? 7 : 2);
}

bool parseGeneric(const ParameterSpec& row, std::string_view text, float& out) {
    std::string_view t = trim(text);
    switch (row.kind) {
        case ParameterKind::boolean:
            if (equalNoCase(t, "on") || equalNoCase(t, "true") || t == "1") {
                out = 1.0f;
                return true;
            }
            if (equalNoCase(t, "off") || equalNoCase(t, "false") || t == "0") {
                out = 0.0f;
                return true;
            }
            return false;
        case ParameterKind::discrete:
            for (std::size_t i = 0; i < row.labels.size(); ++i)
                if (equalNoCase(t, row.labels[i])) {
                    out = row.displayMax > 0 ? clampUnit(double(i) / double(row.displayMax)) : 0.0f;
                    return true;
                }
            return false;
        case ParameterKind::continuous:
        case ParameterKind::custom:
            break;
    }
    const std::string copy(text);
    double number = 0;
    if (scanNumber(copy.c_str(), number) == copy.c_str()) return false;
    double range = double(row.displayMax) - double(row.displayMin);
    out = range != 0 ? clampUnit((number - double(row.displayMin)) / range) : 0.0f;
    return true;
}

float quantiseGeneric(const ParameterSpec& row, float value) {
    switch (row.kind) {
        case ParameterKind::boolean:
            return isOn(value) ? 1.0f : 0.0f;
        case ParameterKind::discrete: {
            float n = row.displayMax - row.displayMin;
            return n > 0 ? std::floor(n * value + 0.5f) / n : 0.0f;
        }
        case ParameterKind::continuous:
        case ParameterKind::custom:
            break;
    }
    return value;
}

}  // namespace tw
