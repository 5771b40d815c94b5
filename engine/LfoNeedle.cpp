#include "engine/LfoNeedle.h"

#include <cmath>

namespace tw {

float LfoNeedle::update(float value, float sampleRate, EngineRandom& random) {
    // The coefficient follows the sample rate alone: a division and a sine saved per step.
    if (sampleRate != forRate) {
        forRate = sampleRate;
        float f = 640.0f / sampleRate;
        if (f != rate) {
            rate = f;
            coefficient = std::sin(f * kPi) * 2.0f;
        }
    }
    return step(value, random);
}

}  // namespace tw
