#include "engine/StereoDelayLine.h"

#include "engine/WideLoops.h"
#include "engine/WideVectors.h"

#include <cmath>
#include <cstring>
#include <xmmintrin.h>

namespace tw {

static_assert(StereoDelayLine::kPrimeSteps <= wide::kMaxPrimeSteps, "the wide loops prime that far");

StereoDelayLine::StereoDelayLine()
    : memory_(kMaxPairs * 2 * sizeof(float)), samples_(static_cast<float*>(memory_.data())) {}

void StereoDelayLine::setSize(uint32_t pairs) {
    std::memset(samples_, 0, dirtyPairs_ * 2 * sizeof(float));
    dirtyPairs_ = 0;
    size_ = std::min(pairs, kMaxPairs);
    writeIndex_ = 0;
    last_[0] = last_[1] = before_[0] = before_[1] = 0.0f;
    fresh_ = false;
}

void StereoDelayLine::restart() {
    std::memset(samples_, 0, (kPrimeSteps + 1) * 2 * sizeof(float));
    writeIndex_ = kPrimeSteps + 1;
    last_[0] = last_[1] = before_[0] = before_[1] = 0.0f;
    fresh_ = true;
}

StereoDelayLine::Interpolator StereoDelayLine::interpolator(float delay) {
    int32_t whole = static_cast<int32_t>(delay);
    float f = delay - static_cast<float>(whole);
    // Keep the fraction between 1 and 2, where the all-pass is flattest, except at the
    // shortest delays.
    if (whole > 0) {
        f = f + 1.0f;
        whole = whole - 1;
    }
    float t = (f * 0.33565003f * f + 0.6600485f) - f;
    float u = 0.9997654f - f;
    float c2 = std::max(t, u) / (f * 0.800171f + 1.0038364f);
    float c1 = (c2 + 2.0079546f) - std::max(f * 1.0064453f - c2, 1.0079747f);
    return {whole, c1, c2};
}

float StereoDelayLine::readPrimed(int channel, const Interpolator& in, int32_t p) {
    const float c1 = in.c1;
    const float c2 = in.c2;
    float y1 = at(channel, p - 1);
    float y2 = at(channel, p);
    float x2 = at(channel, p - 1);
    float x1 = at(channel, p);
    for (int32_t k = 1; k <= kPrimeSteps; k += 5) {
        for (int32_t j = 0; j < 5; ++j) {
            float x0 = at(channel, p + k + j);
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

bool StereoDelayLine::planFrame(int channel, const float delays[kFrame], float slope, FramePlan& plan) {
    const bool fast = std::fabs(slope) >= kFastSlope;
    const int32_t reach = fast ? kPrimeSteps + 1 : 2;
    const bool wide = wideVectors();
    plan.fast = fast;
    if (wide) {
        // A delay shorter than the frame, as at rest, is known from its first sample's
        // whole part, found as interpolator finds it.
        int32_t first = static_cast<int32_t>(delays[0]);
        if (first > 0) first = first - 1;
        if (first <= 0 || first + reach >= static_cast<int32_t>(size_)) return false;
        wide::interpolators(delays, plan.whole, plan.c1, plan.c2);
    }
    bool freshRead = false;
    for (int n = 0; n < kFrame; ++n) {
        if (!wide) {
            const Interpolator& in = interpolatorFor(channel, delays[n]);
            plan.whole[n] = in.whole;
            plan.c1[n] = in.c1;
            plan.c2[n] = in.c2;
        }
        // Sample n reads from whole samples behind its own write back to reach more: none of
        // it may be written earlier in the frame, directly or round the ring.
        if (plan.whole[n] <= n || plan.whole[n] + reach >= static_cast<int32_t>(size_)) return false;
        uint32_t w = writeIndex_ + static_cast<uint32_t>(n);
        bool fresh = fresh_ && w < size_;
        if (w >= size_) w -= size_;
        plan.start[n] = static_cast<int32_t>(w) - (fast ? kPrimeSteps : 1) - plan.whole[n];
        freshRead = freshRead || (fresh && plan.start[n] - 1 < 0);
    }
    plan.primed = fast && !freshRead;
    return true;
}

void StereoDelayLine::readPlanned(int channel, const FramePlan& plan, float out[kFrame]) {
    if (plan.primed) {
        readPrimedFrame(channel, plan.start, plan.c1, plan.c2, out);
        return;
    }
    for (int n = 0; n < kFrame; ++n) {
        uint32_t w = writeIndex_ + static_cast<uint32_t>(n);
        bool fresh = fresh_ && w < size_;
        if (w >= size_) w -= size_;
        out[n] = readAt(channel, Interpolator{plan.whole[n], plan.c1[n], plan.c2[n]}, plan.fast, w, fresh);
    }
}

bool StereoDelayLine::readFrame(int channel, const float delays[kFrame], float slope, float out[kFrame]) {
    FramePlan plan;
    if (!planFrame(channel, delays, slope, plan)) return false;
    readPlanned(channel, plan, out);
    return true;
}

void StereoDelayLine::readStereoFrame(const float delays[2][kFrame], const float slopes[2], float out[2][kFrame],
                                      bool ahead[2]) {
    FramePlan plans[2];
    ahead[0] = planFrame(0, delays[0], slopes[0], plans[0]);
    // Channels that move alike, as they do unless the LFO is stereo, share one plan.
    if (slopes[0] == slopes[1] && std::memcmp(delays[0], delays[1], sizeof(delays[0])) == 0) {
        ahead[1] = ahead[0];
        plans[1] = plans[0];
    } else {
        ahead[1] = planFrame(1, delays[1], slopes[1], plans[1]);
    }
    if (ahead[0] && ahead[1] && plans[0].primed && plans[1].primed && wideVectors()) {
        // Each channel's primed reads are one long chain of dependent steps: side by side,
        // the two chains overlap.
        float lastTwo[2][2];
        wide::primedStereoReads(samples_, size_ * 2 - 1, kPrimeSteps, plans[0].start, plans[0].c1, plans[0].c2,
                                plans[1].start, plans[1].c1, plans[1].c2, out[0], out[1], lastTwo[0], lastTwo[1]);
        for (int c = 0; c < 2; ++c) {
            last_[c] = lastTwo[c][0];
            before_[c] = lastTwo[c][1];
        }
        return;
    }
    for (int c = 0; c < 2; ++c)
        if (ahead[c]) readPlanned(c, plans[c], out[c]);
}

void StereoDelayLine::readPrimedFrame(int channel, const int32_t start[kFrame], const float c1[kFrame],
                                      const float c2[kFrame], float out[kFrame]) {
    if (wideVectors()) {
        float lastTwo[2];
        wide::primedReads(samples_, size_ * 2 - 1, channel, kPrimeSteps, start, c1, c2, out, lastTwo);
        last_[channel] = lastTwo[0];
        before_[channel] = lastTwo[1];
        return;
    }
    auto at = [this, channel](int32_t pair) { return this->at(channel, pair); };
    // Four samples at a time, one per lane: the same steps as readPrimed, side by side.
    __m128 y1;
    __m128 y2;
    for (int b = 0; b < kFrame; b += 4) {
        const int32_t* p = start + b;
        const __m128 k1 = _mm_load_ps(c1 + b);
        const __m128 k2 = _mm_load_ps(c2 + b);
        __m128 x2 = _mm_setr_ps(at(p[0] - 1), at(p[1] - 1), at(p[2] - 1), at(p[3] - 1));
        __m128 x1 = _mm_setr_ps(at(p[0]), at(p[1]), at(p[2]), at(p[3]));
        y1 = x2;
        y2 = x1;
        for (int32_t k = 1; k <= kPrimeSteps; ++k) {
            __m128 x0 = _mm_setr_ps(at(p[0] + k), at(p[1] + k), at(p[2] + k), at(p[3] + k));
            __m128 y = _mm_add_ps(_mm_add_ps(_mm_mul_ps(k2, _mm_sub_ps(x0, y2)), _mm_mul_ps(k1, _mm_sub_ps(x1, y1))), x2);
            y2 = y1;
            y1 = y;
            x2 = x1;
            x1 = x0;
        }
        _mm_storeu_ps(out + b, y1);
    }
    alignas(16) float lastTwo[2][4];
    _mm_store_ps(lastTwo[0], y1);
    _mm_store_ps(lastTwo[1], y2);
    last_[channel] = lastTwo[0][3];
    before_[channel] = lastTwo[1][3];
}

}  // namespace tw
