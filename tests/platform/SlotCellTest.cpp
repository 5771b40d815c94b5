#include "platform/SlotCell.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

using namespace tw;

namespace {

// An object that records where it was destroyed.
struct Tracked {
    Tracked(int v, std::atomic<int>* d, std::thread::id* on) : value(v), destroyed(d), destroyedOn(on) {}
    int value;
    std::atomic<int>* destroyed;
    std::thread::id* destroyedOn;
    ~Tracked() {
        if (destroyedOn) *destroyedOn = std::this_thread::get_id();
        if (destroyed) ++*destroyed;
    }
};

}  // namespace

TEST(SlotCell, PlainPublishKeepsAReadersValueUntilItsRelease) {
    SlotCell<std::string> cell("first");
    auto reader = cell.acquire();
    cell.publish("second");
    EXPECT_EQ(*reader, "first") << "the reader's value stays intact";
    EXPECT_EQ(cell.read(), "second");
    reader.release();
    // The released slot is free again: two more publishes must not wait.
    cell.publish("third");
    cell.publish("fourth");
    EXPECT_EQ(cell.read(), "fourth");
}

TEST(SlotCell, ThreeSlotsLetAWriterPublishPastAHeldReader) {
    SlotCell<int, Retire::Plain, 3> cell(0);
    auto held = cell.acquire();
    for (int i = 1; i <= 100; ++i) cell.publish(i);
    EXPECT_EQ(*held, 0);
    EXPECT_EQ(cell.read(), 100);
}

TEST(SlotCell, OwningPublishWaitsForTheReaderAndDeletesOnTheWritersThread) {
    std::atomic<int> destroyed{0};
    std::thread::id destroyedOn;
    OwningSlotCell<Tracked> cell(std::make_unique<Tracked>(1, &destroyed, &destroyedOn));
    auto reader = cell.acquire();
    std::atomic<bool> published{false};
    std::thread::id writerId;
    std::thread writer([&] {
        writerId = std::this_thread::get_id();
        cell.publish(std::make_unique<Tracked>(2, nullptr, nullptr));
        published = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(published) << "the writer waits while the old object is read";
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ((*reader)->value, 1);
    reader.release();
    writer.join();
    EXPECT_TRUE(published);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(destroyedOn, writerId) << "a reader never deletes";
    EXPECT_EQ((*cell.acquire())->value, 2);
}

// Readers on several threads and two writers: every read sees a whole value, never a
// torn or freed one, and every retired value is freed exactly once.
TEST(SlotCell, StressUnderThreads) {
    struct Pair {
        long a, b;
    };
    SlotCell<Pair, Retire::Plain, 3> plain(Pair{0, 0});
    std::atomic<int> destroyed{0};
    OwningSlotCell<Tracked> owning(std::make_unique<Tracked>(0, &destroyed, nullptr));
    std::atomic<bool> stop{false};
    std::atomic<long> torn{0}, reads{0};

    std::vector<std::thread> threads;
    for (int r = 0; r < 3; ++r)
        threads.emplace_back([&] {
            while (!stop) {
                {
                    auto p = plain.acquire();
                    if (p->b != -p->a) ++torn;
                }
                {
                    auto o = owning.acquire();
                    if ((*o)->value < 0) ++torn;
                }
                ++reads;
            }
        });
    constexpr int publishes = 20000;
    for (int w = 0; w < 2; ++w)
        threads.emplace_back([&, w] {
            // On a loaded machine the writers could finish before a reader ever ran.
            while (reads.load() == 0) std::this_thread::yield();
            for (long i = 1; i <= publishes; ++i) {
                plain.publish(Pair{i, -i});
                owning.publish(std::make_unique<Tracked>(int(i) + w, &destroyed, nullptr));
            }
        });
    for (std::size_t i = 3; i < threads.size(); ++i) threads[i].join();
    stop = true;
    for (std::size_t i = 0; i < 3; ++i) threads[i].join();
    EXPECT_EQ(torn, 0);
    EXPECT_GT(reads, 0);
    EXPECT_EQ(destroyed, 2 * publishes) << "every object but the current one was deleted once";
}
