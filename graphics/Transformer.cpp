#include "graphics/Transformer.h"

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

constexpr double kGridNudge = 1.1641532182693481e-10;  // 2^-33: grid points stay on their grid

std::int64_t toFixed(double v) {
    const double f = std::floor((v + kGridNudge) * 4294967296.0);
    if (!(f > -4.6e18)) return std::isnan(f) ? 0 : std::int64_t(-4.6e18);
    if (f > 4.6e18) return std::int64_t(4.6e18);
    return std::int64_t(f);
}

std::int64_t wrapIndex(std::int64_t i, std::int64_t w) { return i >= 0 ? i % w : (w - (-1 - i) % w) - 1; }

// Blend of a and b with b weighing w/256.
inline std::uint32_t lerp(std::uint32_t a, std::uint32_t b, std::uint32_t w) {
    const std::uint32_t v = 256 - w;
    const std::uint32_t rb = (((a & 0x00FF00FFu) * v + (b & 0x00FF00FFu) * w) >> 8) & 0x00FF00FFu;
    const std::uint32_t ag = (((a >> 8) & 0x00FF00FFu) * v + ((b >> 8) & 0x00FF00FFu) * w) & 0xFF00FF00u;
    return rb | ag;
}
inline std::uint8_t lerp(std::uint8_t a, std::uint8_t b, std::uint32_t w) {
    return std::uint8_t((a * (256 - w) + b * w) >> 8);
}

inline std::uint32_t weight(std::int64_t v) { return std::uint32_t(v >> 24) & 0xFFu; }
inline std::int64_t whole(std::int64_t v) { return v >> 32; }
inline std::int64_t step(std::int64_t v, std::int64_t by, std::int64_t count) {
    return std::int64_t(std::uint64_t(v) + std::uint64_t(by) * std::uint64_t(count));
}

constexpr std::uint32_t kLeft = 1, kRight = 2, kAbove = 4, kBelow = 8;

}  // namespace

template <class Pixel>
Transformer<Pixel>::Transformer(const Raster<Pixel>& source, bool wrap, const Matrix& matrix) : source_(source), wrap_(wrap) {
    Matrix inverse;
    const IntRect& b = source.bounds();
    if (b.isEmpty() || !matrix.invert(inverse)) return;
    const double* m = inverse.m;
    // Pixel centres map to pixel centres.
    dxx_ = toFixed(m[0]);
    dxy_ = toFixed(m[1]);
    dyx_ = toFixed(m[3]);
    dyy_ = toFixed(m[4]);
    offX_ = toFixed(m[0] * 0.5 + m[1] * 0.5 + m[2] - 0.5 - b.left);
    offY_ = toFixed(m[3] * 0.5 + m[4] * 0.5 + m[5] - 0.5 - b.top);
    pixelStep_ = whole(dyx_) * source.stride() + whole(dxx_);
    const std::int64_t fraction = 0xFFFFFFFF;
    const bool fracX = (dxx_ & fraction) || (dxy_ & fraction) || weight(offX_);
    const bool fracY = (dyx_ & fraction) || (dyy_ & fraction) || weight(offY_);
    const std::int64_t one = std::int64_t(1) << 32;
    if (!fracX && !fracY) {
        mode_ = dxx_ == one && dyx_ == 0 && dxy_ == 0 && dyy_ == one ? offset : nearest;
    } else if ((whole(dxx_) == -1 || whole(dxx_) == 0) && dyx_ == 0) {
        mode_ = magnified;
    } else {
        mode_ = fracY ? Mode(vertical + (fracX ? 1 : 0)) : horizontal;
    }
    reachX_ = fracX ? 1 : 0;
    reachY_ = fracY ? 1 : 0;
    if (wrap_) {
        bounds_ = FullRect;
        return;
    }
    double x0 = 1e300, y0 = 1e300, x1 = -1e300, y1 = -1e300;
    for (const double cx : {double(b.left), double(b.right())}) {
        for (const double cy : {double(b.top), double(b.bottom())}) {
            const Point p = matrix.apply(cx, cy);
            x0 = std::min(x0, p.x), y0 = std::min(y0, p.y), x1 = std::max(x1, p.x), y1 = std::max(y1, p.y);
        }
    }
    const auto clampInt = [](double v) { return v > -1073741824.0 ? (v < 1073741823.0 ? v : 1073741823.0) : -1073741824.0; };
    const double left = clampInt(std::floor(x0)) - 1, top = clampInt(std::floor(y0)) - 1;
    const double right = clampInt(std::ceil(x1)) + 2, bottom = clampInt(std::ceil(y1)) + 2;
    bounds_ = intersectionOf(FullRect, IntRect{std::int32_t(left), std::int32_t(top), std::int32_t(right - left),
                                               std::int32_t(bottom - top)});
}

