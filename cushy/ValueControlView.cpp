#include "cushy/ValueControlView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/HintWindow.h"
#include "speclang/SpecQuote.h"

namespace tw {

ValueControlView::ValueControlView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), variable_(unquote(lookup(spec, "variable"))),
      number_(layout.host().numberVariable(layout, variable_)),
      readOnlyKey_(toBool(lookup(spec, "readonly"), false)), readOnly_(readOnlyKey_),
      wheel_(layout, variable_, [this] { syncNow(); }) {}

void ValueControlView::takeValue(double value) {
    if (value_.set(double(float(value)))) invalidateAll();
}

void ValueControlView::syncNow() {
    takeValue(number_->read(value_.defaultValue));
}

void ValueControlView::holdForDrag(const MouseEvent& event) {
    wheel_.end();
    captureMouse();
    if (hintWindow_ && !hintText_.empty())
        hintWindow_->showNow(*this, hintTextNow(), screenFrame_.left + event.x, screenFrame_.top + event.y + 22);
}

void ValueControlView::write(double value) {
    if (!value_.set(value)) return;
    invalidateAll();
    if (dragging_ || wheel_.active()) number_->write(value_.value, true);
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
    HintedView::detached(window);
}

}  // namespace tw
