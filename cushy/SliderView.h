// The view type "slider": a linear control of one variable whose cap runs along a slit,
// straight (`start` to `end`) or an arc (`center`, `radius`, `sweep`). It shares the value
// model and the gestures of the knob: a drag along the slit (finer by `fineRatio` with
// Shift), Control-click for the default, snap, and the wheel.
//
// Choices where the layouts leave room: the cap follows the pointer's travel along the
// slit from where it was grabbed, so a press never makes it jump; `area` is how many
// pixels of the slit around the snap point hold the cap; a wheel notch moves the cap eight
// pixels along the slit (Shift: by the fine ratio of that). The cap is a rectangle of
// `size` (default 12 by 12) centred on the slit, its corners `rounded` as a percentage
// of its half sides (true is fully round); its `image` is drawn centred there.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cushy/ValueControlView.h"
#include "graphics/Matrix.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;
class Film;
class Image;

class SliderView : public ValueControlView {
public:
    // Throws FormatException "Unsupported cap roundness: " with the value, or the
    // readers' faults.
    SliderView(CushyView& layout, const IntRect& rect, const SpecMap& spec);
    ~SliderView() override;

    void paint(Raster32& canvas, const IntRect& clip) override;
    bool mouseDown(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    bool mouseWheel(const MouseEvent& event) override;

    // Where a fraction of the range lies on the slit.
    Point pointAt(double fraction) const;

private:
    // The fraction of the slit nearest to the point, and for an arc the unwrapped angle.
    double fractionAt(double x, double y) const;
    // Snaps, then writes.
    void change(double value);

    double fineRatio_;
    // The slit: a line from (x0, y0) to (x1, y1), or an arc round (cx, cy).
    bool arc_ = false;
    double x0_ = 0, y0_ = 0, x1_ = 0, y1_ = 0;
    double cx_ = 0, cy_ = 0, radius_ = 0, arcStart_ = 0, arcExtent_ = 0;
    double length_ = 1;
    double thickness_ = 0;
    std::uint32_t slitColor_ = 0;
    double capWidth_ = 12, capHeight_ = 12, capRound_ = 0;
    std::uint32_t capColor_ = 0;
    std::shared_ptr<Image> capImage_;
    std::optional<double> snapValue_;
    double snapArea_ = 4;
    std::unique_ptr<Film> film_;
    double grabFraction_ = 0, grabValue_ = 0;
    bool grabShift_ = false, grabCtrl_ = false;
};

}  // namespace tw
