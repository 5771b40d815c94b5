// The loop's delay: a stereo ring read through a second-order all-pass interpolator. While
// the delay time moves fast the interpolator is re-primed for each sample from the 25
// samples before it, so a sweeping delay stays clean.
#pragma once

#include "platform/ZeroedPages.h"

#include <cstdint>

namespace tw {

class StereoDelayLine {
public:
    static constexpr uint32_t kMaxPairs = 524288;
    static constexpr int kPrimeSteps = 25;

    StereoDelayLine();

    // Sets the working size in stereo pairs (a power of two) and clears that much.
    void setSize(uint32_t pairs);
    uint32_t size() const { return size_; }

    // One sample: writes xL and xR, then reads each channel at its delay in samples with
    // its slope per sample. first restarts the line as empty without clearing it.
    void process(float xL, float xR, float delayL, float delayR, float slopeL, float slopeR, bool first,
                 float& outL, float& outR);

private:
    float read(int channel, float delay, float slope);

    ZeroedPages memory_;
    float* samples_;  // left at even index
    uint32_t size_ = 0;
    uint32_t writeIndex_ = 0;
    float last_[2] = {};    // last output per channel
    float before_[2] = {};  // the one before it
    bool fresh_ = false;    // set until the line has wrapped once since its restart
};

}  // namespace tw
