// The editor's window as the layers above see it: 32-bit pixels painted on request through
// invalidated rectangles, plain mouse and key events, system cursors, the pointer capture,
// the timer queue, and top-level helper windows (menus, the hint, dialogs) with a modal
// loop. The X11 window implements it; the view tree's tests use a double that paints into
// memory. Nothing here knows a view, a font or a raster: the boundary stays this narrow.
// All calls are made on the GUI thread; only the timer queue may be fed from elsewhere.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/TimerQueue.h"

namespace tw {

// The system cursors a view may ask for; the window maps them to the platform's own.
enum class Cursor {
    arrow,
    iBeam,
    wait,
    cross,
    upArrow,
    sizeAll,
    sizeNWSE,
    sizeNESW,
    sizeWE,
    sizeNS,
    no,
    hand,
    appStarting,
    help,
};

// Pixels to paint: `pixels` is the top-left pixel of the rectangle (left, top, width,
// height) in the window's coordinates, rows `stride` pixels apart, 0xAARRGGBB
// premultiplied. Whatever the client leaves there is shown as opaque.
struct PixelTile {
    std::uint32_t* pixels;
    std::int32_t stride;
    std::int32_t left, top, width, height;
};

enum MouseButton : int { leftButton = 0, rightButton = 1, middleButton = 2 };

struct MouseEvent {
    std::int32_t x = 0, y = 0;   // in the window's coordinates
    int button = leftButton;     // the button that went down or up
    std::uint32_t buttons = 0;   // the buttons held, bit (1 << MouseButton)
    bool shift = false, ctrl = false, alt = false;
    std::uint32_t time = 0;      // millisecondTick() when it happened
    std::int32_t wheel = 0;      // notches, positive away from the user (up)
};

enum class Key {
    character,  // `character` holds the typed code point
    backspace, tab, enter, escape, del,
    left, right, up, down, home, end, pageUp, pageDown,
    f1, f2,
    shift, control, alt,
    other,
};

struct KeyEvent {
    Key key = Key::other;
    char32_t character = 0;
    bool shift = false, ctrl = false, alt = false;
    bool repeat = false;
    std::uint32_t time = 0;
};

// What a window tells the layer above. The root view of the editor, a menu, the hint and
// a dialog each implement it for their own window.
class WindowClient {
public:
    // Paint the tile: every pixel of it, since nothing is kept from earlier passes.
    virtual void paint(const PixelTile& tile) = 0;
    virtual void mouseDown(const MouseEvent&) {}
    virtual void mouseUp(const MouseEvent&) {}
    virtual void mouseMove(const MouseEvent&) {}
    virtual void mouseWheel(const MouseEvent&) {}
    // The pointer left the window (not sent while the mouse is captured).
    virtual void mouseLeave(std::uint32_t /*time*/) {}
    // The capture ended without a button release (another window took the pointer, the
    // window went away): a drag in progress ends with a cancel, not a drop.
    virtual void captureLost() {}
    // Shift, Control or Alt changed while the pointer is over the window: the hover, its
    // cursor and its hint may change at once. Carries the pointer's position.
    virtual void modifiersChanged(const MouseEvent&) {}
    // Answer whether the key was used.
    virtual bool keyDown(const KeyEvent&) { return false; }
    virtual bool keyUp(const KeyEvent&) { return false; }
    // A helper window was asked to close by the window manager, or lost its focus (a
    // menu closes then). The client decides; the window stays until destroyed.
    virtual void closeRequested() {}

protected:
    ~WindowClient() = default;
};

class Window {
public:
    virtual ~Window() = default;

    virtual std::int32_t width() const = 0;
    virtual std::int32_t height() const = 0;
    // Asks for a repaint of the rectangle at the next paint pass. Rectangles are merged;
    // parts outside the window are dropped.
    virtual void invalidate(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) = 0;
    virtual void setCursor(Cursor cursor) = 0;
    // While captured, moves and the button release come here wherever the pointer is.
    virtual void captureMouse() = 0;
    virtual void releaseMouse() = 0;
    virtual TimerQueue& timers() = 0;
    // Whether the window belongs to the active top-level window (the host's window that
    // holds the editor, or a dialog of ours): hints and notices show only then.
    virtual bool isActive() const = 0;
    // A point of this window in screen coordinates.
    virtual void toScreen(std::int32_t& x, std::int32_t& y) const = 0;
    // The editor's window asks for the keyboard when the user clicks in it, and gives it
    // back to the host's window when the user is done with it (Escape), so that the
    // host's own shortcuts work again; that answers whether the window had it. Helper
    // windows manage their focus themselves.
    virtual void takeKeyboardFocus() {}
    virtual bool returnKeyboardFocus() { return false; }

    // Top-level helper windows. A popup (a menu, the hint) is override-redirect and never
    // takes the focus; a dialog is transient for the host's window and takes it. Both are
    // placed with their top-left corner at (x, y) of this window, moved as little as
    // needed to stand wholly on the screen, and shown at once. They paint through the
    // same path as this window. The client must outlive the returned window.
    virtual std::unique_ptr<Window> openPopup(WindowClient& client, std::int32_t x, std::int32_t y,
                                              std::int32_t width, std::int32_t height) = 0;
    virtual std::unique_ptr<Window> openDialog(WindowClient& client, const std::string& title, std::int32_t x,
                                               std::int32_t y, std::int32_t width, std::int32_t height) = 0;
    // For a popup the user works in (a menu): it takes the pointer and the keyboard
    // wherever they are, so that keys and presses anywhere come to it. A press outside
    // it, the editor's window being hidden, the focus going to a window that is not the
    // host's or ours, and the loss of that hold each reach the client as closeRequested().
    virtual void holdInput() {}
    // The usable part of the screen (left, top, width, height), for helpers that must fit.
    virtual void workArea(std::int32_t& left, std::int32_t& top, std::int32_t& width, std::int32_t& height) const {
        left = top = 0;
        width = height = 1 << 20;
    }
    // For helper windows: show or hide, change place (screen coordinates) and size.
    virtual void setVisible(bool visible) = 0;
    virtual void setScreenBounds(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) = 0;
    // The text on the system clipboard, for pasting into text entry; empty when there is
    // none or it holds no text.
    virtual std::string clipboardText() { return {}; }
    // Runs the events and the timers of the editor until `done` answers true (checked
    // after every event and timer run). Throws LostWindowException "Lost window" at once
    // when the editor's window is closed by the host meanwhile.
    virtual void runModal(const std::function<bool()>& done) = 0;
};

}  // namespace tw
