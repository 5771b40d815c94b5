// A run of wheel notches on a value control kept as one gesture, so that the host hears
// one begin and one end and the user gets one undo step: the first notch begins it, each
// notch moves its end half a second on, and then a drag, the time running out or the view
// leaving its window ends it. Knobs and sliders hold one each.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/TimerQueue.h"
#include "platform/Window.h"

namespace tw {

class CushyView;

class WheelGesture final : private TimerHandler {
public:
    static constexpr std::uint32_t idleMilliseconds = 500;

    // `variable` belongs to the view and outlives the gesture; `ended` runs when the
    // gesture ends while the view is still in its window (the view reads the value back).
    WheelGesture(CushyView& layout, const std::string& variable, std::function<void()> ended);

    bool active() const { return active_; }
    // Before a notch's change: begins the gesture with the host unless it runs.
    void begin();
    // After it: the end moves on by the idle time.
    void rearm(Window* window);
    // Ends it now, as at a press on the control.
    void end();
    // The view leaves `window`: the host hears the end; nothing is read back.
    void drop(Window& window);

private:
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;
    void finish();

    CushyView& layout_;
    const std::string& variable_;
    std::function<void()> ended_;
    TimerQueue* queue_ = nullptr;  // where the end is scheduled, while it is
    bool active_ = false;
};

}  // namespace tw
