// Hands a layout's root view to a window: paints the tree into the window's tiles, delivers
// the mouse (to the holder of the capture while there is one, else down the tree with the
// hover walk), refreshes the hover when a modifier key changes, and delivers the keys: to
// the focused control, then Tab and Escape, then the layout's own keys; the rest it leaves
// to the host. A click asks the window for the keyboard. The editor object gives the root
// to its window through it.
#pragma once

#include <memory>

#include "cushy/CushyView.h"
#include "platform/Window.h"

namespace tw {

class CushyWindowClient : public WindowClient {
public:
    // A root without a cursor of its own gets the arrow, so that every move starts from it
    // and a view's hand does not stay when the pointer leaves the view.
    explicit CushyWindowClient(std::shared_ptr<CushyView> root);

    // Attaches the root to the window (or detaches it with null): its timers start then.
    void attach(Window* window);
    CushyView& root() const { return *root_; }

    void paint(const PixelTile& tile) override;
    void mouseDown(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    void mouseWheel(const MouseEvent& event) override;
    void mouseLeave(std::uint32_t time) override;
    void captureLost() override;
    void modifiersChanged(const MouseEvent& event) override;
    // To the view of this window that holds the keyboard focus, if any; then Tab and
    // Shift-Tab walk the controls, Escape lets go of the control and then of the
    // keyboard, and the layout's keys run. Answers whether the key was used.
    bool keyDown(const KeyEvent& event) override;
    bool keyUp(const KeyEvent& event) override;

private:
    // The view of this window that holds the capture, or the keyboard focus, or null.
    View* captured() const;
    View* focused() const;
    MouseEvent toRoot(const MouseEvent& event) const;

    std::shared_ptr<CushyView> root_;
    Window* window_ = nullptr;
};

}  // namespace tw
