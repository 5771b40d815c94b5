// A menu taller than the screen: it shows what fits between two arrows and scrolls by
// the arrows, the wheel and the keys, so that every item can be reached and chosen.
#include "cushy/PopupMenu.h"

#include "cushy/Editor.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;

namespace {

std::vector<MenuItem> manyItems(int count) {
    std::vector<MenuItem> items;
    for (int i = 0; i < count; ++i) items.push_back({"Patch " + std::to_string(i)});
    return items;
}

// Whether the item is wholly in the band between the arrows of a menu `height` tall.
bool shown(const PopupMenu& menu, std::size_t index) {
    const IntRect r = menu.itemRect(index);
    return r.top >= 0 && r.bottom() <= menu.height() && menu.itemAt(r.left + 2, r.top + r.height / 2) == std::int32_t(index);
}

MouseEvent at(std::int32_t x, std::int32_t y, std::int32_t wheel = 0) {
    MouseEvent e;
    e.x = x;
    e.y = y;
    e.wheel = wheel;
    return e;
}

}  // namespace

TEST(LongMenu, FitsTheScreenAndEveryItemCanBeReachedAndChosen) {
    Editor editor;
    PopupMenu menu(HelperFonts::load(editor.host, *editor.root), manyItems(5000));
    menu.fitHeight(1000);
    ASSERT_TRUE(menu.scrolls());
    EXPECT_LE(menu.height(), 1000);
    EXPECT_TRUE(shown(menu, 0));
    EXPECT_FALSE(shown(menu, 100));

    // The keys keep the lit item in sight, at both ends and by the page.
    menu.keyDown(KeyEvent{Key::end});
    EXPECT_EQ(menu.highlighted(), 4999);
    EXPECT_TRUE(shown(menu, 4999));
    EXPECT_FALSE(shown(menu, 0));
    menu.keyDown(KeyEvent{Key::pageUp});
    EXPECT_LT(menu.highlighted(), 4999 - 20);
    EXPECT_TRUE(shown(menu, std::size_t(menu.highlighted())));
    menu.keyDown(KeyEvent{Key::home});
    EXPECT_EQ(menu.highlighted(), 0);
    EXPECT_EQ(menu.scrollOffset(), 0);
    menu.keyDown(KeyEvent{Key::pageDown});
    const std::int32_t paged = menu.highlighted();
    EXPECT_GT(paged, 20);
    EXPECT_TRUE(shown(menu, std::size_t(paged)));

    // The wheel scrolls the list under a pointer that stays put; the item under it changes.
    menu.keyDown(KeyEvent{Key::home});
    const IntRect first = menu.itemRect(0);
    const std::int32_t x = first.left + 5, y = first.top + first.height / 2;
    menu.mouseWheel(at(x, y, -2));
    EXPECT_GT(menu.scrollOffset(), 0);
    const std::int32_t under = menu.itemAt(x, y);
    EXPECT_GT(under, 0);
    menu.mouseWheel(at(x, y, 50));
    EXPECT_EQ(menu.scrollOffset(), 0) << "the wheel stops at the top";

    // The arrows are no items; resting on the lower one scrolls down.
    EXPECT_EQ(menu.itemAt(x, 2), -1);
    EXPECT_EQ(menu.itemAt(x, menu.height() - 2), -1);
    menu.mouseMove(at(x, menu.height() - 2));
    EXPECT_GT(menu.scrollOffset(), 0);
    menu.mouseLeave(0);

    // A click on an item scrolled into sight chooses that item.
    menu.keyDown(KeyEvent{Key::end});
    const IntRect last = menu.itemRect(4999);
    menu.mouseDown(at(last.left + 5, last.top + 5));
    menu.mouseUp(at(last.left + 5, last.top + 5));
    EXPECT_TRUE(menu.closed());
    EXPECT_EQ(menu.choice(), 4999);

    // Painting a scrolled menu stays inside its window.
    Raster32 canvas(IntRect{0, 0, menu.width(), menu.height()}, true);
    menu.paint(PixelTile{canvas.at(0, 0), canvas.stride(), 0, 0, menu.width(), menu.height()});
}

TEST(LongMenu, AMenuThatFitsDoesNotScroll) {
    Editor editor;
    PopupMenu menu(HelperFonts::load(editor.host, *editor.root), manyItems(10));
    const std::int32_t full = menu.height();
    menu.fitHeight(1000);
    EXPECT_FALSE(menu.scrolls());
    EXPECT_EQ(menu.height(), full);
    menu.keyDown(KeyEvent{Key::end});
    menu.mouseWheel(at(10, 10, -3));
    EXPECT_EQ(menu.scrollOffset(), 0);
    EXPECT_EQ(menu.itemRect(0).top, 3);
}
