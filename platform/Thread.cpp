#include "platform/Thread.h"

#include "platform/QvxThreads.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>

namespace tw {

// Shared by the handle and the thread, so that an abandoned thread still has it.
struct Thread::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::function<void()> body;
    bool started = false;
    bool cancelled = false;
    bool finished = false;
};

Thread::Thread(std::function<void()> body) : state_(std::make_shared<State>()) {
    state_->body = std::move(body);
    try {
        thread_ = std::thread([state = state_] {
            {
                std::unique_lock<std::mutex> lock(state->mutex);
                state->changed.wait(lock, [&] { return state->started || state->cancelled; });
                if (state->cancelled) return;
            }
            try {
                state->body();
            } catch (...) {
                // The body's failures are its own business; they must not end the process.
            }
            std::lock_guard<std::mutex> lock(state->mutex);
            state->finished = true;
            state->changed.notify_all();
        });
    } catch (const std::system_error& e) {
        throw QvxThreads::Exception("Error creating thread", e.code().value());
    }
}

Thread::~Thread() {
    if (!thread_.joinable()) return;
    std::unique_lock<std::mutex> lock(state_->mutex);
    if (!state_->started) {
        state_->cancelled = true;
        state_->changed.notify_all();
    }
    bool ends = state_->cancelled || state_->finished;
    lock.unlock();
    if (ends)
        thread_.join();
    else
        thread_.detach();
}

void Thread::start() {
    try {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->started = true;
        state_->changed.notify_all();
    } catch (const std::system_error& e) {
        throw QvxThreads::Exception("Error starting thread", e.code().value());
    }
}

bool Thread::isRunning() const {
    try {
        std::lock_guard<std::mutex> lock(state_->mutex);
        return state_->started && !state_->finished && thread_.joinable();
    } catch (const std::system_error& e) {
        throw QvxThreads::Exception("Error waiting on thread to finish", e.code().value());
    }
}

bool Thread::wait(int milliseconds) {
    try {
        std::unique_lock<std::mutex> lock(state_->mutex);
        if (!thread_.joinable()) return true;
        return state_->changed.wait_for(lock, std::chrono::milliseconds(milliseconds < 0 ? 0 : milliseconds),
                                        [&] { return state_->finished; });
    } catch (const std::system_error& e) {
        throw QvxThreads::Exception("Error waiting on thread to finish", e.code().value());
    }
}

void Thread::kill() {
    try {
        if (thread_.joinable()) thread_.detach();
    } catch (const std::system_error& e) {
        throw QvxThreads::Exception("Error killing thread", e.code().value());
    }
}

}  // namespace tw
