#include "cushy/VariableReading.h"

#include "cushy/CushyHost.h"
#include "cushy/TagExpansion.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecNumber.h"

namespace tw {

double variableNumber(const std::string& value, double defaultValue) { return leadingDouble(value, defaultValue); }

std::int32_t variableInteger(const std::string& value) { return toInt(value, 0); }

bool variableBool(const std::string& value) { return toBool(value, false); }

std::string formatVariableNumber(double value) { return formatDouble(value, 14); }

WatchedText::WatchedText(std::string raw, CushyHost& host, CushyView& view)
    : raw_(std::move(raw)), text_(expand(raw_, host, view)), watching_(hasVar(raw_)) {
    constexpr std::string_view open = "[var]", close = "[/var]";
    if (raw_.size() > open.size() + close.size() && raw_.starts_with(open) && raw_.ends_with(close)) {
        const std::string name = raw_.substr(open.size(), raw_.size() - open.size() - close.size());
        if (name.find_first_of("[]\"'\\") == std::string::npos) plainVariable_ = name;
    }
}

bool WatchedText::renew(CushyHost& host, CushyView& view) {
    if (!watching_) return false;
    std::string now = plainVariable_.empty() ? expand(raw_, host, view) : host.getVariable(view, plainVariable_);
    if (now == text_) return false;
    text_ = std::move(now);
    return true;
}

bool WatchedVariable::renew(CushyHost& host, CushyView& view) {
    if (name_.empty()) return false;
    std::string now = host.getVariable(view, name_);
    if (now == value_) return false;
    value_ = std::move(now);
    return true;
}

}  // namespace tw
