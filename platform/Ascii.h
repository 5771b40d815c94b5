// Byte-level text helpers shared by every reader of text in the program: the value of a
// hexadecimal digit and comparison that ignores ASCII case (other bytes compare as they are).
#pragma once

#include <string_view>

namespace tw {

// The value of a hexadecimal digit in either case, or -1.
inline int hexDigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

inline char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; }

inline bool equalNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (asciiLower(a[i]) != asciiLower(b[i])) return false;
    return true;
}

inline bool endsWithNoCase(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && equalNoCase(text.substr(text.size() - suffix.size()), suffix);
}

}  // namespace tw
