#include "cushy/ButtonView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/ShapeFill.h"
#include "graphics/Font.h"
#include "graphics/Image.h"
#include "speclang/SpecColor.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <cmath>

namespace tw {

namespace {

// `own` laid over `base`: a look's keys replace those it inherits.
SpecMap overlay(SpecMap base, const SpecMap& own) {
    for (const auto& [key, value] : own) base[key] = value;
    return base;
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
