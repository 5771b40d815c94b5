#include "cushy/CushyWindowClient.h"

#include "cushy/HelperLook.h"
#include "cushy/HintWindow.h"
#include "cushy/KeyboardFocus.h"

namespace tw {

CushyWindowClient::CushyWindowClient(std::shared_ptr<CushyView> root) : root_(std::move(root)) {
    if (!root_->cursor()) root_->setCursor(Cursor::arrow);
}

void CushyWindowClient::attach(Window* window) {
    if (window != window_ && window_ != nullptr && root_->hintWindow()) root_->hintWindow()->closeWindow();
    window_ = window;
    root_->setWindow(window);
    if (window != nullptr) window->invalidate(0, 0, window->width(), window->height());
}

View* CushyWindowClient::captured() const {
    View* holder = View::captureHolder();
    return holder != nullptr && window_ != nullptr && holder->window() == window_ ? holder : nullptr;
}

MouseEvent CushyWindowClient::toRoot(const MouseEvent& event) const {
    return offsetEvent(event, root_->frame().left, root_->frame().top);
}

void CushyWindowClient::paint(const PixelTile& tile) {
    Raster32 canvas(tile.pixels, tile.stride, IntRect{tile.left, tile.top, tile.width, tile.height});
    // Nothing of an earlier pass is kept: what no view covers is black.
    look::fillRect(canvas, canvas.bounds(), 0xFF000000);
    const IntRect& frame = root_->frame();
    const IntRect part = intersectionOf(canvas.bounds(), frame);
    if (part.isEmpty() || !root_->visible()) return;
    Raster32 local(canvas.at(part.left, part.top), canvas.stride(),
                   IntRect{part.left - frame.left, part.top - frame.top, part.width, part.height});
    root_->paint(local, local.bounds());
}

void CushyWindowClient::mouseDown(const MouseEvent& event) {
    const std::shared_ptr<CushyView> keep = root_;
    root_->setLastClick({event.x, event.y});
    if (event.button == rightButton) {
        root_->rightMouseDown(toRoot(event));
        return;
    }
    if (window_ != nullptr) window_->takeKeyboardFocus();
    // A control that takes the press takes the focus too; a press on nothing lets go.
    View* before = focused();
    if (!root_->mouseDown(toRoot(event)) && before != nullptr && focused() == before) keyboardFocus::clear(*root_);
}

void CushyWindowClient::mouseUp(const MouseEvent& event) {
    const std::shared_ptr<CushyView> keep = root_;
    if (View* holder = captured()) {
        const std::shared_ptr<View> held = holder->weak_from_this().lock();
        holder->mouseUp(offsetEvent(event, holder->screenFrame().left, holder->screenFrame().top));
        return;
    }
    root_->mouseUp(toRoot(event));
}

void CushyWindowClient::mouseMove(const MouseEvent& event) {
    const std::shared_ptr<CushyView> keep = root_;
    if (View* holder = captured()) {
        const std::shared_ptr<View> held = holder->weak_from_this().lock();
        holder->mouseMove(offsetEvent(event, holder->screenFrame().left, holder->screenFrame().top));
        return;
    }
    if (!root_->mouseInside()) root_->mouseEnter(event.time);
    root_->mouseMove(toRoot(event));
}

void CushyWindowClient::mouseWheel(const MouseEvent& event) {
    const std::shared_ptr<CushyView> keep = root_;
    root_->mouseWheel(toRoot(event));
}

void CushyWindowClient::mouseLeave(std::uint32_t time) {
    const std::shared_ptr<CushyView> keep = root_;
    if (root_->mouseInside()) root_->mouseLeave(time);
}

void CushyWindowClient::captureLost() {
    if (View* holder = captured()) holder->releaseCapture();
}

View* CushyWindowClient::focused() const {
    View* focus = View::focusHolder();
    return focus != nullptr && window_ != nullptr && focus->window() == window_ ? focus : nullptr;
}

bool CushyWindowClient::keyDown(const KeyEvent& event) {
    if (window_ == nullptr) return false;
    const std::shared_ptr<CushyView> keep = root_;
    if (View* focus = focused()) {
        const std::shared_ptr<View> held = focus->weak_from_this().lock();
        if (focus->keyDown(event)) return true;
    }
    // A control that holds the keyboard for itself (a console) is not part of the walk.
    const bool walking = focused() == nullptr || focused()->acceptsFocus();
    if (event.key == Key::tab && !event.ctrl && !event.alt && walking)
        return keyboardFocus::step(*root_, event.shift ? -1 : 1);
    if (event.key == Key::escape && !event.shift && !event.ctrl && !event.alt) {
        if (keyboardFocus::clear(*root_)) return true;
        // With nothing focused the keyboard goes back; an Escape the host handed us while
        // we did not have it stays the host's.
        if (window_->returnKeyboardFocus()) return true;
    }
    return root_->runKey(event);
}

bool CushyWindowClient::keyUp(const KeyEvent& event) {
    View* focus = focused();
    if (focus == nullptr) return false;
    const std::shared_ptr<View> held = focus->weak_from_this().lock();
    return focus->keyUp(event);
}

void CushyWindowClient::modifiersChanged(const MouseEvent& event) { mouseMove(event); }

}  // namespace tw
