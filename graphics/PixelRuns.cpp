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

// Four coverage bytes as a256 multipliers, each in both 16-bit halves of its pixel.
__m128i multipliers(const std::uint8_t* mask) {
    std::int32_t bytes;
    std::memcpy(&bytes, mask, 4);
    const __m128i m = _mm_unpacklo_epi8(_mm_cvtsi32_si128(bytes), _mm_setzero_si128());
    const __m128i m16 = _mm_unpacklo_epi16(m, m);
    return _mm_sub_epi16(m16, _mm_cmpgt_epi16(m16, _mm_setzero_si128()));
}

// The a256 of each pixel's alpha, in both 16-bit halves of the pixel.
__m128i alphaMultipliers(__m128i top) {
    const __m128i a = _mm_srli_epi32(top, 24);
    const __m128i a256 = _mm_sub_epi32(a, _mm_cmpgt_epi32(a, _mm_setzero_si128()));
    return _mm_or_si128(a256, _mm_slli_epi32(a256, 16));
}

// The channel pairs of a pixel times a multiplier that is at most 256: each product fits
// a 16-bit lane, so one pmullw does what the scalar formula does with two multiplies.
// lo holds the products of blue and red shifted down, hi those of green and alpha masked.
__m128i scaledLow(__m128i p, __m128i m) {
    return _mm_srli_epi16(_mm_mullo_epi16(_mm_and_si128(p, _mm_set1_epi32(0x00FF00FF)), m), 8);
}
__m128i scaledHigh(__m128i p, __m128i m) {
    return _mm_andnot_si128(_mm_set1_epi32(0x00FF00FF), _mm_mullo_epi16(_mm_srli_epi16(p, 8), m));
}

__m128i over4(__m128i top, __m128i a, __m128i bottom) {
    const __m128i sum = _mm_add_epi32(top, bottom);
    return _mm_sub_epi32(_mm_sub_epi32(sum, scaledLow(bottom, a)), scaledHigh(bottom, a));
}

__m128i scale4(__m128i p, __m128i m) { return _mm_or_si128(scaledHigh(p, m), scaledLow(p, m)); }

// The last zero to three pixels of a run, in order (a source that trails the
// destination leaves the rest to the plain loop before). Spelled out, since a loop here
// would be vectorised again, at a cost that short runs (most edge runs) pay in full.
template <class Op>
void lastFew(std::int32_t k, std::int32_t n, Op op) {
    if (k < n) op(k);
    if (k + 1 < n) op(k + 1);
    if (k + 2 < n) op(k + 2);
}

}  // namespace

void overRun4(const std::uint32_t* top, const std::uint32_t* bottom, std::uint32_t* dst, std::int32_t n) {
    std::int32_t k = 0;
    if (n >= 4 && !trails(top, dst) && !trails(bottom, dst)) {
        for (; k + 4 <= n; k += 4) {
            const __m128i t = load(top + k);
            store(dst + k, over4(t, alphaMultipliers(t), load(bottom + k)));
        }
    }
    for (; k + 3 < n; ++k) dst[k] = over32(top[k], bottom[k]);
    lastFew(k, n, [&](std::int32_t i) { dst[i] = over32(top[i], bottom[i]); });
}

void overRun4(std::uint32_t top, const std::uint32_t* bottom, std::uint32_t* dst, std::int32_t n) {
    std::int32_t k = 0;
    if (n >= 4 && !trails(bottom, dst)) {
        const __m128i t = _mm_set1_epi32(std::int32_t(top));
        const __m128i a = alphaMultipliers(t);
        for (; k + 4 <= n; k += 4) store(dst + k, over4(t, a, load(bottom + k)));
    }
    for (; k + 3 < n; ++k) dst[k] = over32(top, bottom[k]);
    lastFew(k, n, [&](std::int32_t i) { dst[i] = over32(top, bottom[i]); });
}

void overRun4(const std::uint32_t* top, std::uint32_t bottom, std::uint32_t* dst, std::int32_t n) {
    std::int32_t k = 0;
    if (n >= 4 && !trails(top, dst)) {
        const __m128i b = _mm_set1_epi32(std::int32_t(bottom));
        for (; k + 4 <= n; k += 4) {
            const __m128i t = load(top + k);
            store(dst + k, over4(t, alphaMultipliers(t), b));
        }
    }
    for (; k + 3 < n; ++k) dst[k] = over32(top[k], bottom);
    lastFew(k, n, [&](std::int32_t i) { dst[i] = over32(top[i], bottom); });
}

void scaleRun4(const std::uint32_t* colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n) {
    std::int32_t k = 0;
    if (n >= 4 && !trails(colour, dst)) {
        for (; k + 4 <= n; k += 4) store(dst + k, scale4(load(colour + k), multipliers(mask + k)));
    }
    for (; k + 3 < n; ++k) dst[k] = scale32(colour[k], mask[k]);
    lastFew(k, n, [&](std::int32_t i) { dst[i] = scale32(colour[i], mask[i]); });
}

void scaleRun4(std::uint32_t colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n) {
    std::int32_t k = 0;
    const __m128i c = _mm_set1_epi32(std::int32_t(colour));
    for (; k + 4 <= n; k += 4) store(dst + k, scale4(c, multipliers(mask + k)));
    lastFew(k, n, [&](std::int32_t i) { dst[i] = scale32(colour, mask[i]); });
}

void scaleRun4(const std::uint32_t* colour, std::uint8_t mask, std::uint32_t* dst, std::int32_t n) {
    std::int32_t k = 0;
    if (n >= 4 && !trails(colour, dst)) {
        const std::uint32_t m = a256(mask);
        const __m128i s = _mm_set1_epi32(std::int32_t(m | m << 16));
        for (; k + 4 <= n; k += 4) store(dst + k, scale4(load(colour + k), s));
    }
    for (; k + 3 < n; ++k) dst[k] = scale32(colour[k], mask);
    lastFew(k, n, [&](std::int32_t i) { dst[i] = scale32(colour[i], mask); });
}

}  // namespace tw
