// The quadrature network of the frequency shifter: on both channels two chains of four
// second-order all-pass stages whose outputs stand 90 degrees apart across the audio band.
// ShifterEngine runs one ahead of the oscillators and, with anti-reflection, one behind.
#pragma once

#include <cstdint>
#include <xmmintrin.h>

namespace tw {

struct HilbertPair {
    static constexpr int kStages = 4;
    static constexpr int kRing = 8;

    // The four lanes of every vector: chain A left, chain A right, chain B left, chain B
    // right. Each stage keeps its last kRing inputs and outputs per lane, so that a stage
    // is y[n] = c * (x[n] + y[n - N]) - x[n - N] for a ring size N of 2, 4 or 8.
    alignas(16) float outputs[kStages][kRing][4];
    alignas(16) float inputs[kStages][kRing][4];
    // Chain B's input, delayed by N / 2 samples: per slot, left then right.
    alignas(16) float delayRing[4][2];
    uint32_t ringIndex;

    // Stage coefficients per lane, stage 0 first.
    alignas(16) static const float kCoefficients[kStages][4];

    void clear();

    // One sample: lanes of in are chain A's inputs (left, right) then chain B's; the result
    // holds the chain outputs in the same lanes. ringMask is N - 1.
    __m128 step(uint32_t ringMask, __m128 in) {
        uint32_t slot = ringIndex & ringMask;
        float* delayed = delayRing[slot & (ringMask >> 1)];
        __m128 x = _mm_loadh_pi(in, reinterpret_cast<const __m64*>(delayed));
        _mm_storeh_pi(reinterpret_cast<__m64*>(delayed), in);
        for (int s = 0; s < kStages; ++s) {
            float* out = outputs[s][slot];
            float* old = inputs[s][slot];
            __m128 y = _mm_sub_ps(_mm_mul_ps(_mm_add_ps(x, _mm_load_ps(out)), _mm_load_ps(kCoefficients[s])),
                                  _mm_load_ps(old));
            _mm_store_ps(old, x);
            _mm_store_ps(out, y);
            x = y;
        }
        ringIndex = slot + 1;
        return x;
    }
};

}  // namespace tw
