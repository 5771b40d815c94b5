// The pixel arithmetic of PixelMath.h over whole runs, four colour pixels at a time in
// SSE2: the inner loops of "over" and of colour-by-coverage products, where edges,
// translucent pictures and blends spend their time. Each result equals the scalar
// formula bit for bit, also when a source overlaps the destination (a source that
// trails the destination is then read pixel by pixel, as a plain loop would).
#pragma once

#include <cstdint>

#include "graphics/PixelMath.h"

namespace tw {

// The long forms, four pixels at a time; a solid side is given as a value.
void overRun4(const std::uint32_t* top, const std::uint32_t* bottom, std::uint32_t* dst, std::int32_t n);
void overRun4(std::uint32_t top, const std::uint32_t* bottom, std::uint32_t* dst, std::int32_t n);
void overRun4(const std::uint32_t* top, std::uint32_t bottom, std::uint32_t* dst, std::int32_t n);
void scaleRun4(const std::uint32_t* colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n);
void scaleRun4(std::uint32_t colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n);
void scaleRun4(const std::uint32_t* colour, std::uint8_t mask, std::uint32_t* dst, std::int32_t n);
void overScaledRun4(std::uint32_t colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n);

// Pixel k of a run side: a run's pixel, or a solid side's value.
inline std::uint32_t runPixel(const std::uint32_t* p, std::int32_t k) { return p[k]; }
inline std::uint32_t runPixel(const std::uint8_t* p, std::int32_t k) { return p[k]; }
inline std::uint32_t runPixel(std::uint32_t v, std::int32_t) { return v; }

// Runs of up to three pixels, the most common along edges, are done in line: a call
// would cost more than their pixels.
template <class Op>
[[gnu::always_inline]] inline bool doneInLine(std::int32_t n, Op op) {
    if (n > 3) return false;
    if (n > 0) op(0);
    if (n > 1) op(1);
    if (n > 2) op(2);
    return true;
}

// dst[k] = over32(top[k], bottom[k]), either side possibly solid.
template <class Top, class Bottom>
[[gnu::always_inline]] inline void overRun(Top top, Bottom bottom, std::uint32_t* dst, std::int32_t n) {
    if (!doneInLine(n, [&](std::int32_t k) { dst[k] = over32(runPixel(top, k), runPixel(bottom, k)); })) {
        overRun4(top, bottom, dst, n);
    }
}

// dst[k] = scale32(colour[k], mask[k]), either side possibly solid.
template <class Colour, class Mask>
[[gnu::always_inline]] inline void scaleRun(Colour colour, Mask mask, std::uint32_t* dst, std::int32_t n) {
    if (!doneInLine(n, [&](std::int32_t k) { dst[k] = scale32(runPixel(colour, k), runPixel(mask, k)); })) {
        scaleRun4(colour, mask, dst, n);
    }
}

// dst[k] = over32(scale32(colour, mask[k]), dst[k]): a colour through a coverage over a
// destination in place, in one pass.
[[gnu::always_inline]] inline void overScaledRun(std::uint32_t colour, const std::uint8_t* mask, std::uint32_t* dst,
                                                 std::int32_t n) {
    if (!doneInLine(n, [&](std::int32_t k) { dst[k] = over32(scale32(colour, mask[k]), dst[k]); })) {
        overScaledRun4(colour, mask, dst, n);
    }
}

}  // namespace tw
