#include "cushy/VariableReading.h"

#include "cushy/TagExpansion.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecNumber.h"

#include <cstdio>

namespace tw {

double variableNumber(const std::string& value, double defaultValue) {
    const char* p = value.c_str();
    while (isCSpace(*p)) ++p;
    double number;
    return scanDouble(p, number) == p ? defaultValue : number;
}

std::int32_t variableInteger(const std::string& value) { return toInt(value, 0); }

bool variableBool(const std::string& value) { return toBool(value, false); }

std::string formatVariableNumber(double value) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.14g", value);
    return buffer;
}

WatchedText::WatchedText(std::string raw, CushyHost& host, CushyView& view)
    : raw_(std::move(raw)), text_(expand(raw_, host, view)), watching_(hasVar(raw_)) {}

bool WatchedText::renew(CushyHost& host, CushyView& view) {
    if (!watching_) return false;
    std::string now = expand(raw_, host, view);
    if (now == text_) return false;
    text_ = std::move(now);
    return true;
}

}  // namespace tw
