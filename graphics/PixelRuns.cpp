#include "graphics/PixelRuns.h"

#include <emmintrin.h>

#include <cstring>

#include "graphics/PixelMath.h"

namespace tw {

namespace {

// Whether writing four pixels ahead of reading would change what a plain loop reads: the
// source lies less than four pixels behind the destination.
bool trails(const std::uint32_t* source, const std::uint32_t* dst) {
    const std::uintptr_t s = reinterpret_cast<std::uintptr_t>(source), d = reinterpret_cast<std::uintptr_t>(dst);
    return d > s && d - s < 4 * sizeof(std::uint32_t);
}

__m128i load(const std::uint32_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
void store(std::uint32_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// A channel c (at most 255) times a256(a), shifted down by 8, equals c times a + 1
// shifted down by 8: for a = 0 both are 0. So the multipliers below are a + 1, which
// saves the test for zero.

// Four coverage bytes as multipliers, each in both 16-bit halves of its pixel.
__m128i multipliers(const std::uint8_t* mask) {
    std::int32_t bytes;
    std::memcpy(&bytes, mask, 4);
    const __m128i m = _mm_unpacklo_epi8(_mm_cvtsi32_si128(bytes), _mm_setzero_si128());
    return _mm_add_epi16(_mm_unpacklo_epi16(m, m), _mm_set1_epi16(1));
}

// Each pixel's alpha as a multiplier, in both 16-bit halves of the pixel.
__m128i alphaMultipliers(__m128i top) {
    const __m128i a = _mm_add_epi32(_mm_srli_epi32(top, 24), _mm_set1_epi32(1));
    return _mm_or_si128(a, _mm_slli_epi32(a, 16));
}

// The channel pairs of a pixel times a multiplier of at most 256: each product fits a
// 16-bit lane, so one multiply does what the scalar formula does with two. lo holds
// blue and red, each put in the high byte of its lane so that the high half of the
// product is the result; hi holds green and alpha, multiplied in the low byte and masked.
__m128i scaledLow(__m128i p, __m128i m) { return _mm_mulhi_epu16(_mm_slli_epi16(p, 8), m); }
__m128i scaledHigh(__m128i p, __m128i m) {
    return _mm_andnot_si128(_mm_set1_epi32(0x00FF00FF), _mm_mullo_epi16(_mm_srli_epi16(p, 8), m));
}

__m128i over4(__m128i top, __m128i a, __m128i bottom) {
    const __m128i sum = _mm_add_epi32(top, bottom);
    return _mm_sub_epi32(sum, _mm_or_si128(scaledLow(bottom, a), scaledHigh(bottom, a)));
}

__m128i scale4(__m128i p, __m128i m) { return _mm_or_si128(scaledHigh(p, m), scaledLow(p, m)); }

// Computes a run with four(k) for each whole group of four pixels and one(k) for the
// last few; a source that trails the destination is done pixel by pixel, in order, as a
// plain loop reads it. The last few are spelled out, since a loop there would be
// vectorised again, at a cost that short runs pay in full.
template <class Four, class One>
void byFours(bool trailing, std::int32_t n, Four four, One one) {
    std::int32_t k = 0;
    if (trailing) {
        for (; k < n; ++k) one(k);
        return;
    }
    for (; k + 4 <= n; k += 4) four(k);
    if (k < n) one(k);
    if (k + 1 < n) one(k + 1);
    if (k + 2 < n) one(k + 2);
}

}  // namespace

void overRun4(const std::uint32_t* top, const std::uint32_t* bottom, std::uint32_t* dst, std::int32_t n) {
    byFours(
        trails(top, dst) || trails(bottom, dst), n,
        [&](std::int32_t k) {
            const __m128i t = load(top + k);
            store(dst + k, over4(t, alphaMultipliers(t), load(bottom + k)));
        },
        [&](std::int32_t k) { dst[k] = over32(top[k], bottom[k]); });
}

void overRun4(std::uint32_t top, const std::uint32_t* bottom, std::uint32_t* dst, std::int32_t n) {
    const __m128i t = _mm_set1_epi32(std::int32_t(top));
    const __m128i a = alphaMultipliers(t);
    byFours(
        trails(bottom, dst), n, [&](std::int32_t k) { store(dst + k, over4(t, a, load(bottom + k))); },
        [&](std::int32_t k) { dst[k] = over32(top, bottom[k]); });
}

void overRun4(const std::uint32_t* top, std::uint32_t bottom, std::uint32_t* dst, std::int32_t n) {
    const __m128i b = _mm_set1_epi32(std::int32_t(bottom));
    byFours(
        trails(top, dst), n,
        [&](std::int32_t k) {
            const __m128i t = load(top + k);
            store(dst + k, over4(t, alphaMultipliers(t), b));
        },
        [&](std::int32_t k) { dst[k] = over32(top[k], bottom); });
}

void scaleRun4(const std::uint32_t* colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n) {
    byFours(
        trails(colour, dst), n, [&](std::int32_t k) { store(dst + k, scale4(load(colour + k), multipliers(mask + k))); },
        [&](std::int32_t k) { dst[k] = scale32(colour[k], mask[k]); });
}

void scaleRun4(std::uint32_t colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n) {
    const __m128i c = _mm_set1_epi32(std::int32_t(colour));
    byFours(
        false, n, [&](std::int32_t k) { store(dst + k, scale4(c, multipliers(mask + k))); },
        [&](std::int32_t k) { dst[k] = scale32(colour, mask[k]); });
}

void scaleRun4(const std::uint32_t* colour, std::uint8_t mask, std::uint32_t* dst, std::int32_t n) {
    const std::uint32_t m = mask + 1u;
    const __m128i s = _mm_set1_epi32(std::int32_t(m | m << 16));
    byFours(
        trails(colour, dst), n, [&](std::int32_t k) { store(dst + k, scale4(load(colour + k), s)); },
        [&](std::int32_t k) { dst[k] = scale32(colour[k], mask); });
}

void overScaledRun4(std::uint32_t colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n) {
    const __m128i c = _mm_set1_epi32(std::int32_t(colour));
    byFours(
        false, n,
        [&](std::int32_t k) {
            const __m128i top = scale4(c, multipliers(mask + k));
            store(dst + k, over4(top, alphaMultipliers(top), load(dst + k)));
        },
        [&](std::int32_t k) { dst[k] = over32(scale32(colour, mask[k]), dst[k]); });
}

}  // namespace tw
