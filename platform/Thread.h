// A thread that is made suspended and started on demand, with a bounded wait for its
// end. The version check runs its request on one, so that the editor never blocks.
#pragma once

#include <functional>
#include <memory>
#include <thread>

namespace tw {

class Thread {
public:
    // Makes the thread, which waits until `start`. "Error creating thread".
    explicit Thread(std::function<void()> body);
    // A thread that was never started ends without running; one that is still running
    // is abandoned, as by `kill`.
    ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // "Error starting thread".
    void start();
    // False before `start`, and after the body has returned or the thread was killed.
    bool isRunning() const;
    // Waits at most `milliseconds` for the body to return, and answers whether it has.
    // "Error waiting on thread to finish".
    bool wait(int milliseconds);
    // The last resort: the thread is let go. Its body may still run to its end, but
    // nothing waits for it any more. "Error killing thread".
    void kill();

private:
    struct State;
    std::shared_ptr<State> state_;
    std::thread thread_;
};

}  // namespace tw
