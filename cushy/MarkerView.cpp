#include "cushy/MarkerView.h"

#include "cushy/ShapeFill.h"
#include "speclang/SpecExpression.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tw {

namespace {

constexpr double degrees = std::numbers::pi / 180;

}  // namespace

MarkerView::MarkerView(const IntRect& rect, const SpecMap& spec)
    : rotation_(evaluateDouble(lookup(spec, "rotation"), 0) * degrees),
      random_(evaluateDouble(lookup(spec, "random"), 0) / 100), pen_(parseStroke(lookup(spec, "pen"), 0xFF000000)),
      gamma_(readShapeGamma(spec)),
      quality_(std::clamp(evaluateDouble(lookup(spec, "quality"), 1), 0.1, 10.0)),
      start_(evaluateDouble(lookup(spec, "start"), 0) * degrees), sweep_(evaluateDouble(lookup(spec, "sweep"), 360) * degrees),
      outlineWidth_(evaluateDouble(lookup(spec, "outlineWidth"), 0)), time_(evaluateDouble(lookup(spec, "time"), 0)) {
    std::tie(cx_, cy_) = parsePair(lookup(spec, "center"), {rect.width / 2.0, rect.height / 2.0});
    std::tie(rx_, ry_) = parsePair(lookup(spec, "size"), {rect.width / 2.0 - 2, rect.height / 2.0 - 2});
    const double rate = evaluateDouble(lookup(spec, "updateRate"), 20);
    const double period = std::floor(1000 / (rate > 0 ? rate : 20) + 0.5);
    period_ = period >= 1 && period < 1e6 ? std::int32_t(period) : 50;
    const double mix = std::floor(evaluateDouble(lookup(spec, "outlineMix"), 0) * 2.56 + 0.5);
    outlineMix_ = std::uint32_t(std::clamp(mix != mix ? 0.0 : mix, 0.0, 256.0));
    if (!(time_ > 0)) progress_ = 1;
}

void MarkerView::paint(Raster32& canvas, const IntRect&) {
    if (progress_ <= 0 || pen_.width <= 0) return;
    const double reach = sweep_ * progress_;
    const int segments = std::max(2, int(std::ceil(std::fabs(reach) * std::max(rx_, ry_) * quality_ / 3)));
    const double c = std::cos(rotation_), s = std::sin(rotation_);
    VectorPath path;
    for (int i = 0; i <= segments; ++i) {
        const double a = start_ + reach * i / segments;
        // A fixed wave of a few turns, so the mark wobbles the same way each time.
        const double wobble = 1 + random_ * (0.6 * std::sin(3 * a + 1) + 0.4 * std::sin(7 * a + 2));
        const double x = std::sin(a) * rx_ * wobble, y = -std::cos(a) * ry_ * wobble;
        const double px = cx_ + x * c - y * s, py = cy_ + x * s + y * c;
        if (i == 0) path.moveTo(px, py);
        else path.lineTo(px, py);
    }
    if (outlineWidth_ > 0) {
        Stroke outline = pen_;
        outline.width = pen_.width + 2 * outlineWidth_;
        const std::uint32_t keep = 256 - outlineMix_;
        const auto channel = [&](int shift) { return ((pen_.color >> shift & 0xFF) * keep >> 8) << shift; };
        outline.color = (pen_.color & 0xFF000000u) | channel(16) | channel(8) | channel(0);
        strokeShape(canvas, path, outline, BlendMode::normal, gamma_ ? &*gamma_ : nullptr);
    }
    strokeShape(canvas, path, pen_, BlendMode::normal, gamma_ ? &*gamma_ : nullptr);
}

void MarkerView::attached(Window& window) {
    HintedView::attached(window);
    if (progress_ >= 1) return;
    timerPending_ = true;
    window.timers().add(this, frameTimer, std::uint32_t(period_));
}

void MarkerView::detached(Window& window) {
    window.timers().cancel(this);
    timerPending_ = false;
    HintedView::detached(window);
}

void MarkerView::timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int id) {
    if (id != frameTimer || stopped()) return;
    // Counted in frames, so that the last frame lands on the whole stroke.
    ++frames_;
    progress_ = std::min(1.0, frames_ * period_ / (time_ * 1000));
    invalidateAll();
    if (progress_ < 1) queue.schedule(this, frameTimer, due + std::uint32_t(period_));
    else timerPending_ = false;
}

}  // namespace tw
