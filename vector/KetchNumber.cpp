#include "vector/KetchNumber.h"

#include "vector/KetchException.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstdint>

namespace tw::Ketch {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Past this the mantissa stops taking digits; further integer digits only scale it.
constexpr std::uint64_t mantissaLimit = 100000000000000000ull;
constexpr int exponentLimit = 100000;

}  // namespace

bool readNumber(const char*& p, const char* end, double& value) {
    const char* q = p;
    bool negative = false;
    if (end - q > 1 && (*q == '+' || *q == '-')) {
        negative = *q == '-';
        ++q;
    }
    std::uint64_t mantissa = 0;
    int scale = 0;  // power of ten that the mantissa still needs
    bool anyDigit = false;
    for (; q < end && isDigit(*q); ++q) {
        anyDigit = true;
        if (mantissa < mantissaLimit) {
            mantissa = mantissa * 10 + std::uint64_t(*q - '0');
        } else {
            ++scale;
        }
    }
    if (q < end && *q == '.') {
        const char* fraction = q + 1;
        for (; fraction < end && isDigit(*fraction); ++fraction) {
            anyDigit = true;
            if (mantissa < mantissaLimit) {
                mantissa = mantissa * 10 + std::uint64_t(*fraction - '0');
                --scale;
            }
        }
        if (anyDigit) {
            q = fraction;
        }
    }
    if (!anyDigit) {
        return false;
    }
    if (q < end && (*q == 'e' || *q == 'E')) {
        const char* e = q + 1;
        bool negativeExponent = false;
        if (e < end && (*e == '+' || *e == '-')) {
            negativeExponent = *e == '-';
            ++e;
        }
        if (e < end && isDigit(*e)) {
            int exponent = 0;
            for (; e < end && isDigit(*e); ++e) {
                exponent = std::min(exponent * 10 + (*e - '0'), exponentLimit);
            }
            scale += negativeExponent ? -exponent : exponent;
            q = e;
        }
    }
    double v = double(mantissa);
    if (mantissa != 0 && scale > 0) {
        v *= std::pow(10.0, scale);
    } else if (mantissa != 0 && scale < 0) {
        // Dividing by an exact power of ten keeps short decimals such as 0.3 exact to the bit.
        v /= std::pow(10.0, -scale);
    }
    value = negative ? -v : v;
    p = q;
    return true;
}

double toNumber(std::string_view text) {
    const char* p = text.data();
    const char* end = p + text.size();
    double value = 0;
    if (!readNumber(p, end, value) || p != end) {
        throw SyntaxException("Invalid number");
    }
    return value;
}

std::int32_t toInteger(std::string_view text) {
    std::size_t i = 0;
    bool negative = false;
    if (text.size() > 1 && (text[0] == '+' || text[0] == '-')) {
        negative = text[0] == '-';
        i = 1;
    }
    if (i == text.size()) {
        throw SyntaxException("Invalid integer");
    }
    std::int64_t v = 0;
    for (; i < text.size(); ++i) {
        if (!isDigit(text[i])) {
            throw SyntaxException("Invalid integer");
        }
        v = v * 10 + (text[i] - '0');
        if (v > std::int64_t(INT32_MAX) + 1) {
            throw SyntaxException("Invalid integer");
        }
    }
    v = negative ? -v : v;
    if (v > INT32_MAX) {
        throw SyntaxException("Invalid integer");
    }
    return std::int32_t(v);
}

std::string formatNumber(double value) {
    if (std::isnan(value)) {
        return "nan";
    }
    if (std::isinf(value)) {
        return value < 0 ? "-inf" : "inf";
    }
    const double magnitude = std::fabs(value);
    if (magnitude <= 1e-300) {
        return "0";
    }

    // The decimal expansion, exact far past the 14th digit, as "d.ddd...e+x".
    char expansion[64];
    const auto converted =
        std::to_chars(expansion, expansion + sizeof expansion - 1, magnitude, std::chars_format::scientific, 30);
    *converted.ptr = '\0';
    int exponent = std::atoi(std::find(expansion, converted.ptr, 'e') + 1);
    char digits[14];
    digits[0] = expansion[0];
    for (int i = 1; i < 14; ++i) {
        digits[i] = expansion[i + 1];
    }

    int count = 13;
    if (digits[13] >= '5') {
        int i = 12;
        while (i >= 0 && digits[i] == '9') {
            digits[i--] = '0';
        }
        if (i >= 0) {
            ++digits[i];
        } else {
            digits[0] = '1';
            ++exponent;
        }
    }
    while (count > 1 && digits[count - 1] == '0') {
        --count;
    }

    std::string out;
    if (value < 0) {
        out += '-';
    }
    if (magnitude > 1e-5 && magnitude < 1e10) {
        if (exponent >= 0) {
            for (int i = 0; i <= exponent; ++i) {
                out += i < count ? digits[i] : '0';
            }
            if (count > exponent + 1) {
                out += '.';
                out.append(digits + exponent + 1, std::size_t(count - exponent - 1));
            }
        } else {
            out += "0.";
            out.append(std::size_t(-exponent - 1), '0');
            out.append(digits, std::size_t(count));
        }
        return out;
    }
    out += digits[0];
    if (count > 1) {
        out += '.';
        out.append(digits + 1, std::size_t(count - 1));
    }
    out += exponent >= 0 ? "e+" : "e";
    out += std::to_string(exponent);
    return out;
}

}  // namespace tw::Ketch
