#include "graphics/RadialRamp8.h"

#include <cmath>

namespace tw {

namespace {

// 255 - sqrt(i / 4095) * 255, rounded: the byte for a squared radius.
struct RootTable {
    std::uint8_t t[4096];
    RootTable() {
        for (int i = 0; i < 4096; ++i) t[i] = std::uint8_t(255 - std::floor(std::sqrt(i / 4095.0) * 255 + 0.5));
    }
};

const RootTable& rootTable() {
    static const RootTable table;
    return table;
}

std::int32_t clampInt(double v) {
    return v > -1073741824.0 ? (v < 1073741823.0 ? std::int32_t(v) : 1073741823) : -1073741824;
}

}  // namespace

RadialRamp8::RadialRamp8(double cx, double cy, double rx, double ry)
    : cx_(cx), cy_(cy), rx_(rx), ry_(ry), invRx_(1073741824.0 / (rx * rx)), invRy_(1073741824.0 / (ry * ry)) {
    const std::int32_t left = clampInt(std::floor(cx - rx)), top = clampInt(std::floor(cy - ry));
    const std::int32_t right = clampInt(std::ceil(cx + rx)), bottom = clampInt(std::ceil(cy + ry));
    bounds_ = IntRect{left, top, right - left, bottom - top};
}

void RadialRamp8::render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer8& out) {
    const double dy = y + 0.5 - cy_, dy2 = dy * dy;
    const double inside = 1 - dy2 / (ry_ * ry_);
    const double half = inside > 1e-8 ? rx_ * std::sqrt(inside) : 0;
    double from = std::floor(cx_ - x - half + 0.5), to = std::floor(cx_ - x + half + 0.5);
    from = from < 0 ? 0 : from > length ? length : from;
    to = to < from ? from : to > length ? length : to;
    const std::int32_t start = std::int32_t(from), end = std::int32_t(to);
    if (start > 0) out.appendTransparent(start);
    if (end > start) {
        const std::uint8_t* t = rootTable().t;
        // v(i) = dx(i)^2 * invRx + dy^2 * invRy, advanced by second differences.
        const double dx = x + start + 0.5 - cx_;
        double v = dx * dx * invRx_ + dy2 * invRy_;
        double dv = (2 * dx + 1) * invRx_;
        const double ddv = 2 * invRx_;
        std::uint8_t* p = out.pixelCursor;
        for (std::int32_t i = 0; i < end - start; ++i, v += dv, dv += ddv) {
            const std::int64_t q = v <= 0 ? 0 : v >= 1073741823.0 ? 0x3FFFFFFF : std::int64_t(v);
            p[i] = q < 0x400000 ? std::uint8_t((t[q >> 10] + 0xEF1) >> 4) : t[q >> 18];
        }
        out.append(std::uint32_t(end - start), p);
    }
    if (end < length) out.appendTransparent(length - end);
}

}  // namespace tw
