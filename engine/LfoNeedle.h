// The LFO meter's needle: a resonant low-pass on the LFO value with a fine tremble, so
// that the needle swings like a moving coil. It survives resets of the engine.
#pragma once

#include "engine/EngineMath.h"
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

    // Whether the coefficient is the one for this sample rate, so that step may be used.
    bool readyFor(float sampleRate) const { return forRate == sampleRate; }

    // update, once readyFor holds.
    float step(float value, EngineRandom& random) {
        float x = value + random.next() * 0.001f - 0.0005f;
        low += band * coefficient;
        band += ((x - low) - band * 0.5f) * coefficient;
        return clampFloat(low, -1.0f, 1.0f);
    }
};

}  // namespace tw
