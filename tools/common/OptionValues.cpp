#include "tools/common/OptionValues.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace tw {

namespace {

std::string shortest(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", v);
    return text;
}

}  // namespace

int wholeOption(const std::string& option, const std::string& text, long min, long max) {
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != 0 || errno == ERANGE || v < min || v > max)
        throw UsageError(option + " must be a whole number from " + std::to_string(min) + " to " + std::to_string(max) +
                         ": " + text);
    return static_cast<int>(v);
}

double numberOption(const std::string& option, const std::string& text, double min, double max) {
    char* end = nullptr;
    double v = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != 0 || !std::isfinite(v) || v < min || v > max)
        throw UsageError(option + " must be a number from " + shortest(min) + " to " + shortest(max) + ": " + text);
    return v;
}

}  // namespace tw
