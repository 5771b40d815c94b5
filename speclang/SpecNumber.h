// Numbers as text, the one pair that every text of the editor is written and read with:
// C integer literals for toInt, the integer expressions and the digit escapes of quoted
// strings, decimal literals for the float expressions, the GUI variables, the numbers typed
// into parameter fields and the tour's timings. None follows the locale a host has set.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Ascii.h"

namespace tw {

// Reads a C integer literal at `p`: "0x" and hexadecimal digits, a leading 0 and octal
// digits, or decimal digits; no sign and no white space. `magnitude` saturates at
// 0xFFFFFFFF, so that a caller can tell any value beyond the 32-bit range. Answers the
// position behind the literal, or `p` itself when no literal starts there.
const char* scanIntegerLiteral(const char* p, std::uint32_t& magnitude);

// Reads a floating-point number at `p` as the C library's string-to-double does, but always
// with '.' as the decimal point, whatever locale the host has set: an optional sign, then a
// decimal literal with optional fraction and exponent, or "inf", "infinity" or "nan" in any
// case. Hexadecimal floats and leading white space are not read. A literal beyond the range
// of a double gives an infinity, one below it zero. Answers the position behind the number,
// or `p` itself when no number starts there.
const char* scanDouble(const char* p, double& value);

// The leading number of `text` after any C white space, as scanDouble reads it, or
// `defaultValue` when none starts there: what strtod gives, but with '.' in every locale.
double leadingDouble(std::string_view text, double defaultValue);

// `value` with `significantDigits` significant digits as printf's "%.*g" writes it in the
// "C" locale: "0.5", "1e+20", "-inf", "nan". Every number the editor writes as text for
// itself to read back goes through here.
std::string formatDouble(double value, int significantDigits);

// The C library's white space: blank, tab, line feed, vertical tab, form feed, return.
inline bool isCSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

}  // namespace tw
