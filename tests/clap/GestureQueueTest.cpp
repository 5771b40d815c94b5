// The editor's gestures on their way to the host: in order, never more than the queue
// holds, and whole when the main thread writes while another thread reads.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "clap/GestureQueue.h"

namespace tw::clap {
namespace {

TEST(GestureQueue, KeepsOrderAndRefusesWhenFull) {
    GestureQueue q;
    Gesture g;
    EXPECT_TRUE(q.empty());
    EXPECT_FALSE(q.peek(g));
    for (std::size_t i = 0; i < GestureQueue::capacity; ++i)
        ASSERT_TRUE(q.push({Gesture::Kind::value, static_cast<int>(i), 0.5f}));
    EXPECT_FALSE(q.push({Gesture::Kind::end, 99, 0.0f}));
    for (std::size_t i = 0; i < GestureQueue::capacity; ++i) {
        ASSERT_TRUE(q.peek(g));
        // A peek leaves the gesture for the next one.
        ASSERT_TRUE(q.peek(g));
        EXPECT_EQ(g.id, static_cast<int>(i));
        q.pop();
    }
    EXPECT_TRUE(q.empty());
    EXPECT_TRUE(q.push({Gesture::Kind::begin, 7, 0.0f}));
}

TEST(GestureQueue, AReaderOnAnotherThreadSeesEveryGestureInOrder) {
    GestureQueue q;
    constexpr int count = 50000;
    std::atomic<bool> failed{false};
    std::thread reader([&] {
        int expected = 0;
        Gesture g;
        // Bounded: the writer finishes in far fewer spins than this.
        for (long spins = 0; expected < count && spins < 2000000000L; ++spins) {
            if (!q.peek(g)) continue;
            if (g.id != expected || g.value != static_cast<float>(expected % 1000)) failed = true;
            q.pop();
            ++expected;
        }
        if (expected != count) failed = true;
    });
    int written = 0;
    for (long spins = 0; written < count && spins < 2000000000L; ++spins)
        if (q.push({Gesture::Kind::value, written, static_cast<float>(written % 1000)})) ++written;
    reader.join();
    EXPECT_EQ(written, count);
    EXPECT_FALSE(failed);
    EXPECT_TRUE(q.empty());
}

}  // namespace
}  // namespace tw::clap
