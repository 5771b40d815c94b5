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

// Eight rows of eight become eight columns.
static inline void transpose(__m256 r[8]) {
    __m256 t0 = _mm256_unpacklo_ps(r[0], r[1]);
    __m256 t1 = _mm256_unpackhi_ps(r[0], r[1]);
    __m256 t2 = _mm256_unpacklo_ps(r[2], r[3]);
    __m256 t3 = _mm256_unpackhi_ps(r[2], r[3]);
    __m256 t4 = _mm256_unpacklo_ps(r[4], r[5]);
    __m256 t5 = _mm256_unpackhi_ps(r[4], r[5]);
    __m256 t6 = _mm256_unpacklo_ps(r[6], r[7]);
    __m256 t7 = _mm256_unpackhi_ps(r[6], r[7]);
    __m256 u0 = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(1, 0, 1, 0));
    __m256 u1 = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(3, 2, 3, 2));
    __m256 u2 = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(1, 0, 1, 0));
    __m256 u3 = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(3, 2, 3, 2));
    __m256 u4 = _mm256_shuffle_ps(t4, t6, _MM_SHUFFLE(1, 0, 1, 0));
    __m256 u5 = _mm256_shuffle_ps(t4, t6, _MM_SHUFFLE(3, 2, 3, 2));
    __m256 u6 = _mm256_shuffle_ps(t5, t7, _MM_SHUFFLE(1, 0, 1, 0));
    __m256 u7 = _mm256_shuffle_ps(t5, t7, _MM_SHUFFLE(3, 2, 3, 2));
    r[0] = _mm256_permute2f128_ps(u0, u4, 0x20);
    r[1] = _mm256_permute2f128_ps(u1, u5, 0x20);
    r[2] = _mm256_permute2f128_ps(u2, u6, 0x20);
    r[3] = _mm256_permute2f128_ps(u3, u7, 0x20);
    r[4] = _mm256_permute2f128_ps(u0, u4, 0x31);
    r[5] = _mm256_permute2f128_ps(u1, u5, 0x31);
    r[6] = _mm256_permute2f128_ps(u2, u6, 0x31);
    r[7] = _mm256_permute2f128_ps(u3, u7, 0x31);
}

// A channel's reads for the frame, k from -1 to primeSteps in reads[k + 1], lanes the
// frame's samples. Each lane's reads are a run of pairs in the ring: unless a run wraps
// round the ring's end, each is loaded whole, its channel picked out, and the runs turned
// on their side, eight reads at a time; else they are gathered.
static constexpr int kReadBlocks = 4;
static_assert(kMaxPrimeSteps + 2 <= kReadBlocks * 8, "the reads of a lane fill at most the blocks");

// Where each lane's run starts in the ring, and whether every run lies whole in it.
static inline bool runsOf(std::uint32_t mask, const std::int32_t start[8], std::uint32_t from[8]) {
    bool whole = true;
    for (int n = 0; n < 8; ++n) {
        from[n] = (static_cast<std::uint32_t>(start[n] - 1) * 2) & mask;
        whole = whole && from[n] + kReadBlocks * 16 <= mask + 1;
    }
    return whole;
}

// Reads 8b - 1 to 8b + 6 of whole runs into reads[8b] to reads[8b + 7].
static inline void loadBlock(const float* samples, const std::uint32_t from[8], int channel, int b, __m256* reads) {
    __m256* block = reads + b * 8;
    for (int n = 0; n < 8; ++n) {
        const float* run = samples + from[n] + b * 16;
        // Pairs 0 to 3 and 4 to 7: the channel's samples of each, then in order.
        __m256 a = _mm256_loadu_ps(run);
        __m256 c = _mm256_loadu_ps(run + 8);
        __m256 picked = channel == 0 ? _mm256_shuffle_ps(a, c, _MM_SHUFFLE(2, 0, 2, 0))
                                     : _mm256_shuffle_ps(a, c, _MM_SHUFFLE(3, 1, 3, 1));
        block[n] = _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(picked), _MM_SHUFFLE(3, 1, 2, 0)));
    }
    transpose(block);
}

static void channelReads(const float* samples, std::uint32_t mask, int channel, int primeSteps,
                         const std::int32_t start[8], __m256 reads[kReadBlocks * 8]) {
    std::uint32_t from[8];
    if (runsOf(mask, start, from)) {
        for (int b = 0; b < kReadBlocks; ++b) loadBlock(samples, from, channel, b, reads);
        return;
    }
    const __m256i indexMask = _mm256_set1_epi32(static_cast<int>(mask));
    const __m256i first = _mm256_add_epi32(
        _mm256_slli_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(start)), 1), _mm256_set1_epi32(channel));
    for (int k = -1; k <= primeSteps; ++k) {
        __m256i index = _mm256_and_si256(_mm256_add_epi32(first, _mm256_set1_epi32(k * 2)), indexMask);
        reads[k + 1] = _mm256_i32gather_ps(samples, index, 4);
    }
}

