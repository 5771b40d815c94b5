// The view type "click": an invisible hit area that runs the action entry matching a press
// at once, since it has no pressed phase. With `thru` the press also reaches what lies below.
#pragma once

#include <vector>

#include "cushy/ClickMask.h"
#include "cushy/HintedView.h"

namespace tw {

class CushyView;

class ClickView : public HintedView {
public:
    // Reads the action keys and `thru`. Throws the mask's fault.
    ClickView(CushyView& layout, const SpecMap& spec);

    bool mouseDown(const MouseEvent& event) override;
    bool rightMouseDown(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    // Whether any entry a press can run is enabled: without one the cursor stays as it is.
    void refresh() override;

    bool enabled() const { return enabled_; }

private:
    bool press(const MouseEvent& event, std::uint32_t button);

    CushyView& layout_;
    std::vector<ActionEntry> entries_;
    bool thru_;
    bool enabled_ = true;
};

}  // namespace tw
