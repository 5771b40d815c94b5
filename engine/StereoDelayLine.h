// The loop's delay: a stereo ring read through a second-order all-pass interpolator. While
// the delay time moves fast the interpolator is re-primed for each sample from the 25
// samples before it, so a sweeping delay stays clean.
#pragma once

#include "platform/ZeroedPages.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tw {

class StereoDelayLine {
public:
    static constexpr uint32_t kMaxPairs = 524288;
    static constexpr int kPrimeSteps = 25;
    static constexpr float kFastSlope = 0.03f;  // delay change per sample that re-primes
    static constexpr int kFrame = 8;

    StereoDelayLine();

    // Sets the working size in stereo pairs (a power of two) and clears what was written.
    void setSize(uint32_t pairs);
    uint32_t size() const { return size_; }

    // Restarts the line as empty without clearing it: the first sample after a wake.
    void restart();

    // One sample is write, then read of each channel, then advance.
    void write(float left, float right) {
        dirtyPairs_ = std::max(dirtyPairs_, size_);
        samples_[writeIndex_ * 2] = left;
        samples_[writeIndex_ * 2 + 1] = right;
    }
    // The channel at a delay in samples, moving by slope per sample.
    float read(int channel, float delay, float slope) {
        if (delay != interpolatedDelay_[channel]) {
            interpolatedDelay_[channel] = delay;
            interpolator_[channel] = interpolator(delay);
        }
        const Interpolator& in = interpolator_[channel];
        if (std::fabs(slope) >= kFastSlope) return readPrimed(channel, in);
        int32_t p = static_cast<int32_t>(writeIndex_) - 1 - in.whole;
        if (fresh_ && p - 1 < 0) return silence(channel);
        float y = in.c2 * (at(channel, p + 1) - before_[channel]) + in.c1 * (at(channel, p) - last_[channel]) +
                  at(channel, p - 1);
        before_[channel] = last_[channel];
        last_[channel] = y;
        return y;
    }
    void advance() {
        if (++writeIndex_ == size_) {
            writeIndex_ = 0;
            fresh_ = false;
        }
    }

    // A fast-moving channel's reads for the coming frame, made before the frame's writes:
    // the same values that read would give, in one pass whose samples do not wait on each
    // other. Does nothing and answers false when the channel moves slowly or a read would
    // reach a sample the frame writes.
    bool readAhead(int channel, const float delays[kFrame], float slope, float out[kFrame]);

private:
    // The interpolator for a delay: the whole samples behind the newest one read, and the
    // all-pass coefficients for the rest.
    struct Interpolator {
        int32_t whole;
        float c1;
        float c2;
    };
    static Interpolator interpolator(float delay);

    float at(int channel, int32_t pair) const {
        return samples_[(static_cast<uint32_t>(pair) * 2 + static_cast<uint32_t>(channel)) & (size_ * 2 - 1)];
    }
    // Not yet written since the restart: reads as silence.
    float silence(int channel) {
        last_[channel] = before_[channel] = 0.0f;
        return 0.0f;
    }
    // The read of a channel moving fast: the running state is of no use, so it is primed
    // from the line itself.
    float readPrimed(int channel, const Interpolator& in);

    ZeroedPages memory_;
    float* samples_;  // left at even index
    uint32_t size_ = 0;
    uint32_t dirtyPairs_ = 0;  // pairs that may be written; the rest are untouched zero pages
    uint32_t writeIndex_ = 0;
    float last_[2] = {};    // last output per channel
    float before_[2] = {};  // the one before it
    bool fresh_ = false;    // set until the line has wrapped once since its restart
    // The interpolator of the last delay read per channel: a delay at rest costs no division.
    float interpolatedDelay_[2] = {-1.0f, -1.0f};
    Interpolator interpolator_[2] = {};
};

}  // namespace tw
