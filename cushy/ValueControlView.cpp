#include "cushy/ValueControlView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/HintWindow.h"
#include "cushy/KeyboardFocus.h"
#include "speclang/SpecQuote.h"

#include <algorithm>
#include <cstdlib>

namespace tw {

ValueControlView::ValueControlView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), variable_(unquote(lookup(spec, "variable"))),
      number_(layout.host().numberVariable(layout, variable_)),
      readOnlyKey_(toBool(lookup(spec, "readonly"), false)), readOnly_(readOnlyKey_),
      wheel_(layout, variable_, [this] { syncNow(); }), keys_(layout, variable_, [this] { syncNow(); }) {}

void ValueControlView::takeValue(double value) {
    if (value_.set(double(float(value)))) invalidateAll();
}

void ValueControlView::syncNow() {
    takeValue(number_->read(value_.defaultValue));
}

void ValueControlView::holdForDrag(const MouseEvent& event) {
    wheel_.end();
    keys_.end();
    keyboardFocus::give(*this);
    captureMouse();
    if (hintWindow_ && !hintText_.empty())
        hintWindow_->showNow(*this, hintTextNow(), screenFrame_.left + event.x, screenFrame_.top + event.y + 22);
}

void ValueControlView::write(double value) {
    if (!value_.set(value)) return;
    invalidateAll();
    if (dragging_ || wheel_.active() || keys_.active()) number_->write(value_.value, true);
    if (dragging_ && hintWindow_) hintWindow_->textChanged(*this, hintTextNow());
}

void ValueControlView::mouseUp(const MouseEvent& event) {
    if (!dragging_) HintedView::mouseUp(event);
    else releaseCapture();
}

void ValueControlView::captureMouse() {
    HintedView::captureMouse();
    if (dragging_) return;
    dragging_ = true;
    number_->beginEnd(true);
}

void ValueControlView::releaseCapture() {
    const bool ending = dragging_ && captureHolder() == this;
    HintedView::releaseCapture();
    if (!ending) return;
    dragging_ = false;
    hideHint();
    number_->beginEnd(false);
    syncNow();
}

void ValueControlView::detached(Window& window) {
    wheel_.drop(window);
    keys_.drop(window);
    HintedView::detached(window);
}

double ValueControlView::stepped(double fraction, int steps) const {
    const double span = value_.upper - value_.lower;
    double value = value_.value;
    for (int i = 0; i < std::abs(steps); ++i) {
        const double next = number_->nudge(value, span * fraction * (steps < 0 ? -1 : 1));
        if (next == value) break;
        value = next;
    }
    return value;
}

bool ValueControlView::keyDown(const KeyEvent& event) {
    if (readOnly_ || dragging_ || event.ctrl || event.alt) return false;
    const double fraction = event.shift ? 0.001 : 0.01;
    double target;
    switch (event.key) {
        case Key::up: case Key::right: target = stepped(fraction, 1); break;
        case Key::down: case Key::left: target = stepped(fraction, -1); break;
        case Key::pageUp: target = stepped(fraction, 10); break;
        case Key::pageDown: target = stepped(fraction, -10); break;
        case Key::home: target = std::min(value_.lower, value_.upper); break;
        case Key::end: target = std::max(value_.lower, value_.upper); break;
        case Key::del: case Key::backspace: target = value_.defaultValue; break;
        case Key::enter: case Key::f2: {
            if (event.repeat || event.shift) return event.repeat;
            keys_.end();
            const ViewRef keep = weak_from_this().lock();
            return layout_.runValueEntry(variable_);
        }
        default: return false;
    }
    const ViewRef keep = weak_from_this().lock();
    // A run is one key held down: another key, or the same pressed again, starts afresh.
    if (keys_.active() && (!event.repeat || event.key != runKey_)) keys_.end();
    wheel_.end();
    if (!keys_.active()) {
        number_->keepApart();
        keys_.begin();
        runKey_ = event.key;
    }
    write(target);
    // Where the model holds the value to its own steps, the control shows what it took.
    syncNow();
    keys_.rearm(window_);
    return true;
}

bool ValueControlView::keyUp(const KeyEvent& event) {
    if (!keys_.active() || event.key != runKey_) return false;
    keys_.end();
    return true;
}

void ValueControlView::focusChanged(bool focused) {
    if (!focused) keys_.end();
}

}  // namespace tw
