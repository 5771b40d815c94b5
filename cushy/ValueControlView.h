// What knobs and sliders share: the variable they show and write, the value held in its
// range, the read-only switch, and the host's side of their gestures. A drag, from the
// press that takes the mouse to the release or a lost capture, and a run of wheel notches
// are each one begin and one end for the host (one undo step for the user); when a drag
// ends the control reads its variable back, since the host may hold the value to its own
// steps.
#pragma once

#include <memory>
#include <string>

#include "cushy/ControlValue.h"
#include "cushy/HintedView.h"
#include "cushy/NumberVariable.h"
#include "cushy/VariableReading.h"
#include "cushy/WheelGesture.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;

class ValueControlView : public HintedView, public ValueControl {
public:
    void mouseUp(const MouseEvent& event) override;
    void captureMouse() override;
    void releaseCapture() override;
    void detached(Window& window) override;
    // The keys of a focused value control: arrows by a step (Shift finer), Page Up and
    // Down by ten, Home and End to the ends, Delete and Backspace to the default, Enter
    // and F2 to the layout's value entry for the variable. A press with its repeats is
    // one gesture, ended by the release, another key, the focus leaving or a pause.
    bool keyDown(const KeyEvent& event) override;
    bool keyUp(const KeyEvent& event) override;
    bool acceptsFocus() const override { return !readOnly_; }
    void focusChanged(bool focused) override;
    std::string valueText() override { return formatVariableNumber(value_.value); }

    const std::string& variableName() const override { return variable_; }
    double defaultValue() const override { return value_.defaultValue; }
    // The model's value is a 32-bit float: the control shows what it holds.
    void takeValue(double value) override;
    void setWritable(bool writable) override { readOnly_ = !writable || readOnlyKey_; }

    double value() const { return value_.value; }

protected:
    // Reads the keys `variable` and `readonly`; the range and the default are the
    // control's own to read.
    ValueControlView(CushyView& layout, const SpecMap& spec);

    // The press that starts a drag: a run of wheel notches ends, the control takes the
    // mouse (the host hears the begin), and the hint shows at the pointer.
    void holdForDrag(const MouseEvent& event);
    // Takes a value already snapped by the control and, while it is held or turned by
    // the wheel, writes it out; the hint follows a drag.
    void write(double value);
    // Reads the variable back.
    void syncNow();
    // The value `steps` key steps away, each `fraction` of the range.
    double stepped(double fraction, int steps) const;

    CushyView& layout_;
    std::string variable_;
    std::unique_ptr<NumberVariable> number_;  // the variable, resolved once
    bool readOnlyKey_;
    bool readOnly_;
    ControlValue value_;
    bool dragging_ = false;
    WheelGesture wheel_;
    WheelGesture keys_;
    Key runKey_ = Key::other;  // the key whose run the key gesture is
};

}  // namespace tw
