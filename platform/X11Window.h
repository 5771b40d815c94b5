// The X11 implementation of the editor's window and of its helper windows (menus, the
// hint, dialogs). The editor window is a child of the host's window; helpers are
// top-level windows on the same connection, sharing its timer queue and modal loop.
#pragma once

#include <X11/Xlib.h>

#include <atomic>
#include <bitset>
#include <memory>
#include <string>
#include <vector>

#include "platform/DirtyRegion.h"
#include "platform/EditorWindow.h"
#include "platform/X11Connection.h"
#include "platform/X11Surface.h"
#include "platform/X11Waker.h"

namespace tw {

class X11Window;

// What the editor window and its helpers share: the connection, the timers, and whether
// the host has taken the editor away.
struct X11Session {
    std::unique_ptr<X11Connection> connection;
    TimerQueue timers;
    std::vector<X11Window*> windows;  // every open window of the session, editor first
    ::Window hostWindow = 0;          // the window the host gave the editor
    ::Window hostTopLevel = 0;        // the host's top-level window that holds the editor
    // Started once the host hands us its events (Ardour): it wakes the host's GUI thread
    // when our events or timers are due. Declared after the connection it watches, so it
    // stops first.
    std::unique_ptr<X11Waker> waker;
    bool lost = false;
    // The editor window is unmapped, inside a hidden host window or fully covered: no
    // timer runs, nothing is painted and nothing is asked of the server until it shows.
    bool resting = false;
    int depth = 0;                    // calls of ours under way on the stack
    // Set from another thread by a host that closes the editor while our modal loop runs.
    std::atomic<bool> stopWanted{false};

    // Whether the editor is gone, or its connection broke (which ends it too).
    bool gone();

    // Reads and hands on the events that arrived; with `until`, one at a time, stopping
    // as soon as it answers true.
    void dispatchEvents(const std::function<bool()>* until);
    // Paints what is invalid in every window of the session.
    void paintAll();
    // After a pass: the waker may wake the host again, at once if Xlib has already read
    // events that this pass did not see.
    void passDone();
};

class X11Window final : public EditorWindow, private X11EventTarget {
public:
    enum class Kind { editor, popup, dialog };

    // The editor window, a child of `parent`.
    X11Window(WindowClient& client, ::Window parent, std::int32_t width, std::int32_t height);
    // A helper window of the editor's session, placed at (x, y) on the screen.
    X11Window(std::shared_ptr<X11Session> session, Kind kind, WindowClient& client, const std::string& title,
              std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);
    ~X11Window() override;

    std::int32_t width() const override { return width_; }
    std::int32_t height() const override { return height_; }
    void invalidate(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) override;
    void setCursor(Cursor cursor) override;
    void captureMouse() override;
    void releaseMouse() override;
    TimerQueue& timers() override { return session_->timers; }
    bool isActive() const override;
    void toScreen(std::int32_t& x, std::int32_t& y) const override;
    void takeKeyboardFocus() override;
    bool returnKeyboardFocus() override;
    std::unique_ptr<Window> openPopup(WindowClient& client, std::int32_t x, std::int32_t y, std::int32_t width,
                                      std::int32_t height) override;
    std::unique_ptr<Window> openDialog(WindowClient& client, const std::string& title, std::int32_t x, std::int32_t y,
                                       std::int32_t width, std::int32_t height) override;
    void holdInput() override;
    void workArea(std::int32_t& left, std::int32_t& top, std::int32_t& width, std::int32_t& height) const override;
    void setVisible(bool visible) override;
    void setScreenBounds(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) override;
    std::string clipboardText() override;
    void runModal(const std::function<bool()>& done) override;

    void idle() override;
    bool busy() const override { return session_->depth > 0; }
    void abandon() override;
    void requestStop() override;
    bool disconnected() const override { return session_->connection->lost(); }
    std::uint64_t framesShown() const override { return frames_; }
    std::uintptr_t nativeId() const override { return window_; }

    ::Window id() const { return window_; }
    const std::shared_ptr<X11Session>& session() const { return session_; }
    // Paints the invalid rectangles, if any.
    void paintInvalid();
    // Whether the editor rests unseen (see X11Session::resting).
    bool resting() const { return session_->resting; }
    // Pixels handed to the client for painting since the window opened.
    std::uint64_t pixelsPainted() const { return pixelsPainted_; }

    // The function Ardour-style hosts call with their X events (the _XEventProc
    // property): a pass for every editor window of the process.
    static void hostEventProc(XEvent* event);

private:
    void handleEvent(XEvent& event) override;
    void create(::Window parent, Kind kind, std::int32_t x, std::int32_t y, const std::string& title);
    void resized(std::int32_t width, std::int32_t height);
    MouseEvent mouseEvent(std::int32_t x, std::int32_t y, unsigned state) const;
    void pointerLeft();
    void lostCapture();
    void refreshModifiers();
    // The editor window's visibility: asks the server whether it is viewable (after a
    // map or unmap of it or of a window above it), and rests or wakes accordingly.
    void checkViewable();
    void watchAncestors();
    void updateRest();
    void destroyWindow();
    // For a window that holds the input: whether the editor is still shown and the focus
    // still the host's or ours; asks the client to close when not.
    void watchHold();
    bool belongsToUs(::Window window) const;
    bool menuHoldsPointer() const;
    // A key the editor did not use, sent on to the host's top-level window, as if ours
    // had not had the focus; to a host that cannot take a sent key, the keyboard itself.
    void passKeyOn(const XKeyEvent& key);
    // The host's top-level window as it stands now, where its toolkit takes keys.
    ::Window hostKeyWindow() const;
    void placeOnScreen(std::int32_t& x, std::int32_t& y, std::int32_t width, std::int32_t height) const;

    std::shared_ptr<X11Session> session_;
    WindowClient& client_;
    Kind kind_;
    ::Window window_ = 0;
    Colormap colormap_ = 0;
    GC gc_ = nullptr;
    std::int32_t width_, height_;
    std::unique_ptr<X11Surface> surface_;
    DirtyRegion dirty_;
    bool captured_ = false;
    bool holding_ = false;          // a popup that holds the pointer and the keyboard
    bool holdingKeyboard_ = false;  // the keyboard through a grab, not only the focus
    ::Window focusSeen_ = 0;        // the focus when last looked at, while holding
    std::uint32_t lastWatch_ = 0;
    bool hovered_ = false;
    unsigned modifiers_ = 0;  // ShiftMask, ControlMask, Mod1Mask as last seen
    std::int32_t pointerX_ = 0, pointerY_ = 0;
    std::bitset<256> keysDown_;
    std::uint64_t frames_ = 0;
    // The editor window: the host's windows above it, watched for being hidden (a host
    // that "closes" the editor by hiding its window unmaps one of those, not ours), and
    // what the server last said of our visibility.
    std::vector<::Window> ancestors_;
    bool viewable_ = false;
    bool obscured_ = false;
    std::uint64_t pixelsPainted_ = 0;
};

}  // namespace tw
