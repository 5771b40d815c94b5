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

}  // namespace tw::wide
