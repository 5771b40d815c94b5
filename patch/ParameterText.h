// The text of a parameter value by the generic rule of its row's kind: continuous rows
// as numbers between their display limits, booleans as "Off" and "On", discrete rows as
// their labels. Rows with text of their own build on these.
#pragma once

#include <string>
#include <string_view>

#include "patch/ParameterSpec.h"

namespace tw {

// The helpers of every parameter text. Texts are stored in patches and typed by users
// whatever locale the host runs in, so numbers always use '.' as the decimal point.

// "%.*f" of the C locale.
std::string formatFixed(double value, int precision);
// Reads a number as the C library's string-to-double does, after white space, in the C
// locale; "nan" is no number. Answers the position behind it, or `p` itself.
const char* scanNumber(const char* p, double& value);
// `value` held to 0..1, as a float; NaN gives 0.
float clampUnit(double value);

// Display form with 2 decimals, full form with 7; the unit is not part of the text.
std::string formatGeneric(const ParameterSpec& row, float value, bool precise);
// Answers false, leaving `out` alone, when the text does not read; results lie in 0..1.
bool parseGeneric(const ParameterSpec& row, std::string_view text, float& out);
// The nearest value the row's kind allows.
float quantiseGeneric(const ParameterSpec& row, float value);

}  // namespace tw
