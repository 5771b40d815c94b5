// The view type "knob": a rotary control of one variable. It is turned by a vertical or
// horizontal drag (finer with Shift), set to its default by Control-click, follows the
// pointer's angle with Alt, snaps at a point from either side, and turns with the wheel.
// It shows itself as a frame of a film, or as a drawn cap with a dial and a snap mark.
//
// Choices where the layouts leave room: a wheel notch turns as far as eight pixels of the
// coarse drag (one step of a stepped transmission when that is larger), a fine one with
// Shift; a run of notches is one gesture, ended half a second after the last one. A drawn
// cap is a disc of `size` scaled by `scale`, its dial a line from a third of the radius to
// the rim at the value's angle turned by `angle`; the snap mark is a dot of radius `area`
// just outside the rim, or its `image` centred there, or a `dial` tick across the rim.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cushy/Stroke.h"
#include "cushy/ValueControlView.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;
class Film;
class Image;

class KnobView : public ValueControlView {
public:
    // Reads every key of a knob; throws the readers' faults.
    KnobView(CushyView& layout, const IntRect& rect, const SpecMap& spec);
    ~KnobView() override;

    void paint(Raster32& canvas, const IntRect& clip) override;
    bool mouseDown(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    bool mouseWheel(const MouseEvent& event) override;
    // Round: the ring circles the knob.
    IntRect focusOutline(double& radius) const override;

    // The film frame the value shows, or -1 without a film.
    std::int32_t frameIndex() const;

private:
    struct Grab {
        std::int32_t x = 0, y = 0;
        double value = 0;
        bool shift = false, ctrl = false, alt = false;
    };

    void grab(const MouseEvent& event, bool ctrl);
    double dragValue(const MouseEvent& event) const;
    double angleValue(const MouseEvent& event) const;
    double snapped(double value, double step) const;
    double angleOf(double value) const;

    double sweepStart_, sweepExtent_;  // radians, 0 straight up, clockwise
    // Drag gearing: fractions of the range per step of `resolution_` pixels.
    std::int32_t resolution_ = 1;
    double zoom_ = 1;
    double verticalStep_ = 0.005, horizontalStep_ = 0.005;
    double verticalFine_ = 0.0005, horizontalFine_ = 0.0005;
    std::optional<double> snapValue_;
    double snapArea_ = 4;
    std::uint32_t snapColor_ = 0;
    Stroke snapFrame_, snapDial_;
    std::shared_ptr<Image> snapImage_;
    bool hasCap_ = false;
    double capRadius_ = 0;
    double capX_ = 0, capY_ = 0;
    double capAngle_ = 0;
    std::uint32_t capColor_ = 0;
    Stroke capFrame_;
    std::shared_ptr<Image> capImage_;
    Stroke dial_;
    std::unique_ptr<Film> film_;
    std::int32_t filmX_ = 0, filmY_ = 0;
    Grab grab_;
};

}  // namespace tw
