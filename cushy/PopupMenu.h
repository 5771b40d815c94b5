// The editor's own popup menu: captions with access keys marked by '&', check marks,
// greyed items and separators, painted in the editor's look in a popup window, tracked
// modally with the mouse (either button chooses) or the keyboard. A menu taller than the
// screen shows a part of its items between two arrows and scrolls (the arrows, the wheel,
// the keys). The "popup" action shows it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cushy/HelperLook.h"
#include "platform/Window.h"

namespace tw {

struct MenuItem {
    std::string caption;   // UTF-8, '&' before the access key, "&&" for a plain '&'
    bool separator = false;
    bool enabled = true;
    bool checked = false;
};

class PopupMenu : public WindowClient, private TimerHandler {
public:
    PopupMenu(HelperFonts fonts, std::vector<MenuItem> items);

    std::int32_t width() const { return width_; }
    // The height of the window: all items, or as much as fits the screen with the arrows.
    std::int32_t height() const { return shownHeight_; }
    // The item under a point of the menu window, or -1.
    std::int32_t itemAt(std::int32_t x, std::int32_t y) const;
    // Where the item is shown in the menu window now (above or below the window when
    // scrolled out of sight).
    IntRect itemRect(std::size_t index) const;
    bool scrolls() const { return shownHeight_ < height_; }
    // The pixels of items scrolled out above the visible part.
    std::int32_t scrollOffset() const { return offset_; }
    std::int32_t highlighted() const { return highlight_; }
    // The items as shown: captions, grey and check marks of the moment the menu opened.
    const std::vector<MenuItem>& items() const { return items_; }
    bool closed() const { return closed_; }
    // The chosen item, or -1 when the menu closed without a choice.
    std::int32_t choice() const { return choice_; }

    // Opens the menu at (x, y) of the window and tracks it until it closes; answers the
    // choice. Throws LostWindowException when the editor goes away meanwhile.
    std::int32_t track(Window& window, std::int32_t x, std::int32_t y);
    // Fits the menu into a screen `available` pixels tall (track does this itself).
    void fitHeight(std::int32_t available);

    void paint(const PixelTile& tile) override;
    void mouseMove(const MouseEvent& event) override;
    void mouseDown(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;
    void mouseWheel(const MouseEvent& event) override;
    void mouseLeave(std::uint32_t time) override;
    bool keyDown(const KeyEvent& event) override;
    void closeRequested() override;

    // The caption without its marks, and the position of the access key in it (or -1).
    static std::string plainCaption(const std::string& caption, std::int32_t& accessIndex);

private:
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;
    // Scrolls by `pixels` (positive: further down the list), within the list.
    void scrollBy(std::int32_t pixels);
    void showItem(std::int32_t index);
    // -1 over the upper arrow, 1 over the lower one, 0 elsewhere.
    int arrowAt(std::int32_t y) const;
    std::int32_t listTop() const;
    std::int32_t listBottom() const;
    void step(int direction);
    void choose(std::int32_t index);
    void repaint();

    HelperFonts fonts_;
    // The menu's lengths at its zoom.
    struct Sizes {
        std::int32_t itemHeight, separatorHeight, checkColumn, rightMargin, border, arrowHeight;
        static Sizes at(const HelperFonts& fonts);
    } sizes_;
    std::vector<MenuItem> items_;
    std::vector<std::int32_t> tops_;
    std::int32_t width_ = 0, height_ = 0;  // height_: of all items
    std::int32_t shownHeight_ = 0;
    std::int32_t offset_ = 0;
    int hoveredArrow_ = 0;
    TimerQueue* timers_ = nullptr;
    std::int32_t highlight_ = -1;
    bool pressed_ = false;
    bool closed_ = false;
    std::int32_t choice_ = -1;
    Window* popup_ = nullptr;
};

}  // namespace tw
