// The pixel arithmetic of the raster core, written out so that every renderer computes
// the same bits: coverage products, "over", scaling by a mask, and saturating sums.
// Colour pixels are premultiplied 0xAARRGGBB words; mask pixels are coverage bytes.
#pragma once

#include <cstdint>

namespace tw {

// Maps 0..255 to a multiplier 0..256 so that (a256(255) * x) >> 8 is exactly x.
constexpr std::uint32_t a256(std::uint32_t a) { return a + (a != 0); }

constexpr std::uint8_t mul8(std::uint32_t a, std::uint32_t b) {
    return static_cast<std::uint8_t>((a256(a) * b) >> 8);
}

// The bottom scaled by the top's alpha is taken away and the top added; two channels
// go through each multiply, and nothing saturates (premultiplied input cannot carry).
constexpr std::uint32_t over32(std::uint32_t top, std::uint32_t bottom) {
    const std::uint32_t a = a256(top >> 24);
    return top + bottom - ((((bottom & 0x00FF00FFu) * a) >> 8) & 0x00FF00FFu)
           - ((((bottom >> 8) & 0x00FF00FFu) * a) & 0xFF00FF00u);
}

// A colour pixel scaled by a coverage byte.
constexpr std::uint32_t scale32(std::uint32_t p, std::uint32_t m) {
    const std::uint32_t s = a256(m);
    const std::uint32_t hi = ((p >> 8) & 0x00FF00FFu) * s;
    const std::uint32_t lo = ((p & 0x00FF00FFu) * s) >> 8;
    return (hi & 0xFF00FF00u) | (lo & 0x00FF00FFu);
}

// Channel by channel product, each channel of q taken as a 0..256 multiplier.
constexpr std::uint32_t mul32(std::uint32_t p, std::uint32_t q) {
    std::uint32_t r = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        r |= ((a256((q >> shift) & 0xFFu) * ((p >> shift) & 0xFFu)) >> 8) << shift;
    }
    return r;
}

constexpr std::uint8_t add8(std::uint32_t a, std::uint32_t b) {
    const std::uint32_t s = a + b;
    return static_cast<std::uint8_t>(s > 255 ? 255 : s);
}

// Per-byte saturating add in one word: the low seven bits of each byte are summed, and
// the carries out of bit 7 are turned into 0xFF bytes.
constexpr std::uint32_t add32(std::uint32_t a, std::uint32_t b) {
    const std::uint32_t h1 = a & 0x80808080u;
    const std::uint32_t h2 = b & 0x80808080u;
    const std::uint32_t s = (a & 0x7F7F7F7Fu) + (b & 0x7F7F7F7Fu);
    const std::uint32_t h = h1 | h2;
    return (((((h & s) | (h1 & h2)) >> 7) + 0x7F7F7F7Fu) ^ 0x7F7F7F7Fu) | h | s;
}

// Opaque tests. An alpha of 254 counts as opaque so that the colour test is one compare.
constexpr bool isOpaque(std::uint32_t p) { return p >= 0xFE000000u; }
constexpr bool isOpaque(std::uint8_t p) { return p == 255; }

// The value whose product with anything is that thing: all bits set.
template <class Pixel> inline constexpr Pixel kFullPixel = static_cast<Pixel>(~Pixel(0));

}  // namespace tw
