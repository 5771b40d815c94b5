#include "graphics/LinearRamp8.h"

#include <algorithm>

namespace tw {

namespace {

const std::uint8_t kFull = 255;

std::int64_t toInt32(double v) {
    if (!(v > -2147483647.0)) return v != v ? 0 : -2147483647;
    return v < 2147483647.0 ? std::int64_t(v) : 2147483647;
}

}  // namespace

void LinearRamp8::render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer8& out) {
    std::int64_t value = toInt32((y - y0_) * dy_ + (x - x0_) * dx_);
    const std::int64_t step = toInt32(dx_);
    for (std::int32_t pos = 0; pos < length;) {
        const std::int32_t left = length - pos;
        if (value <= 0 || value >= 0x10000) {
            // A flat end: its length by one division.
            std::int64_t n = left;
            if (value <= 0 && step > 0) n = (1 - value + step - 1) / step;
            if (value >= 0x10000 && step < 0) n = (value - 0xFFFF - step - 1) / -step;
            n = std::min<std::int64_t>(n, left);
            if (value <= 0) {
                out.appendTransparent(std::int32_t(n));
            } else {
                out.appendSolid(std::int32_t(n), &kFull);
            }
            pos += std::int32_t(n);
            value += step * n;
            continue;
        }
        std::uint8_t* p = out.pixelCursor;
        std::int32_t n = 0;
        while (n < left && value > 0 && value < 0x10000) {
            p[n++] = std::uint8_t(value >> 8);
            value += step;
        }
        out.append(std::uint32_t(n), p);
        pos += n;
    }
}

}  // namespace tw
