// The LFO's free-running "Random" shape: a random walk of straight segments, one per LFO
// cycle's eighth, smoothed by two second-order low-pass stages tuned to the LFO rate.
#pragma once

#include "engine/EngineRandom.h"

namespace tw {

struct SmoothRandom {
    float lastIncrement = 0.0f;
    bool started = false;
    float k1 = 0.0f;
    float k2 = 0.0f;
    float scale = 0.0f;
    float offset = 0.0f;
    float level = 0.0f;
    float slope = 0.0f;
    float position = 0.0f;
    float a1 = 0.0f;
    float b1 = 0.0f;
    float a2 = 0.0f;
    float b2 = 0.0f;
    float output = 0.0f;

    void clear() { *this = SmoothRandom(); }

    // One LFO step at increment w in cycles per step.
    float step(float w, EngineRandom& random);
};

}  // namespace tw
