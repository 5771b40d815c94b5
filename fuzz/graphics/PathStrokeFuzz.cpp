// Builds random paths from the input (lines, curves, arcs, closes, extreme values),
// transforms, dashes and strokes them, and rasterises the outline in random strips:
// no crash, no overflow, spans that cover each request exactly, coverage in range.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "graphics/PolygonMask.h"
#include "graphics/VectorPath.h"

namespace {

class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    bool empty() const { return pos_ >= size_; }
    std::uint8_t byte() { return pos_ < size_ ? data_[pos_++] : 0; }
    // Mostly ordinary coordinates, now and then one that tests the limits.
    double coordinate() {
        const std::uint8_t kind = byte();
        const std::int16_t v = std::int16_t(byte() | (byte() << 8));
        switch (kind) {
        case 0: return std::numeric_limits<double>::quiet_NaN();
        case 1: return std::numeric_limits<double>::infinity();
        case 2: return -1e30;
        case 3: return 1e-300;
        default: return v / 256.0;
        }
    }
    double positive(double lo, double hi) { return lo + (hi - lo) * byte() / 255.0; }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t pos_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes in(data, size);
    const double quality = in.positive(0.01, 8);
    tw::VectorPath path;
    for (int count = 0; !in.empty() && count < 64; ++count) {
        switch (in.byte() % 9) {
        case 0: path.moveTo(in.coordinate(), in.coordinate()); break;
        case 1:
        case 2: path.lineTo(in.coordinate(), in.coordinate()); break;
        case 3: {
            const double cx = in.coordinate(), cy = in.coordinate();
            path.quadTo(cx, cy, in.coordinate(), in.coordinate(), quality);
            break;
        }
        case 4: {
            const double a = in.coordinate(), b = in.coordinate(), c = in.coordinate(), d = in.coordinate();
            path.cubicTo(a, b, c, d, in.coordinate(), in.coordinate(), quality);
            break;
        }
        case 5: {
            const double cx = in.coordinate(), cy = in.coordinate();
            path.arcSweep(cx, cy, in.coordinate() / 16, in.positive(0.05, 4), quality);
            break;
        }
        case 6: path.close(); break;
        case 7: {
            const double x = in.coordinate(), y = in.coordinate();
            path.addStar(x, y, in.byte() % 24, in.coordinate(), in.coordinate(), in.coordinate());
            break;
        }
        default: {
            const double x = in.coordinate(), y = in.coordinate();
            path.addRoundedRect(x, y, in.coordinate(), in.coordinate(), in.coordinate(), in.coordinate(), quality);
            break;
        }
        }
    }
    const tw::Matrix m{{in.positive(-2, 2), in.positive(-2, 2), in.positive(-20, 20), in.positive(-2, 2),
                        in.positive(-2, 2), in.positive(-20, 20)}};
    path.transform(m);
    if (in.byte() & 1) path.dash(in.positive(0, 20), in.positive(0, 20), in.positive(-40, 40));
    path.stroke(in.positive(0, 12), tw::StrokeCaps(in.byte() % 3), tw::StrokeJoints(in.byte() % 3), in.positive(1, 10), quality);

    tw::PolygonMask mask(path, tw::IntRect{-10, -10, 160, 40}, tw::FillRule::nonZero());
    const tw::IntRect b = mask.calcBounds();
    tw::Span8 spans[tw::kMaxSpanLength];
    std::uint8_t pixels[tw::kMaxSpanLength];
    std::uint32_t strip = 1 + in.byte();
    for (std::int32_t y = b.top; y < b.bottom(); ++y) {
        for (std::int32_t x = b.left; x < b.right();) {
            const std::int32_t length = std::int32_t(std::min<std::int64_t>(strip, b.right() - x));
            tw::SpanBuffer8 out(spans, pixels);
            mask.render(x, y, length, out);
            if (out.spanCursor - spans != length || out.pixelCursor - pixels != length) __builtin_trap();
            for (std::int32_t i = 0; i < length;) {
                const std::int32_t n = spans[i].length();
                if (n <= 0 || i + n > length || spans[i + n - 1].lengthFlags != spans[i].lengthFlags) __builtin_trap();
                if (spans[i].opaque() && (spans[i].solid() ? *spans[i].pixels : 255) != 255) __builtin_trap();
                i += n;
            }
            x += length;
            strip = 1 + (strip * 37 + 11) % 256;
        }
    }
    return 0;
}
