// The twelve actions Cushy runs itself ("nop", "set", "switch", "batch", "execute",
// "alert", "hint", "popup", "edit", "launch", "reload", "assert"), each with its three
// operations; every other name goes to the host. CushyView's execute, isEnabled and
// isChecked come here, and the actions that nest call them again directly.
#pragma once

#include <string>

namespace tw {

class CushyView;

// Throws FormatException on bad params, QvxDebug::Assert for a failed "assert".
void executeAction(CushyView& view, const std::string& action, const std::string& params);
bool actionEnabled(CushyView& view, const std::string& action, const std::string& params);
bool actionChecked(CushyView& view, const std::string& action, const std::string& params);

}  // namespace tw
