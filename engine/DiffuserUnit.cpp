#include "engine/DiffuserUnit.h"

#include "engine/EngineTables.h"

#include <cstring>
#include <emmintrin.h>

namespace tw {

DiffuserUnit::DiffuserUnit()
    : memory_(kFrames * 4 * sizeof(float)), ring_(static_cast<float*>(memory_.data())) {}

void DiffuserUnit::clear(uint32_t mask) {
    std::memset(ring_, 0, (mask + 1) * 4 * sizeof(float));
    std::memset(lengths_, 0, sizeof(lengths_));
    std::memset(lastTaps_, 0, sizeof(lastTaps_));
}

void DiffuserUnit::step(float& left, float& right, uint32_t writeIndex, uint32_t mask, float g,
                        float lengthSmooth, bool first) {
    __m128 length;
    if (first) {
        std::memset(ring_ + mask * 4, 0, 4 * sizeof(float));
        length = _mm_load_ps(targets);
    } else {
        __m128 old = _mm_load_ps(lengths_);
        __m128 moved = _mm_add_ps(_mm_mul_ps(_mm_sub_ps(_mm_load_ps(targets), old), _mm_set1_ps(lengthSmooth)), old);
        __m128 distance = _mm_andnot_ps(_mm_set1_ps(-0.0f), _mm_sub_ps(moved, old));
        __m128 take = _mm_cmpge_ps(distance, _mm_set1_ps(1e-6f));
        length = _mm_or_ps(_mm_and_ps(take, moved), _mm_andnot_ps(take, old));
    }
    _mm_store_ps(lengths_, length);

    // Lengths in fixed point with seven fraction bits, at least 1.5 samples; the whole
    // part and the tap's fraction are chosen so the fraction lies between 0.5 and 1.5.
    __m128i fixed = _mm_cvttps_epi32(_mm_mul_ps(length, _mm_set1_ps(128.0f)));
    __m128i least = _mm_set1_epi32(192);
    __m128i above = _mm_cmpgt_epi32(fixed, least);
    fixed = _mm_or_si128(_mm_and_si128(above, fixed), _mm_andnot_si128(above, least));
    __m128i fraction = _mm_and_si128(fixed, _mm_set1_epi32(127));
    __m128i borrow = _mm_and_si128(_mm_cmplt_epi32(fraction, _mm_set1_epi32(64)), _mm_set1_epi32(128));
    alignas(16) int32_t tapIndex[4];
    alignas(16) int32_t whole[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(tapIndex), _mm_add_epi32(fraction, borrow));
    _mm_store_si128(reinterpret_cast<__m128i*>(whole), _mm_srli_epi32(_mm_sub_epi32(fixed, borrow), 7));

    const float* tap = engineTables().tap;
    alignas(16) float current[4];
    alignas(16) float previous[4];
    alignas(16) float coefficient[4];
    alignas(16) int32_t valid[4];
    for (int c = 0; c < 4; ++c) {
        int32_t p = static_cast<int32_t>(writeIndex) - whole[c];
        uint32_t at = static_cast<uint32_t>(p) & mask;
        current[c] = ring_[at * 4 + c];
        previous[c] = ring_[((at - 1) & mask) * 4 + c];
        coefficient[c] = tap[tapIndex[c]];
        valid[c] = p >= 0 ? -1 : 0;
    }
    __m128 taps = _mm_add_ps(_mm_mul_ps(_mm_sub_ps(_mm_load_ps(current), _mm_load_ps(lastTaps_)),
                                        _mm_load_ps(coefficient)),
                             _mm_load_ps(previous));
    taps = _mm_and_ps(taps, _mm_castsi128_ps(_mm_load_si128(reinterpret_cast<const __m128i*>(valid))));
    _mm_store_ps(lastTaps_, taps);

    // Lanes 0 and 1 carry the left and right channel from here on.
    __m128 gain = _mm_set1_ps(g);
    __m128 inner = _mm_movehl_ps(taps, taps);
    __m128 u = _mm_add_ps(_mm_mul_ps(taps, gain), _mm_setr_ps(left, right, 0.0f, 0.0f));
    __m128 v = _mm_add_ps(_mm_mul_ps(inner, gain), u);
    __m128 outer = _mm_sub_ps(inner, _mm_mul_ps(v, gain));
    _mm_store_ps(ring_ + (writeIndex & mask) * 4, _mm_movelh_ps(outer, v));
    alignas(16) float result[4];
    _mm_store_ps(result, _mm_sub_ps(taps, _mm_mul_ps(u, gain)));
    left = result[0];
    right = result[1];
}

}  // namespace tw
