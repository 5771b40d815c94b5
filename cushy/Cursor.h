// The reader of a view's `cursor` key: a name of one of the system cursors that the
// editor window knows.
#pragma once

#include <string>

#include "platform/Window.h"

namespace tw {

// A cursor's name as written in the enumeration, case-sensitive; an empty value gives `defaultValue`. Throws
// FormatException "Unrecognized cursor: " for any other name.
Cursor parseCursor(const std::string& raw, Cursor defaultValue);

}  // namespace tw
