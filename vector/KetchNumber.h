// Numbers as Ketch reads and writes them. Every value is text, so these run for each number
// that passes through a statement: a loop counter, an expression's result, a coordinate.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tw::Ketch {

// Reads a number at p: an optional sign (only with more than one character left), digits,
// an optional "." and digits, an optional exponent. Advances p and returns true, or leaves
// p alone and returns false when no number stands there ("." alone is none).
bool readNumber(const char*& p, const char* end, double& value);

// The whole text as a number; else SyntaxException "Invalid number".
double toNumber(std::string_view text);

// The whole text as a signed 32-bit integer, read exactly; else "Invalid integer".
std::int32_t toInteger(std::string_view text);

// 13 significant digits, rounded up from a 14th digit of 5, trailing zeros cut; positional
// for 1e-5 < |v| < 1e10, else with an exponent ("1e+10", "2.5e-7"); "0" for |v| <= 1e-300.
std::string formatNumber(double value);

}  // namespace tw::Ketch
