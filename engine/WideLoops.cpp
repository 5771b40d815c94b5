// Compiled with -mavx2 and without -mfma: nothing here may be reached but through a check
// of wideVectors(), and nothing here is inline code shared with other files, so that no
// AVX instruction leaks into code a processor without AVX runs.
#include "engine/WideLoops.h"

#include <immintrin.h>

#include <cstddef>

namespace tw::wide {

int quietFrames(const float* inL, const float* inR, float* outL, float* outR, int frames, float threshold) {
    const __m256 magnitude = _mm256_castsi256_ps(_mm256_set1_epi32(0x7fffffff));
    const __m256 limit = _mm256_set1_ps(threshold);
    const __m256 zero = _mm256_setzero_ps();
    for (int k = 0; k < frames; ++k) {
        const std::size_t at = static_cast<std::size_t>(k) * 8;
        __m256 above = _mm256_or_ps(_mm256_cmp_ps(_mm256_and_ps(_mm256_loadu_ps(inL + at), magnitude), limit, _CMP_GT_OQ),
                                    _mm256_cmp_ps(_mm256_and_ps(_mm256_loadu_ps(inR + at), magnitude), limit, _CMP_GT_OQ));
        if (_mm256_movemask_ps(above) != 0) return k;
        _mm256_storeu_ps(outL + at, zero);
        _mm256_storeu_ps(outR + at, zero);
    }
    return frames;
}

}  // namespace tw::wide
