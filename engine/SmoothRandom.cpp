#include "engine/SmoothRandom.h"

#include "engine/EngineMath.h"

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

float filterStage(float x, float& a, float& b, float k1, float k2) {
    float big = k1 + 2.0f;
    float t = ((a * big + b) - x) * k2 + a;
    float u = (a + t) * k1 + b;
    a = (big * t + u) * k2 + t;
    b = (a + t) * k1 + u;
    return b + u;
}

}  // namespace

float SmoothRandom::step(float w, EngineRandom& random) {
    if (w < 1e-8f) return output;
    if (w != lastIncrement || !started) {
        k1 = std::tan(w * kPi * 0.5f);
        k2 = k1 * -2.0f / ((k1 + 1.0f) * (k1 + 1.0f));
        float u = std::max(w * 8.0f, 1.0f);
        scale = std::sqrt(1.0f / u) * 1.7320508f;
        offset = scale * -2.0f;
        lastIncrement = w;
        started = true;
    }
    position += w * 8.0f;
    if (position >= 1.0f) {
        level += slope;
        float sum = random.next();
        sum += random.next();
        sum += random.next();
        sum += random.next();
        slope = (sum * scale + offset) - level;
        while (position >= 1.0f) position -= 1.0f;
    }
    float x = slope * position + level;
    output = filterStage(filterStage(x, a1, b1, k1, k2), a2, b2, k1, k2);
    return output;
}

}  // namespace tw
