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
    // How early an entry may run to share a wake with an earlier one.
    static constexpr std::uint32_t coalesceMs = 4;

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
    // the order they were scheduled), and calls each handler outside the lock. Entries
    // that were waiting when the run began count as due up to `coalesceMs` early, so that
    // timers a few milliseconds apart share one wake of the GUI thread instead of one
    // each. An entry added during the run runs in the same run only when already due.
    void run(std::uint32_t now);
    void run() { run(now()); }

    // After the window rested unseen: entries that fell due meanwhile are due once, at
    // `now`, rather than once for every period missed (repeating jobs schedule
    // themselves again from their due tick).
    void resume(std::uint32_t now);

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

    // The index of the due entry that comes first, or -1: due by `now`, or by `early`
    // for entries scheduled before `orderLimit`.
    int nextDue(std::uint32_t now, std::uint32_t early, std::uint64_t orderLimit) const;

    Clock clock_;
    mutable std::mutex lock_;
    std::vector<Entry> entries_;
    std::uint64_t nextOrder_ = 0;
    int runDepth_ = 0;
    std::uint32_t runNow_ = 0;
    std::function<void()> wakeUp_;
};

}  // namespace tw