template <class Pixel>
typename Transformer<Pixel>::Sample Transformer<Pixel>::sampleAt(std::int32_t x, std::int32_t y) const {
    return Sample{step(step(offX_, dxx_, std::uint64_t(std::int64_t(x))), dxy_, std::uint64_t(std::int64_t(y))),
                  step(step(offY_, dyx_, std::uint64_t(std::int64_t(x))), dyy_, std::uint64_t(std::int64_t(y)))};
}

// Which sides of the source a sample lies wholly beyond, neighbours included.
template <class Pixel>
std::uint32_t Transformer<Pixel>::sides(const Sample& s) const {
    const std::int64_t ix = whole(s.x), iy = whole(s.y);
    const IntRect& b = source_.bounds();
    return (ix + reachX_ < 0 ? kLeft : 0) | (ix >= b.width ? kRight : 0) | (iy + reachY_ < 0 ? kAbove : 0) |
           (iy >= b.height ? kBelow : 0);
}

// Whether the sample and the neighbours it reads all lie in the source.
template <class Pixel>
bool Transformer<Pixel>::inside(const Sample& s) const {
    const std::int64_t ix = whole(s.x), iy = whole(s.y);
    const IntRect& b = source_.bounds();
    return ix >= 0 && iy >= 0 && ix + reachX_ < b.width && iy + reachY_ < b.height;
}

template <class Pixel>
Pixel Transformer<Pixel>::pixelOrZero(std::int64_t ix, std::int64_t iy) const {
    const IntRect& b = source_.bounds();
    if (ix < 0 || iy < 0 || ix >= b.width || iy >= b.height) return 0;
    return *source_.at(b.left + std::int32_t(ix), b.top + std::int32_t(iy));
}

// Samples blend vertically first, then horizontally, in every mode, so that the
// magnified mode's columns held per source pixel give the same bits as the others.
// The edge path: neighbours outside the source count as transparent, so that a picture
// fades out across its border pixels.
template <class Pixel>
Pixel Transformer<Pixel>::careful(const Sample& s) const {
    const std::int64_t ix = whole(s.x), iy = whole(s.y);
    const std::uint32_t fx = reachX_ ? weight(s.x) : 0, fy = reachY_ ? weight(s.y) : 0;
    const Pixel left = lerp(pixelOrZero(ix, iy), pixelOrZero(ix, iy + 1), fy);
    const Pixel right = lerp(pixelOrZero(ix + 1, iy), pixelOrZero(ix + 1, iy + 1), fy);
    return lerp(left, right, fx);
}

template <class Pixel>
Pixel Transformer<Pixel>::wrapped(const Sample& s) const {
    const IntRect& b = source_.bounds();
    const std::int64_t ix = wrapIndex(whole(s.x), b.width), iy = wrapIndex(whole(s.y), b.height);
    const auto at = [&](std::int64_t x, std::int64_t y) { return *source_.at(b.left + std::int32_t(x), b.top + std::int32_t(y)); };
    if (mode_ == nearest) return at(ix, iy);
    const std::int64_t nx = ix + 1 == b.width ? 0 : ix + 1, ny = iy + 1 == b.height ? 0 : iy + 1;
    const std::uint32_t fx = weight(s.x), fy = weight(s.y);
    return lerp(lerp(at(ix, iy), at(ix, ny), fy), lerp(at(nx, iy), at(nx, ny), fy), fx);
}

// The inner loops, for samples whose neighbours all lie in the source.
template <class Pixel>
void Transformer<Pixel>::fast(Sample s, std::int32_t n, Pixel* out) const {
    const IntRect& b = source_.bounds();
    const std::int32_t stride = source_.stride();
    const Pixel* base = source_.at(b.left, b.top);
    switch (mode_) {
    case nearest: {
        const Pixel* p = base + whole(s.y) * stride + whole(s.x);
        for (std::int32_t k = 0; k < n; ++k, p += pixelStep_) out[k] = *p;
        break;
    }
    case magnified: {
        // One row pair for the whole run; each source column is blended vertically once.
        const Pixel* row = base + whole(s.y) * stride;
        const std::uint32_t fy = weight(s.y);
        const std::int32_t below = reachY_ ? stride : 0;
        std::int64_t column = whole(s.x);
        Pixel left = lerp(row[column], row[column + below], fy);
        Pixel right = lerp(row[column + reachX_], row[column + reachX_ + below], fy);
        for (std::int32_t k = 0; k < n; ++k, s.x += dxx_) {
            const std::int64_t ix = whole(s.x);
            if (ix != column) {
                left = ix == column + 1 ? right : lerp(row[ix], row[ix + below], fy);
                column = ix;
                right = lerp(row[ix + reachX_], row[ix + reachX_ + below], fy);
            }
            out[k] = lerp(left, right, weight(s.x));
        }
        break;
    }
    case horizontal:
        for (std::int32_t k = 0; k < n; ++k, s.x += dxx_, s.y += dyx_) {
            const Pixel* p = base + whole(s.y) * stride + whole(s.x);
            out[k] = lerp(p[0], p[1], weight(s.x));
        }
        break;
    case vertical:
        for (std::int32_t k = 0; k < n; ++k, s.x += dxx_, s.y += dyx_) {
            const Pixel* p = base + whole(s.y) * stride + whole(s.x);
            out[k] = lerp(p[0], p[stride], weight(s.y));
        }
        break;
    default:
        for (std::int32_t k = 0; k < n; ++k, s.x += dxx_, s.y += dyx_) {
            const Pixel* p = base + whole(s.y) * stride + whole(s.x);
            const std::uint32_t fy = weight(s.y);
            out[k] = lerp(lerp(p[0], p[stride], fy), lerp(p[1], p[stride + 1], fy), weight(s.x));
        }
        break;
    }
}

