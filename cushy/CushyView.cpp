#include "cushy/CushyView.h"

#include "cushy/ClickView.h"

#include "cushy/CushyActions.h"
#include "cushy/CushyHost.h"
#include "cushy/HintWindow.h"
#include "cushy/HintedView.h"
#include "cushy/MessageBox.h"
#include "cushy/TagExpansion.h"
#include "cushy/VariableReading.h"
#include "cushy/ViewFactory.h"
#include "platform/Exception.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

// Seconds of a layout as whole milliseconds, held to 32 bits.
std::int32_t milliseconds(const std::string& raw) {
    const double ms = std::floor(evaluateDouble(raw, 0) * 1000 + 0.5);
    if (!(ms == ms)) return 0;
    return ms >= 2147483647.0 ? 2147483647 : ms <= -2147483647.0 ? -2147483647 : std::int32_t(ms);
}

// The square around the pointer inside which a "hint" action's hint stays up.
constexpr std::int32_t actionHintReach = 5;

}  // namespace

CushyView::CushyView(CushyHost& host, const IntRect& defaultRect) : host_(&host), defaultRect_(defaultRect) {
    resize(defaultRect);
}

CushyView::~CushyView() {
    if (window_ != nullptr) {
        cancelTimers(window_->timers());
        window_->timers().cancel(this);
    }
    if (hintWindow_) hintWindow_->hide(*this);
}

std::string CushyView::title() { return host_->title(); }

void CushyView::dispose() {
    if (window_ != nullptr) cancelTimers(window_->timers());
    hideActionHint();
    hintViews_.clear();
    controls_.clear();
    refreshers_.clear();
    autoexecs_.clear();
    hintWindow_.reset();
    debugOverlay_.reset();
    if (mouseInside_) mouseLeave(0);
    removeAllChildren();
    View::dispose();
}

void CushyView::mouseMove(const MouseEvent& event) {
    ContainerView::mouseMove(event);
    lastMouse_ = {screenFrame_.left + event.x, screenFrame_.top + event.y};
    if (!hintRect_.isEmpty() && !frameHolds(hintRect_, lastMouse_.x, lastMouse_.y)) hideActionHint();
}

void CushyView::mouseLeave(std::uint32_t time) {
    ContainerView::mouseLeave(time);
    hideActionHint();
}

void CushyView::refresh() {
    if (!layoutVariable_.empty()) {
        const std::string name = host_->getVariable(*this, layoutVariable_);
        if (name != currentLayout_) {
            try {
                load(name);
            } catch (const std::exception& e) {
                reportLater(e.what());
            }
        }
    }
    const auto controls = controls_;
    for (const auto& [view, variable] : controls) syncControl(*view, variable);
    const auto hints = hintViews_;
    for (const auto& [view, raw] : hints) renewHint(static_cast<HintedView&>(*view), raw);
    ContainerView::refresh();
}

void CushyView::attached(Window& window) {
    ContainerView::attached(window);
    startTimers();
}

void CushyView::detached(Window& window) {
    cancelTimers(window.timers());
    window.timers().cancel(this);
    hideActionHint();
    ContainerView::detached(window);
}

void CushyView::load(const std::string& name) {
    if (window_ != nullptr) cancelTimers(window_->timers());
    autoexecs_.clear();
    keys_.clear();
    removeAllChildren();
    currentLayout_ = name;
    if (name.empty()) {
        if (window_ != nullptr) startTimers();
        return;
    }
    const SpecMap layout = zoom_.zoomLayout(parseMap(host_->layoutSource(*this, name)));
    build(layout);
    for (const std::string& item : parseList(lookup(layout, "autoexecs"))) {
        const SpecMap spec = parseMap(item);
        auto autoexec = std::make_shared<Autoexec>();
        autoexec->owner = this;
        autoexec->action = unquote(lookup(spec, "action"));
        autoexec->params = unquote(lookup(spec, "params"));
        autoexec->delay = milliseconds(lookup(spec, "delay"));
        // A repeat below zero would be due again at once, for ever: it runs once.
        autoexec->repeat = std::max(milliseconds(lookup(spec, "repeat")), 0);
        autoexecs_.push_back(std::move(autoexec));
    }
    keys_ = parseKeyBindings(lookup(layout, "keys"));
    if (window_ != nullptr) startTimers();
}

