// Wakes the host's GUI thread for an editor whose host hands its X events to our
// _XEventProc (Ardour) but calls the idle entry only some 20 times a second. A thread
// of its own watches our connection and the timer queue; when an event arrives or a
// timer falls due, it sends a message to the host's window on a connection of its own,
// and the host's next pass calls our procedure, which then runs the editor. The thread
// touches nothing else: no view, no model, not the editor's connection.
#pragma once

#include <atomic>
#include <memory>
#include <thread>

#include "platform/TimerQueue.h"
#include "platform/X11Connection.h"

namespace tw {

class X11Waker {
public:
    // Watches `watched` (read only, for readiness) and `timers`; wakes the host through
    // `hostWindow`, the window the host gave the editor.
    X11Waker(int watchedFd, TimerQueue& timers, ::Window hostWindow);
    // Stops and joins the thread.
    ~X11Waker();
    X11Waker(const X11Waker&) = delete;
    X11Waker& operator=(const X11Waker&) = delete;

    // The GUI thread has run a pass: the next readiness is worth a new wake.
    void passDone() { awaitingPass_.store(false); }
    // Something changed that the thread's wait did not know about (a new timer, events
    // that Xlib read into its queue during the pass): think again.
    void poke();
    // While the editor rests unseen its timers wait: only its events (the one that shows
    // it again among them) are worth a wake.
    void setResting(bool resting) {
        resting_.store(resting);
        poke();
    }
    // Wakes sent so far, for tests.
    std::uint64_t wakes() const { return wakes_.load(); }

private:
    // The pipe that pokes the thread. The timer queue's wake-up holds it too: another
    // thread may still be calling a copy of it while this object goes.
    struct Pipe {
        int fds[2] = {-1, -1};
        ~Pipe();
        void poke() const;
    };

    void watch();
    void sendWake();

    int watchedFd_;
    TimerQueue& timers_;
    ::Window hostWindow_;
    std::unique_ptr<X11Connection> connection_;
    Atom wakeAtom_ = 0;
    std::shared_ptr<Pipe> pipe_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> awaitingPass_{false};
    std::atomic<bool> resting_{false};
    std::atomic<std::uint64_t> wakes_{0};
    std::thread thread_;
};

}  // namespace tw
