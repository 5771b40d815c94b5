#include "cushy/View.h"

#include "cushy/ContainerView.h"
#include "cushy/FocusRing.h"

#include <algorithm>

namespace tw {

namespace {

// At most one view in the process holds the mouse.
View* theCaptureHolder = nullptr;
View* theFocusHolder = nullptr;

}  // namespace

View* View::captureHolder() { return theCaptureHolder; }

View* View::focusHolder() { return theFocusHolder; }

void View::takeFocus() {
    if (theFocusHolder == this) return;
    if (View* old = theFocusHolder) old->releaseFocus();
    theFocusHolder = this;
    invalidateFocusRing();
    focusChanged(true);
}

void View::releaseFocus() {
    if (theFocusHolder != this) return;
    theFocusHolder = nullptr;
    invalidateFocusRing();
    focusChanged(false);
}

void View::invalidateFocusRing() {
    if (parent_ == nullptr || !acceptsFocus()) return;
    double radius = 0;
    parent_->invalidate(focusRingBounds(focusOutline(radius)));
}

bool View::keyDown(const KeyEvent&) { return false; }

bool View::keyUp(const KeyEvent&) { return false; }

IntRect View::focusOutline(double& radius) const {
    radius = std::min(frame_.width, frame_.height) / 6.0;
    return frame_;
}

View::~View() {
    if (theCaptureHolder == this) theCaptureHolder = nullptr;
    if (theFocusHolder == this) theFocusHolder = nullptr;
}

std::string View::title() { return parent_ != nullptr ? parent_->title() : std::string(); }

void View::dispose() {
    setWindow(nullptr);
    parent_ = nullptr;
}

void View::paint(Raster32&, const IntRect&) {}

bool View::mouseDown(const MouseEvent&) { return false; }

void View::mouseUp(const MouseEvent&) {
    if (theCaptureHolder == this) releaseCapture();
}

void View::mouseMove(const MouseEvent&) {
    if (cursor_ && window_ != nullptr) window_->setCursor(*cursor_);
}

bool View::mouseWheel(const MouseEvent&) { return false; }

void View::moveTo(ViewPoint point) {
    if (visible_) invalidateAll();
    frame_.left = point.x;
    frame_.top = point.y;
    deriveScreenFrame();
    if (visible_) invalidateAll();
}

void View::resize(const IntRect& frame) {
    const bool moved = !(frame == frame_);
    if (moved && visible_) invalidateAll();
    frame_ = frame;
    size_ = IntRect{0, 0, frame.width, frame.height};
    deriveScreenFrame();
    if (moved && visible_) invalidateAll();
}

void View::refresh() {}

void View::invalidate(const IntRect& rect) {
    const IntRect moved{rect.left + frame_.left, rect.top + frame_.top, rect.width, rect.height};
    if (parent_ != nullptr) {
        parent_->invalidate(moved);
    } else if (window_ != nullptr && !rect.isEmpty()) {
        window_->invalidate(moved.left, moved.top, moved.width, moved.height);
    }
}

View* View::hitTest(ViewPoint) { return this; }

void View::captureMouse() {
    if (theCaptureHolder != nullptr && theCaptureHolder != this) theCaptureHolder->releaseCapture();
    theCaptureHolder = this;
    if (window_ != nullptr) window_->captureMouse();
}

void View::releaseCapture() {
    if (theCaptureHolder != this) return;
    theCaptureHolder = nullptr;
    if (window_ != nullptr) window_->releaseMouse();
}

void View::mouseEnter(std::uint32_t) { mouseInside_ = true; }

void View::mouseLeave(std::uint32_t) { mouseInside_ = false; }

bool View::rightMouseDown(const MouseEvent&) { return false; }

void View::attached(Window&) {}

void View::detached(Window&) {}

void View::setWindow(Window* window) {
    if (window == window_) return;
    if (window_ != nullptr) {
        if (timerPending_) {
            window_->timers().cancel(dynamic_cast<TimerHandler*>(this));
            timerPending_ = false;
        }
        if (theCaptureHolder == this) releaseCapture();
        releaseFocus();
        Window& old = *window_;
        window_ = nullptr;
        detached(old);
    }
    window_ = window;
    deriveScreenFrame();
    if (window_ != nullptr) attached(*window_);
}

void View::stopOnFault(const std::string& message) {
    if (stopped_) return;
    invalidateAll();
    stopped_ = true;
    if (parent_ != nullptr) parent_->faultBelow(message);
}

void View::setVisible(bool visible) {
    if (visible == visible_) return;
    visible_ = true;
    invalidateAll();
    visible_ = visible;
}

void View::deriveScreenFrame() {
    screenFrame_ = frame_;
    if (parent_ != nullptr) {
        screenFrame_.left += parent_->screenFrame().left;
        screenFrame_.top += parent_->screenFrame().top;
    }
}

}  // namespace tw