template <class Pixel>
void Transformer<Pixel>::renderWrapped(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) {
    const IntRect& b = source_.bounds();
    const std::uint32_t opaque = source_.opaque() ? kSpanOpaque : 0u;
    Sample s = sampleAt(x, y);
    if (mode_ == offset) {
        // Straight runs of source rows, cut where the pattern repeats.
        const std::int64_t iy = wrapIndex(whole(s.y), b.height);
        std::int64_t ix = wrapIndex(whole(s.x), b.width);
        for (std::int32_t pos = 0; pos < length;) {
            const std::int32_t n = std::int32_t(std::min<std::int64_t>(length - pos, b.width - ix));
            out.append(std::uint32_t(n) | opaque, source_.at(b.left + std::int32_t(ix), b.top + std::int32_t(iy)));
            pos += n;
            ix = 0;
        }
        return;
    }
    Pixel* p = out.pixelCursor;
    for (std::int32_t k = 0; k < length; ++k, s.x += dxx_, s.y += dyx_) p[k] = wrapped(s);
    out.append(std::uint32_t(length) | opaque, p);
}

template <class Pixel>
void Transformer<Pixel>::render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) {
    if (mode_ == nothing || !bounds_.touchesRow(x, y, length)) {
        out.appendTransparent(length);
        return;
    }
    if (wrap_) {
        renderWrapped(x, y, length, out);
        return;
    }
    const Sample origin = sampleAt(x, y);
    const auto at = [&](std::int32_t i) { return Sample{step(origin.x, dxx_, i), step(origin.y, dyx_, i)}; };
    const std::uint32_t opaque = source_.opaque() ? kSpanOpaque : 0u;
    for (std::int32_t pos = 0; pos < length;) {
        // Stretches wholly beyond one side, found by halving steps.
        const std::int32_t skipFrom = pos;
        for (std::int32_t k = 8; k >= 0; --k) {
            const std::int32_t n = 1 << k;
            while (pos + n <= length && (sides(at(pos)) & sides(at(pos + n - 1)))) pos += n;
        }
        if (pos > skipFrom) {
            out.appendTransparent(pos - skipFrom);
            continue;
        }
        // The longest run with all neighbours inside goes through the mode's loop.
        std::int32_t end = pos;
        if (inside(at(pos))) {
            for (std::int32_t k = 8; k >= 0; k -= 2) {
                const std::int32_t n = 1 << k;
                while (end + n <= length && inside(at(end + n - 1))) end += n;
            }
        }
        if (end > pos) {
            const std::int32_t n = end - pos;
            if (mode_ == offset) {
                const Sample s = at(pos);
                const IntRect& b = source_.bounds();
                out.append(std::uint32_t(n) | opaque, source_.at(b.left + std::int32_t(whole(s.x)), b.top + std::int32_t(whole(s.y))));
            } else {
                fast(at(pos), n, out.pixelCursor);
                out.append(std::uint32_t(n) | opaque, out.pixelCursor);
            }
            pos = end;
            continue;
        }
        // Edge pixels, one by one, up to the next stretch inside or beyond.
        Pixel* p = out.pixelCursor;
        std::int32_t n = 0;
        while (pos + n < length) {
            const Sample s = at(pos + n);
            if (n > 0 && (inside(s) || sides(s))) break;
            p[n++] = careful(s);
        }
        out.append(std::uint32_t(n), p);
        pos += n;
    }
}

template class Transformer<std::uint32_t>;
template class Transformer<std::uint8_t>;

}  // namespace tw
