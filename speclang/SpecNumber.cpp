#include "speclang/SpecNumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace tw {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Matches `word` (lower case) at `p` without regard to case.
bool matchesWord(const char* p, const char* word) {
    for (; *word; ++p, ++word) {
        if ((*p | 0x20) != *word) return false;
    }
    return true;
}

// Decides, for a decimal literal that the converter found out of range, whether it is too
// large or too small: by the decimal exponent of its first significant digit.
bool isOverflow(const char* start, const char* end) {
    const char* p = start;
    while (p < end && isDigit(*p)) ++p;
    long long position = (p - start) - 1;  // decimal exponent of the digit under the cursor
    long long leading = std::numeric_limits<long long>::min();
    for (p = start; p < end && *p != 'e' && *p != 'E'; ++p) {
        if (*p == '.') continue;
        if (*p != '0') {
            leading = position;
            break;
        }
        --position;
    }
    if (leading == std::numeric_limits<long long>::min()) return false;
    while (p < end && *p != 'e' && *p != 'E') ++p;
    long long exponent = 0;
    if (p < end) {
        ++p;
        bool negative = *p == '-';
        if (*p == '+' || *p == '-') ++p;
        for (; p < end; ++p) {
            if (exponent < 1000000) exponent = exponent * 10 + (*p - '0');
        }
        if (negative) exponent = -exponent;
    }
    return leading + exponent > 0;
}

}  // namespace

const char* scanIntegerLiteral(const char* p, std::uint32_t& magnitude) {
    constexpr std::uint64_t limit = 0xFFFFFFFFu;
    std::uint64_t value = 0;
    const char* q = p;
    if (!isDigit(*q)) return p;
    if (q[0] == '0' && (q[1] == 'x' || q[1] == 'X') && hexDigitValue(q[2]) >= 0) {
        for (q += 2; hexDigitValue(*q) >= 0; ++q) {
            value = std::min(value * 16 + static_cast<std::uint64_t>(hexDigitValue(*q)), limit);
        }
    } else if (q[0] == '0') {
        for (++q; *q >= '0' && *q <= '7'; ++q) {
            value = std::min(value * 8 + static_cast<std::uint64_t>(*q - '0'), limit);
        }
    } else {
        for (; isDigit(*q); ++q) {
            value = std::min(value * 10 + static_cast<std::uint64_t>(*q - '0'), limit);
        }
    }
    magnitude = static_cast<std::uint32_t>(value);
    return q;
}

const char* scanDouble(const char* p, double& value) {
    const char* q = p;
    bool negative = false;
    if (*q == '+' || *q == '-') {
        negative = *q == '-';
        ++q;
    }
    double result;
    if (matchesWord(q, "infinity")) {
        result = std::numeric_limits<double>::infinity();
        q += 8;
    } else if (matchesWord(q, "inf")) {
        result = std::numeric_limits<double>::infinity();
        q += 3;
    } else if (matchesWord(q, "nan")) {
        result = std::numeric_limits<double>::quiet_NaN();
        q += 3;
    } else {
        // The literal's extent is found here, so that the converter never looks beyond it:
        // an expression of many numbers must not cost a walk to its end per number.
        const char* start = q;
        bool hasDigits = false;
        for (; isDigit(*q); ++q) hasDigits = true;
        if (*q == '.') {
            for (++q; isDigit(*q); ++q) hasDigits = true;
        }
        if (!hasDigits) return p;
        if (*q == 'e' || *q == 'E') {
            const char* e = q + 1;
            if (*e == '+' || *e == '-') ++e;
            if (isDigit(*e)) {
                while (isDigit(*e)) ++e;
                q = e;
            }
        }
        auto [end, error] = std::from_chars(start, q, result);
        if (error == std::errc::result_out_of_range) {
            result = isOverflow(start, q) ? std::numeric_limits<double>::infinity() : 0.0;
        } else if (error != std::errc() || end != q) {
            return p;
        }
    }
    value = negative ? -result : result;
    return q;
}

double leadingDouble(std::string_view text, double defaultValue) {
    // scanDouble stops at a terminator; a view may end anywhere, so it reads a copy.
    const std::string copy(text);
    const char* p = copy.c_str();
    while (isCSpace(*p)) ++p;
    double value;
    return scanDouble(p, value) == p ? defaultValue : value;
}

std::string formatDouble(double value, int significantDigits) {
    char buffer[64];
    const auto [end, error] =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, significantDigits);
    return error == std::errc() ? std::string(buffer, end) : std::string();
}

}  // namespace tw
