#include "vector/KetchScanner.h"

#include "platform/Ascii.h"
#include "vector/KetchException.h"

#include <cstdint>

namespace tw::Ketch {

namespace {

void appendCode(std::string& out, unsigned code) {
    if (code < 0x100) {
        out += char(code);
    } else if (code < 0x800) {
        out += char(0xC0 | (code >> 6));
        out += char(0x80 | (code & 0x3F));
    } else {
        out += char(0xE0 | (code >> 12));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    }
}

const char* skipSpace(const char* p, const char* end, bool withLines) {
    while (p < end) {
        if (isBlank(*p) || (withLines && isLineBreak(*p))) {
            ++p;
        } else if (isCommentStart(p, end)) {
            p = skipComment(p, end);
        } else {
            break;
        }
    }
    return p;
}

}  // namespace

const char* skipComment(const char* p, const char* end) {
    if (p[1] == '/') {
        while (p < end && !isLineBreak(*p)) {
            ++p;
        }
        return p;
    }
    for (p += 2; end - p > 1; ++p) {
        if (p[0] == '*' && p[1] == '/') {
            return p + 2;
        }
    }
    throw SyntaxException("Missing */");
}

const char* skipWhite(const char* p, const char* end) { return skipSpace(p, end, false); }

const char* skipWhiteAndLines(const char* p, const char* end) { return skipSpace(p, end, true); }

const char* skipContinuation(const char* p, const char* end) {
    if (*p == '\r' && end - p > 1 && p[1] == '\n') {
        p += 2;
    } else {
        ++p;
    }
    while (p < end && isBlank(*p)) {
        ++p;
    }
    if (end - p > 1 && p[0] == '.' && p[1] == '.') {
        return p + 2;
    }
    return nullptr;
}

const char* skipBracket(const char* p, const char* end) {
    // The closers still owed, innermost last; a plain loop, so nesting costs no stack.
    std::string owed(1, *p == '[' ? ']' : '}');
    ++p;
    while (p < end) {
        const char c = *p;
        if (c == '\\') {
            p = skipEscape(p, end);
        } else if (isCommentStart(p, end)) {
            p = skipComment(p, end);
        } else if (c == '[' || c == '{') {
            owed += c == '[' ? ']' : '}';
            ++p;
        } else if (c == owed.back()) {
            owed.pop_back();
            ++p;
            if (owed.empty()) {
                return p;
            }
        } else {
            ++p;
        }
    }
    throw SyntaxException(owed.back() == ']' ? "Missing ]" : "Missing }");
}

const char* skipEscape(const char* p, const char* end) {
    ++p;
    if (p == end) {
        return p;
    }
    if (*p == '\r' && end - p > 1 && p[1] == '\n') {
        return p + 2;
    }
    return p + 1;
}

const char* skipIdentifier(const char* p, const char* end) {
    if (p == end || !isIdentifierStart(*p)) {
        return p;
    }
    ++p;
    while (p < end && isIdentifierChar(*p)) {
        ++p;
    }
    return p;
}

const char* findStatementEnd(const char* p, const char* end) {
    if (p < end && *p == '[') {
        return skipBracket(p, end);
    }
    while (p < end) {
        const char c = *p;
        if (c == ';') {
            return p;
        }
        if (isLineBreak(c)) {
            const char* next = skipContinuation(p, end);
            if (next == nullptr) {
                return p;
            }
            p = next;
        } else if (c == '\\') {
            p = skipEscape(p, end);
        } else if (c == '[' || c == '{') {
            p = skipBracket(p, end);
        } else if (isCommentStart(p, end)) {
            p = skipComment(p, end);
        } else {
            ++p;
        }
    }
    return p;
}

const char* skipToken(const char* p, const char* end, char stop) {
    while (p < end) {
        const char c = *p;
        if (isBlank(c) || isLineBreak(c) || c == stop || isCommentStart(p, end)) {
            break;
        }
        if (c == '[' || c == '{') {
            p = skipBracket(p, end);
        } else if (c == '\\') {
            p = skipEscape(p, end);
        } else {
            ++p;
        }
    }
    return p;
}

bool isBracketed(std::string_view text) {
    if (text.empty() || text[0] != '[') {
        return false;
    }
    const char* end = text.data() + text.size();
    return skipBracket(text.data(), end) == end;
}

unsigned decodeEscape(const char*& p, const char* end) {
    const char c = *p++;
    switch (c) {
    case 'a': return 7;
    case 'b': return 8;
    case 'f': return 12;
    case 'n': return 10;
    case 'r': return 13;
    case 't': return 9;
    case 'v': return 11;
    case 'x':
    case 'u': {
        const int maxDigits = c == 'x' ? 2 : 4;
        unsigned code = 0;
        int n = 0;
        for (; n < maxDigits && p < end && hexDigitValue(*p) >= 0; ++n, ++p) {
            code = code * 16 + unsigned(hexDigitValue(*p));
        }
        return n > 0 ? code : unsigned(std::uint8_t(c));
    }
    default:
        break;
    }
    if (isDigit(c)) {
        unsigned code = unsigned(c - '0');
        for (int n = 1; n < 3 && p < end && isDigit(*p); ++n, ++p) {
            code = code * 10 + unsigned(*p - '0');
        }
        return code;
    }
    return std::uint8_t(c);
}

std::string unescape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    const char* p = text.data();
    const char* end = p + text.size();
    while (p < end) {
        const char* backslash = p;
        while (backslash < end && *backslash != '\\') {
            ++backslash;
        }
        out.append(p, backslash);
        if (backslash == end) {
            break;
        }
        p = backslash + 1;
        if (p == end) {
            out += '\\';
            break;
        }
        appendCode(out, decodeEscape(p, end));
    }
    return out;
}

std::string toLowerCase(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') {
            c = char(c - 'A' + 'a');
        }
    }
    return out;
}

}  // namespace tw::Ketch
