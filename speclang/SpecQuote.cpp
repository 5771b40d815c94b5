#include "speclang/SpecQuote.h"

#include "speclang/SpecNumber.h"

#include <cstdint>

namespace tw {

namespace {

constexpr char16_t replacementCharacter = 0xFFFD;

// Up to `count` hexadecimal digits at `p`; none gives 0.
const char* scanHex(const char* p, int count, std::uint32_t& value) {
    value = 0;
    for (int i = 0; i < count && hexDigitValue(*p) >= 0; ++i, ++p) value = value * 16 + hexDigitValue(*p);
    return p;
}

void append(std::string& out, std::uint32_t byte) {
    out += static_cast<char>(byte);
}

void append(std::u16string& out, std::uint32_t code) {
    if (code <= 0xFFFF) {
        out += static_cast<char16_t>(code);
    } else if (code <= 0x10FFFF) {
        code -= 0x10000;
        out += static_cast<char16_t>(0xD800 + (code >> 10));
        out += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    } else {
        out += replacementCharacter;
    }
}

// The escape table, shared by both widths; only the wide form knows \u and \l.
template <typename String>
String unquoteAs(const std::string& raw, bool wide) {
    String out;
    const char* p = raw.c_str();
    const char quote = *p++;
    while (*p != '\0' && *p != quote) {
        if (*p != '\\') {
            append(out, static_cast<unsigned char>(*p++));
            continue;
        }
        std::uint32_t value;
        const char c = *++p;
        switch (c) {
        case '\0': return out;
        case 'b': value = 0x08; ++p; break;
        case 'f': value = 0x0C; ++p; break;
        case 'n': value = 0x0A; ++p; break;
        case 'r': value = 0x0D; ++p; break;
        case 't': value = 0x09; ++p; break;
        case 'v': value = 0x0B; ++p; break;
        case 'x': p = scanHex(p + 1, 2, value); break;
        default:
            if (wide && c == 'u') {
                p = scanHex(p + 1, 4, value);
            } else if (wide && c == 'l') {
                p = scanHex(p + 1, 8, value);
            } else if (c >= '0' && c <= '9') {
                // The 32-bit C library holds a literal too large for it at the largest
                // value, whose low byte is 0xFF.
                p = scanIntegerLiteral(p, value);
                value = (value > 0x7FFFFFFF ? 0x7FFFFFFF : value) & 0xFF;
            } else {
                value = static_cast<unsigned char>(c);
                ++p;
            }
        }
        append(out, value);
    }
    return out;
}

// One UTF-8 sequence at `p`, or U+FFFD for a byte that starts none.
const char* decodeUtf8(const char* p, std::uint32_t& code) {
    const auto* s = reinterpret_cast<const unsigned char*>(p);
    int length;
    std::uint32_t minimum;
    if (s[0] < 0x80) {
        code = s[0];
        return p + 1;
    } else if (s[0] >= 0xC2 && s[0] <= 0xDF) {
        length = 2, minimum = 0x80, code = s[0] & 0x1F;
    } else if (s[0] >= 0xE0 && s[0] <= 0xEF) {
        length = 3, minimum = 0x800, code = s[0] & 0x0F;
    } else if (s[0] >= 0xF0 && s[0] <= 0xF4) {
        length = 4, minimum = 0x10000, code = s[0] & 0x07;
    } else {
        code = replacementCharacter;
        return p + 1;
    }
    for (int i = 1; i < length; ++i) {
        if ((s[i] & 0xC0) != 0x80) {
            code = replacementCharacter;
            return p + 1;
        }
        code = (code << 6) | (s[i] & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        code = replacementCharacter;
        return p + 1;
    }
    return p + length;
}

bool startsQuoted(const std::string& raw) {
    return !raw.empty() && (raw[0] == '"' || raw[0] == '\'');
}

// Appends one character in quoted form; `code` may be any 16-bit value.
void appendQuoted(std::string& out, std::uint32_t code) {
    static const char hex[] = "0123456789abcdef";
    switch (code) {
    case 0x08: out += "\\b"; return;
    case 0x09: out += "\\t"; return;
    case 0x0A: out += "\\n"; return;
    case 0x0B: out += "\\v"; return;
    case 0x0C: out += "\\f"; return;
    case 0x0D: out += "\\r"; return;
    case '"': out += "\\\""; return;
    case '\'': out += "\\'"; return;
    case '\\': out += "\\\\"; return;
    }
    if (code >= 0x20 && code <= 0x7E) {
        out += static_cast<char>(code);
    } else if (code < 0x100) {
        out += "\\x";
        out += hex[code >> 4];
        out += hex[code & 0xF];
    } else {
        out += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4) out += hex[(code >> shift) & 0xF];
    }
}

}  // namespace

std::string unquote(const std::string& raw) {
    return startsQuoted(raw) ? unquoteAs<std::string>(raw, false) : raw;
}

std::u16string unquoteWide(const std::string& raw) {
    return startsQuoted(raw) ? unquoteAs<std::u16string>(raw, true) : fromUtf8(raw);
}

std::u16string fromUtf8(const std::string& text) {
    std::u16string out;
    for (const char* p = text.c_str(); *p != '\0';) {
        std::uint32_t code;
        p = decodeUtf8(p, code);
        append(out, code);
    }
    return out;
}

std::string toUtf8(std::u16string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t code = text[i];
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF)
            code = 0x10000 + ((code - 0xD800) << 10) + (text[++i] - 0xDC00);
        if (code < 0x80) {
            out += char(code);
        } else if (code < 0x800) {
            out += char(0xC0 | code >> 6);
            out += char(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += char(0xE0 | code >> 12);
            out += char(0x80 | ((code >> 6) & 0x3F));
            out += char(0x80 | (code & 0x3F));
        } else {
            out += char(0xF0 | code >> 18);
            out += char(0x80 | ((code >> 12) & 0x3F));
            out += char(0x80 | ((code >> 6) & 0x3F));
            out += char(0x80 | (code & 0x3F));
        }
    }
    return out;
}

std::string quote(std::string_view text) {
    std::string out = "\"";
    for (char c : text) appendQuoted(out, static_cast<unsigned char>(c));
    out += '"';
    return out;
}

std::string quoteWide(std::u16string_view text) {
    std::string out = "\"";
    for (char16_t c : text) appendQuoted(out, c);
    out += '"';
    return out;
}

}  // namespace tw
