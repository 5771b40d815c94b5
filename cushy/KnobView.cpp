#include "cushy/KnobView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/FilmSpec.h"
#include "cushy/ShapeFill.h"
#include "graphics/Film.h"
#include "graphics/Image.h"
#include "speclang/SpecColor.h"
#include "speclang/SpecExpression.h"

#include <cmath>
#include <numbers>

namespace tw {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double degrees = pi / 180;
// How many pixels of coarse drag a wheel notch is worth at least.
constexpr std::int32_t wheelPixels = 8;

}  // namespace

KnobView::KnobView(CushyView& layout, const IntRect& rect, const SpecMap& spec)
    : ValueControlView(layout, spec), zoom_(layout.zoom().factor()) {
    CushyHost& host = layout.host();
    const auto [lower, upper] = parsePair(lookup(spec, "range"), {0, 1});
    value_.lower = lower, value_.upper = upper;
    value_.defaultValue = evaluateDouble(lookup(spec, "default"), 0);
    value_.value = std::clamp(value_.defaultValue, std::min(lower, upper), std::max(lower, upper));
    const auto [start, extent] = parsePair(lookup(spec, "sweep"), {-135, 270});
    sweepStart_ = start * degrees, sweepExtent_ = extent * degrees;

    if (const std::string& raw = lookup(spec, "transmission"); !raw.empty()) {
        const SpecMap gear = parseMap(raw);
        resolution_ = std::max(evaluateInt(lookup(gear, "resolution"), 1), 1);
        const std::int32_t vertical = evaluateInt(lookup(gear, "vertical"), 200);
        const std::int32_t horizontal = evaluateInt(lookup(gear, "horizontal"), 200);
        const double fine = evaluateDouble(lookup(gear, "fine"), 10) / 100;
        verticalStep_ = vertical == 0 ? 0 : double(resolution_) / vertical;
        horizontalStep_ = horizontal == 0 ? 0 : double(resolution_) / horizontal;
        verticalFine_ = verticalStep_ * fine, horizontalFine_ = horizontalStep_ * fine;
    }

    if (const std::string& raw = lookup(spec, "snap"); !raw.empty()) {
        if (raw.starts_with("{")) {
            const SpecMap snap = parseMap(raw);
            snapValue_ = evaluateDouble(lookup(snap, "value"), value_.defaultValue);
            snapArea_ = evaluateDouble(lookup(snap, "area"), 4);
            if (const std::string& image = lookup(snap, "image"); !image.empty()) snapImage_ = host.image(layout, image);
            snapFrame_ = parseStroke(lookup(snap, "frame"), 0xFF000000);
            snapDial_ = parseStroke(lookup(snap, "dial"), 0xFF000000);
            snapColor_ = parseColor(lookup(snap, "color"), 0);
        } else if (toBool(raw, false)) {
            snapValue_ = value_.defaultValue;
        }
    }

    if (const std::string& raw = lookup(spec, "cap"); !raw.empty()) {
        const SpecMap cap = parseMap(raw);
        hasCap_ = true;
        const double size = evaluateDouble(lookup(cap, "size"), std::min(rect.width, rect.height));
        capRadius_ = size / 2 * evaluateDouble(lookup(cap, "scale"), 100) / 100;
        const auto [dx, dy] = parsePair(lookup(cap, "offset"), {0, 0});
        capX_ = rect.width / 2.0 + dx, capY_ = rect.height / 2.0 + dy;
        capAngle_ = evaluateDouble(lookup(cap, "angle"), 0) * degrees;
        capFrame_ = parseStroke(lookup(cap, "frame"), 0xFF000000);
        capColor_ = parseColor(lookup(cap, "color"), 0);
        if (const std::string& image = lookup(cap, "image"); !image.empty()) capImage_ = host.image(layout, image);
    } else {
        capRadius_ = std::min(rect.width, rect.height) / 2.0;
        capX_ = rect.width / 2.0, capY_ = rect.height / 2.0;
    }
    dial_ = parseStroke(lookup(spec, "dial"), 0xFF000000);

    if (const std::string& raw = lookup(spec, "film"); !raw.empty()) {
        const SpecMap film = parseMap(raw);
        film_ = readFilm(layout, film);
        const auto [x, y] = parseIntPair(lookup(film, "offset"), {0, 0});
        filmX_ = x, filmY_ = y;
    }
}

