#include "EngineHarness.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tw::test {
namespace {

constexpr float kRate = 48000.0f;

// The LFO value the engine reports for each control period of a run of seconds.
std::vector<float> lfoTrace(EngineHarness& h, double seconds) {
    h.keepReports = true;
    h.reports.clear();
    h.run(sine(200.0f, kRate, static_cast<size_t>(seconds * kRate) / 64 * 64, 0.1f));
    std::vector<float> trace;
    for (size_t f = 0; f < h.reports.size(); f += 8) trace.push_back(h.reports[f].lfoValue);
    return trace;
}

int upwardCrossings(const std::vector<float>& x) {
    int count = 0;
    for (size_t n = 1; n < x.size(); ++n) count += x[n - 1] < 0.0f && x[n] >= 0.0f;
    return count;
}

TEST(Lfo, SyncedRateFollowsTheTempo) {
    for (float tempo : {120.0f, 90.0f}) {
        EngineHarness h(kRate);
        h.controls.lfoSync = true;
        h.controls.lfoRate = 15.0f / 24.0f;  // "1/4"
        h.controls.tempo = tempo;
        std::vector<float> trace = lfoTrace(h, 8.0);
        // Quarter notes: tempo / 60 cycles per second, over 8 seconds.
        EXPECT_NEAR(upwardCrossings(trace), tempo / 60.0f * 8.0f, 1.0f) << tempo;
    }
}

TEST(Lfo, ATransportStartJumpsToTheSongPosition) {
    EngineHarness h(kRate);
    h.controls.lfoSync = true;
    h.controls.lfoRate = 15.0f / 24.0f;  // a quarter note per cycle
    h.run(sine(200.0f, kRate, 4096, 0.1f));
    h.controls.playing = true;
    h.controls.songPosition = 0.125f;  // half a quarter note in: the bottom of the sine
    h.run(sine(200.0f, kRate, 64, 0.1f));
    EXPECT_NEAR(h.report.lfoValue, -1.0f, 1e-3f);
}

TEST(Lfo, AStoppedLfoComesToRestAtTheTopOfTheSine) {
    EngineHarness h(kRate);
    h.controls.lfoRate = 0.7f;
    lfoTrace(h, 0.37);
    h.controls.lfoRate = 0.0f;
    std::vector<float> trace = lfoTrace(h, 10.0);
    EXPECT_EQ(trace.back(), 1.0f);
}

TEST(Lfo, ShapesRunBetweenTheirLimitsAndTheDelayTargetShowsTheShapeNotItsIntegral) {
    for (int shape : {Lfo::kSaw, Lfo::kSquare}) {
        EngineHarness plain(kRate);
        plain.controls.lfoShape = shape;
        plain.controls.lfoRate = 0.4f;
        EngineHarness delay(kRate);
        delay.controls = plain.controls;
        delay.controls.lfoTarget = Lfo::kDelayTime;
        std::vector<float> a = lfoTrace(plain, 3.0);
        std::vector<float> b = lfoTrace(delay, 3.0);
        EXPECT_EQ(*std::max_element(a.begin(), a.end()), 1.0f) << shape;
        EXPECT_LE(*std::min_element(a.begin(), a.end()), -0.95f) << shape;
        int close = 0;
        for (size_t n = 0; n < a.size(); ++n) close += std::fabs(a[n] - b[n]) < 0.05f;
        EXPECT_GT(close, static_cast<int>(a.size() * 9 / 10)) << shape;
    }
}

TEST(Lfo, StereoHandsTheRightChannelTheInvertedModulation) {
    EngineHarness h(kRate);
    h.controls.freqShiftAmount = shiftAmount(100.0, 200.0);
    h.controls.lfoAmount = 0.8f;
    h.controls.lfoStereo = true;
    h.controls.lfoRate = 0.3f;
    h.run(sine(200.0f, kRate, 24000, 0.1f));
    float base = 100.0f / kRate;
    float left = h.engine().shiftPerSample(0) - base;
    float right = h.engine().shiftPerSample(1) - base;
    EXPECT_GT(std::fabs(left), 1e-4f);
    EXPECT_NEAR(right, -left, 1e-6f);
}

TEST(Lfo, TheRandomShapesStayInRangeAndDoNotRepeatThemselves) {
    for (bool synced : {false, true}) {
        EngineHarness h(kRate, 99);
        h.controls.lfoShape = Lfo::kRandom;
        h.controls.lfoSync = synced;
        h.controls.lfoRate = synced ? 0.9f : 0.6f;
        std::vector<float> trace = lfoTrace(h, 4.0);
        float low = *std::min_element(trace.begin(), trace.end());
        float high = *std::max_element(trace.begin(), trace.end());
        EXPECT_GE(low, -1.0f);
        EXPECT_LE(high, 1.0f);
        EXPECT_GT(high - low, 0.5f) << synced;
    }
}

}  // namespace
}  // namespace tw::test
