// The view type "button": a pressable picture with five looks (standard, checked, down,
// checkedDown, disabled) that runs its action entries through the phases of a press:
// press, down, up, release and click, with the pressed look following the pointer.
// From the keyboard, Enter and Space press a focused button. Buttons side by side that set
// one parameter to different values (`to`) make one segmented selector: a single stop of
// the focus, held by its first segment, that the arrows, Home, End and Space step through.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "cushy/ClickMask.h"
#include "cushy/HintedView.h"
#include "cushy/Rounded.h"
#include "cushy/Stroke.h"
#include "cushy/VariableReading.h"

namespace tw {

class CushyView;
class Font;
class Image;

class ButtonView : public HintedView {
public:
    enum LookIndex { standardLook, checkedLook, downLook, checkedDownLook, disabledLook };

    // One look: painted image, fill, frame, then caption or icon, in `rect`.
    struct Look {
        std::shared_ptr<Image> image;
        std::uint32_t fill = 0;
        Stroke frame;
        std::shared_ptr<Font> font;
        std::shared_ptr<Image> icon;
        IntRect rect;
    };

    // Reads the action keys, `caption`, `rounded` and the looks, each of which starts as a
    // copy of "standard" ("checkedDown" of "checked"). Throws the readers' faults.
    ButtonView(CushyView& layout, const IntRect& rect, const SpecMap& spec);

    void paint(Raster32& canvas, const IntRect& clip) override;
    bool mouseDown(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;
    // The capture taken away: the press ends as at a release, but without the click.
    void releaseCapture() override;
    // Renews the caption and works out whether the button is enabled and checked.
    void refresh() override;
    bool hitsHint(ViewPoint point) override;
    bool acceptsFocus() const override;
    IntRect focusOutline(double& radius) const override;
    const View* focusRingAfter() const override;
    bool keyDown(const KeyEvent& event) override;
    // The segments of this button's selector, in the layout's order; empty when it is
    // a button of its own.
    std::vector<ButtonView*> segments() const;
    // A press and release as the keyboard makes them, with its click.
    void click();

    bool enabled() const { return enabled_; }
    bool checked() const { return checked_; }
    bool pressed() const { return pressed_; }
    LookIndex currentLook() const;
    const Look& look(LookIndex index) const { return looks_[index]; }

private:
    bool insideRect(std::int32_t x, std::int32_t y) const;
    // Runs the entry for `flags` with the view's centre as the click point.
    void runEntry(std::uint32_t flags);
    // Goes to or leaves the pressed look; a change asked for while an entry runs is
    // taken up when it returns.
    void setPressed(bool pressed);
    void finishPress(bool withClick);

    CushyView& layout_;
    std::vector<ActionEntry> entries_;
    WatchedText caption_;
    Rounded rounded_;
    std::array<Look, 5> looks_;
    bool enabled_ = true;
    bool checked_ = false;
    bool pressed_ = false;
    bool tracking_ = false;
    bool running_ = false;
    std::optional<bool> pendingPressed_;
    std::uint32_t flags_ = 0;
    // The action and its parameters but the value: equal for the segments of one selector.
    std::string segmentKey_;
};

}  // namespace tw
