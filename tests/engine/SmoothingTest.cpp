#include "engine/SpecSmoother.h"
#include "engine/SyncFollower.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tw {
namespace {

int stepsToLand(SpecSmoother& s, float target, float base) {
    for (int n = 1; n < 100000; ++n) {
        if (s.update(target, base, 2.0f, false) == target) return n;
    }
    return -1;
}

TEST(SpecSmoother, LandsExactlyAndMovesFasterForLargerJumps) {
    SpecSmoother small;
    small.update(0.5f, 0.02f, 2.0f, true);
    int smallSteps = stepsToLand(small, 0.52f, 0.02f);
    SpecSmoother large;
    large.update(0.0f, 0.02f, 2.0f, true);
    float halfway = 0.0f;
    int n = 0;
    while (halfway < 0.5f) {
        halfway = large.update(1.0f, 0.02f, 2.0f, false);
        ++n;
    }
    // Half of a full jump takes fewer steps than a fiftieth of it takes to settle.
    EXPECT_GT(smallSteps, 0);
    EXPECT_LT(n, smallSteps / 4);
    EXPECT_GT(stepsToLand(large, 1.0f, 0.02f), 0);
    EXPECT_EQ(large.y1, 1.0f);
}

TEST(SpecSmoother, SnapLandsAtOnce) {
    SpecSmoother s;
    s.update(0.0f, 0.02f, 2.0f, true);
    s.update(1.0f, 0.02f, 2.0f, false);
    EXPECT_EQ(s.update(0.25f, 0.02f, 2.0f, true), 0.25f);
}

TEST(SyncFollower, LocksOntoARunningPositionAcrossItsWrap) {
    SyncFollower f;
    float position = 0.9f;
    float phase = 0.0f;
    for (int n = 0; n < 400; ++n) {
        position += 0.013f;
        if (position >= 1.0f) position -= 1.0f;
        phase = f.step(position, 0.05f);
    }
    // The phase runs one step ahead of the position it follows.
    float error = phase - position - 0.013f;
    if (error > 0.5f) error -= 1.0f;
    if (error < -0.5f) error += 1.0f;
    EXPECT_NEAR(error, 0.0f, 1e-3f);
    EXPECT_NEAR(f.rate, 0.013f, 1e-4f);
    EXPECT_GE(phase, 0.0f);
    EXPECT_LT(phase, 1.0f);
}

TEST(SyncFollower, TheFirstTargetIsTakenAsItStands) {
    SyncFollower f;
    EXPECT_FLOAT_EQ(f.step(0.3f, 0.01f), 0.3f);
    f.clear();
    EXPECT_FLOAT_EQ(f.step(0.7f, 0.01f), 0.7f);
}

}  // namespace
}  // namespace tw
