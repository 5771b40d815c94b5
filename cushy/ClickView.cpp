#include "cushy/ClickView.h"

#include "cushy/CushyView.h"
#include "cushy/KeyboardFocus.h"
#include "speclang/SpecQuote.h"

namespace tw {

ClickView::ClickView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), entries_(readActionEntries(spec)), thru_(toBool(lookup(spec, "thru"), false)),
      keys_(parseKeyBindings(lookup(spec, "keys"))) {
    if (const std::string variable = unquote(lookup(spec, "entryFor")); !variable.empty())
        layout.addValueEntry(variable, *this);
}

bool ClickView::press(const MouseEvent& event, std::uint32_t button) {
    std::uint32_t flags = modifierFlags(event) | button | clickMask::click | clickMask::press | clickMask::down;
    if (button == clickMask::right) flags |= clickMask::context;
    const ActionEntry* entry = findActionEntry(entries_, flags);
    if (entry == nullptr || entry->action.empty()) return false;
    hideHint();
    if (button == clickMask::left && acceptsFocus()) keyboardFocus::give(*this);
    layout_.setLastClick({screenFrame_.left + event.x, screenFrame_.top + event.y});
    // The entry is copied: the action may rebuild the layout and this view with it.
    const ActionEntry run = *entry;
    const bool thru = thru_;
    layout_.runAction(run.action, run.params);
    return !thru;
}

bool ClickView::mouseDown(const MouseEvent& event) { return press(event, clickMask::left); }

bool ClickView::rightMouseDown(const MouseEvent& event) { return press(event, clickMask::right); }

void ClickView::mouseMove(const MouseEvent& event) {
    if (enabled_) {
        HintedView::mouseMove(event);
        return;
    }
    // A click area that can do nothing leaves the cursor to what lies below.
    const std::optional<Cursor> kept = cursor_;
    cursor_.reset();
    HintedView::mouseMove(event);
    cursor_ = kept;
}

void ClickView::refresh() { enabled_ = anyPressEntry(layout_, entries_, false); }

bool ClickView::activate() {
    if (!enabled_) return false;
    MouseEvent event;
    event.x = size_.width / 2;
    event.y = size_.height / 2;
    const ViewRef keep = weak_from_this().lock();
    const std::uint32_t flags =
        modifierFlags(event) | clickMask::left | clickMask::click | clickMask::press | clickMask::down;
    const ActionEntry* entry = findActionEntry(entries_, flags);
    if (entry == nullptr || entry->action.empty()) return false;
    hideHint();
    layout_.setLastClick({screenFrame_.left + event.x, screenFrame_.top + event.y});
    const ActionEntry run = *entry;
    layout_.runAction(run.action, run.params);
    return true;
}

bool ClickView::keyDown(const KeyEvent& event) {
    const bool plain = !event.shift && !event.ctrl && !event.alt;
    if (plain && (event.key == Key::enter || (event.key == Key::character && event.character == U' ')))
        return event.repeat || activate();
    const KeyBinding* binding = findKeyBinding(keys_, event);
    if (binding == nullptr) return false;
    const KeyBinding run = *binding;
    const ViewRef keep = weak_from_this().lock();
    if (!event.repeat) layout_.runAction(run.action, run.params);
    return true;
}

}  // namespace tw
