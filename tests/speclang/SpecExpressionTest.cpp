#include "speclang/SpecExpression.h"

#include "platform/Exception.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace tw;
using tw::test::failure;

namespace {

std::string doubleFailure(const std::string& text) {
    return failure([&] { evaluateDouble(text, 0); });
}

}  // namespace

TEST(Evaluate, DefaultAndDollar) {
    EXPECT_EQ(evaluateDouble("", 5), 5);
    EXPECT_EQ(evaluateDouble(" \t\r\n", 5), 5);
    EXPECT_EQ(evaluateDouble("$", 5), 5);
    EXPECT_EQ(evaluateDouble("$ * 0.1", 5), 5 * 0.1);
    EXPECT_EQ(evaluateInt("", -3), -3);
    EXPECT_EQ(evaluateFloat("$", 0.25f), 0.25f);
}

TEST(Evaluate, TrailingTextIsIgnored) {
    EXPECT_EQ(evaluateDouble("90 %", 0), 90);
    EXPECT_EQ(evaluateDouble("75%", 0), 75);
    EXPECT_EQ(evaluateDouble("0.1 sec", 0), 0.1);
    EXPECT_EQ(evaluateDouble("1 2", 0), 1);
    EXPECT_EQ(evaluateInt("1.5", 0), 1);
    EXPECT_EQ(evaluateDouble("2 + 3 ) 4", 0), 5);
}

TEST(Evaluate, LiteralsOfEachFlavour) {
    EXPECT_EQ(evaluateInt("1/3", 0), 0);
    EXPECT_EQ(evaluateDouble("1/3", 0), 1.0 / 3);
    EXPECT_EQ(evaluateFloat("1/3", 0), 1.0f / 3);
    EXPECT_EQ(evaluateDouble("1 / 3", 0), evaluateDouble("1/3", 0));
    EXPECT_EQ(evaluateInt("010", 0), 8);
    EXPECT_EQ(evaluateDouble("010", 0), 10);
    EXPECT_EQ(evaluateInt("0x10", 0), 16);
    EXPECT_EQ(evaluateDouble("1.5e2", 0), 150);
    EXPECT_EQ(evaluateDouble(".5", 0), 0.5);
    // The float flavour reads a double and narrows it, and computes in floats.
    EXPECT_EQ(evaluateFloat("0.1", 0), 0.1f);
    EXPECT_EQ(evaluateFloat("0.1 * 3", 0), 0.1f * 3.0f);
    EXPECT_EQ(evaluateInt("7/-2", 0), -3);
}

TEST(Evaluate, PrecedenceAndAssociativity) {
    EXPECT_EQ(evaluateDouble("2-1-1", 0), 0);
    EXPECT_EQ(evaluateDouble("2*3+4", 0), 10);
    EXPECT_EQ(evaluateDouble("2+3*4", 0), 14);
    EXPECT_EQ(evaluateDouble("-2*3", 0), -6);
    EXPECT_EQ(evaluateDouble("8/2/2", 0), 2);
    EXPECT_EQ(evaluateDouble("20*(4-1)", 0), 60);
    EXPECT_EQ(evaluateDouble("-(1+2)*2", 0), -6);
    EXPECT_EQ(evaluateDouble("2*-3", 0), -6);
    EXPECT_EQ(evaluateDouble("1--1", 0), 2);
}

TEST(Evaluate, Messages) {
    EXPECT_EQ(doubleFailure("1+"), "Unexpected end of string");
    EXPECT_EQ(doubleFailure("2*"), "Unexpected end of string");
    EXPECT_EQ(doubleFailure("-"), "Unexpected end of string");
    EXPECT_EQ(doubleFailure("(1"), "Expected ')'");
    EXPECT_EQ(doubleFailure("("), "Expected ')'");
    EXPECT_EQ(doubleFailure("(1 2)"), "Expected ')'");
    EXPECT_EQ(doubleFailure("()"), "Syntax error");
    EXPECT_EQ(doubleFailure("\"5\""), "Syntax error");
    EXPECT_EQ(doubleFailure("+1"), "Syntax error");
    EXPECT_EQ(doubleFailure("foo"), "Undefined symbol: \"foo\"");
    EXPECT_EQ(doubleFailure("1 + a.b_c$2 * 3"), "Undefined symbol: \"a.b_c$2\"");
    EXPECT_EQ(doubleFailure("2 * . + 1"), "Invalid number: . + 1");
    EXPECT_EQ(failure([] { evaluateInt(".5", 0); }), "Invalid number: .5");
}

