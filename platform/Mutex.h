// The one kind of lock in the program: recursive, entered and left by a scoped guard.
// Used for the audio call, the chunk buffer and the process-wide start-up.
#pragma once

#include <mutex>

namespace tw {

class Mutex {
public:
    class Guard {
    public:
        explicit Guard(Mutex& m) : mutex_(m) { mutex_.lock_.lock(); }
        ~Guard() { mutex_.lock_.unlock(); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        Mutex& mutex_;
    };

    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

private:
    std::recursive_mutex lock_;
};

}  // namespace tw
