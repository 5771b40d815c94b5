#include "graphics/PolygonMask.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace tw {

namespace {

// Vertices are limited to +-2^21 pixels, so that 24.8 differences shifted by 32 bits
// and their products with row heights stay within 64 bits.
constexpr double kCoordinateLimit = 2097152.0;

std::int32_t toFixed(double v) {
    if (!(v > -kCoordinateLimit)) v = std::isnan(v) ? 0 : -kCoordinateLimit;
    if (v > kCoordinateLimit) v = kCoordinateLimit;
    return std::int32_t(std::floor(v * 256 + 0.5));
}

// One coverage byte of every value, for solid spans.
struct ByteValues {
    std::uint8_t values[256];
    constexpr ByteValues() : values() {
        for (int i = 0; i < 256; ++i) values[i] = std::uint8_t(i);
    }
};
constexpr ByteValues kBytes;

constexpr std::int32_t kRetired = -0x7FFFFFFF;

}  // namespace

PolygonMask::PolygonMask(const VectorPath& path, const IntRect& clip, const FillRule& rule)
    : rule_(rule),
      ruleKind_(&rule == &FillRule::nonZero()  ? RuleKind::nonZero
                : &rule == &FillRule::evenOdd() ? RuleKind::evenOdd
                                                : RuleKind::other) {
    const std::int64_t clipTop = std::int64_t(clip.top) * 256, clipBottom = clip.bottom() * 256;
    const std::int64_t clipRight = clip.right() * 256;
    std::int32_t minX = 0x7FFFFFFF, minY = 0x7FFFFFFF, maxX = -0x7FFFFFFF, maxY = -0x7FFFFFFF;
    std::int32_t px = 0, py = 0;
    segments_.reserve(path.instructions.size() + 1);
    for (const PathInstruction& in : path.instructions) {
        const std::int32_t x = toFixed(in.x), y = toFixed(in.y);
        if (in.type != PathInstruction::move) {
            std::int32_t x0 = px, y0 = py, x1 = x, y1 = y;
            const bool rows = y0 != y1 && std::max(y0, y1) > clipTop && std::min(y0, y1) < clipBottom;
            if (rows && std::min(x0, x1) >= clipRight) {
                // Wholly right of the clip: no pixel of it is asked for, but the shape reaches the clip's edge.
                maxX = std::max({maxX, x0, x1});
                minY = std::min({minY, y0, y1});
                maxY = std::max({maxY, y0, y1});
            } else if (rows) {
                std::int32_t sign = 1;
                if (y0 > y1) {
                    std::swap(x0, x1);
                    std::swap(y0, y1);
                    sign = -1;
                }
                const std::int64_t dx = std::int64_t(x1) - x0, dy = std::int64_t(y1) - y0;
                PolygonSegment s{};
                s.topY = y0;
                s.bottomY = y1;
                s.xAtTop = std::int64_t(x0) << 32;
                s.currentX = s.xAtTop;
                s.dxdy = (dx * 4294967296LL) / dy;
                std::int32_t area = 32768;
                if (dx != 0) {
                    const std::int64_t ratio = (dy * 4294967296LL) / (dx < 0 ? -dx : dx);
                    if ((ratio >> 32) < 32768) area = std::int32_t(ratio >> 16);
                }
                s.areaPerPixel = sign * area;
                s.winding = sign;
                s.leftPixel = std::min(x0, x1) >> 8;
                segments_.push_back(s);
                minX = std::min({minX, x0, x1});
                maxX = std::max({maxX, x0, x1});
                minY = std::min(minY, y0);
                maxY = std::max(maxY, y1);
            }
        }
        px = x;
        py = y;
    }
    PolygonSegment sentinel{};
    sentinel.topY = 0x7FFFFFFF;
    segments_.push_back(sentinel);
    for (PolygonSegment& s : segments_) byTop_.push_back(&s);
    std::sort(byTop_.begin(), byTop_.end() - 1, [](const PolygonSegment* a, const PolygonSegment* b) {
        return (a->topY >> 8) != (b->topY >> 8) ? (a->topY >> 8) < (b->topY >> 8) : a->leftPixel < b->leftPixel;
    });
    if (segments_.size() > 1 && minX <= maxX) {
        const IntRect vertices{minX >> 8, minY >> 8, ((maxX + 255) >> 8) - (minX >> 8), ((maxY + 255) >> 8) - (minY >> 8)};
        bounds_ = intersectionOf(vertices, clip);
    }
    delta_.assign(std::size_t(std::min(std::max(bounds_.width, 0), kMaxSpanLength)) + 2, 0);
    restart();
}

