#include "cushy/AnimationView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/FilmSpec.h"
#include "cushy/VariableReading.h"
#include "graphics/Film.h"
#include "graphics/Image.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <algorithm>
#include <cmath>

namespace tw {

double curveFactor(double progress, double curve) {
    const double denominator = (2 * curve - 1) * progress + 1 - curve;
    if (denominator == 0) return progress;
    return progress * curve / denominator;
}

AnimationView::AnimationView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), variable_(unquote(lookup(spec, "variable"))), curve_(evaluateDouble(lookup(spec, "curve"), 0.5)) {
    film_ = readFilm(layout, parseMap(lookup(spec, "film")));
    const auto [lower, upper] = parsePair(lookup(spec, "range"), {0, 1});
    lower_ = lower, upper_ = upper;
}

AnimationView::~AnimationView() = default;

void AnimationView::paint(Raster32& canvas, const IntRect&) { film_->drawFrame(canvas, frame_, 0, 0); }

void AnimationView::refresh() {
    const double number = variableNumber(layout_.host().getVariable(layout_, variable_), 0);
    double v = upper_ == lower_ ? 0 : (number - lower_) / (upper_ - lower_);
    v = std::clamp(v != v ? 0.0 : v, 0.0, 1.0);
    const std::int32_t frames = film_->frameCount();
    const std::int32_t frame = std::clamp(std::int32_t(frames * curveFactor(v, curve_)), 0, frames - 1);
    if (frame == frame_) return;
    frame_ = frame;
    invalidate(IntRect{0, 0, film_->frameWidth(), film_->frameHeight()});
}

}  // namespace tw
