#include "speclang/SpecNumber.h"

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

}  // namespace

TEST(ScanDouble, DecimalLiterals) {
    EXPECT_EQ(number("2."), std::make_pair(2.0, std::string("")));
    EXPECT_EQ(number("-3e"), std::make_pair(-3.0, std::string("e")));
    EXPECT_EQ(number("+4E+1x"), std::make_pair(40.0, std::string("x")));
    EXPECT_EQ(number("0x10"), std::make_pair(0.0, std::string("x10")));
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