void PolygonMask::restart() {
    active_ = byTop_;
    firstActive_ = 0;
    nextToActivate_ = 0;
    lastRow_ = std::int64_t(bounds_.top) - 1;
}

void PolygonMask::advanceTo(std::int32_t y) {
    const std::int32_t rowTop = y * 256, rowBottom = rowTop + 256;
    while (active_[nextToActivate_]->topY < rowBottom) ++nextToActivate_;
    for (std::size_t i = firstActive_; i < nextToActivate_; ++i) {
        PolygonSegment& s = *active_[i];
        if (s.bottomY <= rowTop) {
            s.leftPixel = kRetired;
            std::swap(active_[i], active_[firstActive_]);
            ++firstActive_;
            continue;
        }
        const bool startsAbove = s.topY < rowTop;
        if (startsAbove) s.currentX = s.xAtTop + s.dxdy * (rowTop - s.topY);
        const std::int64_t start = startsAbove ? s.currentX : s.xAtTop;
        const std::int32_t sign = s.winding;
        std::int64_t end;
        if (s.topY <= rowTop && s.bottomY >= rowBottom) {
            end = start + (s.dxdy << 8);
            s.cover = sign * 0x10000;
        } else {
            const std::int32_t h = std::min(s.bottomY, rowBottom) - std::max(s.topY, rowTop);
            end = start + s.dxdy * h;
            s.cover = sign * 0x100 * h;
        }
        s.leftX = std::int32_t(std::min(start, end) >> 32);
        s.rightX = std::int32_t(std::max(start, end) >> 32);
        s.leftPixel = s.leftX >> 8;
        s.rightPixel = s.rightX >> 8;
    }
    sortActive();
    lastRow_ = y;
}

// Insertion sort by left pixel: consecutive rows leave the edges nearly in order. An
// order scrambled by many crossing edges falls back to a full sort.
void PolygonMask::sortActive() {
    PolygonSegment** a = active_.data() + firstActive_;
    const std::size_t n = nextToActivate_ - firstActive_;
    std::size_t moves = 0;
    const std::size_t budget = 8 * n + 64;
    for (std::size_t i = 1; i < n; ++i) {
        PolygonSegment* s = a[i];
        std::size_t j = i;
        while (j > 0 && a[j - 1]->leftPixel > s->leftPixel) {
            a[j] = a[j - 1];
            --j;
            if (++moves > budget) break;
        }
        a[j] = s;
        if (moves > budget) {
            std::sort(a, a + n, [](const PolygonSegment* p, const PolygonSegment* q) { return p->leftPixel < q->leftPixel; });
            return;
        }
    }
}

