// The plain values a CLAP host sees against the parameter values the product keeps: the
// mapping must land every stepped value on its step and give back exactly what it took.
#include <gtest/gtest.h>

#include <cmath>

#include "clap/ClapParameter.h"
#include "product/TidewakeDescriptor.h"

namespace tw::clap {
namespace {

TEST(ClapParameter, EveryRowsValuesGoToThePlainRangeAndBack) {
    for (const ParameterSpec& row : tidewakeDescriptor().parameters) {
        SCOPED_TRACE(row.name);
        const PlainRange range = plainRange(row);
        if (range.stepped) {
            // Each step's plain number is whole, and reads back as the value of that step.
            for (double step = range.minimum; step <= range.maximum; step += 1.0) {
                const float value = fromPlain(row, step);
                EXPECT_EQ(toPlain(row, value), step);
            }
            // Between steps a host's value rounds to the nearest.
            EXPECT_EQ(toPlain(row, fromPlain(row, range.maximum - 0.4)), range.maximum);
            EXPECT_EQ(toPlain(row, fromPlain(row, 0.4)), 0.0);
        } else {
            for (float value : {0.0f, 0.1f, 0.333333f, 0.5f, 1.0f}) EXPECT_EQ(fromPlain(row, toPlain(row, value)), value);
        }
        // Outside the range and not a number: held to the range, and the default.
        EXPECT_EQ(fromPlain(row, -5.0), 0.0f);
        EXPECT_EQ(fromPlain(row, range.maximum + 7.0), 1.0f);
        EXPECT_EQ(fromPlain(row, NAN), row.defaultValue);
    }
}

TEST(ClapParameter, SelectorsAndSwitchesAreSteppedTheRestIsNot) {
    for (const ParameterSpec& row : tidewakeDescriptor().parameters) {
        SCOPED_TRACE(row.name);
        const bool stepped = (flagsOf(row) & CLAP_PARAM_IS_STEPPED) != 0;
        EXPECT_EQ(stepped, row.kind == ParameterKind::discrete || row.kind == ParameterKind::boolean);
        EXPECT_TRUE(flagsOf(row) & CLAP_PARAM_IS_AUTOMATABLE);
    }
}

}  // namespace
}  // namespace tw::clap
