// The editor's own popup menu: captions with access keys marked by '&', check marks,
// greyed items and separators, painted in the editor's look in a popup window, tracked
// modally with the mouse (either button chooses) or the keyboard. The "popup" action
// shows it.
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

class PopupMenu : public WindowClient {
public:
    PopupMenu(HelperFonts fonts, std::vector<MenuItem> items);

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    // The item under a point of the menu, or -1.
    std::int32_t itemAt(std::int32_t x, std::int32_t y) const;
    IntRect itemRect(std::size_t index) const;
    std::int32_t highlighted() const { return highlight_; }
    // The items as shown: captions, grey and check marks of the moment the menu opened.
    const std::vector<MenuItem>& items() const { return items_; }
    bool closed() const { return closed_; }
    // The chosen item, or -1 when the menu closed without a choice.
    std::int32_t choice() const { return choice_; }

    // Opens the menu at (x, y) of the window and tracks it until it closes; answers the
    // choice. Throws LostWindowException when the editor goes away meanwhile.
    std::int32_t track(Window& window, std::int32_t x, std::int32_t y);

    void paint(const PixelTile& tile) override;
    void mouseMove(const MouseEvent& event) override;
    void mouseDown(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;
    bool keyDown(const KeyEvent& event) override;
    void closeRequested() override;

    // The caption without its marks, and the position of the access key in it (or -1).
    static std::string plainCaption(const std::string& caption, std::int32_t& accessIndex);

private:
    void step(int direction);
    void choose(std::int32_t index);
    void repaint();

    HelperFonts fonts_;
    std::vector<MenuItem> items_;
    std::vector<std::int32_t> tops_;
    std::int32_t width_ = 0, height_ = 0;
    std::int32_t highlight_ = -1;
    bool pressed_ = false;
    bool closed_ = false;
    std::int32_t choice_ = -1;
    Window* popup_ = nullptr;
};

}  // namespace tw