namespace {

// Adds the coverage of an edge that spans pixels l .. r (l < r) of the strip, with 8-bit
// fractions fl and fr at its ends, to the deltas of a strip `length` pixels long.
void addSpread(std::uint32_t* delta, std::int64_t l, std::int64_t r, std::int64_t fl, std::int64_t fr,
               std::int64_t cov, std::int64_t area, std::int32_t length) {
    const auto add = [&](std::int64_t i, std::int64_t v) {
        if (i > length) return;
        delta[i < 0 ? 0 : i] += std::uint32_t(v);
    };
    std::int64_t a = ((0x100 - fl) * area) >> 8;
    // A steep edge whose ends round into two pixels cannot give more than its row.
    if ((a < 0 ? -a : a) > (cov < 0 ? -cov : cov)) a = cov;
    const std::int64_t b = ((0x100 - fl) * a) >> 9;
    add(l, b);
    add(l + 1, a - b);
    const std::int64_t n = r - l - 1;
    if (n > 0) {
        const std::int64_t half = area >> 1;
        add(l + 1, half);
        // Pixels l+2 .. r-1 each take a whole `area`.
        std::int64_t from = l + 2;
        const std::int64_t to = std::min<std::int64_t>(r - 1, length);
        if (from < 0) {
            const std::int64_t skipped = std::min<std::int64_t>(to, -1) - from + 1;
            if (skipped > 0) delta[0] += std::uint32_t(skipped * area);
            from = 0;
        }
        for (std::int64_t i = from; i <= to; ++i) delta[i] += std::uint32_t(area);
        add(r, area - half);
    }
    const std::int64_t rem = cov - (n * area + a);
    const std::int64_t d = ((0x200 - fr) * rem) >> 9;
    add(r, d);
    add(r + 1, rem - d);
}

// The two shared rules, applied inline while sweeping; any other rule goes through its
// process operation.
struct NonZeroBytes {
    std::uint8_t operator()(std::uint32_t acc) const {
        const std::int64_t v = std::int32_t(acc);
        const std::int64_t c = (v < 0 ? -v : v) >> 8;
        return std::uint8_t(c > 255 ? 255 : c);
    }
};

struct EvenOddBytes {
    std::uint8_t operator()(std::uint32_t acc) const {
        const std::uint32_t c = (acc & 0x10000u) == 0 ? (acc & 0xFFFFu) : (~acc & 0xFFFFu) + 1;
        return std::uint8_t((c >> 8) > 255 ? 255 : (c >> 8));
    }
};

struct RuleBytes {
    const FillRule& rule;
    std::uint8_t operator()(std::uint32_t acc) const {
        const std::int32_t value = std::int32_t(acc);
        std::uint8_t byte;
        rule.process(1, &value, &byte);
        return byte;
    }
};

}  // namespace

