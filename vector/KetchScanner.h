// The scanning rules that every part of Ketch shares: white space and comments, line
// continuation, brackets, escapes, identifiers and the end of a statement. Ketch keeps no
// parse tree; it scans the text with these each time a statement runs.
#pragma once

#include <string>
#include <string_view>

namespace tw::Ketch {

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }
inline bool isLineBreak(char c) { return c == '\r' || c == '\n'; }
inline bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }
inline bool isIdentifierStart(char c) { return isLetter(c) || c == '_'; }
inline bool isIdentifierChar(char c) { return isIdentifierStart(c) || isDigit(c) || c == '.' || c == '-'; }

// Whether a comment, "//" or "/*", starts at p.
inline bool isCommentStart(const char* p, const char* end) {
    return end - p > 1 && p[0] == '/' && (p[1] == '/' || p[1] == '*');
}

// Past a comment at p: "//" runs to the line break, "/*" to "*/" ("Missing */").
const char* skipComment(const char* p, const char* end);

// Past blanks, tabs and comments.
const char* skipWhite(const char* p, const char* end);

// Past blanks, tabs, comments and line breaks: between statements and list items.
const char* skipWhiteAndLines(const char* p, const char* end);

// At a line break: past the break, the blanks and the ".." when the next line continues
// this one, else nullptr.
const char* skipContinuation(const char* p, const char* end);

// At "[" or "{": past its partner. Both kinds nest; a closer of the other kind is plain
// text. "Missing ]" or "Missing }".
const char* skipBracket(const char* p, const char* end);

// At "\": past the escaped character, a CR LF pair counting as one.
const char* skipEscape(const char* p, const char* end);

// Past an identifier: a letter or "_", then letters, digits, "_", "." and "-".
const char* skipIdentifier(const char* p, const char* end);

// From the start of a statement to its end: a line break that isn't continued, or ";".
// A statement that begins with "[" ends with its partner.
const char* findStatementEnd(const char* p, const char* end);

// Past an argument value or a list item: it stops at white space, a comment or the stop
// character (":" for values, "," for items); brackets nest and escapes hide what they escape.
const char* skipToken(const char* p, const char* end, char stop);

// Whether the text is exactly one "[...]".
bool isBracketed(std::string_view text);

// After a "\": decodes the escape at p, advancing past it. \a \b \f \n \r \t \v, "x" and up
// to 2 hex digits, "u" and up to 4, up to 3 decimal digits; any other character stands for
// itself. The result may exceed 255.
unsigned decodeEscape(const char*& p, const char* end);

// The text with its escapes applied. A code above 255 is written in UTF-8.
std::string unescape(std::string_view text);

// Names of instructions, labels and data formats are compared in lower case.
std::string toLowerCase(std::string_view text);

inline std::string_view between(const char* begin, const char* end) {
    return std::string_view(begin, std::size_t(end - begin));
}

}  // namespace tw::Ketch
