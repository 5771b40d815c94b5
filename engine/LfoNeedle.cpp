#include "engine/LfoNeedle.h"

#include "engine/EngineMath.h"

#include <cmath>

namespace tw {

float LfoNeedle::update(float value, float sampleRate, EngineRandom& random) {
    float x = value + random.next() * 0.001f - 0.0005f;
    // The coefficient follows the sample rate alone: a division and a sine saved per step.
    if (sampleRate != forRate) {
        forRate = sampleRate;
        float f = 640.0f / sampleRate;
        if (f != rate) {
            rate = f;
            coefficient = std::sin(f * kPi) * 2.0f;
        }
    }
    low += band * coefficient;
    band += ((x - low) - band * 0.5f) * coefficient;
    return clampFloat(low, -1.0f, 1.0f);
}

}  // namespace tw
