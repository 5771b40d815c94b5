#include "platform/DirtyRegion.h"

#include <gtest/gtest.h>

namespace tw {
namespace {

TEST(DirtyRegion, PartsOutsideTheWindowAreDroppedAndEmptyRestsIgnored) {
    DirtyRegion r(100, 50);
    r.add(-10, -10, 20, 20);
    EXPECT_EQ(r.rects(), (std::vector<DirtyRect>{{0, 0, 10, 10}}));
    r.take();
    r.add(100, 0, 10, 10);
    r.add(-30, 0, 30, 10);
    r.add(0, 50, 10, 10);
    r.add(5, 5, 0, 10);
    r.add(5, 5, 10, -1);
    EXPECT_TRUE(r.isEmpty());
    // A rectangle far outside in both directions is cut to the whole window, not wrapped.
    r.add(-2000000000, -2000000000, 2100000000, 2100000000);
    EXPECT_EQ(r.rects(), (std::vector<DirtyRect>{{0, 0, 100, 50}}));
}

TEST(DirtyRegion, NeighboursMergeAndDistantRectanglesStayApart) {
    DirtyRegion r(525, 475);
    r.add(10, 10, 40, 40);
    r.add(52, 10, 40, 40);  // a two-pixel gap: 80 pixels of waste
    EXPECT_EQ(r.rects(), (std::vector<DirtyRect>{{10, 10, 92, 50}}));
    r.add(400, 400, 20, 20);  // far away: painting the union would cost 150 000 pixels
    EXPECT_EQ(r.rects().size(), 2u);
    r.add(20, 20, 10, 10);  // inside the first: nothing changes
    EXPECT_EQ(r.rects().size(), 2u);
    EXPECT_EQ(r.area(), 82 * 40 + 400);
    // A large one that holds both absorbs them.
    r.add(0, 0, 525, 475);
    EXPECT_EQ(r.rects(), (std::vector<DirtyRect>{{0, 0, 525, 475}}));
    EXPECT_EQ(r.take().size(), 1u);
    EXPECT_TRUE(r.isEmpty());
}

TEST(DirtyRegion, AMergeThatReachesFurtherRectanglesTakesThemToo) {
    DirtyRegion r(1000, 1000);
    r.add(0, 0, 50, 50);
    r.add(100, 0, 50, 50);
    ASSERT_EQ(r.rects().size(), 2u);
    // Bridges the gap: merging with one then makes the other cheap to take as well.
    r.add(45, 0, 60, 50);
    EXPECT_EQ(r.rects(), (std::vector<DirtyRect>{{0, 0, 150, 50}}));
}

TEST(DirtyRegion, ManyScatteredRectanglesStayFewAndCoverEverything) {
    DirtyRegion r(525, 475);
    std::vector<DirtyRect> added;
    for (int i = 0; i < 60; ++i) {
        const int x = (i * 97) % 500, y = (i * 61) % 450;
        r.add(x, y, 12, 9);
        added.push_back({x, y, x + 12, y + 9});
    }
    EXPECT_LE(r.rects().size(), DirtyRegion::maxRects);
    for (const DirtyRect& a : added) {
        bool covered = false;
        for (const DirtyRect& k : r.rects())
            covered |= k.left <= a.left && k.top <= a.top && k.right >= a.right && k.bottom >= a.bottom;
        EXPECT_TRUE(covered) << a.left << "," << a.top;
    }
}

TEST(DirtyRegion, ShrinkingTheWindowCutsWhatWaits) {
    DirtyRegion r(200, 200);
    r.add(150, 150, 40, 40);
    r.add(10, 10, 20, 20);
    r.resize(100, 100);
    EXPECT_EQ(r.rects(), (std::vector<DirtyRect>{{10, 10, 30, 30}}));
}

}  // namespace
}  // namespace tw