TEST(Evaluate, IntegersWrapAndRefuseDivisionByZero) {
    EXPECT_EQ(evaluateInt("2147483647 + 1", 0), -2147483647 - 1);
    EXPECT_EQ(evaluateInt("-(0-2147483647-1)", 0), -2147483647 - 1);
    EXPECT_EQ(evaluateInt("(0-2147483647-1) / -1", 0), -2147483647 - 1);
    EXPECT_EQ(evaluateInt("99999999999", 0), 2147483647);
    EXPECT_EQ(failure([] { evaluateInt("1/(1-1)", 0); }), "Division by zero");
    EXPECT_EQ(evaluateDouble("1/0", 0), INFINITY);
}

TEST(Evaluate, DeepNestingIsRefusedNotOverflowed) {
    EXPECT_EQ(evaluateDouble(std::string(100, '(') + "1" + std::string(100, ')'), 0), 1);
    EXPECT_EQ(evaluateDouble(std::string(101, '-') + "1", 0), -1);
    EXPECT_EQ(doubleFailure(std::string(100000, '(')), "Expression is nested too deeply");
    EXPECT_EQ(doubleFailure(std::string(100000, '-')), "Expression is nested too deeply");
}

TEST(EvaluateExpression, OwnSymbolTables) {
    const SymbolTable<double> symbols{{"$", 1}, {"size.w", 40}, {"H", 30}};
    double value = 7;
    const char* rest = evaluateExpression("size.w - H/3 ) more", value, symbols, 0);
    EXPECT_EQ(value, 30);
    EXPECT_STREQ(rest, ") more");
    EXPECT_THROW(evaluateExpression("h", value, symbols, 0), Exception);
    // A higher minimum precedence stops at the weaker operators.
    rest = evaluateExpression("2 * 3 + 4", value, symbols, 1);
    EXPECT_EQ(value, 6);
    EXPECT_STREQ(rest, "+ 4");
    rest = evaluateExpression("-2 * 3", value, symbols, 2);
    EXPECT_EQ(value, -2);
    EXPECT_STREQ(rest, "* 3");
}

TEST(ParsePair, MissingItemsKeepTheDefault) {
    using Pair = std::pair<double, double>;
    EXPECT_EQ(parsePair("", Pair(3, 4)), Pair(3, 4));
    EXPECT_EQ(parsePair("{ 1 }", Pair(3, 4)), Pair(1, 4));
    EXPECT_EQ(parsePair("{ , $*2 }", Pair(3, 4)), Pair(3, 8));
    EXPECT_EQ(parsePair("0.5, -1, 9", Pair(3, 4)), Pair(0.5, -1));
    using IntPair = std::pair<std::int32_t, std::int32_t>;
    EXPECT_EQ(parseIntPair("{ 0, 22 }", IntPair(5, 5)), IntPair(0, 22));
    EXPECT_EQ(parseIntPair("{ $+1 }", IntPair(5, 6)), IntPair(6, 6));
    EXPECT_EQ(parseIntPair("{ 7/2, 1.9 }", IntPair(0, 0)), IntPair(3, 1));
    EXPECT_THROW(parseIntPair("{ x }", IntPair(0, 0)), Exception);
}

TEST(ParseBounds, DollarAndTheRectangleNames) {
    const SpecRect window{0, 0, 525, 475};
    EXPECT_EQ(parseBounds("", window), window);
    EXPECT_EQ(parseBounds("{ 0, 0, $, $ }", window), window);
    EXPECT_EQ(parseBounds("{ 50, 50, w-100, h-100 }", window), (SpecRect{50, 50, 475, 425}));
    const SpecRect box{10, 20, 110, 70};
    EXPECT_EQ(parseBounds("{ $+2, $+1, $-3, $-5 }", box), (SpecRect{12, 21, 109, 66}));
    // An empty item is 0, not the default.
    EXPECT_EQ(parseBounds("{ 5 }", box), (SpecRect{5, 0, 5, 0}));
    // l, t and w follow the items already read; h, r and b stay those of the default.
    EXPECT_EQ(parseBounds("{ 30, l+1, r-l, w+h+b }", box), (SpecRect{30, 31, 110, 31 + 80 + 50 + 70}));
    EXPECT_EQ(parseBounds("{ r, b, w, h }", box), (SpecRect{110, 70, 210, 120}));
    EXPECT_EQ(parseBounds("{ 0, 0, w/2, h/2 }", window), (SpecRect{0, 0, 262, 237}));
}

TEST(ParseBounds, FaultsThrow) {
    const SpecRect box{0, 0, 10, 10};
    EXPECT_EQ(failure([&] { parseBounds("{ 0, 0, x, 1 }", box); }), "Undefined symbol: \"x\"");
    EXPECT_EQ(failure([&] { parseBounds("{ 0, 0, 1+, 1 }", box); }), "Unexpected end of string");
}
