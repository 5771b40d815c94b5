#include "vector/KetchExpression.h"

#include "vector/KetchException.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchNameTable.h"
#include "vector/KetchNumber.h"
#include "vector/KetchScanner.h"

#include <algorithm>
#include <cerrno>
#include <cmath>

namespace tw::Ketch {

namespace {

// Deeper nesting of parentheses and operands than any real picture needs; it bounds the
// evaluator's recursion, so that no text can exhaust the stack.
constexpr int maxDepth = 200;

using MathFunction = double (*)(double);

constexpr NameTable<MathFunction, 16> mathFunctions({
    {"abs", [](double x) { return std::fabs(x); }},
    {"acos", [](double x) { return std::acos(x); }},
    {"asin", [](double x) { return std::asin(x); }},
    {"atan", [](double x) { return std::atan(x); }},
    {"ceil", [](double x) { return std::ceil(x); }},
    {"cos", [](double x) { return std::cos(x); }},
    {"cosh", [](double x) { return std::cosh(x); }},
    {"exp", [](double x) { return std::exp(x); }},
    {"floor", [](double x) { return std::floor(x); }},
    {"log", [](double x) { return std::log(x); }},
    {"log10", [](double x) { return std::log10(x); }},
    {"sin", [](double x) { return std::sin(x); }},
    {"sinh", [](double x) { return std::sinh(x); }},
    {"sqrt", [](double x) { return std::sqrt(x); }},
    {"tan", [](double x) { return std::tan(x); }},
    {"tanh", [](double x) { return std::tanh(x); }},
});

// Whether a value can start here: the right side of a juxtaposition, or of a "%" that is
// then not a postfix percent. Signs and "!" count only for the latter.
bool startsOperand(const char* p, const char* end, bool withPrefix) {
    if (p == end) {
        return false;
    }
    const char c = *p;
    if (c == '$' || c == '(' || c == '[' || c == '\\' || isDigit(c) || isIdentifierStart(c)) {
        return true;
    }
    if (c == '.') {
        return end - p > 1 && isDigit(p[1]);
    }
    return withPrefix && (c == '!' || c == '+' || c == '-');
}

// A side counts as a number when it is one, or is text that reads as one as a whole.
bool asNumber(const Value& v, double& out) {
    if (v.type == Value::Number) {
        out = v.number;
        return true;
    }
    if (v.type != Value::String) {
        return false;
    }
    const char* p = v.string.data();
    const char* end = p + v.string.size();
    return readNumber(p, end, out) && p == end;
}

// Numbers equal within a relative 1e-13 so that 0.1 + 0.2 == 0.3; numbers sort before text;
// text compares bytewise.
int compare(const Value& a, const Value& b) {
    double x = 0;
    double y = 0;
    const bool xIsNumber = asNumber(a, x);
    const bool yIsNumber = asNumber(b, y);
    if (xIsNumber && yIsNumber) {
        if (std::fabs(x - y) <= std::max(std::fabs(x), std::fabs(y)) * 1e-13) {
            return 0;
        }
        return x < y ? -1 : 1;
    }
    if (xIsNumber != yIsNumber) {
        return xIsNumber ? -1 : 1;
    }
    const int order = a.toString().compare(b.toString());
    return (order > 0) - (order < 0);
}

double checkedMath(double result) {
    if (errno != 0) {
        throw RunTimeException("Math error");
    }
    return result;
}

// Reads and computes at once. A branch that is not taken (the other side of "? :", the right
// side of a decided "&&" or "||") is read with live false: checked for syntax, not computed.
class Parser {
public:
    Parser(Frame& frame, std::string_view text) : frame_(frame), p_(text.data()), end_(p_ + text.size()) {}

    Value parseAll() {
        Value v = parse(0, true);
        p_ = skipWhiteAndLines(p_, end_);
        if (p_ != end_) {
            throw SyntaxException("Syntax error");
        }
        return v;
    }

private:
    struct Depth {
        explicit Depth(int& depth) : depth_(depth) {
            if (++depth_ > maxDepth) {
                throw SyntaxException("Expression nested too deeply");
            }
        }
        ~Depth() { --depth_; }
        int& depth_;
    };

    Value parse(int minLevel, bool live);
    Value primary(bool live);
    Value binary(char op, const Value& left, const Value& right);

