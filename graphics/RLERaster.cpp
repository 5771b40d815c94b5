#include "graphics/RLERaster.h"

#include <algorithm>

namespace tw {

template <class Pixel>
RLERaster<Pixel>::RLERaster(Renderer<Pixel>& source, const IntRect& bounds) {
    if (bounds.isEmpty()) return;
    bounds_ = bounds;
    rows_.reserve(std::size_t(bounds.height));
    Span<Pixel> spans[kMaxSpanLength];
    Pixel scratch[kMaxSpanLength];
    for (std::int32_t y = bounds.top; y < bounds.bottom(); ++y) {
        rows_.push_back(Row{std::uint32_t(runs_.size()), std::uint32_t(pixels_.size())});
        bool first = true;
        for (std::int32_t x = bounds.left; x < bounds.right(); x += kMaxSpanLength) {
            const std::int32_t length = std::int32_t(std::min<std::int64_t>(kMaxSpanLength, bounds.right() - x));
            SpanBuffer<Pixel> buffer(spans, scratch);
            source.render(x, y, length, buffer);
            for (std::int32_t i = 0; i < length;) {
                const Span<Pixel> s = spans[i];
                const std::int32_t n = s.length();
                const std::uint16_t flags = (s.solid() ? kRunSolid : 0) | (s.opaque() ? kRunOpaque : 0);
                bool extend = !first;
                if (extend) {
                    const std::uint16_t last = runs_.back();
                    extend = (last & (kRunSolid | kRunOpaque)) == flags && (last & kMaxRun) + n <= kMaxRun &&
                             (!s.solid() || pixels_.back() == *s.pixels);
                }
                if (extend) {
                    runs_.back() = std::uint16_t(runs_.back() + n);
                } else {
                    runs_.push_back(std::uint16_t(flags | n));
                    if (s.solid()) pixels_.push_back(*s.pixels);
                }
                if (!s.solid()) pixels_.insert(pixels_.end(), s.pixels, s.pixels + n);
                first = false;
                i += n;
            }
        }
    }
}

template <class Pixel>
void RLERaster<Pixel>::swap(RLERaster& other) noexcept {
    std::swap(bounds_, other.bounds_);
    rows_.swap(other.rows_);
    runs_.swap(other.runs_);
    pixels_.swap(other.pixels_);
    cursorValid_ = false;
    other.cursorValid_ = false;
}

template <class Pixel>
void RLERaster<Pixel>::restart(std::int32_t y) {
    const Row& row = rows_[std::size_t(y - bounds_.top)];
    cursorX_ = bounds_.left;
    cursorY_ = y;
    cursorRun_ = row.firstRun;
    cursorPixel_ = row.firstPixel;
    cursorValid_ = true;
}

template <class Pixel>
void RLERaster<Pixel>::render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) {
    renderWithin(bounds_, x, y, length, out, [&](std::int32_t start, std::int32_t n) {
        if (!cursorValid_ || y != cursorY_ || start < cursorX_) restart(y);
        const std::int32_t end = start + n;
        // Skip whole runs that end before the request.
        for (;;) {
            const std::uint16_t run = runs_[cursorRun_];
            const std::int32_t runLength = run & kMaxRun;
            if (cursorX_ + runLength > start) break;
            cursorX_ += runLength;
            cursorPixel_ += (run & kRunSolid) ? 1 : std::uint32_t(runLength);
            ++cursorRun_;
        }
        for (std::int32_t pos = start; pos < end;) {
            const std::uint16_t run = runs_[cursorRun_];
            const std::int32_t runLength = run & kMaxRun;
            const std::int32_t runEnd = cursorX_ + runLength;
            const std::int32_t take = std::min(runEnd, end) - pos;
            const bool solid = (run & kRunSolid) != 0;
            const std::uint32_t flags = std::uint32_t(take) | (solid ? kSpanSolid : 0u) | ((run & kRunOpaque) ? kSpanOpaque : 0u);
            out.append(flags, pixels_.data() + cursorPixel_ + (solid ? 0 : pos - cursorX_));
            pos += take;
            // A run cut by the request's end stays current for the next strip.
            if (runEnd <= end && pos < end) {
                cursorX_ = runEnd;
                cursorPixel_ += solid ? 1 : std::uint32_t(runLength);
                ++cursorRun_;
            }
        }
    });
}

template class RLERaster<std::uint32_t>;
template class RLERaster<std::uint8_t>;

}  // namespace tw