KnobView::~KnobView() = default;

double KnobView::angleOf(double value) const {
    const double span = value_.upper - value_.lower;
    const double f = span == 0 ? 0 : std::clamp((value - value_.lower) / span, 0.0, 1.0);
    return sweepStart_ + f * sweepExtent_;
}

IntRect KnobView::focusOutline(double& radius) const {
    radius = std::min(frame_.width, frame_.height) / 2.0;
    return frame_;
}

std::int32_t KnobView::frameIndex() const {
    if (!film_) return -1;
    const std::int32_t frames = film_->frameCount();
    const double f = sweepExtent_ == 0 ? 0 : std::clamp((angleOf(value_.value) - sweepStart_) / sweepExtent_, 0.0, 1.0);
    return std::clamp(std::int32_t(std::floor((frames - 1) * f + 0.5)), 0, frames - 1);
}

void KnobView::paint(Raster32& canvas, const IntRect&) {
    if (film_) {
        film_->drawFrame(canvas, frameIndex(), filmX_, filmY_);
        return;
    }
    const double r = capRadius_;
    if (snapValue_) {
        const double a = angleOf(*snapValue_);
        const double sx = std::sin(a), sy = -std::cos(a);
        if (snapImage_) {
            const IntRect b = snapImage_->getBounds();
            snapImage_->draw(canvas, std::int32_t(std::floor(capX_ + sx * (r + snapArea_) - b.width / 2.0)),
                             std::int32_t(std::floor(capY_ + sy * (r + snapArea_) - b.height / 2.0)));
        }
        if (snapColor_ != 0 || snapFrame_.width > 0) {
            VectorPath dot;
            dot.addCircle(capX_ + sx * (r + snapArea_), capY_ + sy * (r + snapArea_), snapArea_, 1);
            fillShape(canvas, dot, snapColor_, BlendMode::normal);
            strokeShape(canvas, dot, snapFrame_, BlendMode::normal);
        }
        VectorPath tick;
        tick.moveTo(capX_ + sx * (r - snapArea_), capY_ + sy * (r - snapArea_));
        tick.lineTo(capX_ + sx * (r + snapArea_), capY_ + sy * (r + snapArea_));
        strokeShape(canvas, tick, snapDial_, BlendMode::normal);
    }
    if (capImage_) {
        const IntRect b = capImage_->getBounds();
        capImage_->draw(canvas, std::int32_t(std::floor(capX_ - b.width / 2.0)),
                        std::int32_t(std::floor(capY_ - b.height / 2.0)));
    }
    if (capColor_ != 0 || capFrame_.width > 0) {
        VectorPath disc;
        disc.addCircle(capX_, capY_, r - capFrame_.width / 2, 1);
        fillShape(canvas, disc, capColor_, BlendMode::normal);
        strokeShape(canvas, disc, capFrame_, BlendMode::normal);
    }
    const double a = angleOf(value_.value) + capAngle_;
    VectorPath dial;
    dial.moveTo(capX_ + std::sin(a) * r / 3, capY_ - std::cos(a) * r / 3);
    dial.lineTo(capX_ + std::sin(a) * (r - dial_.width - 1), capY_ - std::cos(a) * (r - dial_.width - 1));
    strokeShape(canvas, dial, dial_, BlendMode::normal);
}

void KnobView::grab(const MouseEvent& event, bool ctrl) {
    grab_ = Grab{event.x, event.y, value_.value, event.shift, ctrl, event.alt};
}

