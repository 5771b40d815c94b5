// The demo input that the tools render when no audio file is given: a short plucked
// phrase over a soft kick at 120 beats per minute, with silence at the end so that
// echoes can ring out. Made by code, the same every time.
#pragma once

#include <vector>

namespace tw {

struct AudioBuffer {
    int sampleRate = 0;
    int channels = 0;
    std::vector<float> samples;  // interleaved
    long frames() const { return channels ? static_cast<long>(samples.size()) / channels : 0; }
};

AudioBuffer makeDemoSignal(int sampleRate = 48000);

}  // namespace tw
