// The root of one layout (and the view type "cushy"): it loads a layout text into a tree of
// views, keeps the lists of what must be watched at refresh (controls, hints with
// variables, views with their own refresh rate), runs the layout's autoexecs, owns the
// guarded path of actions, and shows errors. A "cushy" child with a layout variable shows
// the layout that the variable names, over everything before it: the modal layouts.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cushy/ContainerView.h"
#include "cushy/KeyBinding.h"
#include "cushy/LayoutZoom.h"
#include "platform/TimerQueue.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyHost;
class DebugOverlay;
class HintWindow;
class HintedView;
class ValueControl;

class CushyView : public ContainerView, public TimerHandler {
public:
    // The events a layout posts to itself, to run after the current call has returned.
    static constexpr int reloadEvent = 101010;
    static constexpr int updateEvent = 101012;
    // A fault of a refresh (a layout variable naming a bad layout), shown from the queue:
    // a refresh never runs a modal loop, so that no walk over the tree is cut short.
    static constexpr int errorEvent = 101013;

    // A layout run every `repeat` ms (0: once), first `delay` ms after attachment.
    struct Autoexec final : TimerHandler {
        CushyView* owner = nullptr;
        std::string action;
        std::string params;
        std::int32_t delay = 0;
        std::int32_t repeat = 0;
        void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;
    };
    // A view refreshed on its own every `period` ms.
    struct AutoRefresh final : TimerHandler {
        CushyView* owner = nullptr;
        View* view = nullptr;
        std::int32_t period = 0;
        void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;
    };

    // `defaultRect` is what a layout's `bounds` is evaluated against.
    CushyView(CushyHost& host, const IntRect& defaultRect);
    ~CushyView() override;

    std::string title() override;
    void dispose() override;
    void mouseMove(const MouseEvent& event) override;
    void mouseLeave(std::uint32_t time) override;
    void refresh() override;
    void attached(Window& window) override;
    void detached(Window& window) override;

    // Replaces the tree with the layout of that name; the empty name leaves an empty view.
    // Throws what the layout's faults throw; part of the tree may stand then.
    void load(const std::string& name);
    virtual void build(const SpecMap& spec);
    // The layout's own timers: the posted events.
    virtual void event(std::uint32_t due, std::uint32_t now, int code);
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;
    // Asks for `event(code)` from the timer queue, after the current call has returned.
    void postEvent(int code);

    // The guarded path of actions that views take: nothing when disabled; the view held
    // for the duration; an update of the whole tree afterwards; a fault shown.
    void runAction(const std::string& action, const std::string& params);
    void execute(const std::string& action, const std::string& params);
    bool isEnabled(const std::string& action, const std::string& params);
    bool isChecked(const std::string& action, const std::string& params);
    // The host's report, else a message box titled "Error".
    void showError(const std::string& message);

    // Registrations of views of this layout, made as they are built.
    void watchHint(HintedView& view, const std::string& raw);
    void addControl(View& view, const std::string& variable);
    void addAutoRefresh(View& view, std::int32_t period);
    // A click area that types the value of `variable` (its `entryFor`): what Enter or F2
    // on the variable's control opens.
    void addValueEntry(const std::string& variable, View& view);
    // Runs the value entry of `variable`; false when the layout has none.
    bool runValueEntry(const std::string& variable);
    // The layout's own keys (its `keys` list), when no focused control took the key.
    bool runKey(const KeyEvent& event);
    // The variable this view takes its layout name from (type "cushy").
    void setLayoutVariable(std::string name) { layoutVariable_ = std::move(name); }
    const std::string& layoutVariable() const { return layoutVariable_; }
    const std::string& currentLayout() const { return currentLayout_; }

    // The zoom its layouts are drawn at; a layout shown inside this one takes it too. Set
    // before the first load.
    const Zoom& zoom() const { return zoom_; }
    void setZoom(const Zoom& zoom) { zoom_ = zoom; }

    CushyHost& host() const { return *host_; }
    const IntRect& defaultRect() const { return defaultRect_; }
    const std::shared_ptr<HintWindow>& hintWindow() const { return hintWindow_; }
    void setHintWindow(std::shared_ptr<HintWindow> hintWindow) { hintWindow_ = std::move(hintWindow); }
    const std::shared_ptr<DebugOverlay>& debugOverlay() const { return debugOverlay_; }
    void setDebugOverlay(std::shared_ptr<DebugOverlay> overlay) { debugOverlay_ = std::move(overlay); }

    // The pointer as the last move saw it, and the last click, in window coordinates.
    ViewPoint lastMouse() const { return lastMouse_; }
    ViewPoint lastClick() const { return lastClick_; }
    void setLastClick(ViewPoint point) { lastClick_ = point; }
    // The square around the pointer that a "hint" action's hint lives in.
    const IntRect& hintRect() const { return hintRect_; }
    void showActionHint(const std::string& text, std::int32_t x, std::int32_t y);

    const std::vector<std::shared_ptr<Autoexec>>& autoexecs() const { return autoexecs_; }
    std::size_t watchedHints() const { return hintViews_.size(); }
    std::size_t watchedControls() const { return controls_.size(); }
    std::size_t refresherCount() const { return refreshers_.size(); }

protected:
    void childRemoved(View& child) override;
    void faultBelow(const std::string& message) override;
    // A fault met during a refresh, shown from the queue once the walk is over.
    void reportLater(const std::string& message);

private:
    void startTimers();
    void cancelTimers(TimerQueue& timers);
    void unregister(View& view);
    void renewHint(HintedView& view, const std::string& raw);
    void syncControl(View& view, const std::string& variable);
    void hideActionHint();

    CushyHost* host_;
    IntRect defaultRect_;
    std::shared_ptr<HintWindow> hintWindow_;
    std::map<View*, std::string> hintViews_;
    std::map<View*, std::string> controls_;
    std::map<View*, std::unique_ptr<AutoRefresh>> refreshers_;
    std::vector<std::shared_ptr<Autoexec>> autoexecs_;
    std::vector<KeyBinding> keys_;
    std::map<std::string, View*> valueEntries_;
    std::shared_ptr<DebugOverlay> debugOverlay_;
    ViewPoint lastMouse_;
    ViewPoint lastClick_;
    IntRect hintRect_;
    std::vector<std::string> pendingErrors_;
    std::string layoutVariable_;
    std::string currentLayout_;
    Zoom zoom_;
};

}  // namespace tw
