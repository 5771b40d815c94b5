#include "platform/DesktopScale.h"

#include <X11/Xlib.h>

#include <charconv>
#include <cstdlib>
#include <sstream>

namespace tw {

namespace {

// The leading number of a setting, read the same in every locale.
std::optional<double> number(const std::string& text) {
    const char* p = text.c_str();
    while (*p == ' ' || *p == '\t') ++p;
    double value = 0;
    const auto [end, fault] = std::from_chars(p, text.c_str() + text.size(), value);
    if (fault != std::errc() || end == p) return std::nullopt;
    return value;
}

std::optional<double> sensible(std::optional<double> value) {
    if (!value || !(*value >= 0.5 && *value <= 8)) return std::nullopt;
    return value;
}

// The value of "Xft.dpi:" in a resource database: one "name:\tvalue" a line.
std::string xftDpi(const std::string& resources) {
    std::istringstream lines(resources);
    std::string line;
    while (std::getline(lines, line)) {
        constexpr std::string_view key = "Xft.dpi:";
        if (line.compare(0, key.size(), key) == 0) return line.substr(key.size());
    }
    return {};
}

}  // namespace

std::optional<double> desktopScale(const DesktopSettings& settings) {
    if (const auto gdk = sensible(number(settings.gdkScale))) return gdk;
    if (const auto qt = sensible(number(settings.qtScaleFactor))) return qt;
    const std::optional<double> dpi = number(xftDpi(settings.xResources));
    if (!dpi) return std::nullopt;
    return sensible(*dpi / 96);
}

DesktopSettings readDesktopSettings() {
    DesktopSettings settings;
    if (const char* gdk = std::getenv("GDK_SCALE")) settings.gdkScale = gdk;
    if (const char* qt = std::getenv("QT_SCALE_FACTOR")) settings.qtScaleFactor = qt;
    if (Display* display = XOpenDisplay(nullptr)) {
        if (const char* resources = XResourceManagerString(display)) settings.xResources = resources;
        XCloseDisplay(display);
    }
    return settings;
}

}  // namespace tw
