#include "vector/KetchException.h"
#include "tests/Failure.h"
#include "vector/KetchNumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace tw::Ketch;

namespace {

bool reads(const std::string& text, double& value, std::size_t& used) {
    const char* p = text.data();
    const bool ok = readNumber(p, text.data() + text.size(), value);
    used = std::size_t(p - text.data());
    return ok;
}

}  // namespace

TEST(KetchNumber, ReadsSignsFractionsAndExponents) {
    EXPECT_EQ(toNumber("42"), 42);
    EXPECT_EQ(toNumber("-2.5"), -2.5);
    EXPECT_EQ(toNumber("+.5"), 0.5);
    EXPECT_EQ(toNumber("5."), 5);
    EXPECT_EQ(toNumber("1e3"), 1000);
    EXPECT_EQ(toNumber("2.5E-2"), 0.025);
    EXPECT_EQ(toNumber("0.3"), 0.3) << "short decimals come out exact to the bit";
    EXPECT_EQ(toNumber("123456789012345678901234"), 1.2345678901234568e23);
    EXPECT_EQ(toNumber("0e999"), 0) << "a zero mantissa stays zero, never 0 * inf";
    EXPECT_TRUE(std::isinf(toNumber("1e999")));
}

TEST(KetchNumber, StopsWhereTheNumberEnds) {
    double v = 0;
    std::size_t used = 0;
    ASSERT_TRUE(reads("12px", v, used));
    EXPECT_EQ(v, 12);
    EXPECT_EQ(used, 2u);
    ASSERT_TRUE(reads("3e", v, used)) << "an exponent needs digits; without them the e is not taken";
    EXPECT_EQ(used, 1u);
    EXPECT_FALSE(reads(".", v, used));
    EXPECT_FALSE(reads("-", v, used)) << "a sign needs more text after it";
    EXPECT_FALSE(reads("-x", v, used));
    EXPECT_FALSE(reads("e5", v, used));
}

TEST(KetchNumber, WholeTextMustBeANumber) {
    for (const char* text : {"", ".", "-", "+", "1x", " 1", "1 ", "1e", "--1", "0x10"}) {
        EXPECT_THROW(toNumber(text), SyntaxException) << text;
    }
    EXPECT_EQ(tw::test::failure<SyntaxException>([] { toNumber("abc"); }), "Invalid number");
}

TEST(KetchNumber, IntegersAreReadExactly) {
    EXPECT_EQ(toInteger("17"), 17);
    EXPECT_EQ(toInteger("-2147483648"), INT32_MIN);
    EXPECT_EQ(toInteger("+2147483647"), INT32_MAX);
    for (const char* text : {"2147483648", "-2147483649", "1.0", "1e3", "", "-", "99999999999999999999", "7 "}) {
        try {
            toInteger(text);
            ADD_FAILURE() << text;
        } catch (const SyntaxException& e) {
            EXPECT_EQ(e.message(), "Invalid integer") << text;
        }
    }
}

TEST(KetchNumber, FormatsThirteenSignificantDigits) {
    EXPECT_EQ(formatNumber(0), "0");
    EXPECT_EQ(formatNumber(-0.0), "0");
    EXPECT_EQ(formatNumber(3), "3");
    EXPECT_EQ(formatNumber(-2.5), "-2.5");
    EXPECT_EQ(formatNumber(0.1 + 0.2), "0.3");
    EXPECT_EQ(formatNumber(1.0 / 3), "0.3333333333333");
    EXPECT_EQ(formatNumber(2.0 / 3), "0.6666666666667");
    EXPECT_EQ(formatNumber(1234567.891), "1234567.891");
    EXPECT_EQ(formatNumber(0.99999999999995), "1") << "a carry through every digit";
    EXPECT_EQ(formatNumber(123.456789012349), "123.4567890123") << "a 14th digit of 4 rounds down";
    EXPECT_EQ(formatNumber(123.456789012351), "123.4567890124") << "a 14th digit of 5 rounds up";
}

TEST(KetchNumber, FormatsAtThePositionalBoundaries) {
    EXPECT_EQ(formatNumber(9999999999), "9999999999");
    EXPECT_EQ(formatNumber(1e10), "1e+10");
    EXPECT_EQ(formatNumber(-1e10), "-1e+10");
    EXPECT_EQ(formatNumber(9999999999.99999), "10000000000") << "positional is decided before rounding";
    EXPECT_EQ(formatNumber(1.5e15), "1.5e+15");
    EXPECT_EQ(formatNumber(123456789012345.0), "1.234567890123e+14");
    EXPECT_EQ(formatNumber(1.00001e-5), "0.0000100001");
    EXPECT_EQ(formatNumber(1e-5), "1e-5");
    EXPECT_EQ(formatNumber(2.5e-7), "2.5e-7");
    EXPECT_EQ(formatNumber(1.1e-300), "1.1e-300");
    EXPECT_EQ(formatNumber(1e-300), "0");
    EXPECT_EQ(formatNumber(-1e-301), "0");
    EXPECT_EQ(formatNumber(1.7976931348623157e308), "1.797693134862e+308");
    EXPECT_EQ(formatNumber(INFINITY), "inf");
    EXPECT_EQ(formatNumber(-INFINITY), "-inf");
}

TEST(KetchNumber, FormattedNumbersReadBack) {
    for (double v : {0.1, -7.25, 1e-5, 3.14159265358979, 6.02214076e23, 1e10, 12345.678}) {
        const double back = toNumber(formatNumber(v));
        EXPECT_NEAR(back, v, std::fabs(v) * 1e-12) << formatNumber(v);
    }
}