// One pass over the active edges, in order of their left pixel, for the strip x ..
// x+length-1: each edge's coverage goes into the delta array, and its extent joins the
// current one or closes it. A closed extent is summed pixel by pixel (clearing the
// deltas as they are read) and the constant stretch before it becomes one solid span:
// every later edge starts more than four pixels to the right, so it cannot change them.
template <class Bytes>
void PolygonMask::scan(std::int32_t x, std::int32_t length, Span8* spans, std::uint8_t* pixels, Bytes bytes) {
    std::uint32_t* delta = delta_.data();
    const auto put = [&](std::int32_t at, std::int32_t n, std::uint32_t flags, const std::uint8_t* p) {
        spans[at] = Span8{std::uint32_t(n) | flags, p};
        spans[at + n - 1] = Span8{std::uint32_t(n) | flags, p};
    };
    std::uint32_t acc = 0;
    std::int32_t pos = 0;
    const auto solidUpTo = [&](std::int32_t end) {
        acc += delta[pos];
        delta[pos] = 0;
        // Outside (0) and inside once (+-0x10000) are the same under both rules.
        std::uint8_t byte = acc == 0 ? 0 : 255;
        if (acc != 0 && acc != 0x10000u && acc != 0xFFFF0000u) byte = bytes(acc);
        put(pos, end - pos, kSpanSolid | (byte == 255 ? kSpanOpaque : 0u), &kBytes.values[byte]);
        pos = end;
    };
    const auto extent = [&](std::int32_t from, std::int32_t to) {
        if (from > pos) solidUpTo(from);
        if constexpr (std::is_same_v<Bytes, RuleBytes>) {
            for (std::int32_t i = pos; i <= to; ++i) {
                acc += delta[i];
                delta[i] = 0;
                cover_[i - pos] = std::int32_t(acc);
            }
            bytes.rule.process(to - pos + 1, cover_, pixels + pos);
        } else {
            for (std::int32_t i = pos; i <= to; ++i) {
                acc += delta[i];
                delta[i] = 0;
                pixels[i] = bytes(acc);
            }
        }
        put(pos, to - pos + 1, 0, pixels + pos);
        pos = to + 1;
    };
    // The open extent is [start, stop]; there is none while stop is negative. Strip
    // positions fit 32 bits: requests lie within the bounds, and vertices within 2^21.
    std::int32_t start = 0, stop = -8;
    PolygonSegment* const* edge = active_.data() + firstActive_;
    PolygonSegment* const* const last = active_.data() + nextToActivate_;
    for (; edge != last; ++edge) {
        const PolygonSegment& s = **edge;
        const std::int32_t l = s.leftPixel - x;
        if (l >= length) break;
        const std::int32_t r = s.rightPixel - x;
        const std::int32_t cov = s.cover;
        if (r < 0) {
            // Wholly left of the strip.
            delta[0] += std::uint32_t(cov);
            continue;
        }
        const std::int32_t from = l > 0 ? l : 0;
        const std::int32_t to = r < length ? r : length - 1;
        if (from <= stop + 4) {
            if (to > stop) stop = to;
        } else {
            if (stop >= 0) extent(start, stop);
            start = from;
            stop = to;
        }
        const std::int32_t fl = s.leftX & 255, fr = s.rightX & 255;
        if (l == r) {
            const std::int32_t d = ((0x200 - fr - fl) * cov) >> 9;
            delta[l] += std::uint32_t(d);
            delta[l + 1] += std::uint32_t(cov - d);
        } else if (r == l + 1 && l >= 0 && r < length) {
            // Two pixels, both in the strip: the spread below without its clipping.
            const std::int64_t area = s.areaPerPixel;
            std::int64_t a = ((0x100 - fl) * area) >> 8;
            if ((a < 0 ? -a : a) > (cov < 0 ? -cov : cov)) a = cov;
            const std::int64_t b = ((0x100 - fl) * a) >> 9;
            const std::int64_t rem = cov - a;
            const std::int64_t d = ((0x200 - fr) * rem) >> 9;
            delta[l] += std::uint32_t(b);
            delta[l + 1] += std::uint32_t(a - b + d);
            delta[l + 2] += std::uint32_t(rem - d);
        } else {
            addSpread(delta, l, r, fl, fr, cov, s.areaPerPixel, length);
        }
    }
    if (stop >= 0) extent(start, stop);
    if (pos < length) solidUpTo(length);
    delta[length] = 0;
}

void PolygonMask::render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer8& out) {
    // Combiners ask within the bounds, so the request is usually inside.
    if (y >= bounds_.top && y < bounds_.bottom() && x >= bounds_.left && std::int64_t(x) + length <= bounds_.right()) {
        renderInside(x, y, length, out);
    } else {
        renderWithin(bounds_, x, y, length, out,
                     [&](std::int32_t start, std::int32_t n) { renderInside(start, y, n, out); });
    }
}

void PolygonMask::renderInside(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer8& out) {
    if (y != lastRow_) {
        if (y < lastRow_) restart();
        advanceTo(y);
    }
    switch (ruleKind_) {
    case RuleKind::nonZero:
        scan(x, length, out.spanCursor, out.pixelCursor, NonZeroBytes{});
        break;
    case RuleKind::evenOdd:
        scan(x, length, out.spanCursor, out.pixelCursor, EvenOddBytes{});
        break;
    case RuleKind::other:
        scan(x, length, out.spanCursor, out.pixelCursor, RuleBytes{rule_});
        break;
    }
    out.spanCursor += length;
    out.pixelCursor += length;
}

}  // namespace tw
