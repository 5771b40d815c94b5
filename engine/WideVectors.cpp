#include "engine/WideVectors.h"

#include <atomic>

namespace tw {

namespace {

// Asked at the first use, not at load, and without a guarded static: the first asker may
// be the audio thread.
bool detect() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2");
}

std::atomic<int> chosen{-1};  // -1: not yet asked

}  // namespace

bool wideVectorsAvailable() { return detect(); }

bool wideVectors() {
    int c = chosen.load(std::memory_order_relaxed);
    if (c < 0) {
        c = wideVectorsAvailable() ? 1 : 0;
        chosen.store(c, std::memory_order_relaxed);
    }
    return c != 0;
}

void setWideVectors(bool wanted) { chosen.store(wanted && wideVectorsAvailable() ? 1 : 0, std::memory_order_relaxed); }

}  // namespace tw
