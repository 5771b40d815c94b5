#include "cushy/ButtonView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/KeyboardFocus.h"
#include "cushy/ShapeFill.h"
#include "graphics/Font.h"
#include "graphics/Image.h"
#include "speclang/SpecColor.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

// `own` laid over `base`: a look's keys replace those it inherits.
SpecMap overlay(SpecMap base, const SpecMap& own) {
    for (const auto& [key, value] : own) base[key] = value;
    return base;
}

// What the segments of one selector share: one entry that sets something `to` a value,
// the same action and the same other parameters.
std::string segmentKeyOf(const std::vector<ActionEntry>& entries) {
    if (entries.size() != 1 || entries[0].action.empty()) return {};
    SpecMap params;
    try {
        params = parseMap(entries[0].params);
    } catch (const std::exception&) {
        return {};
    }
    if (params.erase("to") == 0) return {};
    std::string key = entries[0].action;
    for (const auto& [name, value] : params) key += "\n" + name + "=" + value;
    return key;
}

ButtonView::Look readLook(CushyView& layout, const IntRect& rect, const SpecMap& spec) {
    ButtonView::Look look;
    CushyHost& host = layout.host();
    if (const std::string& image = lookup(spec, "image"); !image.empty()) look.image = host.image(layout, image);
    look.fill = parseColor(lookup(spec, "fill"), 0);
    look.frame = parseStroke(lookup(spec, "frame"), 0xFF000000);
    look.font = host.font(layout, lookup(spec, "font"));
    if (const std::string& icon = lookup(spec, "icon"); !icon.empty()) look.icon = host.image(layout, icon);
    const SpecRect r = parseBounds(lookup(spec, "rect"), SpecRect{0, 0, rect.width, rect.height});
    look.rect = IntRect{r.left, r.top, std::int32_t(std::int64_t(r.right) - r.left),
                        std::int32_t(std::int64_t(r.bottom) - r.top)};
    return look;
}

}  // namespace

ButtonView::ButtonView(CushyView& layout, const IntRect& rect, const SpecMap& spec)
    : layout_(layout), entries_(readActionEntries(spec)),
      caption_(unquote(lookup(spec, "caption")), layout.host(), layout),
      rounded_(parseRounded(lookup(spec, "rounded"), IntRect{0, 0, rect.width, rect.height})) {
    const SpecMap standard = parseMap(lookup(spec, "standard"));
    const SpecMap checked = overlay(standard, parseMap(lookup(spec, "checked")));
    looks_[standardLook] = readLook(layout, rect, standard);
    looks_[checkedLook] = readLook(layout, rect, checked);
    looks_[downLook] = readLook(layout, rect, overlay(standard, parseMap(lookup(spec, "down"))));
    looks_[checkedDownLook] = readLook(layout, rect, overlay(checked, parseMap(lookup(spec, "checkedDown"))));
    looks_[disabledLook] = readLook(layout, rect, overlay(standard, parseMap(lookup(spec, "disabled"))));
    segmentKey_ = segmentKeyOf(entries_);
}

std::vector<ButtonView*> ButtonView::segments() const {
    std::vector<ButtonView*> out;
    if (segmentKey_.empty() || parent_ == nullptr) return out;
    for (const ViewRef& child : parent_->children()) {
        auto* button = dynamic_cast<ButtonView*>(child.get());
        if (button != nullptr && button->segmentKey_ == segmentKey_ && button->visible()) out.push_back(button);
    }
    return out;
}

bool ButtonView::acceptsFocus() const {
    const std::vector<ButtonView*> group = segments();
    if (group.size() > 1) return group.front() == this;
    return enabled_;
}

IntRect ButtonView::focusOutline(double& radius) const {
    double rx = 0, ry = 0;
    rounded_.radiiFor(IntRect{0, 0, frame_.width, frame_.height}, rx, ry);
    const std::vector<ButtonView*> group = segments();
    if (group.size() <= 1) {
        radius = std::min(rx, ry);
        return frame_;
    }
    IntRect all = group.front()->frame();
    for (const ButtonView* b : group) {
        const IntRect& f = b->frame();
        const std::int32_t left = std::min(all.left, f.left), top = std::min(all.top, f.top);
        const std::int32_t right = std::max(all.right(), f.right()), bottom = std::max(all.bottom(), f.bottom());
        all = IntRect{left, top, right - left, bottom - top};
    }
    // The selector's well has the segments' corners plus the one pixel they stand in by.
    radius = std::min(rx, ry) + 1;
    return all;
}

const View* ButtonView::focusRingAfter() const {
    const std::vector<ButtonView*> group = segments();
    return group.size() > 1 ? group.back() : this;
}

void ButtonView::click() {
    if (!enabled_ || tracking_) return;
    const ViewRef keep = weak_from_this().lock();
    hideHint();
    layout_.host().keepNextEditApart(layout_);
    flags_ = modifierFlags(MouseEvent{});
    runEntry(flags_ | clickMask::press);
    setPressed(true);
    finishPress(true);
}

bool ButtonView::keyDown(const KeyEvent& event) {
    if (event.ctrl || event.alt || tracking_) return false;
    const bool space = event.key == Key::character && event.character == U' ';
    const std::vector<ButtonView*> group = segments();
    if (group.size() <= 1) {
        if (event.shift || (!space && event.key != Key::enter)) return false;
        if (!event.repeat) click();
        return true;
    }
    const auto checked = std::find_if(group.begin(), group.end(), [](const ButtonView* b) { return b->checked(); });
    const std::size_t at = checked == group.end() ? 0 : std::size_t(checked - group.begin());
    const std::size_t last = group.size() - 1;
    std::size_t to;
    switch (event.key) {
        case Key::right: case Key::down: to = std::min(at + 1, last); break;
        case Key::left: case Key::up: to = at == 0 ? 0 : at - 1; break;
        case Key::home: to = 0; break;
        case Key::end: to = last; break;
        case Key::enter: to = at == last ? 0 : at + 1; break;
        default:
            if (!space) return false;
            to = at == last ? 0 : at + 1;
            break;
    }
    // A held key steps once: each step is a change of its own for the host and the undo.
    if (!event.repeat && (to != at || checked == group.end())) {
        const ViewRef keep = group[to]->weak_from_this().lock();
        group[to]->click();
    }
    return true;
}

