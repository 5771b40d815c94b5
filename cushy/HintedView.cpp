#include "cushy/HintedView.h"

#include "cushy/HintWindow.h"

namespace tw {

namespace {

// Where a hint stands below the pointer.
constexpr std::int32_t hintOffsetY = 22;

}  // namespace

std::string expandHintPattern(const std::string& pattern, const std::string& value) {
    std::string out;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != '%') {
            out += pattern[i];
        } else if (i + 1 < pattern.size() && pattern[i + 1] == '%') {
            out += '%';
            ++i;
        } else {
            out += value;
        }
    }
    return out;
}

HintedView::~HintedView() {
    if (hintWindow_) hintWindow_->hide(*this);
}

std::string HintedView::valueText() { return {}; }

bool HintedView::hitsHint(ViewPoint point) { return frameHolds(size_, point.x, point.y); }

std::string HintedView::hintTextNow() {
    return hintIsPattern_ ? expandHintPattern(hintText_, valueText()) : hintText_;
}

void HintedView::setHint(std::shared_ptr<HintWindow> hintWindow, std::string text, bool isPattern) {
    hintWindow_ = std::move(hintWindow);
    hintText_ = std::move(text);
    hintIsPattern_ = isPattern;
}

void HintedView::replaceHint(std::string text) {
    hintIsPattern_ = false;
    hintText_ = std::move(text);
    if (hintWindow_) hintWindow_->textChanged(*this, hintTextNow());
}

void HintedView::mouseMove(const MouseEvent& event) {
    View::mouseMove(event);
    if (!hintWindow_) return;
    if (!hitsHint({event.x, event.y})) {
        hintWindow_->hide(*this);
        return;
    }
    const std::string text = hintTextNow();
    if (text.empty()) {
        hintWindow_->hideAny();
        return;
    }
    hintWindow_->arm(*this, text, screenFrame_.left + event.x, screenFrame_.top + event.y + hintOffsetY);
}

void HintedView::mouseLeave(std::uint32_t time) {
    View::mouseLeave(time);
    hideHint();
}

bool HintedView::mouseDown(const MouseEvent& event) {
    hideHint();
    return View::mouseDown(event);
}

void HintedView::captureMouse() {
    hideHint();
    View::captureMouse();
}

void HintedView::detached(Window& window) {
    hideHint();
    View::detached(window);
}

void HintedView::hideHint() {
    if (hintWindow_) hintWindow_->hide(*this);
}

}  // namespace tw
