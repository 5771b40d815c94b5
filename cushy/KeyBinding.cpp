#include "cushy/KeyBinding.h"

#include "platform/Exception.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"

#include <utility>

namespace tw {

namespace {

char32_t lowerCase(char32_t c) { return c >= U'A' && c <= U'Z' ? c - U'A' + U'a' : c; }

const std::pair<const char*, Key> namedKeys[] = {
    {"backspace", Key::backspace}, {"tab", Key::tab},   {"enter", Key::enter},   {"escape", Key::escape},
    {"delete", Key::del},          {"left", Key::left}, {"right", Key::right},   {"up", Key::up},
    {"down", Key::down},           {"home", Key::home}, {"end", Key::end},       {"pageUp", Key::pageUp},
    {"pageDown", Key::pageDown},   {"f1", Key::f1},     {"f2", Key::f2},
};

}  // namespace

bool KeyBinding::matches(const KeyEvent& event) const {
    if (event.key != key || event.shift != shift || event.ctrl != ctrl || event.alt != alt) return false;
    return key != Key::character || lowerCase(event.character) == character;
}

KeyBinding parseKeyName(const std::string& name) {
    KeyBinding binding;
    std::string rest = unquote(name);
    for (;;) {
        if (rest.starts_with("ctrl+")) binding.ctrl = true;
        else if (rest.starts_with("shift+")) binding.shift = true;
        else if (rest.starts_with("alt+")) binding.alt = true;
        else break;
        rest.erase(0, rest.find('+') + 1);
    }
    if (rest == "space") {
        binding.key = Key::character;
        binding.character = U' ';
        return binding;
    }
    for (const auto& [text, key] : namedKeys) {
        if (rest == text) {
            binding.key = key;
            return binding;
        }
    }
    if (rest.size() == 1 && rest[0] > ' ' && rest[0] < 0x7F) {
        binding.key = Key::character;
        binding.character = lowerCase(char32_t(rest[0]));
        return binding;
    }
    throw FormatException("Invalid key: " + quote(name));
}

std::vector<KeyBinding> parseKeyBindings(const std::string& raw) {
    std::vector<KeyBinding> out;
    for (const std::string& item : parseList(raw)) {
        SpecList entry = parseList(item);
        entry.resize(3);
        KeyBinding binding = parseKeyName(entry[0]);
        binding.action = unquote(entry[1]);
        binding.params = unquote(entry[2]);
        out.push_back(std::move(binding));
    }
    return out;
}

const KeyBinding* findKeyBinding(const std::vector<KeyBinding>& bindings, const KeyEvent& event) {
    for (std::size_t i = bindings.size(); i-- > 0;)
        if (bindings[i].matches(event)) return &bindings[i];
    return nullptr;
}

}  // namespace tw
