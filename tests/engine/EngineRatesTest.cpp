#include "EngineHarness.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

struct RateCase {
    float rate;
    uint32_t delayPairs;
    int ringSize;
    bool rotated;
};

class EngineAtRate : public ::testing::TestWithParam<RateCase> {};

TEST_P(EngineAtRate, SizesItsRingsAndQuadratureForTheRate) {
    const RateCase c = GetParam();
    EngineHarness h(c.rate);
    h.run(sine(1000.0f, c.rate, 64));
    EXPECT_EQ(h.engine().delayPairs(), c.delayPairs);
    EXPECT_EQ(h.engine().hilbertRingSize(), c.ringSize);
    if (c.rotated)
        EXPECT_NEAR(h.engine().hilbertRotation(), 0.1594 * 2.0, 1e-3);  // anti-reflection doubles it
    else
        EXPECT_EQ(h.engine().hilbertRotation(), 0.0f);
    // The smear ring is the power of two above the longest length the smear can reach.
    uint32_t mask = h.engine().smearRingMask();
    EXPECT_EQ((mask + 1) & mask, 0u);
    EXPECT_GT(mask + 1, static_cast<uint32_t>(std::ceil(c.rate / 23.0f)));
    EXPECT_LE((mask + 1) / 2, static_cast<uint32_t>(std::ceil(c.rate / 23.0f)));
}

TEST_P(EngineAtRate, ShiftsASineAndSuppressesTheMirror) {
    const float rate = GetParam().rate;
    EngineHarness h(rate);
    h.controls.freqShiftAmount = shiftAmount(300.0, 200.0);
    Stereo out = h.run(sine(1000.0f, rate, static_cast<size_t>(rate) / 8 * 8));
    size_t length = static_cast<size_t>(rate / 4);
    size_t from = out.size() - length;
    double wanted = toneLevel(out.left, from, length, 1300.0, rate);
    EXPECT_NEAR(wanted, 0.5, 0.05);
    EXPECT_LT(decibels(toneLevel(out.left, from, length, 700.0, rate) / wanted), -40.0);
    EXPECT_LT(decibels(toneLevel(out.left, from, length, 1000.0, rate) / wanted), -40.0);
}

TEST_P(EngineAtRate, FallsSilentOnePointOneSecondsAfterTheLoopGoesQuiet) {
    const float rate = GetParam().rate;
    EngineHarness h(rate);
    h.keepReports = true;
    Stereo in = sine(500.0f, rate, 800);
    in.left.resize(static_cast<size_t>(rate * 1.2f) / 8 * 8 + 800);
    in.right.resize(in.left.size());
    Stereo out = h.run(in);
    size_t silentFrom = (800 + static_cast<size_t>(rate * 1.1f) + 256) / 8 + 1;
    ASSERT_LT(silentFrom, h.reports.size());
    EXPECT_TRUE(h.reports[silentFrom].silent);
    EXPECT_FALSE(h.reports[silentFrom - 64].silent);
    for (size_t n = silentFrom * 8; n < out.size(); ++n) ASSERT_EQ(out.right[n], 0.0f);
}

INSTANTIATE_TEST_SUITE_P(SampleRates, EngineAtRate,
                         ::testing::Values(RateCase{44100.0f, 65536, 2, false}, RateCase{48000.0f, 65536, 2, true},
                                           RateCase{88200.0f, 131072, 4, false},
                                           RateCase{96000.0f, 131072, 4, true},
                                           RateCase{176400.0f, 262144, 8, false},
                                           RateCase{192000.0f, 262144, 8, true}),
                         [](const auto& info) { return std::to_string(static_cast<int>(info.param.rate)); });

}  // namespace
}  // namespace tw::test
