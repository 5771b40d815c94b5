#include "platform/TimerQueue.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tw {
namespace {

// Records what fired, and can run one action of its own from inside the handler.
struct Recorder : TimerHandler {
    std::vector<std::string> log;
    std::function<void(TimerQueue&, int)> inside;
    std::string name;
    explicit Recorder(std::string n) : name(std::move(n)) {}
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int id) override {
        log.push_back(name + std::to_string(id) + "@" + std::to_string(due));
        if (inside) inside(queue, id);
    }
};

TEST(TimerQueue, DueEntriesRunEarliestFirstThenInSchedulingOrder) {
    std::uint32_t clock = 1000;
    TimerQueue queue([&] { return clock; });
    Recorder r("r");
    queue.schedule(&r, 3, 1030);
    queue.schedule(&r, 1, 1010);
    queue.schedule(&r, 2, 1010);
    queue.schedule(&r, 4, 1050);
    queue.run(1030);
    EXPECT_EQ(r.log, (std::vector<std::string>{"r1@1010", "r2@1010", "r3@1030"}));
    EXPECT_TRUE(queue.isScheduled(&r, 4));
    EXPECT_EQ(queue.waitTime(1030), 20);
    queue.run(1050);
    EXPECT_EQ(r.log.back(), "r4@1050");
    EXPECT_EQ(queue.waitTime(1050), -1);
}

TEST(TimerQueue, HandlersAddAndCancelFromInsideARun) {
    std::uint32_t clock = 0;
    TimerQueue queue([&] { return clock; });
    Recorder a("a"), b("b");
    // A zero delay added by a handler is due in the same run, even though the clock has
    // moved on by then; a repeating job reschedules from its due tick and keeps its rate.
    a.inside = [&](TimerQueue& q, int id) {
        clock = 7;
        if (id == 1) q.add(&a, 2, 0);
        if (id == 2) q.cancel(&b);
    };
    queue.schedule(&a, 1, 5);
    queue.schedule(&b, 1, 5);
    queue.schedule(&b, 2, 6);
    queue.run(5);
    EXPECT_EQ(a.log, (std::vector<std::string>{"a1@5", "a2@5"}));
    EXPECT_EQ(b.log, (std::vector<std::string>{"b1@5"}));
    EXPECT_FALSE(queue.isScheduled(&b, 2));
}

TEST(TimerQueue, TheTickWrapsWithoutStallingTimers) {
    std::uint32_t clock = 0xFFFFFFF0u;
    TimerQueue queue([&] { return clock; });
    Recorder r("r");
    queue.add(&r, 1, 0x20);  // due at 0x10, after the wrap
    queue.add(&r, 2, 0x08);  // due before the wrap
    queue.run(0xFFFFFFFFu);
    EXPECT_EQ(r.log.size(), 1u);
    EXPECT_EQ(queue.waitTime(0xFFFFFFFFu), 0x11);
    queue.run(0x10);
    EXPECT_EQ(r.log.size(), 2u);
    EXPECT_TRUE(tickBefore(0xFFFFFFF0u, 0x10u));
    EXPECT_FALSE(tickBefore(0x10u, 0xFFFFFFF0u));
}

TEST(TimerQueue, CancelRemovesEveryMatchAndWakeUpFollowsTheEarliest) {
    std::uint32_t clock = 0;
    TimerQueue queue([&] { return clock; });
    int wakes = 0;
    queue.setWakeUp([&] { ++wakes; });
    Recorder r("r");
    queue.add(&r, 1, 50);
    queue.add(&r, 1, 60);  // not the earliest: no wake
    queue.add(&r, 2, 10);
    EXPECT_EQ(wakes, 2);
    queue.cancel(&r, 1);
    EXPECT_FALSE(queue.isScheduled(&r, 1));
    EXPECT_TRUE(queue.isScheduled(&r, 2));
    queue.run(100);
    EXPECT_EQ(r.log, (std::vector<std::string>{"r2@10"}));
}

TEST(TimerQueue, TimersAFewMillisecondsApartShareOneWake) {
    std::uint32_t clock = 0;
    TimerQueue queue([&] { return clock; });
    Recorder r("r");
    // A repeating job one millisecond apart would be due again within the window each
    // time it runs: it runs once per pass, not over and over.
    r.inside = [&](TimerQueue& q, int id) {
        if (id == 3) q.schedule(&r, 3, 100 + 1);
    };
    queue.schedule(&r, 1, 100);
    queue.schedule(&r, 2, 100 + TimerQueue::coalesceMs);
    queue.schedule(&r, 3, 100 + 2);
    queue.schedule(&r, 4, 100 + TimerQueue::coalesceMs + 1);
    EXPECT_EQ(queue.waitTime(0), 100);
    queue.run(100);
    EXPECT_EQ(r.log, (std::vector<std::string>{"r1@100", "r3@102", "r2@104"}));
    EXPECT_TRUE(queue.isScheduled(&r, 3));
    EXPECT_TRUE(queue.isScheduled(&r, 4));
    r.log.clear();
    r.inside = nullptr;
    queue.run(101);
    EXPECT_EQ(r.log, (std::vector<std::string>{"r3@101", "r4@105"}));
}

// A job that keeps an 11 ms rate, as the editor's fast tick does.
struct Repeater : TimerHandler {
    std::vector<std::uint32_t> fired;
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int id) override {
        fired.push_back(due);
        queue.schedule(this, id, due + 11);
    }
};

TEST(TimerQueue, AfterARestMissedPeriodsRunOnceAtTheResumingTick) {
    TimerQueue queue([] { return 0u; });
    Repeater r;
    Recorder later("later");
    queue.schedule(&r, 1, 11);
    queue.schedule(&later, 1, 5000);
    queue.resume(1000);
    queue.run(1000);
    // Once, from the resuming tick, keeping its rate from there; what is not due yet
    // keeps its time. Without the resume the job would run some ninety times at once.
    EXPECT_EQ(r.fired, (std::vector<std::uint32_t>{1000}));
    EXPECT_EQ(queue.waitTime(1000), 11);
    EXPECT_TRUE(later.log.empty());
    queue.run(5000);
    EXPECT_EQ(later.log, (std::vector<std::string>{"later1@5000"}));
}

}  // namespace
}  // namespace tw
