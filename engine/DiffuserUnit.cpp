#include "engine/DiffuserUnit.h"

#include "engine/EngineTables.h"

#include <algorithm>
#include <cstring>
#include <emmintrin.h>

namespace tw {

namespace {

// The taps of the lengths: whole samples and the all-pass coefficient of the fraction.
// Lengths in fixed point with seven fraction bits, at least 1.5 samples; the whole part
// and the tap's fraction are chosen so the fraction lies between 0.5 and 1.5.
inline void tapsOf(__m128 length, int32_t* whole, float* coefficients) {
    __m128i fixed = _mm_cvttps_epi32(_mm_mul_ps(length, _mm_set1_ps(128.0f)));
    __m128i least = _mm_set1_epi32(192);
    __m128i above = _mm_cmpgt_epi32(fixed, least);
    fixed = _mm_or_si128(_mm_and_si128(above, fixed), _mm_andnot_si128(above, least));
    __m128i fraction = _mm_and_si128(fixed, _mm_set1_epi32(127));
    __m128i borrow = _mm_and_si128(_mm_cmplt_epi32(fraction, _mm_set1_epi32(64)), _mm_set1_epi32(128));
    alignas(16) int32_t tapIndex[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(tapIndex), _mm_add_epi32(fraction, borrow));
    _mm_store_si128(reinterpret_cast<__m128i*>(whole), _mm_srli_epi32(_mm_sub_epi32(fixed, borrow), 7));
    const float* tap = engineTables().tap;
    for (int c = 0; c < 4; ++c) coefficients[c] = tap[tapIndex[c]];
}

// The length one sample later: smoothed toward its target, kept where it stands for a
// column that would move by less than 1e-6. moved tells whether any column moved.
inline __m128 nextLength(__m128 old, __m128 target, float lengthSmooth, bool& moved) {
    __m128 next = _mm_add_ps(_mm_mul_ps(_mm_sub_ps(target, old), _mm_set1_ps(lengthSmooth)), old);
    __m128 distance = _mm_andnot_ps(_mm_set1_ps(-0.0f), _mm_sub_ps(next, old));
    __m128 take = _mm_cmpge_ps(distance, _mm_set1_ps(1e-6f));
    moved = _mm_movemask_ps(take) != 0;
    return _mm_or_ps(_mm_and_ps(take, next), _mm_andnot_ps(take, old));
}

// One sample of the unit's two all-passes per channel, given its taps; writes the ring's
// frame and returns the unit's output in lanes 0 and 1.
inline __m128 allPasses(float* ring, uint32_t writeIndex, uint32_t mask, __m128 taps, float g, float left,
                        float right) {
    __m128 gain = _mm_set1_ps(g);
    __m128 inner = _mm_movehl_ps(taps, taps);
    __m128 u = _mm_add_ps(_mm_mul_ps(taps, gain), _mm_setr_ps(left, right, 0.0f, 0.0f));
    __m128 v = _mm_add_ps(_mm_mul_ps(inner, gain), u);
    __m128 outer = _mm_sub_ps(inner, _mm_mul_ps(v, gain));
    _mm_store_ps(ring + (writeIndex & mask) * 4, _mm_movelh_ps(outer, v));
    return _mm_sub_ps(taps, _mm_mul_ps(u, gain));
}

// Each column's tap reads whole samples back through a first-order all-pass; before the
// restarted write index has passed that far, the tap is silent.
inline __m128 readTaps(const float* ring, uint32_t writeIndex, uint32_t mask, const int32_t* whole,
                       __m128 coefficients, __m128 lastTaps) {
    __m128i p = _mm_sub_epi32(_mm_set1_epi32(static_cast<int32_t>(writeIndex)),
                              _mm_load_si128(reinterpret_cast<const __m128i*>(whole)));
    __m128 valid = _mm_castsi128_ps(_mm_cmpgt_epi32(p, _mm_set1_epi32(-1)));
    alignas(16) uint32_t at[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(at), _mm_and_si128(p, _mm_set1_epi32(static_cast<int32_t>(mask))));
    __m128 current = _mm_setr_ps(ring[at[0] * 4], ring[at[1] * 4 + 1], ring[at[2] * 4 + 2], ring[at[3] * 4 + 3]);
    __m128 previous = _mm_setr_ps(ring[((at[0] - 1) & mask) * 4], ring[((at[1] - 1) & mask) * 4 + 1],
                                  ring[((at[2] - 1) & mask) * 4 + 2], ring[((at[3] - 1) & mask) * 4 + 3]);
    __m128 taps = _mm_add_ps(_mm_mul_ps(_mm_sub_ps(current, lastTaps), coefficients), previous);
    return _mm_and_ps(taps, valid);
}

}  // namespace

DiffuserUnit::DiffuserUnit()
    : memory_(kFrames * 4 * sizeof(float)), ring_(static_cast<float*>(memory_.data())) {}

void DiffuserUnit::clear() {
    std::memset(ring_, 0, dirtyFrames_ * 4 * sizeof(float));
    dirtyFrames_ = 0;
    std::memset(lengths_, 0, sizeof(lengths_));
    std::memset(lastTaps_, 0, sizeof(lastTaps_));
    tapsDue_ = true;
}

void DiffuserUnit::step(float& left, float& right, uint32_t writeIndex, uint32_t mask, float g,
                        float lengthSmooth, bool first) {
    dirtyFrames_ = std::max(dirtyFrames_, mask + 1);
    __m128 length;
    bool moved = tapsDue_;
    if (first) {
        std::memset(ring_ + mask * 4, 0, 4 * sizeof(float));
        length = _mm_load_ps(targets);
        moved = true;
    } else {
        bool any = false;
        length = nextLength(_mm_load_ps(lengths_), _mm_load_ps(targets), lengthSmooth, any);
        moved = moved || any;
    }
    if (moved) {
        tapsDue_ = false;
        _mm_store_ps(lengths_, length);
        tapsOf(length, whole_, coefficients_);
    }
    __m128 taps = readTaps(ring_, writeIndex, mask, whole_, _mm_load_ps(coefficients_), _mm_load_ps(lastTaps_));
    _mm_store_ps(lastTaps_, taps);
    __m128 result = allPasses(ring_, writeIndex, mask, taps, g, left, right);
    left = _mm_cvtss_f32(result);
    right = _mm_cvtss_f32(_mm_shuffle_ps(result, result, _MM_SHUFFLE(1, 1, 1, 1)));
}

void DiffuserUnit::stepFrame(float* left, float* right, const uint32_t* write, uint32_t mask, const float* g,
                             float lengthSmooth) {
    dirtyFrames_ = std::max(dirtyFrames_, mask + 1);
    const __m128 target = _mm_load_ps(targets);
    __m128 length = _mm_load_ps(lengths_);
    __m128 coefficients = _mm_load_ps(coefficients_);
    __m128 lastTaps = _mm_load_ps(lastTaps_);
    bool due = tapsDue_;
    for (int n = 0; n < kFrameSamples; ++n) {
        bool moved = false;
        length = nextLength(length, target, lengthSmooth, moved);
        if (moved || due) {
            due = false;
            tapsOf(length, whole_, coefficients_);
            coefficients = _mm_load_ps(coefficients_);
        }
        lastTaps = readTaps(ring_, write[n], mask, whole_, coefficients, lastTaps);
        __m128 result = allPasses(ring_, write[n], mask, lastTaps, g[n], left[n], right[n]);
        left[n] = _mm_cvtss_f32(result);
        right[n] = _mm_cvtss_f32(_mm_shuffle_ps(result, result, _MM_SHUFFLE(1, 1, 1, 1)));
    }
    tapsDue_ = due;
    _mm_store_ps(lengths_, length);
    _mm_store_ps(lastTaps_, lastTaps);
}

}  // namespace tw
