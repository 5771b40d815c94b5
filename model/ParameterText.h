// The text of a parameter value by the generic rule of its row's kind: continuous rows
// as numbers between their display limits, booleans as "Off" and "On", discrete rows as
// their labels. Rows with text of their own build on these.
#pragma once

#include <string>
#include <string_view>

#include "model/ParameterSpec.h"

namespace tw {

// Display form with 2 decimals, full form with 7; the unit is not part of the text.
std::string formatGeneric(const ParameterSpec& row, float value, bool precise);
// Answers false, leaving `out` alone, when the text does not read; results lie in 0..1.
bool parseGeneric(const ParameterSpec& row, std::string_view text, float& out);
// The nearest value the row's kind allows.
float quantiseGeneric(const ParameterSpec& row, float value);

}  // namespace tw
