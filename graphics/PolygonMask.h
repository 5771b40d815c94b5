// The anti-aliased rasteriser: an 8-bit renderer of the coverage of a flattened path.
// Exact signed area per pixel in fixed point, accumulated row by row on demand in a
// delta array; rows of solid interior come out as one span. Used for every filled or
// stroked shape of the vector painter and for glyph-free text decorations.
#pragma once

#include <vector>

#include "graphics/FillRule.h"
#include "graphics/Renderer.h"
#include "graphics/VectorPath.h"

namespace tw {

// One kept edge, made downward. Coordinates are 24.8 fixed point; x positions and the
// slope carry 32 more fraction bits (x in 24.8 units, shifted left by 32).
struct PolygonSegment {
    std::int32_t topY;
    std::int32_t bottomY;
    std::int64_t xAtTop;
    std::int64_t currentX;  // x at the top of the current row
    std::int64_t dxdy;
    // The coverage that a pixel fully crossed by the edge takes on within a row (16.16
    // ratio of dy to |dx|), negative for an edge that was turned round.
    std::int32_t areaPerPixel;
    std::int32_t winding;  // +1 for an edge that was downward, -1 for one turned round
    // Extents in the current row: pixels, and 24.8 positions with the row's coverage.
    std::int32_t leftPixel;
    std::int32_t rightPixel;
    std::int32_t leftX;
    std::int32_t rightX;
    std::int32_t cover;
};

class PolygonMask : public Renderer8 {
public:
    PolygonMask(const VectorPath& path, const IntRect& clip, const FillRule& rule);

    IntRect calcBounds() const override { return bounds_; }
    // Rows are expected in ascending order; an earlier row restarts the scan.
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer8& out) override;

private:
    void restart();
    void advanceTo(std::int32_t y);
    void sortActive();
    void renderInside(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer8& out);
    template <class Bytes>
    void scan(std::int32_t x, std::int32_t length, Span8* spans, std::uint8_t* pixels, Bytes bytes);

    std::vector<PolygonSegment> segments_;        // the last one is a sentinel
    std::vector<PolygonSegment*> byTop_;          // sorted by (topY >> 8, leftPixel)
    std::vector<PolygonSegment*> active_;         // [0, firstActive_) retired, then active, then waiting
    std::size_t firstActive_ = 0;
    std::size_t nextToActivate_ = 0;
    std::int64_t lastRow_;
    IntRect bounds_;
    const FillRule& rule_;
    // The two shared rules are applied inline.
    enum class RuleKind : std::uint8_t { nonZero, evenOdd, other } ruleKind_;
    std::vector<std::uint32_t> delta_;           // per pixel of a strip, plus one; zero between requests
    std::int32_t cover_[kMaxSpanLength];
};

}  // namespace tw
