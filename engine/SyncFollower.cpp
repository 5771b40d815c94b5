#include "engine/SyncFollower.h"

namespace tw {

float SyncFollower::step(float target, float gain) {
    if (lastTarget < -999.0f) {
        phase = target;
        lastTarget = target;
    }
    float e = target - phase;
    while (e <= -0.5f) e += 1.0f;
    while (e > 0.5f) e -= 1.0f;
    // The position only runs forward, so its difference is wrapped upward alone.
    float d = target - lastTarget;
    lastTarget = target;
    while (d <= -0.5f) d += 1.0f;
    rate += (d - rate) * gain;
    phase += e * gain * 0.5f + rate;
    if (phase < 0.0f)
        phase += 1.0f;
    else if (phase >= 1.0f)
        phase -= 1.0f;
    return phase;
}

}  // namespace tw
