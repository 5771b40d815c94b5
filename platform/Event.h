// A manual wait object: once signalled it stays signalled until reset, and every wait
// returns at once meanwhile. The version check is told to stop through one.
#pragma once

#include <condition_variable>
#include <mutex>

namespace tw {

class Event {
public:
    // "Error creating waitable event".
    Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    // "Error signaling waitable event".
    void signal();
    void reset();
    // Waits until the event is signalled or `milliseconds` have passed, and answers
    // whether it is signalled; 0 polls. "Error waiting on an event".
    bool wait(int milliseconds);

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool signalled_ = false;
};

}  // namespace tw
