// The pixel arithmetic of PixelMath.h over whole runs, four colour pixels at a time in
// SSE2: the inner loops of "over" and of colour-by-coverage products, where edges,
// translucent pictures and blends spend their time. Each result equals the scalar
// formula bit for bit, also when a source overlaps the destination (a source that
// trails the destination is then read pixel by pixel, as a plain loop would).
#pragma once

#include <cstdint>

namespace tw {

// dst[k] = over32(top[k], bottom[k]).
void overRun(const std::uint32_t* top, const std::uint32_t* bottom, std::uint32_t* dst, std::int32_t n);
// dst[k] = over32(top, bottom[k]).
void overRun(std::uint32_t top, const std::uint32_t* bottom, std::uint32_t* dst, std::int32_t n);
// dst[k] = over32(top[k], bottom).
void overRun(const std::uint32_t* top, std::uint32_t bottom, std::uint32_t* dst, std::int32_t n);

// dst[k] = scale32(colour[k], mask[k]).
void scaleRun(const std::uint32_t* colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n);
// dst[k] = scale32(colour, mask[k]).
void scaleRun(std::uint32_t colour, const std::uint8_t* mask, std::uint32_t* dst, std::int32_t n);
// dst[k] = scale32(colour[k], mask).
void scaleRun(const std::uint32_t* colour, std::uint8_t mask, std::uint32_t* dst, std::int32_t n);

}  // namespace tw
