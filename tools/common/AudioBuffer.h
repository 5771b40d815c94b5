// Audio as the tools hold it: interleaved float samples with their rate and channel count.
#pragma once

#include <vector>

namespace tw {

struct AudioBuffer {
    int sampleRate = 0;
    int channels = 0;
    std::vector<float> samples;  // interleaved
    long frames() const { return channels ? static_cast<long>(samples.size()) / channels : 0; }
};

}  // namespace tw
