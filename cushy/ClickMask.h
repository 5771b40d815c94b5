// The action entries of the views that take clicks ("click" and "button"): each entry an
// action with the set of event flags it answers to. A press or release is described by its
// flags, and the last entry whose mask it fully covers is the one that runs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Window.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;

namespace clickMask {
constexpr std::uint32_t click = 0x0001;
constexpr std::uint32_t shift = 0x0002;
constexpr std::uint32_t control = 0x0004;
constexpr std::uint32_t alt = 0x0008;
constexpr std::uint32_t command = 0x0010;
constexpr std::uint32_t left = 0x0020;
constexpr std::uint32_t right = 0x0040;
constexpr std::uint32_t context = 0x0080;
constexpr std::uint32_t press = 0x0100;
constexpr std::uint32_t release = 0x0200;
constexpr std::uint32_t down = 0x0400;
constexpr std::uint32_t up = 0x0800;
// Set in every event here, so that a layout can tell the two desktop families apart.
constexpr std::uint32_t windows = 0x1000;
constexpr std::uint32_t mac = 0x2000;
}  // namespace clickMask

struct ActionEntry {
    std::uint32_t mask = clickMask::click;
    std::string action;
    std::string params;
};

// Names joined by '+', as in "down+shift". Throws FormatException "Invalid click mask
// constant: " with the quoted name.
std::uint32_t parseClickMask(const std::string& raw);

// `action`, `params` and `mask` as one entry, else the list `actions` of
// `{ mask, action, params }`, in the file's order.
std::vector<ActionEntry> readActionEntries(const SpecMap& spec);

// The last entry whose mask is wholly set in `flags`, or null.
const ActionEntry* findActionEntry(const std::vector<ActionEntry>& entries, std::uint32_t flags);

// The modifier bits of an event and "windows": what a button remembers at its press.
std::uint32_t modifierFlags(const MouseEvent& event);

// Whether an entry that a press can run ("click", "press" or "down" in its mask) is
// enabled, or checked: how clickable views decide their cursor and their look.
bool anyPressEntry(CushyView& layout, const std::vector<ActionEntry>& entries, bool checked);

}  // namespace tw
