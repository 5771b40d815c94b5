#include "cushy/SliderView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/FilmSpec.h"
#include "cushy/ShapeFill.h"
#include "graphics/Film.h"
#include "graphics/Image.h"
#include "platform/Exception.h"
#include "speclang/SpecColor.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <cmath>
#include <numbers>

namespace tw {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double degrees = pi / 180;
constexpr double wheelPixels = 8;

double capRoundness(const std::string& raw) {
    if (raw.empty()) return 0;
    if (raw == "true") return 100;
    if (raw == "false") return 0;
    double percent = -1;
    if (!raw.starts_with("{")) {
        try {
            percent = evaluateDouble(raw, -1);
        } catch (const Exception&) {
            percent = -1;
        }
    }
    if (!(percent >= 0 && percent <= 100)) throw FormatException("Unsupported cap roundness: " + quote(raw));
    return percent;
}

}  // namespace

SliderView::SliderView(CushyView& layout, const IntRect& rect, const SpecMap& spec)
    : ValueControlView(layout, spec), fineRatio_(evaluateDouble(lookup(spec, "fineRatio"), 10) / 100) {
    CushyHost& host = layout.host();
    const auto [lower, upper] = parsePair(lookup(spec, "range"), {0, 1});
    value_.lower = lower, value_.upper = upper;
    value_.defaultValue = evaluateDouble(lookup(spec, "default"), 0);
    value_.value = std::clamp(value_.defaultValue, std::min(lower, upper), std::max(lower, upper));

    const SpecMap slit = parseMap(lookup(spec, "slit"));
    const double midX = rect.width / 2.0, midY = rect.height / 2.0;
    if (slit.count("center") != 0 && slit.count("radius") != 0) {
        arc_ = true;
        std::tie(cx_, cy_) = parsePair(lookup(slit, "center"), {midX, midY});
        radius_ = evaluateDouble(lookup(slit, "radius"), std::min(midX, midY));
        const auto [start, extent] = parsePair(lookup(slit, "sweep"), {-135, 270});
        arcStart_ = start * degrees, arcExtent_ = extent * degrees;
        length_ = std::fabs(radius_ * arcExtent_);
    } else {
        std::tie(x0_, y0_) = parsePair(lookup(slit, "start"), {midX, midY});
        std::tie(x1_, y1_) = parsePair(lookup(slit, "end"), {midX, midY});
        length_ = std::hypot(x1_ - x0_, y1_ - y0_);
    }
    if (!(length_ > 0)) length_ = 1;
    thickness_ = evaluateDouble(lookup(slit, "thickness"), 0);
    slitColor_ = parseColor(lookup(slit, "color"), 0);

    const SpecMap cap = parseMap(lookup(spec, "cap"));
    capRound_ = capRoundness(lookup(cap, "rounded"));
    std::tie(capWidth_, capHeight_) = parsePair(lookup(cap, "size"), {12 * layout.zoom().factor(), 12 * layout.zoom().factor()});
    const double scale = evaluateDouble(lookup(cap, "scale"), 100) / 100;
    capWidth_ *= scale, capHeight_ *= scale;
    capColor_ = parseColor(lookup(cap, "color"), 0);
    if (const std::string& image = lookup(cap, "image"); !image.empty()) capImage_ = host.image(layout, image);

    if (const std::string& raw = lookup(spec, "snap"); !raw.empty()) {
        if (raw.starts_with("{")) {
            const SpecMap snap = parseMap(raw);
            snapValue_ = evaluateDouble(lookup(snap, "value"), value_.defaultValue);
            snapArea_ = evaluateDouble(lookup(snap, "area"), 4);
        } else if (toBool(raw, false)) {
            snapValue_ = value_.defaultValue;
        }
    }
    if (const std::string& raw = lookup(spec, "film"); !raw.empty()) {
        const SpecMap film = parseMap(raw);
        film_ = readFilm(layout, film);
    }
}

SliderView::~SliderView() = default;

Point SliderView::pointAt(double fraction) const {
    if (arc_) {
        const double a = arcStart_ + fraction * arcExtent_;
        return Point{cx_ + std::sin(a) * radius_, cy_ - std::cos(a) * radius_};
    }
    return Point{x0_ + (x1_ - x0_) * fraction, y0_ + (y1_ - y0_) * fraction};
}

