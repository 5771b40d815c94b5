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

// std::max(a, b) is a < b ? b : a, which a blend on the comparison keeps, ties and all.
static inline __m256 maxLikeStd(__m256 a, __m256 b) { return _mm256_blendv_ps(a, b, _mm256_cmp_ps(a, b, _CMP_LT_OQ)); }

void interpolators(const float delays[8], std::int32_t whole[8], float c1[8], float c2[8]) {
    const __m256 delay = _mm256_loadu_ps(delays);
    __m256i w = _mm256_cvttps_epi32(delay);
    __m256 f = _mm256_sub_ps(delay, _mm256_cvtepi32_ps(w));
    // Past the shortest delays the fraction moves up by one and the whole part down.
    const __m256i positive = _mm256_cmpgt_epi32(w, _mm256_setzero_si256());
    f = _mm256_blendv_ps(f, _mm256_add_ps(f, _mm256_set1_ps(1.0f)), _mm256_castsi256_ps(positive));
    w = _mm256_add_epi32(w, positive);  // positive lanes hold -1
    __m256 t = _mm256_sub_ps(
        _mm256_add_ps(_mm256_mul_ps(_mm256_mul_ps(f, _mm256_set1_ps(0.33565003f)), f), _mm256_set1_ps(0.6600485f)), f);
    __m256 u = _mm256_sub_ps(_mm256_set1_ps(0.9997654f), f);
    __m256 k2 = _mm256_div_ps(maxLikeStd(t, u),
                              _mm256_add_ps(_mm256_mul_ps(f, _mm256_set1_ps(0.800171f)), _mm256_set1_ps(1.0038364f)));
    __m256 k1 = _mm256_sub_ps(_mm256_add_ps(k2, _mm256_set1_ps(2.0079546f)),
                              maxLikeStd(_mm256_sub_ps(_mm256_mul_ps(f, _mm256_set1_ps(1.0064453f)), k2),
                                         _mm256_set1_ps(1.0079747f)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(whole), w);
    _mm256_storeu_ps(c1, k1);
    _mm256_storeu_ps(c2, k2);
}

void primedReads(const float* samples, std::uint32_t mask, int channel, int primeSteps, const std::int32_t start[8],
                 const float c1[8], const float c2[8], float out[8], float lastTwo[2]) {
    const __m256i indexMask = _mm256_set1_epi32(static_cast<int>(mask));
    // The index of pair p's sample of the channel: p * 2 + channel, round the ring.
    const __m256i first = _mm256_add_epi32(_mm256_slli_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(start)), 1),
                                           _mm256_set1_epi32(channel));
    auto at = [&](int k) {
        __m256i index = _mm256_and_si256(_mm256_add_epi32(first, _mm256_set1_epi32(k * 2)), indexMask);
        return _mm256_i32gather_ps(samples, index, 4);
    };
    const __m256 k1 = _mm256_loadu_ps(c1);
    const __m256 k2 = _mm256_loadu_ps(c2);
    __m256 x2 = at(-1);
    __m256 x1 = at(0);
    __m256 y1 = x2;
    __m256 y2 = x1;
    for (int k = 1; k <= primeSteps; ++k) {
        __m256 x0 = at(k);
        __m256 y = _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(k2, _mm256_sub_ps(x0, y2)), _mm256_mul_ps(k1, _mm256_sub_ps(x1, y1))), x2);
        y2 = y1;
        y1 = y;
        x2 = x1;
        x1 = x0;
    }
    _mm256_storeu_ps(out, y1);
    lastTwo[0] = out[7];
    alignas(32) float before[8];
    _mm256_store_ps(before, y2);
    lastTwo[1] = before[7];
}

}  // namespace tw::wide
