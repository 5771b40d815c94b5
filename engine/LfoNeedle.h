// The LFO meter's needle: a resonant low-pass on the LFO value with a fine tremble, so
// that the needle swings like a moving coil. It survives resets of the engine.
#pragma once

#include "engine/EngineRandom.h"

namespace tw {

struct LfoNeedle {
    float low = 0.0f;
    float band = 0.0f;
    float rate = -1.0f;  // a rate that never occurs: the coefficient is due
    float forRate = -1.0f;  // the sample rate rate was made for
    float coefficient = 0.0f;

    // One control-rate step toward value; returns the needle position, -1 to 1.
    float update(float value, float sampleRate, EngineRandom& random);
};

}  // namespace tw
