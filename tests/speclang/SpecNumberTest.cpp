#include "speclang/SpecNumber.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
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

// The pair writes what "%.*g" writes under "C", and reads it back, whatever the locale.
TEST(NumberText, WritesAsPrintfUnderCAndReadsBackInAnyLocale) {
    const double values[] = {0, 0.5, -0.51, 1.0 / 3, 19.34, 12532.66, 1e20, 2.5e-7, -0.0, 123456789.0};
    for (int digits : {7, 14}) {
        for (double v : values) {
            char expected[64];
            std::snprintf(expected, sizeof expected, "%.*g", digits, v);
            EXPECT_EQ(tw::formatDouble(v, digits), expected) << v;
        }
    }
    EXPECT_EQ(tw::formatDouble(INFINITY, 7), "inf");
    EXPECT_EQ(tw::formatDouble(NAN, 7), "nan");
    EXPECT_DOUBLE_EQ(tw::leadingDouble("  0.3 s", -1), 0.3);
    EXPECT_EQ(tw::leadingDouble("", -1), -1);
    EXPECT_EQ(tw::leadingDouble(".", -1), -1);

    const bool comma = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    for (double v : values) {
        EXPECT_EQ(tw::formatDouble(v, 7).find(','), std::string::npos) << v;
        EXPECT_EQ(tw::leadingDouble(tw::formatDouble(v, 17), -1), v) << "17 digits carry a double whole";
    }
    EXPECT_DOUBLE_EQ(tw::leadingDouble("0.51", -1), 0.51) << "'.' is the point under every locale";
    EXPECT_DOUBLE_EQ(tw::leadingDouble("0,51", -1), 0.0) << "and ',' never is";
    std::setlocale(LC_ALL, "C");
    if (!comma) GTEST_SKIP() << "the locale de_DE.UTF-8 is not installed (tools/deps.sh makes it)";
}