    Frame& frame_;
    const char* p_;
    const char* end_;
    int depth_ = 0;
};

Value Parser::parse(int minLevel, bool live) {
    const Depth depth(depth_);
    Value left = primary(live);
    for (;;) {
        p_ = skipWhiteAndLines(p_, end_);
        if (p_ == end_) {
            break;
        }
        const char c = *p_;
        const char next = end_ - p_ > 1 ? p_[1] : '\0';
        if (c == '?') {
            if (minLevel > 0) {
                break;
            }
            ++p_;
            const bool condition = live && left.toBoolean();
            Value yes = parse(0, live && condition);
            p_ = skipWhiteAndLines(p_, end_);
            if (p_ == end_ || *p_ != ':') {
                throw SyntaxException("Expected :");
            }
            ++p_;
            Value no = parse(0, live && !condition);
            left = condition ? std::move(yes) : std::move(no);
        } else if (c == '&' || c == '|') {
            if (minLevel > 1) {
                break;
            }
            p_ += next == c ? 2 : 1;
            const bool l = live && left.toBoolean();
            const bool decidedByRight = c == '&' ? l : !l;
            const Value right = parse(2, live && decidedByRight);
            if (live) {
                left = Value::ofBoolean(decidedByRight ? right.toBoolean() : l);
            }
        } else if (c == '<' || c == '>' || c == '=' || c == '!') {
            if ((c == '=' || c == '!') && next != '=') {
                throw SyntaxException("Syntax error");
            }
            if (minLevel > 3) {
                break;
            }
            const bool withEqual = next == '=';
            p_ += withEqual ? 2 : 1;
            const Value right = parse(3, live);
            if (live) {
                const int order = compare(left, right);
                bool holds = false;
                switch (c) {
                case '<': holds = withEqual ? order <= 0 : order < 0; break;
                case '>': holds = withEqual ? order >= 0 : order > 0; break;
                case '=': holds = order == 0; break;
                default: holds = order != 0; break;
                }
                left = Value::ofBoolean(holds);
            }
        } else if (c == '+' || c == '-') {
            if (minLevel > 4) {
                break;
            }
            ++p_;
            const Value right = parse(5, live);
            if (live) {
                left = binary(c, left, right);
            }
        } else if (c == '*' && next == '*') {
            if (minLevel > 8) {
                break;
            }
            p_ += 2;
            const Value right = parse(8, live);
            if (live) {
                const double base = left.toNumber();
                const double exponent = right.toNumber();
                errno = 0;
                left = Value::ofNumber(checkedMath(std::pow(base, exponent)));
            }
        } else if (c == '*' || c == '/' || c == '%') {
            if (minLevel > 5) {
                break;
            }
            ++p_;
            if (c == '%' && !startsOperand(skipWhiteAndLines(p_, end_), end_, true)) {
                if (live) {
                    left = Value::ofNumber(std::fabs(left.toNumber() * 0.01));
                }
                continue;
            }
            const Value right = parse(6, live);
            if (live) {
                left = binary(c, left, right);
            }
        } else if (startsOperand(p_, end_, false)) {
            if (minLevel > 10) {
                break;
            }
            const Value right = parse(11, live);
            if (live) {
                // Appending in place keeps a long run of juxtaposed terms linear.
                if (left.type != Value::String) {
                    left = Value::ofString(left.toString());
                }
                const std::string tail = right.toString();
                checkTextLength(left.string.size() + tail.size());
                left.string += tail;
            }
        } else {
            break;
        }
    }
    return left;
}

Value Parser::binary(char op, const Value& left, const Value& right) {
    const double a = left.toNumber();
    const double b = right.toNumber();
    switch (op) {
    case '+': return Value::ofNumber(a + b);
    case '-': return Value::ofNumber(a - b);
    case '*': return Value::ofNumber(a * b);
    case '/':
        if (b == 0) {
            throw RunTimeException("Division by zero");
        }
        return Value::ofNumber(a / b);
    default:
        if (b == 0) {
            throw RunTimeException("Modulo by zero");
        }
        return Value::ofNumber(std::fmod(a, b));
    }
}

Value Parser::primary(bool live) {
    p_ = skipWhiteAndLines(p_, end_);
    if (p_ == end_) {
        throw SyntaxException("Unexpected end");
    }
    const char c = *p_;
    switch (c) {
    case '!': {
        ++p_;
        const Value v = parse(6, live);
        return live ? Value::ofBoolean(!v.toBoolean()) : Value();
    }
    case '+':
    case '-': {
        ++p_;
        const Value v = parse(6, live);
        return live ? Value::ofNumber(c == '-' ? -v.toNumber() : v.toNumber()) : Value();
    }
    case '$': {
        ++p_;
        const Value name = parse(9, live);
        return live ? Value::ofString(getVariable(frame_, name.toString())) : Value();
    }
    case '(': {
        ++p_;
        Value v = parse(0, live);
        p_ = skipWhiteAndLines(p_, end_);
        if (p_ == end_ || *p_ != ')') {
            throw SyntaxException("Syntax error");
        }
        ++p_;
        return v;
    }
    case '[': {
        const char* close = skipBracket(p_, end_);
        Value v = Value::ofString(std::string(p_ + 1, close - 1));
        p_ = close;
        return v;
    }
    case '\\': {
        ++p_;
        const unsigned code = p_ == end_ ? 256 : decodeEscape(p_, end_);
        if (code > 255) {
            throw SyntaxException("Invalid character escape code inside { } expression");
        }
        return Value::ofString(std::string(1, char(code)));
    }
    default:
        break;
    }
    double number = 0;
    if ((isDigit(c) || c == '.') && readNumber(p_, end_, number)) {
        return Value::ofNumber(number);
    }
    if (!isIdentifierStart(c)) {
        throw SyntaxException("Syntax error");
    }
    const char* nameEnd = skipIdentifier(p_, end_);
    const std::string_view name = between(p_, nameEnd);
    p_ = nameEnd;
    const MathFunction* function = mathFunctions.find(name);
    if (function == nullptr) {
        return Value::ofString(std::string(name));
    }
    const Value operand = parse(11, live);
    if (!live) {
        return Value();
    }
    const double x = operand.toNumber();
    errno = 0;
    return Value::ofNumber(checkedMath((*function)(x)));
}

}  // namespace

Value evaluate(Frame& frame, std::string_view text) {
    return Parser(frame, text).parseAll();
}

}  // namespace tw::Ketch
