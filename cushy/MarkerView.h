// The view type "marker": a pen stroke that draws itself round an ellipse over `time`, as
// if marked by hand, at `updateRate` frames a second from the moment the view is attached.
//
// Choices where the layouts leave room: the path is the ellipse's arc from `start` over
// `sweep` degrees (0 straight up, clockwise), turned by `rotation`; `random` bends its
// radius by up to that percentage along a fixed wave, so every marker of the same keys
// looks the same; with `outlineWidth` a wider stroke in the pen's colour darkened by
// `outlineMix` lies under the pen; `quality` sets how finely the arc is cut. `gamma` is not
// applied: the raster core draws its own edges.
#pragma once

#include <cstdint>
#include <optional>

#include "cushy/HintedView.h"
#include "cushy/Stroke.h"
#include "graphics/GammaTable.h"
#include "platform/TimerQueue.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class MarkerView : public HintedView, public TimerHandler {
public:
    static constexpr int frameTimer = 1;

    MarkerView(const IntRect& rect, const SpecMap& spec);

    void paint(Raster32& canvas, const IntRect& clip) override;
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;
    void attached(Window& window) override;
    void detached(Window& window) override;

    // How much of the stroke is drawn, 0 to 1.
    double progress() const { return progress_; }

private:
    double cx_, cy_, rx_, ry_;
    double rotation_, random_;
    Stroke pen_;
    std::optional<GammaTable> gamma_;
    double quality_;
    std::int32_t period_;
    double start_, sweep_;
    std::uint32_t outlineMix_;
    double outlineWidth_;
    double time_;
    double progress_ = 0;
    std::int64_t frames_ = 0;
};

}  // namespace tw
