// The view type "click": an invisible hit area that runs the action entry matching a press
// at once, since it has no pressed phase. With `thru` the press also reaches what lies below.
// With `entryFor` it is the value entry of that variable's control (Enter on the control
// opens it); with `keys` it is a stop of the keyboard focus that Enter and Space click and
// that answers those keys.
#pragma once

#include <vector>

#include "cushy/ClickMask.h"
#include "cushy/HintedView.h"
#include "cushy/KeyBinding.h"

namespace tw {

class CushyView;

class ClickView : public HintedView {
public:
    // Reads the action keys, `thru`, `entryFor` and `keys`. Throws the mask's and the
    // keys' faults.
    ClickView(CushyView& layout, const SpecMap& spec);

    bool mouseDown(const MouseEvent& event) override;
    bool rightMouseDown(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    // Whether any entry a press can run is enabled: without one the cursor stays as it is.
    void refresh() override;
    // Runs the entry of a left click at the centre, as the keyboard's click; answers
    // whether one ran.
    bool activate();
    bool acceptsFocus() const override { return !keys_.empty() && enabled_; }
    bool keyDown(const KeyEvent& event) override;

    bool enabled() const { return enabled_; }

private:
    bool press(const MouseEvent& event, std::uint32_t button);

    CushyView& layout_;
    std::vector<ActionEntry> entries_;
    bool thru_;
    std::vector<KeyBinding> keys_;
    bool enabled_ = true;
};

}  // namespace tw
