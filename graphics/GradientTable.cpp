#include "graphics/GradientTable.h"

#include <cmath>
#include <vector>

#include "graphics/PixelMath.h"

namespace tw {

namespace {

// Fills entries[0..255] channel by channel; `channels` bytes per value. The ends are
// held flat by repeating the first and last stops at positions 0 and 256.
template <class Entry>
void fill(std::span<const GradientStop> stops, Entry* entries, int channels) {
    struct Key {
        std::int64_t pos;
        std::uint32_t value;
    };
    std::vector<Key> keys;
    keys.reserve(stops.size() + 2);
    keys.push_back({0, stops.front().value});
    for (const GradientStop& s : stops) {
        const double p = std::floor(s.position * 255 + 0.5);
        keys.push_back({std::int64_t(p < 0 ? 0 : p > 255 ? 255 : p), s.value});
    }
    keys.push_back({256, stops.back().value});
    for (std::size_t k = 0; k + 1 < keys.size(); ++k) {
        const Key a = keys[k], b = keys[k + 1];
        if (b.pos <= a.pos) continue;
        const std::int64_t slope = 0x40000000 / (b.pos - a.pos);
        for (std::int64_t i = a.pos; i < b.pos; ++i) {
            const std::int64_t w = ((i - a.pos) * slope) >> 22;
            std::uint32_t v = 0;
            for (int c = 0; c < channels; ++c) {
                const std::int64_t ca = (a.value >> (8 * c)) & 0xFF, cb = (b.value >> (8 * c)) & 0xFF;
                v |= std::uint32_t(ca + (((cb - ca) * w) >> 8)) << (8 * c);
            }
            entries[i] = Entry(v);
        }
    }
}

bool anyNonZero(std::span<const GradientStop> stops) {
    for (const GradientStop& s : stops) {
        if (s.value != 0) return true;
    }
    return false;
}

}  // namespace

GradientTable8::GradientTable8(std::span<const GradientStop> stops) {
    fill(stops, entries, 1);
    visible = anyNonZero(stops);
}

GradientTable32::GradientTable32(std::span<const GradientStop> stops) {
    fill(stops, entries, 4);
    visible = anyNonZero(stops);
    for (std::uint32_t e : entries) allOpaque &= isOpaque(e);
}

}  // namespace tw
