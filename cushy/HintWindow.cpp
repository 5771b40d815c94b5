#include "cushy/HintWindow.h"

#include "cushy/HelperLook.h"
#include "cushy/View.h"

namespace tw {

HintWindow::HintWindow(std::shared_ptr<Font> font, const Zoom& zoom) : font_(std::move(font)), zoom_(zoom) {}

HintWindow::~HintWindow() {
    if (armed_ && ownerWindow_ != nullptr) ownerWindow_->timers().cancel(this);
}

std::int32_t HintWindow::width() const { return textWidth(*font_, text_) + zoom_.length(6); }

void HintWindow::arm(View& owner, const std::string& text, std::int32_t x, std::int32_t y) {
    if (owner.window() == nullptr) return;
    if (showing_) {
        owner_ = &owner;
        textChanged(owner, text);
        return;
    }
    owner_ = &owner;
    ownerWindow_ = owner.window();
    text_ = text;
    x_ = x, y_ = y;
    if (!armed_) {
        armed_ = true;
        TimerQueue& timers = ownerWindow_->timers();
        timers.schedule(this, 1, timers.now() + showDelay);
    }
}

void HintWindow::showNow(View& owner, const std::string& text, std::int32_t x, std::int32_t y) {
    if (owner.window() == nullptr) return;
    hideAny();
    owner_ = &owner;
    ownerWindow_ = owner.window();
    text_ = text;
    x_ = x, y_ = y;
    show();
}

void HintWindow::hide(const View& owner) {
    if (owner_ == &owner) hideAny();
}

void HintWindow::hideAny() {
    if (armed_ && ownerWindow_ != nullptr) ownerWindow_->timers().cancel(this, 1);
    armed_ = false;
    if (showing_ && popup_) popup_->setVisible(false);
    showing_ = false;
    owner_ = nullptr;
}

void HintWindow::closeWindow() {
    hideAny();
    popup_.reset();
    popupParent_ = nullptr;
    ownerWindow_ = nullptr;
}

void HintWindow::textChanged(const View& owner, const std::string& text) {
    if (owner_ != &owner || text == text_) return;
    text_ = text;
    if (!showing_ || !popup_) return;
    std::int32_t x = x_, y = y_;
    ownerWindow_->toScreen(x, y);
    popup_->setScreenBounds(x, y, width(), height());
    popup_->invalidate(0, 0, width(), height());
}

void HintWindow::timerFired(TimerQueue&, std::uint32_t, std::uint32_t, int) {
    armed_ = false;
    if (owner_ != nullptr && ownerWindow_ != nullptr && ownerWindow_->isActive()) show();
}

void HintWindow::show() {
    showing_ = true;
    if (!popup_ || popupParent_ != ownerWindow_) {
        popup_.reset();
        popup_ = ownerWindow_->openPopup(*this, x_, y_, width(), height());
        popupParent_ = ownerWindow_;
        return;
    }
    std::int32_t x = x_, y = y_;
    ownerWindow_->toScreen(x, y);
    popup_->setScreenBounds(x, y, width(), height());
    popup_->invalidate(0, 0, width(), height());
    popup_->setVisible(true);
}

void HintWindow::paint(const PixelTile& tile) {
    Raster32 canvas(tile.pixels, tile.stride, IntRect{tile.left, tile.top, tile.width, tile.height});
    look::fillRect(canvas, canvas.bounds(), look::panel);
    look::frameRect(canvas, IntRect{0, 0, width(), height()}, look::accent, zoom_.lineWidth(1));
    // The baseline sits where the 11-pixel font's does in a 16-pixel window at 100 %.
    drawText(canvas, *font_, zoom_.length(2), zoom_.length(12), text_);
}

}  // namespace tw
