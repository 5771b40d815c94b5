#include <gtest/gtest.h>

#include <set>

#include "patch/ParameterText.h"
#include "product/TidewakeDescriptor.h"

using namespace tw;

TEST(ParameterTable, DescriptorAndRows) {
    const ModelDescriptor& d = tidewakeDescriptor();
    EXPECT_EQ(d.uniqueId, 0x51765457) << "QvTW";
    EXPECT_EQ(d.modelCode, fourCharCode("TwKe"));
    EXPECT_EQ(d.version, 0x00010000u);
    EXPECT_EQ(d.frameSize, 8);
    ASSERT_EQ(d.parameters.size(), std::size_t(Param::count));
    EXPECT_EQ(d.parameters[Param::lfoTarget].name, "lfoTarget");
    EXPECT_EQ(d.parameters[Param::freqShiftRange].defaultValue, 0.33333334f);
    EXPECT_EQ(d.parameters[Param::highPassFreq].defaultValue, 0.0f) << "a new patch has both filters open";
    EXPECT_EQ(d.parameters[Param::lowPassFreq].defaultValue, 1.0f);
    EXPECT_EQ(d.feedbacks.size(), std::size_t(Feedback::count));
    std::set<std::string> names;
    for (const ParameterSpec& row : d.parameters) {
        EXPECT_TRUE(names.insert(row.name).second) << "names are keys: " << row.name;
        EXPECT_GE(row.defaultValue, 0.0f);
        EXPECT_LE(row.defaultValue, 1.0f);
        if (row.kind == ParameterKind::discrete) {
            EXPECT_EQ(row.labels.size(), std::size_t(row.displayMax) + 1);
        }
    }
}

TEST(ParameterTable, HostOrderIsAPermutationThatDiffersOnPurpose) {
    const ModelDescriptor& d = tidewakeDescriptor();
    ASSERT_EQ(d.hostOrder.size(), d.parameters.size());
    std::set<int> ids(d.hostOrder.begin(), d.hostOrder.end());
    EXPECT_EQ(ids.size(), d.parameters.size());
    EXPECT_EQ(d.hostOrder[5], Param::delayTime);
    EXPECT_EQ(d.hostOrder[6], Param::delaySync);
    EXPECT_EQ(d.hostOrder[16], Param::lfoAmount);
    EXPECT_EQ(d.hostOrder[18], Param::lfoTarget);
}

TEST(ParameterTable, SyncRows) {
    EXPECT_EQ(noteLengthLabels.front(), "8/1");
    EXPECT_EQ(noteLengthLabels[13], "3/8 (1/4.)");
    EXPECT_EQ(noteLengthLabels.back(), "1/128");
    const ParameterSpec& delay = delayTimeSyncRow();
    EXPECT_EQ(formatGeneric(delay, 0.0f, false), "1/128") << "the synced delay runs from short to long";
    EXPECT_EQ(formatGeneric(delay, 1.0f, false), "1/2");
    EXPECT_EQ(delay.labels.size(), 15u);
    EXPECT_EQ(freqShiftSyncRow().labels.size(), 21u);
    EXPECT_EQ(freqShiftSyncRow().labels.back(), "1/16");
    EXPECT_EQ(lfoRateSyncRow().labels.size(), 25u);
    EXPECT_EQ(lfoRateSyncRow().labels.back(), "1/64");
    EXPECT_EQ(formatGeneric(lfoRateSyncRow(), 0.5f, false), "1/2") << "the default rate is a half note";
}

TEST(GenericText, Booleans) {
    const ParameterSpec& row = tidewakeDescriptor().parameters[Param::crossChannels];
    EXPECT_EQ(formatGeneric(row, 0.49f, false), "Off");
    EXPECT_EQ(formatGeneric(row, 0.5f, true), "On");
    for (const char* on : {"On", "oN", "TRUE", "true", "1", " on "}) {
        float v = -1;
        EXPECT_TRUE(parseGeneric(row, on, v)) << on;
        EXPECT_EQ(v, 1.0f) << on;
    }
    for (const char* off : {"Off", "FALSE", "0"}) {
        float v = -1;
        EXPECT_TRUE(parseGeneric(row, off, v)) << off;
        EXPECT_EQ(v, 0.0f) << off;
    }
    float v = 0.25f;
    EXPECT_FALSE(parseGeneric(row, "yes", v));
    EXPECT_FALSE(parseGeneric(row, "2", v));
    EXPECT_EQ(v, 0.25f) << "a text that does not read leaves the value alone";
    EXPECT_EQ(quantiseGeneric(row, 0.7f), 1.0f);
    EXPECT_EQ(quantiseGeneric(row, 0.2f), 0.0f);
}

TEST(GenericText, DiscreteRows) {
    const ParameterSpec& row = tidewakeDescriptor().parameters[Param::lfoTarget];
    EXPECT_EQ(formatGeneric(row, 0.0f, false), "Frequency Shift");
    EXPECT_EQ(formatGeneric(row, 0.5f, false), "Low-pass Filter") << "floor(0.5 * 3 + 0.5) = 2";
    float v = -1;
    EXPECT_TRUE(parseGeneric(row, "delay time", v));
    EXPECT_EQ(v, 1.0f);
    EXPECT_TRUE(parseGeneric(row, "Phase Shift", v));
    EXPECT_FLOAT_EQ(v, 1.0f / 3.0f);
    EXPECT_FALSE(parseGeneric(row, "Phase", v));
    EXPECT_FLOAT_EQ(quantiseGeneric(row, 0.4f), 1.0f / 3.0f);
    EXPECT_EQ(formatGeneric(tidewakeDescriptor().parameters[Param::freqShiftRange], 0.33333334f, false), "Wide");
}

TEST(GenericText, ContinuousRowsReadBackAndClamp) {
    const ParameterSpec& phase = tidewakeDescriptor().parameters[Param::phaseShift];
    EXPECT_EQ(formatGeneric(phase, 0.75f, false), "90.00");
    EXPECT_EQ(formatGeneric(phase, 0.75f, true), "90.0000000");
    for (float value : {0.0f, 0.1234567f, 0.5f, 0.999f, 1.0f}) {
        float back = -1;
        ASSERT_TRUE(parseGeneric(phase, formatGeneric(phase, value, true), back));
        EXPECT_NEAR(back, value, 1e-7f);
    }
    float v = -1;
    EXPECT_TRUE(parseGeneric(phase, "720", v));
    EXPECT_EQ(v, 1.0f);
    EXPECT_TRUE(parseGeneric(phase, "-1e9", v));
    EXPECT_EQ(v, 0.0f);
    EXPECT_FALSE(parseGeneric(phase, "degrees", v));
    EXPECT_FALSE(parseGeneric(phase, "", v));
    EXPECT_EQ(quantiseGeneric(phase, 0.3f), 0.3f);
}
