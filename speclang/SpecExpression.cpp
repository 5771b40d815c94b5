#include "speclang/SpecExpression.h"

#include "speclang/SpecLanguage.h"
#include "speclang/SpecNumber.h"
#include "speclang/SpecQuote.h"
#include "platform/Exception.h"

#include <string_view>

namespace tw {

namespace {

// Parentheses and unary minus recurse; no layout nests more than a few levels, and this
// keeps a hostile text from exhausting the stack.
constexpr int maxDepth = 256;

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\v' || c == '\r' || c == '\n' || c == 0x1A;
}

const char* skipSpace(const char* p) {
    while (isSpace(*p)) ++p;
    return p;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isNameByte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || isDigit(c) || c == '$' || c == '_' ||
           c == '.';
}

// The literal and the arithmetic of each flavour. Integers wrap at 32 bits rather than
// overflow, and a division by zero is refused, since layouts never rely on either.
const char* readLiteral(const char* p, double& value) {
    return scanDouble(p, value);
}

const char* readLiteral(const char* p, float& value) {
    double wide;
    const char* end = scanDouble(p, wide);
    if (end != p) value = static_cast<float>(wide);
    return end;
}

const char* readLiteral(const char* p, std::int32_t& value) {
    std::uint32_t magnitude;
    const char* end = scanIntegerLiteral(p, magnitude);
    if (end != p) value = static_cast<std::int32_t>(magnitude > 0x7FFFFFFF ? 0x7FFFFFFF : magnitude);
    return end;
}

template <typename Number>
Number apply(char op, Number a, Number b) {
    switch (op) {
    case '+': return a + b;
    case '-': return a - b;
    case '*': return a * b;
    default: return a / b;
    }
}

template <>
std::int32_t apply(char op, std::int32_t a, std::int32_t b) {
    std::int64_t x = a;
    std::int64_t y = b;
    switch (op) {
    case '+': return static_cast<std::int32_t>(x + y);
    case '-': return static_cast<std::int32_t>(x - y);
    case '*': return static_cast<std::int32_t>(x * y);
    default:
        if (y == 0) throw Exception("Division by zero");
        return static_cast<std::int32_t>(x / y);
    }
}

template <typename Number>
Number negate(Number a) {
    return -a;
}

template <>
std::int32_t negate(std::int32_t a) {
    return static_cast<std::int32_t>(-static_cast<std::int64_t>(a));
}

template <typename Number>
const char* evaluateAt(const char* p, Number& accumulator, const SymbolTable<Number>& symbols,
                       int minPrecedence, int depth) {
    if (depth > maxDepth) throw Exception("Expression is nested too deeply");
    p = skipSpace(p);
    const char c = *p;
    if (c == '\0') {
        if (minPrecedence == 0) return p;
        throw Exception("Unexpected end of string");
    } else if (c == '(') {
        p = evaluateAt(p + 1, accumulator, symbols, 0, depth + 1);
        if (*p != ')') throw Exception("Expected ')'");
        ++p;
    } else if (c == '-') {
        p = evaluateAt(p + 1, accumulator, symbols, 3, depth + 1);
        accumulator = negate(accumulator);
    } else if (c == '.' || isDigit(c)) {
        const char* end = readLiteral(p, accumulator);
        if (end == p) throw Exception("Invalid number: " + std::string(p));
        p = end;
    } else {
        const char* end = p;
        while (isNameByte(*end)) ++end;
        if (end == p) throw Exception("Syntax error");
        const std::string_view name(p, static_cast<std::size_t>(end - p));
        auto symbol = symbols.find(name);
        if (symbol == symbols.end()) throw Exception("Undefined symbol: " + quote(name));
        accumulator = symbol->second;
        p = end;
    }
    p = skipSpace(p);
    for (;;) {
        const char op = *p;
        int precedence;
        if ((op == '*' || op == '/') && minPrecedence < 2) {
            precedence = 2;
        } else if ((op == '+' || op == '-') && minPrecedence < 1) {
            precedence = 1;
        } else {
            break;
        }
        Number right{};
        p = evaluateAt(p + 1, right, symbols, precedence, depth + 1);
        accumulator = apply(op, accumulator, right);
    }
    return skipSpace(p);
}

template <typename Number>
Number evaluateWithDollar(const std::string& text, Number value) {
    const SymbolTable<Number> symbols{{"$", value}};
    evaluateExpression(text.c_str(), value, symbols, 0);
    return value;
}

}  // namespace

template <typename Number>
const char* evaluateExpression(const char* p, Number& accumulator, const SymbolTable<Number>& symbols,
                               int minPrecedence) {
    return evaluateAt(p, accumulator, symbols, minPrecedence, 0);
}

template const char* evaluateExpression(const char*, double&, const SymbolTable<double>&, int);
template const char* evaluateExpression(const char*, float&, const SymbolTable<float>&, int);
template const char* evaluateExpression(const char*, std::int32_t&, const SymbolTable<std::int32_t>&, int);

double evaluateDouble(const std::string& text, double value) {
    return evaluateWithDollar(text, value);
}

float evaluateFloat(const std::string& text, float value) {
    return evaluateWithDollar(text, value);
}

std::int32_t evaluateInt(const std::string& text, std::int32_t value) {
    return evaluateWithDollar(text, value);
}

std::pair<double, double> parsePair(const std::string& text, std::pair<double, double> defaultValue) {
    if (text.empty()) return defaultValue;
    SpecList items = parseList(text);
    items.resize(2);
    return {evaluateDouble(items[0], defaultValue.first), evaluateDouble(items[1], defaultValue.second)};
}

std::pair<std::int32_t, std::int32_t> parseIntPair(const std::string& text,
                                                   std::pair<std::int32_t, std::int32_t> defaultValue) {
    if (text.empty()) return defaultValue;
    SpecList items = parseList(text);
    items.resize(2);
    return {evaluateInt(items[0], defaultValue.first), evaluateInt(items[1], defaultValue.second)};
}

SpecRect parseBounds(const std::string& text, const SpecRect& defaultValue) {
    if (text.empty()) return defaultValue;
    SpecList items = parseList(text);
    items.resize(4);
    auto sum = [](std::int32_t a, std::int32_t b) { return apply('+', a, b); };
    const std::int32_t width = apply('-', defaultValue.right, defaultValue.left);
    const std::int32_t height = apply('-', defaultValue.bottom, defaultValue.top);
    SymbolTable<std::int32_t> symbols{
        {"l", defaultValue.left}, {"t", defaultValue.top},  {"w", width},
        {"h", height},            {"r", defaultValue.right}, {"b", defaultValue.bottom},
    };
    // Each item starts from 0, and `$` is what that one number would have been.
    auto item = [&symbols](const std::string& raw, std::int32_t dollar) {
        symbols["$"] = dollar;
        std::int32_t value = 0;
        evaluateExpression(raw.c_str(), value, symbols, 0);
        return value;
    };
    const std::int32_t x = symbols["l"] = item(items[0], defaultValue.left);
    const std::int32_t y = symbols["t"] = item(items[1], defaultValue.top);
    const std::int32_t w = symbols["w"] = item(items[2], width);
    const std::int32_t h = item(items[3], height);
    return {x, y, sum(x, w), sum(y, h)};
}

}  // namespace tw
