// Spec expressions: every number in a spec may be written as `w-100`, `$ * 0.1` or
// `(h/2)`. One evaluator reads and computes in one pass, in three number types; views,
// controls, transitions, style values and image specs read their numbers through it, and
// views that know more names than `$` call the core with a symbol table of their own.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace tw {

// Names an expression may use, case-sensitive, ordered as a SpecMap.
template <typename Number>
using SymbolTable = std::map<std::string, Number, std::less<>>;

// A rectangle of parseBounds.
struct SpecRect {
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;

    bool operator==(const SpecRect&) const = default;
};

// The recursive core, for Number = double, float or std::int32_t. Evaluates at `p` into
// `accumulator` with the given names, and answers the position where it stopped.
// `minPrecedence` says which operators the call may take: at 0 all of them, at 1 only '*'
// and '/', at 2 and 3 none, so that only an operand is read. At precedence 0 an empty text
// leaves `accumulator` as it was. Throws Exception with the evaluator's message on a fault.
template <typename Number>
const char* evaluateExpression(const char* p, Number& accumulator,
                               const SymbolTable<Number>& symbols, int minPrecedence);

// The value of the expression `text`, in which `$` stands for `value`; an empty text gives
// `value`. Text behind a complete expression (a unit such as "sec" or "%") is ignored.
double evaluateDouble(const std::string& text, double value);
float evaluateFloat(const std::string& text, float value);
std::int32_t evaluateInt(const std::string& text, std::int32_t value);

// A pair of expressions `{ x, y }`, each with `$` and its default the matching half of
// `defaultValue`; an empty text or a missing item keeps the default.
std::pair<double, double> parsePair(const std::string& text, std::pair<double, double> defaultValue);
std::pair<std::int32_t, std::int32_t> parseIntPair(const std::string& text,
                                                   std::pair<std::int32_t, std::int32_t> defaultValue);

// A rectangle `{ x, y, width, height }` of integer expressions against `defaultValue`: `$`
// is the default of the number being read, `l`, `t`, `w` follow the items already read,
// and `h`, `r`, `b` are those of the default. An empty item reads as 0; an empty text gives
// the default.
SpecRect parseBounds(const std::string& text, const SpecRect& defaultValue);

}  // namespace tw
