// The one small window that shows a view's hint near the pointer: armed by a move over a
// hinted view, shown after a second if the editor is still the active window, hidden when
// the pointer leaves or a button goes down. Made once per editor by the plug-in and shared
// by every layout of it; it never takes the focus.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "cushy/LayoutZoom.h"
#include "graphics/Font.h"
#include "platform/TimerQueue.h"
#include "platform/Window.h"

namespace tw {

class View;

class HintWindow final : public WindowClient, public TimerHandler {
public:
    // `font` made at the zoom of the editor it serves; the window's lengths follow the zoom.
    HintWindow(std::shared_ptr<Font> font, const Zoom& zoom);
    ~HintWindow();
    HintWindow(const HintWindow&) = delete;
    HintWindow& operator=(const HintWindow&) = delete;

    static constexpr std::uint32_t showDelay = 1000;

    // Arms the hint of `owner` at (x, y) of its window: after the delay it shows, unless a
    // hint shows already, in which case text and owner change at once.
    void arm(View& owner, const std::string& text, std::int32_t x, std::int32_t y);
    // Shows at once, without the delay.
    void showNow(View& owner, const std::string& text, std::int32_t x, std::int32_t y);
    // Hides the hint and cancels its timer if `owner` owns it.
    void hide(const View& owner);
    // Hides whatever hint is armed or shown.
    void hideAny();
    // The editor's window is going away: the hint's own window goes first.
    void closeWindow();
    // The owner's text changed while it owns the hint.
    void textChanged(const View& owner, const std::string& text);

    bool showing() const { return showing_; }
    const View* owner() const { return owner_; }
    const std::string& text() const { return text_; }
    // The client size for the text: its width + 6 by 16 pixels at 100 %.
    std::int32_t width() const;
    std::int32_t height() const { return zoom_.length(16); }

    void paint(const PixelTile& tile) override;
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;

private:
    void show();

    std::shared_ptr<Font> font_;
    Zoom zoom_;
    View* owner_ = nullptr;
    Window* ownerWindow_ = nullptr;   // the window the hint's point and timer belong to
    std::string text_;
    std::int32_t x_ = 0, y_ = 0;
    bool showing_ = false;
    bool armed_ = false;
    std::unique_ptr<Window> popup_;
    Window* popupParent_ = nullptr;
};

}  // namespace tw
