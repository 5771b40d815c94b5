#include "EngineHarness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace tw::test {
namespace {

constexpr float kRate = 48000.0f;

// The plain shifter setting: all wet, no feedback, the shortest delay.
EngineHarness shifter(float rate = kRate) {
    EngineHarness h(rate);
    h.controls.delayTime = 0.0f;
    h.controls.feedbackAmount = 0.0f;
    h.controls.wetMix = 1.0f;
    h.controls.lowPassFreq = 1.0f;
    h.controls.highPassFreq = 0.0f;
    return h;
}

TEST(ShifterEngine, ShiftsASineByTheAmountAndSuppressesTheOtherSideband) {
    for (double hertz : {500.0, -500.0}) {
        EngineHarness h = shifter();
        h.controls.range = FrameControls::kWide;
        h.controls.freqShiftAmount = shiftAmount(hertz, 200.0);
        Stereo out = h.run(sine(1000.0f, kRate, 48000));
        size_t from = 16384, length = 16384;
        double peak = peakFrequency(out.left, from, length, kRate, 10.0, 4000.0);
        EXPECT_NEAR(peak, 1000.0 + hertz, 10.0) << hertz;
        double wanted = toneLevel(out.left, from, length, 1000.0 + hertz, kRate);
        double mirror = toneLevel(out.left, from, length, 1000.0 - hertz, kRate);
        double carrier = toneLevel(out.left, from, length, 1000.0, kRate);
        EXPECT_NEAR(wanted, 0.5, 0.05);
        EXPECT_LT(decibels(mirror / wanted), -40.0) << hertz;
        EXPECT_LT(decibels(carrier / wanted), -40.0) << hertz;
        EXPECT_NEAR(toneLevel(out.right, from, length, 1000.0 + hertz, kRate), wanted, 1e-3);
    }
}

TEST(ShifterEngine, SidebandMixChoosesTheSidebandAndItsMiddleIsRingModulation) {
    struct Case { float mix; double up; double down; };
    for (Case c : {Case{1.0f, 1.0, 0.0}, Case{0.0f, 0.0, 1.0}, Case{0.5f, 0.5, 0.5}}) {
        EngineHarness h = shifter();
        h.controls.freqShiftAmount = shiftAmount(300.0, 200.0);
        h.controls.sidebandMix = c.mix;
        Stereo out = h.run(sine(1000.0f, kRate, 32768));
        double up = toneLevel(out.left, 16384, 16384, 1300.0, kRate);
        double down = toneLevel(out.left, 16384, 16384, 700.0, kRate);
        EXPECT_NEAR(up, 0.5 * c.up, 0.03) << c.mix;
        EXPECT_NEAR(down, 0.5 * c.down, 0.03) << c.mix;
    }
}

TEST(ShifterEngine, AntiReflectionKeepsPartialsShiftedBelowZeroFromFoldingBack) {
    double mirrored[2];
    for (int anti = 0; anti < 2; ++anti) {
        EngineHarness h = shifter();
        h.controls.antiReflection = anti == 1;
        h.controls.freqShiftAmount = shiftAmount(-800.0, 200.0);
        Stereo out = h.run(sine(300.0f, kRate, 48000));
        mirrored[anti] = toneLevel(out.left, 16384, 16384, 500.0, kRate);
    }
    EXPECT_GT(mirrored[0], 0.4);
    EXPECT_LT(decibels(mirrored[1] / mirrored[0]), -30.0);
}

}  // namespace
}  // namespace tw::test
