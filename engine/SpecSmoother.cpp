#include "engine/SpecSmoother.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace tw {

float SpecSmoother::update(float target, float baseRate, float scale, bool snap) {
    // At rest on its target a step changes nothing, snap or not; compared as bits, since
    // a step would turn a 0 into the target's -0.
    if (std::bit_cast<uint32_t>(y1) == std::bit_cast<uint32_t>(target) &&
        std::bit_cast<uint32_t>(y2) == std::bit_cast<uint32_t>(target) && k == std::min(baseRate, 1.0f) &&
        k == k)
        return y2;
    float d = (target - y1) * k;
    if (snap || std::fabs(d) * scale < 1e-7f)
        y1 = target;
    else
        y1 += d;
    float e = (y1 - y2) * k;
    if (snap || std::fabs(e) * scale < 1e-7f)
        y2 = y1;
    else
        y2 += e;
    float speed = std::fabs(y1 - y2) * scale;
    if (speed < 1e-10f) speed = 0.0f;
    k = speed + baseRate;
    if (k > 1.0f) k = 1.0f;
    return y2;
}

}  // namespace tw
