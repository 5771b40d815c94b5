#include "speclang/SpecLanguage.h"

#include "speclang/SpecNumber.h"
#include "speclang/SpecQuote.h"

#include <limits>

namespace tw {

namespace {

constexpr char endOfText = 0x1A;  // Ctrl-Z: ends every scan, like NUL

bool isQuote(char c) {
    return c == '"' || c == '\'';
}

bool opensComment(const char* p) {
    return p[0] == '/' && (p[1] == '/' || p[1] == '*');
}

// Bytes that end a bare value (and, with '=' and ':', a bare label).
bool endsBare(char c, bool label) {
    switch (c) {
    case ',': case ';': case '}': case '\r': case '\n': case endOfText: case '\0':
        return true;
    case '=': case ':':
        return label;
    default:
        return false;
    }
}

// Bytes that end one word of a bare value or label.
bool endsWord(const char* p, bool label) {
    char c = *p;
    return c == ' ' || c == '\t' || c == '\v' || endsBare(c, label) || opensComment(p);
}

// A bare value or label: words joined by single blanks, up to the end of the line or a
// separator, with comments dropped.
const char* scanBare(const char* p, std::string& out, bool label) {
    out.clear();
    while (!endsBare(*p, label)) {
        const char* word = p;
        while (!endsWord(p, label)) ++p;
        if (!out.empty()) out += ' ';
        out.append(word, p);
        p = skipWhite(p, true);
    }
    return p;
}

bool endsLevel(char c) {
    return c == '\0' || c == endOfText || c == '}';
}

// Steps over the white space and the optional opening brace in front of a map or list.
const char* openLevel(const char* p) {
    p = skipWhite(p, false);
    if (*p == '{') p = skipWhite(p + 1, false);
    return p;
}

}  // namespace

const char* skipWhite(const char* p, bool stopAtNewline) {
    for (;;) {
        char c = *p;
        if (c == ' ' || c == '\t' || c == '\v') {
            ++p;
        } else if ((c == '\n' || c == '\r') && !stopAtNewline) {
            ++p;
        } else if (c == '/' && p[1] == '/') {
            p += 2;
            while (*p != '\0' && *p != '\r' && *p != '\n' && *p != endOfText) ++p;
        } else if (c == '/' && p[1] == '*') {
            // Nesting is a count, never a recursion, so no depth of comments can
            // exhaust the stack.
            p += 2;
            for (int depth = 1; depth > 0 && *p != '\0' && *p != endOfText;) {
                if (p[0] == '/' && p[1] == '*') {
                    ++depth;
                    p += 2;
                } else if (p[0] == '*' && p[1] == '/') {
                    --depth;
                    p += 2;
                } else {
                    ++p;
                }
            }
        } else {
            return p;
        }
    }
}

const char* scanString(const char* p) {
    const char quote = *p++;
    for (;;) {
        char c = *p;
        if (c == quote) return p + 1;
        if (c == '\0' || c == endOfText || c == '\n' || c == '\r') return p;
        if (c == '\\') {
            if (p[1] == '\0') return p + 1;
            p += (p[1] == '\r' && p[2] == '\n') ? 3 : 2;
        } else {
            ++p;
        }
    }
}

const char* scanBlock(const char* p) {
    // Only the braces nest; a count stands in for the recursion.
    int depth = 0;
    for (;;) {
        char c = *p;
        if (c == '\0' || c == endOfText) return p;
        if (c == '{') {
            ++depth;
            ++p;
        } else if (c == '}') {
            ++p;
            if (--depth == 0) return p;
        } else if (isQuote(c)) {
            p = scanString(p);
        } else if (opensComment(p)) {
            p = skipWhite(p, true);
        } else {
            ++p;
        }
    }
}

const char* scanValue(const char* p, std::string& out) {
    if (*p == '{') {
        const char* end = scanBlock(p);
        out.assign(p, end);
        p = end;
    } else if (isQuote(*p)) {
        const char* end = scanString(p);
        out.assign(p, end);
        p = end;
    } else {
        p = scanBare(p, out, false);
    }
    return skipWhite(p, true);
}

const char* scanLabel(const char* p, std::string& out) {
    if (isQuote(*p)) {
        const char* end = scanString(p);
        out = unquote(std::string(p, end));
        return skipWhite(end, false);
    }
    return skipWhite(scanBare(p, out, true), true);
}

SpecList parseList(const std::string& text) {
    SpecList list;
    const char* p = openLevel(text.c_str());
    while (!endsLevel(*p)) {
        std::string value;
        p = skipWhite(scanValue(p, value), false);
        if (*p == ',' || *p == ';') p = skipWhite(p + 1, false);
        list.push_back(std::move(value));
    }
    return list;
}

SpecMap parseMap(const std::string& text) {
    SpecMap map;
    const char* p = openLevel(text.c_str());
    while (!endsLevel(*p)) {
        std::string label;
        std::string value;
        p = scanLabel(p, label);
        if (*p == '=' || *p == ':') p = scanValue(skipWhite(p + 1, true), value);
        if (*p == ',' || *p == ';') ++p;
        map.try_emplace(std::move(label), std::move(value));
        p = skipWhite(p, false);
    }
    return map;
}

const std::string& lookup(const SpecMap& map, std::string_view label) {
    static const std::string absent;
    auto it = map.find(label);
    return it == map.end() ? absent : it->second;
}

bool toBool(const std::string& raw, bool defaultValue) {
    auto equals = [&raw](const char* word) {
        std::size_t i = 0;
        for (; word[i] != '\0'; ++i) {
            if (i >= raw.size() || (raw[i] | 0x20) != word[i]) return false;
        }
        return i == raw.size();
    };
    if (equals("false")) return false;
    if (equals("true")) return true;
    return defaultValue;
}

std::int32_t toInt(const std::string& raw, std::int32_t defaultValue) {
    const char* p = raw.c_str();
    while (isCSpace(*p)) ++p;
    bool negative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    std::uint32_t magnitude;
    if (scanIntegerLiteral(p, magnitude) == p) return defaultValue;
    constexpr std::int64_t low = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t high = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = negative ? -static_cast<std::int64_t>(magnitude) : magnitude;
    return static_cast<std::int32_t>(value < low ? low : value > high ? high : value);
}

std::string formatMap(const SpecMap& map) {
    std::string text;
    for (const auto& [label, value] : map) text += label + ": " + value + "\n";
    return text;
}

}  // namespace tw
