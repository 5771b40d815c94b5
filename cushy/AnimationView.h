// The view type "animation": shows a variable's value as a frame of a film, bent by a
// curve, without taking input; meters and lamps are made of it.
#pragma once

#include <memory>
#include <string>

#include "cushy/View.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;
class Film;

class AnimationView : public View {
public:
    // Reads `variable`, `film`, `range` and `curve`.
    AnimationView(CushyView& layout, const SpecMap& spec);
    ~AnimationView() override;

    void paint(Raster32& canvas, const IntRect& clip) override;
    // Reads the variable; only a change of frame repaints.
    void refresh() override;

    std::int32_t frame() const { return frame_; }

private:
    CushyView& layout_;
    std::string variable_;
    std::unique_ptr<Film> film_;
    double lower_, upper_;
    double curve_;
    std::int32_t frame_ = 0;
};

// The bend that animations, transitions and the bubble's moves share: c = 0.5 is straight,
// below it the path hurries at the start, above it at the end.
double curveFactor(double progress, double curve);

}  // namespace tw