void CushyView::addValueEntry(const std::string& variable, View& view) { valueEntries_[variable] = &view; }

bool CushyView::runValueEntry(const std::string& variable) {
    const auto found = valueEntries_.find(variable);
    auto* click = found != valueEntries_.end() ? dynamic_cast<ClickView*>(found->second) : nullptr;
    return click != nullptr && click->activate();
}

bool CushyView::runKey(const KeyEvent& event) {
    const KeyBinding* binding = findKeyBinding(keys_, event);
    if (binding == nullptr) return false;
    // Copied: the action may load another layout and these bindings with it.
    const KeyBinding run = *binding;
    if (!event.repeat) runAction(run.action, run.params);
    return true;
}

void CushyView::build(const SpecMap& spec) {
    const std::string& bounds = lookup(spec, "bounds");
    if (bounds.empty()) {
        resize(defaultRect_);
    } else {
        const SpecRect r = parseBounds(bounds, SpecRect{defaultRect_.left, defaultRect_.top,
                                                        std::int32_t(defaultRect_.right()),
                                                        std::int32_t(defaultRect_.bottom())});
        resize(IntRect{r.left, r.top, std::int32_t(std::int64_t(r.right) - r.left),
                       std::int32_t(std::int64_t(r.bottom) - r.top)});
    }
    for (const std::string& item : parseList(lookup(spec, "views"))) createView(*this, *this, parseMap(item));
}

void CushyView::startTimers() {
    TimerQueue& timers = window_->timers();
    const std::uint32_t now = timers.now();
    for (const auto& [view, refresher] : refreshers_) timers.schedule(refresher.get(), 0, now + std::uint32_t(refresher->period));
    // One without a delay runs as soon as the queue runs, outside the attachment.
    for (const auto& autoexec : autoexecs_) timers.schedule(autoexec.get(), 0, now + std::uint32_t(autoexec->delay));
}

void CushyView::cancelTimers(TimerQueue& timers) {
    for (const auto& [view, refresher] : refreshers_) timers.cancel(refresher.get());
    for (const auto& autoexec : autoexecs_) timers.cancel(autoexec.get());
}

void CushyView::Autoexec::timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int) {
    // The action may reload the layout, which drops this record, or empty the view.
    const std::shared_ptr<View> keepOwner = owner->weak_from_this().lock();
    CushyView* const layout = owner;
    std::shared_ptr<Autoexec> self;
    for (const auto& a : layout->autoexecs_)
        if (a.get() == this) self = a;
    layout->runAction(action, params);
    const bool stillThere = std::find(layout->autoexecs_.begin(), layout->autoexecs_.end(), self) != layout->autoexecs_.end();
    if (repeat != 0 && stillThere && layout->window() != nullptr) queue.schedule(this, 0, due + std::uint32_t(repeat));
}

void CushyView::AutoRefresh::timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int) {
    CushyView* const layout = owner;
    View* const target = view;
    const std::int32_t every = period;
    if (target->stopped()) return;
    if (const auto control = layout->controls_.find(target); control != layout->controls_.end())
        layout->syncControl(*target, control->second);
    if (const auto hint = layout->hintViews_.find(target); hint != layout->hintViews_.end())
        layout->renewHint(static_cast<HintedView&>(*target), hint->second);
    try {
        target->refresh();
    } catch (const std::exception& e) {
        target->stopOnFault(e.what());
        return;
    }
    // The refresh may have removed the view, and this record with it.
    if (layout->refreshers_.count(target) != 0 && layout->window() != nullptr)
        queue.schedule(this, 0, due + std::uint32_t(every));
}

void CushyView::timerFired(TimerQueue&, std::uint32_t due, std::uint32_t now, int id) {
    timerPending_ = window_ != nullptr && (window_->timers().isScheduled(this, reloadEvent) ||
                                           window_->timers().isScheduled(this, updateEvent) ||
                                           window_->timers().isScheduled(this, errorEvent));
    const std::shared_ptr<View> keep = weak_from_this().lock();
    event(due, now, id);
}

void CushyView::event(std::uint32_t, std::uint32_t, int code) {
    try {
        if (code == reloadEvent) host_->reload(*this);
        if (code == updateEvent) host_->update(*this);
        if (code == errorEvent && !pendingErrors_.empty()) {
            const std::string message = pendingErrors_.front();
            pendingErrors_.erase(pendingErrors_.begin());
            showError(message);
        }
    } catch (const std::exception& e) {
        showError(e.what());
    }
}

