// The view type "cushy" with `transitions`: a layout named by a variable that comes and
// goes by the transitions of the layout being shown (fading, scaling, moving and turning
// inside the TransformView that holds it), and that turns back from mid-flight without a
// jump when the variable changes its mind. The about box and the message bubble use it.
#pragma once

#include <string>

#include "cushy/CushyView.h"
#include "cushy/Transition.h"

namespace tw {

class TransformView;

class TransitionLayout : public CushyView {
public:
    static constexpr int frameEvent = 101011;

    // The five values of a shown state.
    struct State {
        double opacity = 1, scale = 1, offsetX = 0, offsetY = 0, rotation = 0;
    };
    enum class Event { none, open, close, swapIn, swapOut };

    TransitionLayout(CushyHost& host, const IntRect& rect, std::string variable);

    // Watches the variable, then refreshes the layout shown.
    void refresh() override;
    void build(const SpecMap& spec) override;
    void event(std::uint32_t due, std::uint32_t now, int code) override;
    void detached(Window& window) override;

    const std::string& watchedLayout() const { return current_; }
    double progress() const { return progress_; }
    bool running() const { return running_; }
    Event active() const { return activeEvent_; }
    // What is shown now: the blend of `from` and `to` at the present progress.
    State shown() const;

private:
    const std::optional<Transition>& record(Event event) const;
    void start(Event event, bool forced);
    void apply();
    void show(const std::string& name);
    TransformView* frameView() const;

    std::string variable_;
    std::string current_;
    Transitions records_;
    Transition active_;
    Event activeEvent_ = Event::none;
    bool running_ = false;
    double progress_ = 1;
    State from_, to_;
};

}  // namespace tw