ButtonView::LookIndex ButtonView::currentLook() const {
    if (!enabled_) return disabledLook;
    if (checked_) return pressed_ ? checkedDownLook : checkedLook;
    return pressed_ ? downLook : standardLook;
}

void ButtonView::paint(Raster32& canvas, const IntRect&) {
    const Look& look = looks_[currentLook()];
    if (look.image) look.image->draw(canvas, 0, 0);
    // The corners follow the look's rectangle as it differs from the standard one.
    const IntRect& base = looks_[standardLook].rect;
    double rx, ry;
    rounded_.radiiFor(base, rx, ry);
    if (base.width > 0) rx *= double(look.rect.width) / base.width;
    if (base.height > 0) ry *= double(look.rect.height) / base.height;
    if (look.fill != 0 || look.frame.width > 0) {
        const double inset = look.frame.width / 2;
        VectorPath shape;
        shape.addRoundedRect(look.rect.left + inset, look.rect.top + inset, look.rect.width - 2 * inset,
                             look.rect.height - 2 * inset, rx, ry, 1);
        fillShape(canvas, shape, look.fill, BlendMode::normal);
        strokeShape(canvas, shape, look.frame, BlendMode::normal);
    }
    if (look.icon) {
        const IntRect b = look.icon->getBounds();
        look.icon->draw(canvas, look.rect.left + (look.rect.width - b.width) / 2 - b.left,
                        look.rect.top + (look.rect.height - b.height) / 2 - b.top);
    } else if (!caption_.text().empty() && look.font) {
        const std::u16string text = fromUtf8(caption_.text());
        std::int32_t height, ascent;
        look.font->getMetrics(height, ascent);
        const std::int64_t width = look.font->measure(Point{0, 0}, text, true).right();
        const double x = std::floor(look.rect.left + double(look.rect.width - width) / 2);
        const double baseline = look.rect.top + (look.rect.height - height) / 2 + ascent;
        look.font->draw(canvas, Point{x, baseline}, text);
    }
}

bool ButtonView::insideRect(std::int32_t x, std::int32_t y) const {
    return frameHolds(looks_[standardLook].rect, x, y);
}

bool ButtonView::hitsHint(ViewPoint point) { return insideRect(point.x, point.y); }

void ButtonView::runEntry(std::uint32_t flags) {
    const ActionEntry* entry = findActionEntry(entries_, flags);
    if (entry == nullptr || entry->action.empty()) return;
    const ActionEntry run = *entry;
    // A menu opened by a button stands at the button, wherever it was hit.
    layout_.setLastClick({screenFrame_.left + size_.width / 2, screenFrame_.top + size_.height / 2});
    running_ = true;
    layout_.runAction(run.action, run.params);
    running_ = false;
}

void ButtonView::setPressed(bool pressed) {
    if (running_) {
        pendingPressed_ = pressed;
        return;
    }
    while (pressed != pressed_) {
        pressed_ = pressed;
        invalidateAll();
        runEntry(flags_ | (pressed ? clickMask::down : clickMask::up));
        if (pendingPressed_) {
            pressed = *pendingPressed_;
            pendingPressed_.reset();
        }
    }
}

bool ButtonView::mouseDown(const MouseEvent& event) {
    if (event.button != leftButton || !enabled_ || !insideRect(event.x, event.y)) return false;
    const ViewRef keep = weak_from_this().lock();
    hideHint();
    const std::vector<ButtonView*> group = segments();
    keyboardFocus::give(group.size() > 1 ? *group.front() : *this);
    flags_ = modifierFlags(event);
    runEntry(flags_ | clickMask::press);
    tracking_ = true;
    captureMouse();
    setPressed(true);
    return true;
}

void ButtonView::mouseMove(const MouseEvent& event) {
    if (tracking_) {
        const ViewRef keep = weak_from_this().lock();
        setPressed(insideRect(event.x, event.y));
        return;
    }
    HintedView::mouseMove(event);
}

void ButtonView::finishPress(bool withClick) {
    const ViewRef keep = weak_from_this().lock();
    tracking_ = false;
    const bool wasPressed = pressed_;
    if (pressed_) setPressed(false);
    runEntry(flags_ | clickMask::release);
    if (withClick && wasPressed) runEntry(flags_ | clickMask::click);
}

void ButtonView::mouseUp(const MouseEvent& event) {
    if (!tracking_) {
        HintedView::mouseUp(event);
        return;
    }
    tracking_ = false;
    View::releaseCapture();
    finishPress(true);
}

void ButtonView::releaseCapture() {
    const bool lost = tracking_ && captureHolder() == this;
    tracking_ = false;
    View::releaseCapture();
    if (lost) finishPress(false);
}

void ButtonView::refresh() {
    if (caption_.renew(layout_.host(), layout_)) invalidateAll();
    const bool enabled = anyPressEntry(layout_, entries_, false);
    const bool checked = anyPressEntry(layout_, entries_, true);
    if (enabled != enabled_ || checked != checked_) invalidateAll();
    enabled_ = enabled;
    checked_ = checked;
}

}  // namespace tw
