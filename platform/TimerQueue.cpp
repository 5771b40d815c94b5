#include "platform/TimerQueue.h"

#include <time.h>

namespace tw {

std::uint32_t millisecondTick() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return std::uint32_t(std::uint64_t(ts.tv_sec) * 1000u + std::uint64_t(ts.tv_nsec) / 1000000u);
}

TimerQueue::TimerQueue(Clock clock) : clock_(std::move(clock)) {}

void TimerQueue::schedule(TimerHandler* handler, int id, std::uint32_t dueTick) {
    bool earliest = true;
    std::function<void()> wakeUp;
    {
        std::lock_guard<std::mutex> guard(lock_);
        Entry entry{handler, id, dueTick, nextOrder_++};
        Entry* slot = nullptr;
        for (Entry& e : entries_) {
            if (!e.handler) {
                if (!slot) slot = &e;
            } else if (!tickBefore(dueTick, e.time)) {
                earliest = false;
            }
        }
        if (slot)
            *slot = entry;
        else
            entries_.push_back(entry);
        if (earliest) wakeUp = wakeUp_;
    }
    if (wakeUp) wakeUp();
}

void TimerQueue::add(TimerHandler* handler, int id, std::uint32_t delayMs) {
    std::uint32_t base;
    {
        std::lock_guard<std::mutex> guard(lock_);
        base = runDepth_ > 0 ? runNow_ : clock_();
    }
    schedule(handler, id, base + delayMs);
}

void TimerQueue::cancel(TimerHandler* handler, int id) {
    std::lock_guard<std::mutex> guard(lock_);
    for (Entry& e : entries_)
        if (e.handler == handler && e.id == id) e.handler = nullptr;
}

void TimerQueue::cancel(TimerHandler* handler) {
    std::lock_guard<std::mutex> guard(lock_);
    for (Entry& e : entries_)
        if (e.handler == handler) e.handler = nullptr;
}

bool TimerQueue::isScheduled(const TimerHandler* handler, int id) const {
    std::lock_guard<std::mutex> guard(lock_);
    for (const Entry& e : entries_)
        if (e.handler == handler && e.id == id) return true;
    return false;
}

int TimerQueue::nextDue(std::uint32_t now, std::uint32_t early, std::uint64_t orderLimit) const {
    int best = -1;
    for (int i = 0; i < int(entries_.size()); ++i) {
        const Entry& e = entries_[i];
        if (!e.handler || tickBefore(e.order < orderLimit ? early : now, e.time)) continue;
        if (best < 0) {
            best = i;
            continue;
        }
        const Entry& b = entries_[best];
        if (tickBefore(e.time, b.time) || (e.time == b.time && e.order < b.order)) best = i;
    }
    return best;
}

void TimerQueue::run(std::uint32_t now) {
    std::uint32_t outerNow;
    std::uint64_t waiting;
    {
        std::lock_guard<std::mutex> guard(lock_);
        outerNow = runNow_;
        // Only what was waiting may run early: a job that schedules itself again a few
        // milliseconds on must not run over and over in one pass.
        waiting = nextOrder_;
        ++runDepth_;
        runNow_ = now;
    }
    // Runs nest when a handler opens a modal loop; the outer run's tick comes back after.
    struct Leave {
        TimerQueue& queue;
        std::uint32_t outerNow;
        ~Leave() {
            std::lock_guard<std::mutex> guard(queue.lock_);
            --queue.runDepth_;
            queue.runNow_ = outerNow;
        }
    } leave{*this, outerNow};
    for (;;) {
        Entry entry;
        {
            std::lock_guard<std::mutex> guard(lock_);
            int i = nextDue(now, now + coalesceMs, waiting);
            if (i < 0) return;
            entry = entries_[i];
            entries_[i].handler = nullptr;
        }
        entry.handler->timerFired(*this, entry.time, now, entry.id);
    }
}

void TimerQueue::resume(std::uint32_t now) {
    std::lock_guard<std::mutex> guard(lock_);
    for (Entry& e : entries_)
        if (e.handler && tickBefore(e.time, now)) e.time = now;
}

std::int64_t TimerQueue::waitTime(std::uint32_t now) const {
    std::lock_guard<std::mutex> guard(lock_);
    std::int64_t wait = -1;
    for (const Entry& e : entries_) {
        if (!e.handler) continue;
        std::int64_t d = std::int32_t(e.time - now);
        if (d < 0) d = 0;
        if (wait < 0 || d < wait) wait = d;
    }
    return wait;
}

void TimerQueue::setWakeUp(std::function<void()> wakeUp) {
    std::lock_guard<std::mutex> guard(lock_);
    wakeUp_ = std::move(wakeUp);
}

}  // namespace tw