void primedReads(const float* samples, std::uint32_t mask, int channel, int primeSteps, const std::int32_t start[8],
                 const float c1[8], const float c2[8], float out[8], float lastTwo[2]) {
    alignas(32) __m256 reads[kReadBlocks * 8];
    channelReads(samples, mask, channel, primeSteps, start, reads);
    const __m256 k1 = _mm256_loadu_ps(c1);
    const __m256 k2 = _mm256_loadu_ps(c2);
    __m256 y1 = reads[0];
    __m256 y2 = reads[1];
    for (int k = 1; k <= primeSteps; ++k) {
        // x0, x1, x2 are the reads at k, k - 1 and k - 2.
        __m256 y = _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(k2, _mm256_sub_ps(reads[k + 1], y2)),
                                               _mm256_mul_ps(k1, _mm256_sub_ps(reads[k], y1))),
                                 reads[k - 1]);
        y2 = y1;
        y1 = y;
    }
    alignas(32) float before[8];
    _mm256_storeu_ps(out, y1);
    _mm256_store_ps(before, y2);
    lastTwo[0] = out[7];
    lastTwo[1] = before[7];
}

void primedStereoReads(const float* samples, std::uint32_t mask, int primeSteps, const std::int32_t startLeft[8],
                       const float c1Left[8], const float c2Left[8], const std::int32_t startRight[8],
                       const float c1Right[8], const float c2Right[8], float outLeft[8], float outRight[8],
                       float lastTwoLeft[2], float lastTwoRight[2]) {
    alignas(32) __m256 left[kReadBlocks * 8];
    alignas(32) __m256 right[kReadBlocks * 8];
    std::uint32_t fromLeft[8];
    std::uint32_t fromRight[8];
    // With whole runs, the reads of the next eight steps are loaded beside the steps of
    // these eight: both are long, and neither waits on the other.
    const bool whole = runsOf(mask, startLeft, fromLeft) && runsOf(mask, startRight, fromRight);
    if (whole) {
        loadBlock(samples, fromLeft, 0, 0, left);
        loadBlock(samples, fromRight, 1, 0, right);
    } else {
        channelReads(samples, mask, 0, primeSteps, startLeft, left);
        channelReads(samples, mask, 1, primeSteps, startRight, right);
    }
    const __m256 k1l = _mm256_loadu_ps(c1Left);
    const __m256 k2l = _mm256_loadu_ps(c2Left);
    const __m256 k1r = _mm256_loadu_ps(c1Right);
    const __m256 k2r = _mm256_loadu_ps(c2Right);
    __m256 y1l = left[0];
    __m256 y2l = left[1];
    __m256 y1r = right[0];
    __m256 y2r = right[1];
    int k = 1;
    for (int b = 0; b < kReadBlocks && k <= primeSteps; ++b) {
        if (whole && b + 1 < kReadBlocks) {
            loadBlock(samples, fromLeft, 0, b + 1, left);
            loadBlock(samples, fromRight, 1, b + 1, right);
        }
        // The steps whose newest read, at k, is in this block.
        const int last = primeSteps < b * 8 + 6 ? primeSteps : b * 8 + 6;
        for (; k <= last; ++k) {
            // x0, x1, x2 are the reads at k, k - 1 and k - 2.
            __m256 yl = _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(k2l, _mm256_sub_ps(left[k + 1], y2l)),
                                                    _mm256_mul_ps(k1l, _mm256_sub_ps(left[k], y1l))),
                                      left[k - 1]);
            __m256 yr = _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(k2r, _mm256_sub_ps(right[k + 1], y2r)),
                                                    _mm256_mul_ps(k1r, _mm256_sub_ps(right[k], y1r))),
                                      right[k - 1]);
            y2l = y1l;
            y1l = yl;
            y2r = y1r;
            y1r = yr;
        }
    }
    alignas(32) float before[8];
    _mm256_storeu_ps(outLeft, y1l);
    _mm256_store_ps(before, y2l);
    lastTwoLeft[0] = outLeft[7];
    lastTwoLeft[1] = before[7];
    _mm256_storeu_ps(outRight, y1r);
    _mm256_store_ps(before, y2r);
    lastTwoRight[0] = outRight[7];
    lastTwoRight[1] = before[7];
}

}  // namespace tw::wide