double SliderView::fractionAt(double x, double y) const {
    if (arc_) {
        if (arcExtent_ == 0) return 0;
        // The angle is read from the middle of the gap, so that the gap splits at its middle.
        const double a = std::atan2(x - cx_, cy_ - y);
        const double c = pi - arcExtent_ / 2;
        double t = std::fmod(a - arcStart_ + c, 2 * pi);
        if (t < 0) t += 2 * pi;
        return (t - c) / arcExtent_;
    }
    const double dx = x1_ - x0_, dy = y1_ - y0_;
    return ((x - x0_) * dx + (y - y0_) * dy) / (length_ * length_);
}

void SliderView::paint(Raster32& canvas, const IntRect&) {
    const double f = value_.fraction();
    if (film_) {
        const std::int32_t frames = film_->frameCount();
        film_->drawFrame(canvas, std::clamp(std::int32_t(std::floor((frames - 1) * f + 0.5)), 0, frames - 1), 0, 0);
        return;
    }
    if (thickness_ > 0 && slitColor_ != 0) {
        VectorPath path;
        const int segments = arc_ ? std::max(8, int(length_ / 4)) : 1;
        for (int i = 0; i <= segments; ++i) {
            const Point p = pointAt(double(i) / segments);
            if (i == 0) path.moveTo(p.x, p.y);
            else path.lineTo(p.x, p.y);
        }
        Stroke slit;
        slit.color = slitColor_, slit.width = thickness_, slit.caps = StrokeCaps::round;
        strokeShape(canvas, path, slit, BlendMode::normal);
    }
    const Point p = pointAt(f);
    if (capColor_ != 0) {
        VectorPath cap;
        const double rx = capWidth_ / 2 * capRound_ / 100, ry = capHeight_ / 2 * capRound_ / 100;
        cap.addRoundedRect(p.x - capWidth_ / 2, p.y - capHeight_ / 2, capWidth_, capHeight_, rx, ry, 1);
        fillShape(canvas, cap, capColor_, BlendMode::normal);
    }
    if (capImage_) {
        const IntRect b = capImage_->getBounds();
        capImage_->draw(canvas, std::int32_t(std::floor(p.x - b.width / 2.0)), std::int32_t(std::floor(p.y - b.height / 2.0)));
    }
}

void SliderView::change(double value) {
    if (snapValue_ && value_.upper != value_.lower) {
        const double pixels = std::fabs(value - *snapValue_) / std::fabs(value_.upper - value_.lower) * length_;
        if (pixels <= snapArea_) value = *snapValue_;
    }
    write(value);
}

bool SliderView::mouseDown(const MouseEvent& event) {
    if (event.button != leftButton || readOnly_) return false;
    const ViewRef keep = weak_from_this().lock();
    grabFraction_ = fractionAt(event.x + 0.5, event.y + 0.5);
    grabValue_ = value_.value;
    grabShift_ = event.shift, grabCtrl_ = event.ctrl;
    holdForDrag(event);
    if (grabCtrl_) change(value_.defaultValue);
    return true;
}

void SliderView::mouseMove(const MouseEvent& event) {
    if (!dragging_) {
        HintedView::mouseMove(event);
        return;
    }
    if (grabCtrl_) return;
    const double f = fractionAt(event.x + 0.5, event.y + 0.5);
    if (event.shift != grabShift_) {
        grabFraction_ = f, grabValue_ = value_.value, grabShift_ = event.shift;
        return;
    }
    const double gear = event.shift ? fineRatio_ : 1;
    change(grabValue_ + (f - grabFraction_) * gear * (value_.upper - value_.lower));
}

bool SliderView::mouseWheel(const MouseEvent& event) {
    if (readOnly_ || dragging_ || event.wheel == 0) return false;
    wheel_.begin();
    const double step = wheelPixels / length_ * (event.shift ? fineRatio_ : 1);
    change(value_.value + step * event.wheel * (value_.upper - value_.lower));
    wheel_.rearm(window_);
    return true;
}

}  // namespace tw
