// The mouse cursors a view may ask for with its `cursor` key, each one of the system's
// own; the editor window turns them into the platform's cursors.
#pragma once

#include <string>

namespace tw {

enum class Cursor {
    arrow,
    iBeam,
    wait,
    cross,
    upArrow,
    sizeAll,
    sizeNWSE,
    sizeNESW,
    sizeWE,
    sizeNS,
    no,
    hand,
    appStarting,
    help,
};

// One of the names above, case-sensitive; an empty value gives `defaultValue`. Throws
// FormatException "Unrecognized cursor: " for any other name.
Cursor parseCursor(const std::string& raw, Cursor defaultValue);

}  // namespace tw
