#include "platform/Event.h"
#include "platform/Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

using namespace tw;

TEST(Event, StaysSignalledUntilReset) {
    Event event;
    EXPECT_FALSE(event.wait(0));
    auto before = std::chrono::steady_clock::now();
    EXPECT_FALSE(event.wait(30));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(30));
    event.signal();
    EXPECT_TRUE(event.wait(0));
    EXPECT_TRUE(event.wait(1000)) << "a manual event is not consumed by a wait";
    event.reset();
    EXPECT_FALSE(event.wait(0));
}

TEST(Thread, RunsOnlyAfterStart) {
    std::atomic<int> runs{0};
    Event go;
    Thread thread([&] {
        runs++;
        go.wait(10000);
    });
    EXPECT_FALSE(thread.isRunning()) << "a thread never started is not running";
    EXPECT_FALSE(thread.wait(20));
    EXPECT_EQ(runs.load(), 0);

    thread.start();
    EXPECT_TRUE(thread.isRunning());
    EXPECT_FALSE(thread.wait(20));
    go.signal();
    EXPECT_TRUE(thread.wait(10000));
    EXPECT_FALSE(thread.isRunning());
    EXPECT_EQ(runs.load(), 1);
}

TEST(Thread, NeverStartedNeverRuns) {
    std::atomic<int> runs{0};
    { Thread thread([&] { runs++; }); }
    EXPECT_EQ(runs.load(), 0);
}

TEST(Thread, CancelledThroughAnEventEndsQuickly) {
    // The version check's pattern: a loop that polls a cancel event between short sleeps.
    Event cancel;
    Thread thread([&] {
        while (!cancel.wait(0)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    });
    thread.start();
    cancel.signal();
    EXPECT_TRUE(thread.wait(20000));
}

TEST(Thread, KilledThreadIsLetGo) {
    auto stop = std::make_shared<Event>();
    auto ended = std::make_shared<Event>();
    {
        Thread thread([stop, ended] {
            stop->wait(10000);
            ended->signal();
        });
        thread.start();
        EXPECT_FALSE(thread.wait(10));
        thread.kill();
        EXPECT_FALSE(thread.isRunning());
    }
    // The handle is gone; the body still finishes on its own.
    stop->signal();
    EXPECT_TRUE(ended->wait(10000));
}

TEST(Thread, ExceptionInTheBodyEndsOnlyTheThread) {
    Thread thread([] { throw std::runtime_error("lost"); });
    thread.start();
    EXPECT_TRUE(thread.wait(10000));
    EXPECT_FALSE(thread.isRunning());
}