double KnobView::snapped(double value, double step) const {
    if (!snapValue_) return value;
    const double snap = *snapValue_;
    // Eight pixels of drag stay on the snap point.
    const double d = std::fabs(value_.upper - value_.lower) * 8 * step;
    const double start = grab_.value;
    if (start == snap) {
        if (value > snap) return std::max(value - d, snap);
        if (value < snap) return std::min(value + d, snap);
        return value;
    }
    if (start > snap) return value >= snap ? value : std::min(value + 2 * d, snap);
    return value <= snap ? value : std::max(value - 2 * d, snap);
}

double KnobView::dragValue(const MouseEvent& event) const {
    const double r = resolution_;
    // A drag is measured in the layout's own pixels, so a knob turns as far for the same
    // hand movement on the screen at every zoom.
    const double dx = std::floor((event.x - grab_.x) / zoom_ / r + 0.5);
    const double dy = std::floor((grab_.y - event.y) / zoom_ / r + 0.5);
    const double vStep = event.shift ? verticalFine_ : verticalStep_;
    const double hStep = event.shift ? horizontalFine_ : horizontalStep_;
    const double value = grab_.value + (value_.upper - value_.lower) * (dy * vStep + dx * hStep);
    return snapped(value, std::max(vStep, hStep));
}

double KnobView::angleValue(const MouseEvent& event) const {
    const double a = std::atan2(event.x - capX_, capY_ - event.y);
    const double c = pi - sweepExtent_ / 2;
    double t = std::fmod(a - sweepStart_ + c, 2 * pi);
    if (t < 0) t += 2 * pi;
    const double span = value_.upper - value_.lower;
    double value = sweepExtent_ == 0 ? value_.lower : value_.lower + (t - c) * span / sweepExtent_;
    if (snapValue_ && std::fabs(value - *snapValue_) <= std::fabs(span) / 32) value = *snapValue_;
    return value;
}

bool KnobView::mouseDown(const MouseEvent& event) {
    if (event.button != leftButton || readOnly_) return false;
    if (hasCap_) {
        const double dx = event.x + 0.5 - capX_, dy = event.y + 0.5 - capY_;
        if (dx * dx + dy * dy > capRadius_ * capRadius_) return false;
    }
    const ViewRef keep = weak_from_this().lock();
    grab(event, event.ctrl);
    holdForDrag(event);
    if (grab_.ctrl) write(value_.defaultValue);
    return true;
}

void KnobView::mouseMove(const MouseEvent& event) {
    if (!dragging_) {
        HintedView::mouseMove(event);
        return;
    }
    // A change of gear starts the drag afresh where it stands, so the value doesn't jump.
    if (event.shift != grab_.shift || event.alt != grab_.alt) grab(event, grab_.ctrl);
    if (grab_.ctrl) {
        write(value_.defaultValue);
        return;
    }
    write(event.alt ? angleValue(event) : dragValue(event));
}

bool KnobView::mouseWheel(const MouseEvent& event) {
    if (readOnly_ || dragging_ || event.wheel == 0) return false;
    double step = verticalStep_ != 0 ? verticalStep_ : horizontalStep_;
    double fine = verticalStep_ != 0 ? verticalFine_ : horizontalFine_;
    // A notch is at least a few pixels of drag, so a plain knob doesn't crawl.
    const double pixels = std::max(resolution_, wheelPixels) / double(resolution_);
    const double perNotch = std::floor(pixels + 0.5) * (event.shift ? fine : step);
    wheel_.begin();
    const double before = value_.value;
    double value = before + (value_.upper - value_.lower) * perNotch * event.wheel;
    // The wheel stops on the snap point on its way past.
    if (snapValue_ && before != *snapValue_ && (before < *snapValue_) != (value < *snapValue_)) value = *snapValue_;
    write(value);
    wheel_.rearm(window_);
    return true;
}

}  // namespace tw
