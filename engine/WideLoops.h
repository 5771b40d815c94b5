// The engine's hot loops built for AVX2, in a translation unit of their own compiled for
// it: ShifterEngine and StereoDelayLine call them only when wideVectors() says so. Each
// gives, bit for bit, what its baseline beside the caller gives: the same operations in
// the same order per lane, and no fused multiply-add.
#pragma once

#include <cstdint>

namespace tw::wide {

// The quiet frames of 8 samples at the start of `frames`, each one's outputs zeroed once
// it is found quiet; stops at the first frame with a sample above threshold. The outputs
// may be the inputs.
int quietFrames(const float* inL, const float* inR, float* outL, float* outR, int frames, float threshold);

// The delay line's all-pass interpolators for the 8 delays of a frame: the whole samples
// behind and the two coefficients of each, as StereoDelayLine computes them one by one.
void interpolators(const float delays[8], std::int32_t whole[8], float c1[8], float c2[8]);

// The most priming steps the primed reads below take.
constexpr int kMaxPrimeSteps = 30;

// The delay line's primed reads of one channel for a frame, all 8 samples side by side:
// samples is the stereo ring (left at even index), mask its index mask, start the pair
// each read starts at. Leaves in lastTwo the last sample's output and the one before.
void primedReads(const float* samples, std::uint32_t mask, int channel, int primeSteps, const std::int32_t start[8],
                 const float c1[8], const float c2[8], float out[8], float lastTwo[2]);

// primedReads for both channels at once, their two chains of steps side by side.
void primedStereoReads(const float* samples, std::uint32_t mask, int primeSteps, const std::int32_t startLeft[8],
                       const float c1Left[8], const float c2Left[8], const std::int32_t startRight[8],
                       const float c1Right[8], const float c2Right[8], float outLeft[8], float outRight[8],
                       float lastTwoLeft[2], float lastTwoRight[2]);

}  // namespace tw::wide
