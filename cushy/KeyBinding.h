// Keys named in a layout, each with the action it runs: the editor-wide shortcuts of a
// layout's `keys` and the keys a focused click area answers. A name is a key ("left",
// "pageUp", "f1", "space", a single character) after any of "ctrl+", "shift+", "alt+".
#pragma once

#include <string>
#include <vector>

#include "platform/Window.h"

namespace tw {

struct KeyBinding {
    Key key = Key::other;
    char32_t character = 0;  // for Key::character, lower case
    bool shift = false, ctrl = false, alt = false;
    std::string action;
    std::string params;

    // The same key with the same modifiers held: a letter matches in either case, since
    // Shift is told by its flag.
    bool matches(const KeyEvent& event) const;
};

// One name. Throws FormatException "Invalid key: " with the quoted name.
KeyBinding parseKeyName(const std::string& name);
// The list `{ { name, action, params }, ... }`; empty for an empty value.
std::vector<KeyBinding> parseKeyBindings(const std::string& raw);
// The last binding that matches, or null.
const KeyBinding* findKeyBinding(const std::vector<KeyBinding>& bindings, const KeyEvent& event);

}  // namespace tw
