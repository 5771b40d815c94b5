// The editor's one clock. Every timer of the view tree and the model is an entry here;
// the window runs the queue on the GUI thread, and handlers are called outside the lock,
// so a handler may add or cancel entries (its own included).
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace tw {

// The system's millisecond tick: monotonic, 32 bits, wrapping every 49.7 days. Ticks are
// only ever compared by their signed difference.
std::uint32_t millisecondTick();

// Whether tick `a` comes before tick `b`, across a wrap of the counter.
inline bool tickBefore(std::uint32_t a, std::uint32_t b) { return std::int32_t(a - b) < 0; }

class TimerQueue;

class TimerHandler {
public:
    // `due` is the tick the entry was scheduled for, `now` the tick of this run; a
    // repeating job schedules itself again from `due`, so that it keeps its rate.
    virtual void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) = 0;

protected:
    ~TimerHandler() = default;
};

class TimerQueue {
public:
    using Clock = std::function<std::uint32_t()>;

    // Tests pass a clock of their own; the window uses the system tick.
    explicit TimerQueue(Clock clock = millisecondTick);
    TimerQueue(const TimerQueue&) = delete;
    TimerQueue& operator=(const TimerQueue&) = delete;

    std::uint32_t now() const { return clock_(); }

    // One entry, due at `dueTick`. Entries are not merged: scheduling twice fires twice.
    void schedule(TimerHandler* handler, int id, std::uint32_t dueTick);
    // `delayMs` from now; inside a run, from the run's tick, so that an entry added with
    // delay 0 by a handler is due in that same run.
    void add(TimerHandler* handler, int id, std::uint32_t delayMs);
    // Removes every entry of the handler with that id, or with any id.
    void cancel(TimerHandler* handler, int id);
    void cancel(TimerHandler* handler);
    bool isScheduled(const TimerHandler* handler, int id) const;

    // Pops the due entries one at a time, earliest first (entries due at the same tick in
    // the order they were scheduled), and calls each handler outside the lock. An entry
    // added during the run that is already due runs in the same run.
    void run(std::uint32_t now);
    void run() { run(now()); }

    // Milliseconds from `now` until the first entry is due (0 when one is due already),
    // or -1 when the queue is empty: how long a window's loop may sleep.
    std::int64_t waitTime(std::uint32_t now) const;

    // Called, outside the lock, when an entry is scheduled from another thread or becomes
    // the earliest one, so that a window sleeping in its loop wakes up in time.
    void setWakeUp(std::function<void()> wakeUp);

private:
    struct Entry {
        TimerHandler* handler;  // null marks a free slot
        int id;
        std::uint32_t time;
        std::uint64_t order;    // ties at the same tick go in scheduling order
    };

    // The index of the due entry that comes first, or -1.
    int nextDue(std::uint32_t now) const;

    Clock clock_;
    mutable std::mutex lock_;
    std::vector<Entry> entries_;
    std::uint64_t nextOrder_ = 0;
    int runDepth_ = 0;
    std::uint32_t runNow_ = 0;
    std::function<void()> wakeUp_;
};

}  // namespace tw
