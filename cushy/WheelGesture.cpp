#include "cushy/WheelGesture.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"

namespace tw {

WheelGesture::WheelGesture(CushyView& layout, const std::string& variable, std::function<void()> ended)
    : layout_(layout), variable_(variable), ended_(std::move(ended)) {}

void WheelGesture::begin() {
    if (active_) return;
    active_ = true;
    layout_.host().beginEnd(layout_, variable_, true);
}

void WheelGesture::rearm(Window* window) {
    if (window == nullptr) return;
    if (queue_ != nullptr) queue_->cancel(this);
    queue_ = &window->timers();
    queue_->schedule(this, 0, queue_->now() + idleMilliseconds);
}

void WheelGesture::end() {
    if (!active_) return;
    if (queue_ != nullptr) queue_->cancel(this);
    finish();
    ended_();
}

void WheelGesture::drop(Window& window) {
    window.timers().cancel(this);
    if (active_) finish();
    queue_ = nullptr;
}

void WheelGesture::timerFired(TimerQueue&, std::uint32_t, std::uint32_t, int) {
    queue_ = nullptr;
    if (!active_) return;
    finish();
    ended_();
}

void WheelGesture::finish() {
    active_ = false;
    queue_ = nullptr;
    layout_.host().beginEnd(layout_, variable_, false);
}

}  // namespace tw
