#include "engine/StereoDelayLine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tw {
namespace {

constexpr float kRate = 48000.0f;

// One sample through the line, as the engine runs it.
void process(StereoDelayLine& line, float xl, float xr, float dl, float dr, float sl, float sr, bool first,
             float& l, float& r) {
    if (first) line.restart();
    line.write(xl, xr);
    l = line.read(0, dl, sl);
    r = line.read(1, dr, sr);
    line.advance();
}

TEST(StereoDelayLine, ARestartedLineReadsExactZeroUntilTheDelayHasPassed) {
    StereoDelayLine line;
    line.setSize(65536);
    // Fill the line with old signal, then restart it as a wake from silence does.
    float l, r;
    for (int n = 0; n < 70000; ++n) process(line, 0.7f, -0.7f, 100.0f, 100.0f, 0.0f, 0.0f, n == 0, l, r);
    const float delay = kRate - 1.3f;
    int firstSound = -1;
    for (int n = 0; n < 48100; ++n) {
        process(line, 1.0f, 1.0f, delay, delay - 1000.0f, 0.0f, 0.0f, n == 0, l, r);
        if (n < 46000) {
            ASSERT_EQ(r, 0.0f) << n;
        }
        if (l != 0.0f && firstSound < 0) firstSound = n;
        if (firstSound < 0) {
            ASSERT_EQ(l, 0.0f) << n;
        }
    }
    EXPECT_GE(firstSound, static_cast<int>(delay) - 1);
    EXPECT_LE(firstSound, static_cast<int>(delay) + 1);
}

// Runs a 200 Hz sine through the line with a moving delay; returns the largest error
// against the ideal delayed sine once the interpolator has settled.
double sweepError(float from, float slope, int samples) {
    StereoDelayLine line;
    line.setSize(65536);
    const double w = 2.0 * M_PI * 200.0 / kRate;
    double worst = 0.0;
    float delay = from;
    for (int n = 0; n < samples; ++n) {
        float x = static_cast<float>(std::sin(w * n));
        delay += slope;
        float l, r;
        process(line, x, -x, delay, delay, slope, slope, n == 0, l, r);
        if (n > 2000 && n > static_cast<int>(delay) + 30) {
            double ideal = std::sin(w * (n - static_cast<double>(delay)));
            worst = std::max({worst, std::fabs(l - ideal), std::fabs(r + ideal)});
        }
    }
    return worst;
}

TEST(StereoDelayLine, InterpolatesCleanlyWhetherTheDelayRestsCreepsOrSweeps) {
    EXPECT_LT(sweepError(480.25f, 0.0f, 10000), 1e-3);
    EXPECT_LT(sweepError(480.25f, 0.01f, 10000), 1e-3);  // one filter step per sample
    EXPECT_LT(sweepError(480.25f, 0.2f, 10000), 5e-3);   // re-primed from 25 samples
    EXPECT_LT(sweepError(3000.0f, -0.2f, 10000), 5e-3);
}

TEST(StereoDelayLine, TheShortestDelayPassesTheInput) {
    EXPECT_LT(sweepError(1e-7f, 0.0f, 6000), 2e-3);
}

TEST(StereoDelayLine, ReadingAFrameAheadGivesWhatReadingEachSampleGives) {
    for (float speed : {0.3f, 0.01f}) {  // re-primed, and running on
        StereoDelayLine one;
        StereoDelayLine ahead;
        one.setSize(65536);
        ahead.setSize(65536);
        const double w = 2.0 * M_PI * 300.0 / kRate;
        float delay = 3.5f;  // starts short, where a read must wait for the frame's writes
        float slope = speed;
        int framesAhead = 0;
        for (int frame = 0; frame < 3000; ++frame) {
            if (frame % 500 == 250) slope = -slope;
            float delays[8];
            for (int n = 0; n < 8; ++n) delays[n] = std::max(delay + slope * static_cast<float>(n + 1), 1e-7f);
            delay = delays[7];
            if (frame == 0) {
                one.restart();
                ahead.restart();
            }
            float early[8];
            bool read = frame > 0 && ahead.readFrame(0, delays, slope, early);
            framesAhead += read;
            for (int n = 0; n < 8; ++n) {
                float x = static_cast<float>(std::sin(w * (frame * 8 + n)));
                one.write(x, x);
                ahead.write(x, x);
                float expected = one.read(0, delays[n], slope);
                float got = read ? early[n] : ahead.read(0, delays[n], slope);
                ASSERT_EQ(expected, got) << speed << " frame " << frame << " sample " << n;
                one.advance();
                ahead.advance();
            }
        }
        EXPECT_GT(framesAhead, 2000) << speed;
        EXPECT_LT(framesAhead, 3000) << speed;
    }
}

}  // namespace
}  // namespace tw
