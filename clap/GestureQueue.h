// The editor's gestures on their way to the host: the main thread pushes a gesture's
// begin, values and end as the user makes them; whichever thread the host lets empty the
// queue (`process` on the audio thread, or `flush`) takes them out in order. One writer,
// one reader at a time, no lock and no allocation.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace tw::clap {

struct Gesture {
    enum class Kind : std::uint8_t { begin, value, end };
    Kind kind = Kind::value;
    int id = 0;
    float value = 0.0f;  // the parameter's value from 0 to 1, for `value`
};

class GestureQueue {
public:
    static constexpr std::size_t capacity = 1024;  // a power of two

    // Main thread. False, dropping it, when the host has not taken the last 1023.
    bool push(const Gesture& gesture) {
        const std::size_t tail = tail_.load(std::memory_order_relaxed);
        if (tail - head_.load(std::memory_order_acquire) >= capacity) return false;
        slots_[tail & (capacity - 1)] = gesture;
        tail_.store(tail + 1, std::memory_order_release);
        return true;
    }
    // The reading thread: the oldest gesture, left in place until `pop`.
    bool peek(Gesture& out) const {
        const std::size_t head = head_.load(std::memory_order_relaxed);
        if (head == tail_.load(std::memory_order_acquire)) return false;
        out = slots_[head & (capacity - 1)];
        return true;
    }
    void pop() { head_.store(head_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }
    bool empty() const { return head_.load(std::memory_order_acquire) == tail_.load(std::memory_order_acquire); }

private:
    std::array<Gesture, capacity> slots_{};
    std::atomic<std::size_t> head_{0}, tail_{0};
};

}  // namespace tw::clap
