// A window in memory, for tests and for cushy-render: its client paints into a raster, a
// clock of its own drives the timer queue, invalidations are recorded, and a test injects
// mouse and key events. Helper windows (menus, dialogs, the hint) are doubles too, and a
// modal loop hands each turn to a "user" that the test or the tool writes.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "graphics/Raster.h"
#include "platform/Window.h"

namespace tw {

class WindowDouble : public Window {
public:
    // A top-level window of the given size with its own clock, starting at `startTick`.
    WindowDouble(WindowClient& client, std::int32_t width, std::int32_t height, std::uint32_t startTick = 1000);
    ~WindowDouble() override;

    // Window
    std::int32_t width() const override { return width_; }
    std::int32_t height() const override { return height_; }
    void invalidate(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) override;
    void setCursor(Cursor cursor) override { cursor_ = cursor; }
    void captureMouse() override { captured_ = true; }
    void releaseMouse() override { captured_ = false; }
    TimerQueue& timers() override;
    bool isActive() const override { return active_; }
    void toScreen(std::int32_t& x, std::int32_t& y) const override;
    std::unique_ptr<Window> openPopup(WindowClient& client, std::int32_t x, std::int32_t y, std::int32_t width,
                                      std::int32_t height) override;
    std::unique_ptr<Window> openDialog(WindowClient& client, const std::string& title, std::int32_t x, std::int32_t y,
                                       std::int32_t width, std::int32_t height) override;
    void setVisible(bool visible) override;
    void setScreenBounds(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) override;
    std::string clipboardText() override { return clipboard; }
    // Hands each turn to `user` until `done`; a user who has nothing left to do, or a
    // window that was closed meanwhile, ends the loop with LostWindowException.
    void runModal(const std::function<bool()>& done) override;

    // The clock: advances by `ms`, running every timer as it falls due.
    std::uint32_t now() const { return clock_; }
    void advance(std::uint32_t ms);

    // Paints the recorded invalid area (or everything) into the canvas and forgets it.
    void paintInvalid();
    void paintAll();
    const Raster32& canvas() const { return canvas_; }
    const std::vector<IntRect>& invalidations() const { return invalidations_; }
    void clearInvalidations() { invalidations_.clear(); }

    // Injected events, at window coordinates; buttons and modifiers as given.
    void mouseMove(std::int32_t x, std::int32_t y, std::uint32_t buttons = 0);
    void mouseDown(std::int32_t x, std::int32_t y, int button = leftButton);
    void mouseUp(std::int32_t x, std::int32_t y, int button = leftButton);
    void mouseWheel(std::int32_t x, std::int32_t y, std::int32_t notches);
    void mouseLeave();
    bool key(Key key, char32_t character = 0, bool shift = false, bool ctrl = false);
    void type(const std::u32string& text);
    void setModifiers(bool shift, bool ctrl, bool alt);
    // The host closed the editor: a modal loop in progress throws LostWindowException.
    void lose() { lost_ = true; }

    Cursor cursor() const { return cursor_; }
    bool captured() const { return captured_; }
    bool visible() const { return visible_; }
    void setActive(bool active) { active_ = active; }
    const std::string& title() const { return title_; }
    // Position on the screen of the double's top-left corner.
    std::int32_t screenX() const { return screenX_; }
    std::int32_t screenY() const { return screenY_; }
    WindowClient& client() const { return client_; }

    // Helper windows open now, oldest first, and the newest that is visible.
    const std::vector<WindowDouble*>& helpers() const { return root().helpers_; }
    WindowDouble* topHelper() const;
    // The whole screen as a picture: this window with every visible helper over it.
    Raster32 screenshot();

    // Called once per turn of a modal loop, with the editor's window.
    std::function<void(WindowDouble& editor)> user;
    std::string clipboard;

private:
    WindowDouble(WindowDouble& parent, WindowClient& client, const std::string& title, std::int32_t x, std::int32_t y,
                 std::int32_t width, std::int32_t height);
    const WindowDouble& root() const { return parent_ != nullptr ? parent_->root() : *this; }
    WindowDouble& root() { return parent_ != nullptr ? parent_->root() : *this; }
    MouseEvent event(std::int32_t x, std::int32_t y) const;
    void resizeCanvas();

    WindowClient& client_;
    WindowDouble* parent_ = nullptr;
    std::int32_t width_, height_;
    std::int32_t screenX_ = 0, screenY_ = 0;
    std::string title_;
    Raster32 canvas_;
    std::vector<IntRect> invalidations_;
    Cursor cursor_ = Cursor::arrow;
    bool captured_ = false;
    bool active_ = true;
    bool visible_ = true;
    bool lost_ = false;
    bool shift_ = false, ctrl_ = false, alt_ = false;
    std::uint32_t buttons_ = 0;
    std::uint32_t clock_;
    std::unique_ptr<TimerQueue> timers_;
    std::vector<WindowDouble*> helpers_;
};

}  // namespace tw
