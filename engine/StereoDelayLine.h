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
        return readAt(channel, interpolatorFor(channel, delay), std::fabs(slope) >= kFastSlope, writeIndex_, fresh_);
    }
    void advance() {
        if (++writeIndex_ == size_) {
            writeIndex_ = 0;
            fresh_ = false;
        }
    }

    // A channel's reads for the coming frame, made before any of the frame's writes: the
    // same values that reading each sample after its write gives, when no read reaches a
    // sample the frame writes. A channel moving fast is read for all samples side by side.
    // Does nothing and answers false when a read would reach the frame's writes.
    bool readFrame(int channel, const float delays[kFrame], float slope, float out[kFrame]);

    // readFrame for both channels; ahead tells which channels it read.
    void readStereoFrame(const float delays[2][kFrame], const float slopes[2], float out[2][kFrame], bool ahead[2]);

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
    const Interpolator& interpolatorFor(int channel, float delay) {
        if (delay != interpolatedDelay_[channel]) {
            interpolatedDelay_[channel] = delay;
            interpolator_[channel] = interpolator(delay);
        }
        return interpolator_[channel];
    }
    // A read as the sample written at writePosition sees the line; fresh as it stands then.
    float readAt(int channel, const Interpolator& in, bool fast, uint32_t writePosition, bool fresh) {
        int32_t p = static_cast<int32_t>(writePosition) - (fast ? kPrimeSteps : 1) - in.whole;
        if (fresh && p - 1 < 0) {
            // Not yet written since the restart: reads as silence.
            last_[channel] = before_[channel] = 0.0f;
            return 0.0f;
        }
        if (fast) return readPrimed(channel, in, p);
        float y = in.c2 * (at(channel, p + 1) - before_[channel]) + in.c1 * (at(channel, p) - last_[channel]) +
                  at(channel, p - 1);
        before_[channel] = last_[channel];
        last_[channel] = y;
        return y;
    }
    // Moving fast, the running state is of no use: it is primed from the line itself.
    float readPrimed(int channel, const Interpolator& in, int32_t p);
    // What a channel's frame needs: each sample's interpolator and first pair read, and
    // whether the reads are primed.
    struct FramePlan {
        alignas(32) int32_t whole[kFrame];
        alignas(32) int32_t start[kFrame];
        alignas(32) float c1[kFrame];
        alignas(32) float c2[kFrame];
        bool fast;
        bool primed;
    };
    // False when a read would reach the frame's writes.
    bool planFrame(int channel, const float delays[kFrame], float slope, FramePlan& plan);
    void readPlanned(int channel, const FramePlan& plan, float out[kFrame]);
    // readFrame for a channel moving fast, once the reads are known to be independent.
    void readPrimedFrame(int channel, const int32_t start[kFrame], const float c1[kFrame], const float c2[kFrame],
                         float out[kFrame]);

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
