#include "vst2/Vst2Keys.h"

namespace tw {

namespace {

// The interface's virtual keys that the editor tells apart.
enum VirtualKey : int {
    vkBack = 1, vkTab = 2, vkReturn = 4, vkEscape = 6, vkSpace = 7, vkEnd = 9, vkHome = 10, vkLeft = 11,
    vkUp = 12, vkRight = 13, vkDown = 14, vkPageUp = 15, vkPageDown = 16, vkEnter = 19, vkDelete = 22,
    vkF1 = 40, vkF2 = 41, vkShift = 54, vkControl = 55, vkAlt = 56,
};

// Modifier bits of opt: Shift, Alt, the "command" key (Control on PC) and Control.
constexpr int modShift = 1, modAlt = 2, modCommand = 4, modControl = 8;

}  // namespace

KeyEvent vst2KeyEvent(vst2::int32 index, vst2::intptr value, float modifiers) {
    KeyEvent e;
    const int bits = modifiers > 0 && modifiers < 256 ? static_cast<int>(modifiers) : 0;
    e.shift = (bits & modShift) != 0;
    e.alt = (bits & modAlt) != 0;
    e.ctrl = (bits & (modCommand | modControl)) != 0;
    switch (value) {
        case vkBack: e.key = Key::backspace; break;
        case vkTab: e.key = Key::tab; break;
        case vkReturn: case vkEnter: e.key = Key::enter; break;
        case vkEscape: e.key = Key::escape; break;
        case vkSpace: e.key = Key::character, e.character = U' '; break;
        case vkEnd: e.key = Key::end; break;
        case vkHome: e.key = Key::home; break;
        case vkLeft: e.key = Key::left; break;
        case vkUp: e.key = Key::up; break;
        case vkRight: e.key = Key::right; break;
        case vkDown: e.key = Key::down; break;
        case vkPageUp: e.key = Key::pageUp; break;
        case vkPageDown: e.key = Key::pageDown; break;
        case vkDelete: e.key = Key::del; break;
        case vkF1: e.key = Key::f1; break;
        case vkF2: e.key = Key::f2; break;
        case vkShift: e.key = Key::shift; break;
        case vkControl: e.key = Key::control; break;
        case vkAlt: e.key = Key::alt; break;
        case 0:
            if (index > 0x20 && index < 0x7F) e.key = Key::character, e.character = char32_t(index);
            else if (index == 0x20) e.key = Key::character, e.character = U' ';
            break;
        default: break;
    }
    return e;
}

std::uint32_t Vst2HeldKeys::code(vst2::int32 index, vst2::intptr value) {
    // Letters come in either case as Shift changes: one key either way.
    if (index >= 'A' && index <= 'Z') index += 'a' - 'A';
    return (static_cast<std::uint32_t>(value & 0xFFFF) << 16) | (static_cast<std::uint32_t>(index) & 0xFFFF) | 1u;
}

bool Vst2HeldKeys::press(vst2::int32 index, vst2::intptr value) {
    const std::uint32_t c = code(index, value);
    for (std::uint32_t h : held_)
        if (h == c) return true;
    for (std::uint32_t& h : held_) {
        if (h == 0) {
            h = c;
            return false;
        }
    }
    // More keys down than a hand holds: the oldest is forgotten.
    for (int i = 1; i < slots; ++i) held_[i - 1] = held_[i];
    held_[slots - 1] = c;
    return false;
}

void Vst2HeldKeys::release(vst2::int32 index, vst2::intptr value) {
    const std::uint32_t c = code(index, value);
    for (std::uint32_t& h : held_)
        if (h == c) h = 0;
}

}  // namespace tw
