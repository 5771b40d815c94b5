#include "core/ProcessServices.h"

#include <atomic>

#include "platform/Mutex.h"

namespace tw {

namespace {

Mutex& startupLock() {
    static Mutex lock;
    return lock;
}

Mutex& seedLock() {
    static Mutex lock;
    return lock;
}

int instances = 0;  // under startupLock
std::atomic<int> instanceCounter{0};
// A fixed start, so that a render through a fresh process is the same every time, while
// each instance of a session still gets a seed of its own.
std::uint32_t seedState = 0x2545f491u;  // under seedLock

}  // namespace

void ProcessServices::acquire() {
    Mutex::Guard guard(startupLock());
    ++instances;
}

void ProcessServices::release() {
    Mutex::Guard guard(startupLock());
    --instances;
}

int ProcessServices::instanceCount() {
    Mutex::Guard guard(startupLock());
    return instances;
}

int ProcessServices::nextInstanceNumber() { return instanceCounter.fetch_add(1) + 1; }

std::uint32_t ProcessServices::nextSeed() {
    Mutex::Guard guard(seedLock());
    // xorshift32: a full-period sequence, so no two instances of a session share a seed.
    seedState ^= seedState << 13;
    seedState ^= seedState >> 17;
    seedState ^= seedState << 5;
    return seedState;
}

}  // namespace tw
