#include "cushy/ClickMask.h"

#include "cushy/CushyView.h"
#include "platform/Exception.h"
#include "speclang/SpecQuote.h"

#include <array>
#include <string_view>

namespace tw {

namespace {

// In bit order from bit 0.
constexpr std::array<std::string_view, 14> maskNames = {"click", "shift", "control", "alt",   "command",
                                                        "left",  "right", "context", "press", "release",
                                                        "down",  "up",    "windows", "mac"};

}  // namespace

std::uint32_t parseClickMask(const std::string& raw) {
    std::uint32_t mask = 0;
    std::size_t start = 0;
    for (;;) {
        const std::size_t plus = raw.find('+', start);
        const std::string name = unquote(raw.substr(start, plus == std::string::npos ? std::string::npos : plus - start));
        std::size_t bit = 0;
        while (bit < maskNames.size() && maskNames[bit] != name) ++bit;
        if (bit == maskNames.size()) throw FormatException("Invalid click mask constant: " + quote(name));
        mask |= std::uint32_t(1) << bit;
        if (plus == std::string::npos) return mask;
        start = plus + 1;
    }
}

std::vector<ActionEntry> readActionEntries(const SpecMap& spec) {
    std::vector<ActionEntry> entries;
    const auto readMask = [](const std::string& raw) { return raw.empty() ? clickMask::click : parseClickMask(unquote(raw)); };
    if (const auto action = spec.find("action"); action != spec.end()) {
        entries.push_back({readMask(lookup(spec, "mask")), unquote(action->second), unquote(lookup(spec, "params"))});
        return entries;
    }
    for (const std::string& item : parseList(lookup(spec, "actions"))) {
        SpecList parts = parseList(item);
        parts.resize(3);
        entries.push_back({readMask(parts[0]), unquote(parts[1]), unquote(parts[2])});
    }
    return entries;
}

const ActionEntry* findActionEntry(const std::vector<ActionEntry>& entries, std::uint32_t flags) {
    for (std::size_t i = entries.size(); i-- > 0;)
        if ((entries[i].mask & flags) == entries[i].mask) return &entries[i];
    return nullptr;
}

std::uint32_t modifierFlags(const MouseEvent& event) {
    std::uint32_t flags = clickMask::windows;
    if (event.shift) flags |= clickMask::shift;
    if (event.ctrl) flags |= clickMask::control;
    if (event.alt) flags |= clickMask::alt;
    return flags;
}

bool anyPressEntry(CushyView& layout, const std::vector<ActionEntry>& entries, bool checked) {
    constexpr std::uint32_t pressing = clickMask::click | clickMask::press | clickMask::down;
    for (const ActionEntry& entry : entries) {
        if ((entry.mask & pressing) == 0 || entry.action.empty()) continue;
        if (checked ? layout.isChecked(entry.action, entry.params) : layout.isEnabled(entry.action, entry.params))
            return true;
    }
    return false;
}

}  // namespace tw
