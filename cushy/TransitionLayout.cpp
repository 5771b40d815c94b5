#include "cushy/TransitionLayout.h"

#include "cushy/AnimationView.h"
#include "cushy/CushyHost.h"
#include "cushy/TransformView.h"

#include <algorithm>

namespace tw {

namespace {

using State = TransitionLayout::State;

State recordState(const Transition& t) { return State{t.opacity, t.scale, t.offsetX, t.offsetY, t.rotation}; }

// Each value with the curve of its kind; offsets share one.
template <class Each>
void forEachValue(State& a, const State& b, const Transition& t, Each each) {
    each(a.opacity, b.opacity, t.opacityCurve);
    each(a.scale, b.scale, t.scaleCurve);
    each(a.offsetX, b.offsetX, t.offsetCurve);
    each(a.offsetY, b.offsetY, t.offsetCurve);
    each(a.rotation, b.rotation, t.rotationCurve);
}

}  // namespace

TransitionLayout::TransitionLayout(CushyHost& host, const IntRect& rect, std::string variable)
    : CushyView(host, rect), variable_(std::move(variable)) {}

TransformView* TransitionLayout::frameView() const { return dynamic_cast<TransformView*>(parent()); }

void TransitionLayout::build(const SpecMap& spec) {
    records_ = readTransitions(lookup(spec, "transitions"));
    CushyView::build(spec);
}

const std::optional<Transition>& TransitionLayout::record(Event event) const {
    static const std::optional<Transition> none;
    switch (event) {
        case Event::open: return records_.open;
        case Event::close: return records_.close;
        case Event::swapIn: return records_.swapIn;
        case Event::swapOut: return records_.swapOut;
        case Event::none: break;
    }
    return none;
}

State TransitionLayout::shown() const {
    if (progress_ >= 0.99999) return State{};
    State out = from_;
    forEachValue(out, to_, active_, [&](double& v, double to, double curve) { v += (to - v) * curveFactor(progress_, curve); });
    return out;
}

void TransitionLayout::start(Event event, bool forced) {
    if (running_ && window_ != nullptr) window_->timers().cancel(this, frameEvent);
    running_ = false;
    activeEvent_ = event;
    const std::optional<Transition>& r = record(event);
    if (!r) {
        progress_ = 1;
        apply();
        return;
    }
    const State now = shown();
    const Transition t = *r;
    if (forced || t.restart || progress_ < 0.001 || progress_ >= 0.999) {
        from_ = recordState(t);
        to_ = State{};
        progress_ = t.step > 0 ? 0 : 1;
    } else if (t.step > 0) {
        // Taking over in mid-flight: the far end is solved so that what is shown stays.
        to_ = State{};
        from_ = now;
        forEachValue(from_, to_, t, [&](double& v, double to, double curve) {
            const double f = curveFactor(progress_, curve);
            if (f < 1) v = (v - f * to) / (1 - f);
        });
    } else {
        from_ = recordState(t);
        to_ = now;
        forEachValue(to_, from_, t, [&](double& v, double from, double curve) {
            const double f = curveFactor(progress_, curve);
            if (f > 0) v = (v - (1 - f) * from) / f;
        });
    }
    active_ = t;
    apply();
    if (window_ == nullptr) return;
    running_ = true;
    window_->timers().add(this, frameEvent, std::uint32_t(t.period));
}

void TransitionLayout::apply() {
    TransformView* frame = frameView();
    if (frame == nullptr) return;
    const State s = shown();
    frame->setTransform(TransformView::aroundCentre(frame->size(), s.scale, s.rotation, s.offsetX, s.offsetY), s.opacity);
    invalidateAll();
}

void TransitionLayout::event(std::uint32_t due, std::uint32_t now, int code) {
    if (code != frameEvent) {
        CushyView::event(due, now, code);
        return;
    }
    progress_ = std::clamp(progress_ + active_.step, 0.0, 1.0);
    apply();
    if (progress_ > 0 && progress_ < 1 && window_ != nullptr) {
        window_->timers().schedule(this, frameEvent, due + std::uint32_t(active_.period));
        return;
    }
    running_ = false;
    refresh();
}

void TransitionLayout::detached(Window& window) {
    window.timers().cancel(this, frameEvent);
    running_ = false;
    CushyView::detached(window);
}

void TransitionLayout::show(const std::string& name) {
    current_ = name;
    records_ = Transitions{};
    load(name);
}

void TransitionLayout::refresh() {
    const std::string wanted = host().getVariable(*this, variable_);
    try {
        if (!current_.empty() && wanted.empty()) {
            if (activeEvent_ != Event::close) start(Event::close, false);
            if (!running_ && progress_ <= 0.0) show("");
            else if (!records_.close) show("");
        } else if (current_.empty() && !wanted.empty()) {
            show(wanted);
            start(Event::open, true);
        } else if (!wanted.empty() && wanted != current_) {
            if (activeEvent_ != Event::swapOut) start(Event::swapOut, false);
            if (!running_ && (progress_ <= 0.0 || !records_.swapOut)) {
                show(wanted);
                start(Event::swapIn, true);
            }
        } else if (!wanted.empty() && (activeEvent_ == Event::swapOut || activeEvent_ == Event::close)) {
            start(activeEvent_ == Event::close ? Event::open : Event::swapIn, false);
        }
    } catch (const std::exception& e) {
        reportLater(e.what());
    }
    CushyView::refresh();
}

}  // namespace tw
