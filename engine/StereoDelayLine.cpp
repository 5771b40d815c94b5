#include "engine/StereoDelayLine.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tw {

StereoDelayLine::StereoDelayLine()
    : memory_(kMaxPairs * 2 * sizeof(float)), samples_(static_cast<float*>(memory_.data())) {}

void StereoDelayLine::setSize(uint32_t pairs) {
    size_ = std::min(pairs, kMaxPairs);
    std::memset(samples_, 0, size_ * 2 * sizeof(float));
    writeIndex_ = 0;
    last_[0] = last_[1] = before_[0] = before_[1] = 0.0f;
    fresh_ = false;
}

void StereoDelayLine::process(float xL, float xR, float delayL, float delayR, float slopeL, float slopeR,
                              bool first, float& outL, float& outR) {
    if (first) {
        std::memset(samples_, 0, (kPrimeSteps + 1) * 2 * sizeof(float));
        writeIndex_ = kPrimeSteps + 1;
        last_[0] = last_[1] = before_[0] = before_[1] = 0.0f;
        fresh_ = true;
    }
    samples_[writeIndex_ * 2] = xL;
    samples_[writeIndex_ * 2 + 1] = xR;
    outL = read(0, delayL, slopeL);
    outR = read(1, delayR, slopeR);
    if (++writeIndex_ == size_) {
        writeIndex_ = 0;
        fresh_ = false;
    }
}

float StereoDelayLine::read(int channel, float delay, float slope) {
    int32_t whole = static_cast<int32_t>(delay);
    float f = delay - static_cast<float>(whole);
    // Keep the fraction between 1 and 2, where the interpolator is flattest, except at the
    // shortest delays.
    if (whole > 0) {
        f = f + 1.0f;
        whole = whole - 1;
    }
    int32_t steps = std::fabs(slope) >= 0.03f ? kPrimeSteps : 1;
    int32_t p = static_cast<int32_t>(writeIndex_) - steps - whole;
    if (fresh_ && p - 1 < 0) {
        // Not yet written since the restart: reads as silence.
        last_[channel] = before_[channel] = 0.0f;
        return 0.0f;
    }
    float t = (f * 0.33565003f * f + 0.6600485f) - f;
    float u = 0.9997654f - f;
    float c2 = std::max(t, u) / (f * 0.800171f + 1.0038364f);
    float c1 = (c2 + 2.0079546f) - std::max(f * 1.0064453f - c2, 1.0079747f);

    const uint32_t mask = size_ * 2 - 1;
    const float* s = samples_;
    auto at = [s, mask, channel](int32_t pair) {
        return s[(static_cast<uint32_t>(pair) * 2 + static_cast<uint32_t>(channel)) & mask];
    };
    if (steps == 1) {
        float y = c2 * (at(p + 1) - before_[channel]) + c1 * (at(p) - last_[channel]) + at(p - 1);
        before_[channel] = last_[channel];
        last_[channel] = y;
        return y;
    }
    // Moving fast: the running state is of no use, so prime it from the line itself.
    float y1 = at(p - 1);
    float y2 = at(p);
    float x2 = at(p - 1);
    float x1 = at(p);
    for (int32_t k = 1; k <= kPrimeSteps; k += 5) {
        for (int32_t j = 0; j < 5; ++j) {
            float x0 = at(p + k + j);
            float y = c2 * (x0 - y2) + c1 * (x1 - y1) + x2;
            y2 = y1;
            y1 = y;
            x2 = x1;
            x1 = x0;
        }
    }
    before_[channel] = y2;
    last_[channel] = y1;
    return y1;
}

}  // namespace tw
