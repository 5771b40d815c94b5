#include "platform/Event.h"

#include "platform/QvxThreads.h"

#include <chrono>
#include <system_error>

namespace tw {

// The standard primitives report their rare failures as system errors; here they become
// the fixed texts of this layer, with the system's code.
Event::Event() try : mutex_(), condition_() {
} catch (const std::system_error& e) {
    throw QvxThreads::Exception("Error creating waitable event", e.code().value());
}

void Event::signal() {
    try {
        std::lock_guard<std::mutex> lock(mutex_);
        signalled_ = true;
        condition_.notify_all();
    } catch (const std::system_error& e) {
        throw QvxThreads::Exception("Error signaling waitable event", e.code().value());
    }
}

void Event::reset() {
    try {
        std::lock_guard<std::mutex> lock(mutex_);
        signalled_ = false;
    } catch (const std::system_error& e) {
        throw QvxThreads::Exception("Error signaling waitable event", e.code().value());
    }
}

bool Event::wait(int milliseconds) {
    try {
        std::unique_lock<std::mutex> lock(mutex_);
        return condition_.wait_for(lock, std::chrono::milliseconds(milliseconds < 0 ? 0 : milliseconds),
                                   [this] { return signalled_; });
    } catch (const std::system_error& e) {
        throw QvxThreads::Exception("Error waiting on an event", e.code().value());
    }
}

}  // namespace tw
