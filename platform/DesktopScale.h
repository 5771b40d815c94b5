// How large the desktop draws its own windows, as a factor of 1 for 96 dots an inch: what
// GTK, Qt and Xft applications are told, read in that order. The editor follows it when
// neither the host nor the user chose a zoom.
#pragma once

#include <optional>
#include <string>

namespace tw {

struct DesktopSettings {
    std::string gdkScale;          // GDK_SCALE: a whole factor
    std::string qtScaleFactor;     // QT_SCALE_FACTOR: any factor
    std::string xResources;        // the X server's resource database (xrdb), for Xft.dpi
};

// The first of GDK_SCALE, QT_SCALE_FACTOR and Xft.dpi / 96 that is set and makes sense (a
// factor from 0.5 to 8); none when the desktop says nothing.
std::optional<double> desktopScale(const DesktopSettings& settings);

// The settings of this process's environment and of the default X display; the resource
// database is empty when no display answers.
DesktopSettings readDesktopSettings();

}  // namespace tw
