// The keys a VST 2.4 host hands the editor (effEditKeyDown and effEditKeyUp): the
// interface's virtual key codes and modifier bits as the editor's own key events. The
// plug-in's dispatcher uses it; the host keeps every key the editor does not use.
#pragma once

#include <cstdint>

#include "platform/Window.h"
#include "vst2/Vst2.h"

namespace tw {

// The event for `index` (the character typed, or 0), `value` (a virtual key, or 0) and
// `modifiers` (the bits of opt). A key the editor has no name for is Key::other.
KeyEvent vst2KeyEvent(vst2::int32 index, vst2::intptr value, float modifiers);

// Which keys the host has said are down, so that a press of one already down is a
// repeat: the host's auto-repeat sends presses alone, as X does.
class Vst2HeldKeys {
public:
    // Answers whether it was down already.
    bool press(vst2::int32 index, vst2::intptr value);
    void release(vst2::int32 index, vst2::intptr value);

private:
    static std::uint32_t code(vst2::int32 index, vst2::intptr value);
    static constexpr int slots = 8;
    std::uint32_t held_[slots] = {};
};

}  // namespace tw