void CushyView::postEvent(int code) {
    if (window_ == nullptr) {
        // Detached there is no queue: the event happens now.
        event(0, 0, code);
        return;
    }
    timerPending_ = true;
    window_->timers().add(this, code, 0);
}

void CushyView::runAction(const std::string& action, const std::string& params) {
    const std::shared_ptr<View> keep = weak_from_this().lock();
    std::string error;
    bool failed = false;
    try {
        if (!isEnabled(action, params)) return;
        execute(action, params);
    } catch (const Exception& e) {
        failed = true;
        error = e.message();
    } catch (const std::exception&) {
        failed = true;
    }
    postEvent(updateEvent);
    if (failed) showError(error);
}

void CushyView::execute(const std::string& action, const std::string& params) { executeAction(*this, action, params); }

bool CushyView::isEnabled(const std::string& action, const std::string& params) {
    return actionEnabled(*this, action, params);
}

bool CushyView::isChecked(const std::string& action, const std::string& params) {
    return actionChecked(*this, action, params);
}

void CushyView::showError(const std::string& message) {
    if (host_->reportError(*this, message)) return;
    showMessageBox(*this, "Error", message.empty() ? "Unexpected error!" : message, AlertType::error, AlertButtons::ok,
                   AlertButton::ok);
}

void CushyView::watchHint(HintedView& view, const std::string& raw) { hintViews_[&view] = raw; }

void CushyView::addControl(View& view, const std::string& variable) { controls_[&view] = variable; }

void CushyView::addAutoRefresh(View& view, std::int32_t period) {
    auto refresher = std::make_unique<AutoRefresh>();
    refresher->owner = this;
    refresher->view = &view;
    refresher->period = period;
    if (window_ != nullptr) {
        if (const auto old = refreshers_.find(&view); old != refreshers_.end()) window_->timers().cancel(old->second.get());
        window_->timers().schedule(refresher.get(), 0, window_->timers().now() + std::uint32_t(period));
    }
    refreshers_[&view] = std::move(refresher);
}

void CushyView::childRemoved(View& child) { unregister(child); }

void CushyView::faultBelow(const std::string& message) { reportLater(message); }

void CushyView::reportLater(const std::string& message) {
    pendingErrors_.push_back(message);
    postEvent(errorEvent);
}

void CushyView::unregister(View& view) {
    hintViews_.erase(&view);
    std::erase_if(valueEntries_, [&](const auto& entry) { return entry.second == &view; });
    controls_.erase(&view);
    if (const auto found = refreshers_.find(&view); found != refreshers_.end()) {
        if (window_ != nullptr) window_->timers().cancel(found->second.get());
        refreshers_.erase(found);
    }
    // Views inside a removed group were registered here too; a nested layout keeps its own.
    if (dynamic_cast<CushyView*>(&view) != nullptr) return;
    if (auto* container = dynamic_cast<ContainerView*>(&view))
        for (const ViewRef& child : container->children()) unregister(*child);
}

void CushyView::renewHint(HintedView& view, const std::string& raw) {
    std::string text = expand(raw, *host_, *this);
    if (text != view.hintText() || view.hintIsPattern()) view.replaceHint(std::move(text));
}

void CushyView::syncControl(View& view, const std::string& variable) {
    auto* control = dynamic_cast<ValueControl*>(&view);
    if (control == nullptr) return;
    control->setWritable(host_->isWritable(*this, variable));
    if (View::captureHolder() == &view) return;
    control->takeValue(variableNumber(host_->getVariable(*this, variable), control->defaultValue()));
}

void CushyView::showActionHint(const std::string& text, std::int32_t x, std::int32_t y) {
    if (!hintWindow_) return;
    hintRect_ = IntRect{lastMouse_.x - actionHintReach, lastMouse_.y - actionHintReach, 2 * actionHintReach + 1,
                        2 * actionHintReach + 1};
    hintWindow_->showNow(*this, text, x, y);
}

void CushyView::hideActionHint() {
    hintRect_ = IntRect{};
    if (hintWindow_) hintWindow_->hide(*this);
}

}  // namespace tw
