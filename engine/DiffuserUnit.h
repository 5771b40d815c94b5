// One unit of the smear: on each channel an all-pass of an outer length whose delay line
// feeds through an inner all-pass, both with one coefficient. Four run in series; their
// lengths come from reciprocal primes, different on the left and right.
#pragma once

#include "platform/ZeroedPages.h"

#include <cstdint>

namespace tw {

class DiffuserUnit {
public:
    static constexpr uint32_t kFrames = 65536;

    // The four columns of every frame and every per-column value: left outer, right outer,
    // left inner, right inner.
    alignas(16) float targets[4] = {};

    DiffuserUnit();

    // Clears what was written of the ring, the lengths and the tap states.
    void clear();

    // One sample of both channels, in place. first restarts the unit at a wake: the
    // lengths land on their targets and the frame that reads as older than the restarted
    // write index is cleared.
    void step(float& left, float& right, uint32_t writeIndex, uint32_t mask, float g, float lengthSmooth,
              bool first);

    // kFrameSamples samples, in place, none of them the first after a restart: the same as
    // step for each in turn, with the lengths and tap states held in registers between
    // samples. write and g hold each sample's write index and coefficient.
    static constexpr int kFrameSamples = 8;
    void stepFrame(float* left, float* right, const uint32_t* write, uint32_t mask, const float* g,
                   float lengthSmooth);

    const float* lengths() const { return lengths_; }
    const float* ring() const { return ring_; }

private:
    ZeroedPages memory_;
    float* ring_;
    uint32_t dirtyFrames_ = 0;  // frames that may be written; the rest are untouched zero pages
    alignas(16) float lengths_[4] = {};
    alignas(16) float lastTaps_[4] = {};
    // The taps of the lengths as they stand, recomputed only when a length moves.
    alignas(16) int32_t whole_[4] = {};
    alignas(16) float coefficients_[4] = {};
    bool tapsDue_ = true;
};

}  // namespace tw
