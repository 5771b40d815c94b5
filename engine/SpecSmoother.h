// The control smoother of every continuous parameter the engine reads: two one-pole
// stages whose rate rises with the distance still to go, so a large jump moves fast, a
// small one settles at the base rate, and the output lands exactly on its target.
#pragma once

namespace tw {

struct SpecSmoother {
    float y1 = 0.0f;
    float y2 = 0.0f;
    float k = 0.0f;

    // One control-rate step toward target; snap lands at once. Returns the smoothed value.
    float update(float target, float baseRate, float scale, bool snap);
};

}  // namespace tw
