// The engine's random generator: a two-word xorshift that feeds the LFO's random shapes,
// the needle's tremble, the wake-up of the loop and the noise table.
#pragma once

#include <cstdint>

namespace tw {

struct EngineRandom {
    uint32_t x = 0;
    uint32_t y = 0;

    void seed(uint32_t first, uint32_t second) {
        x = first;
        y = second;
    }

    // One step; its value lies in 0 up to 1.
    float next() {
        uint32_t t = x ^ (x << 10);
        x = y;
        y = y ^ t ^ (((y >> 3) ^ t) >> 10);
        return static_cast<float>(static_cast<double>(y) * (1.0 / 4294967296.0));
    }
};

}  // namespace tw
