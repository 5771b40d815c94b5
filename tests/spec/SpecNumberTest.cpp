#include "cushy/spec/SpecNumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace tw;

namespace {

// The value and the unread rest, or "-" for the rest when nothing was read.
std::pair<double, std::string> number(const char* text) {
    double value = -12345;
    const char* end = scanDouble(text, value);
    return {value, end == text ? "-" : end};
}

std::pair<std::uint32_t, std::string> integer(const char* text) {
    std::uint32_t value = 12345;
    const char* end = scanIntegerLiteral(text, value);
    return {value, end == text ? "-" : end};
}

}  // namespace

TEST(ScanIntegerLiteral, DecimalOctalAndHexadecimal) {
    EXPECT_EQ(integer("123x"), std::make_pair(123u, std::string("x")));
    EXPECT_EQ(integer("0178"), std::make_pair(15u, std::string("8")));
    EXPECT_EQ(integer("0x1fG"), std::make_pair(31u, std::string("G")));
    EXPECT_EQ(integer("0XAb"), std::make_pair(171u, std::string("")));
    EXPECT_EQ(integer("0xg"), std::make_pair(0u, std::string("xg")));
    EXPECT_EQ(integer("-1").second, "-");
    EXPECT_EQ(integer(" 1").second, "-");
    EXPECT_EQ(integer("4294967295").first, 4294967295u);
    EXPECT_EQ(integer("99999999999999999999999"), std::make_pair(4294967295u, std::string("")));
}

TEST(ScanDouble, DecimalLiterals) {
    EXPECT_EQ(number("1.5e3 Hz"), std::make_pair(1500.0, std::string(" Hz")));
    EXPECT_EQ(number(".25"), std::make_pair(0.25, std::string("")));
    EXPECT_EQ(number("2."), std::make_pair(2.0, std::string("")));
    EXPECT_EQ(number("-3e"), std::make_pair(-3.0, std::string("e")));
    EXPECT_EQ(number("+4E+1x"), std::make_pair(40.0, std::string("x")));
    EXPECT_EQ(number("010"), std::make_pair(10.0, std::string("")));
    EXPECT_EQ(number("0x10"), std::make_pair(0.0, std::string("x10")));
    EXPECT_EQ(number("0.1").first, 0.1);
    EXPECT_EQ(number(".").second, "-");
    EXPECT_EQ(number("-.e1").second, "-");
    EXPECT_EQ(number("+-1").second, "-");
    EXPECT_EQ(number(" 1").second, "-");
}

TEST(ScanDouble, InfinityNanAndRange) {
    EXPECT_EQ(number("-inf dB"), std::make_pair(-HUGE_VAL, std::string(" dB")));
    EXPECT_EQ(number("Infinity"), std::make_pair(HUGE_VAL, std::string("")));
    EXPECT_TRUE(std::isnan(number("NaN").first));
    EXPECT_EQ(number("1e999"), std::make_pair(HUGE_VAL, std::string("")));
    EXPECT_EQ(number("-0.0001e-999"), std::make_pair(-0.0, std::string("")));
    EXPECT_EQ(number("0.000000000000000000001e-330").first, 0.0);
    EXPECT_EQ(number("100000000000000000000e290").first, HUGE_VAL);
}
