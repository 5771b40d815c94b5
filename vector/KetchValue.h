// The value of a Ketch expression. Variables and arguments are text; an expression keeps
// numbers and truth values as such while it computes, and turns them back into text at the end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tw::Ketch {

struct Value {
    enum Type : std::int32_t { None = 0, Boolean = 1, Number = 2, String = 3 };

    Type type = None;
    std::string string;  // for String
    double number = 0;   // for Number, and 0 or 1 for Boolean

    static Value ofBoolean(bool b) { return {Boolean, {}, b ? 1.0 : 0.0}; }
    static Value ofNumber(double v) { return {Number, {}, v}; }
    static Value ofString(std::string s) { return {String, std::move(s), 0}; }

    // "yes" or "no" for a boolean, formatNumber for a number.
    std::string toString() const;
    // A number is true when not 0; text must be "yes" or "no".
    bool toBoolean() const;
    // Text must be a number as a whole.
    double toNumber() const;
};

// The longest text that Ketch builds, as a statement or a value, in bytes. A script that
// keeps doubling a string stops here with RunTimeException "String too long" rather than
// exhausting the host's memory.
inline constexpr std::size_t maxTextLength = 1 << 20;

// Throws "String too long" when a text would be longer than maxTextLength.
void checkTextLength(std::size_t length);

// "yes" or "no"; anything else is SyntaxException "Invalid boolean (should be 'yes' or 'no')".
bool toBoolean(std::string_view text);

}  // namespace tw::Ketch
