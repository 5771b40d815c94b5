// The reference the heavy setting is weighed against: two of SWH's Bode frequency
// shifters (Debian's swh-plugins, a LADSPA library), one per channel, loaded at run time
// through the LADSPA C interface declared here from its published layout.
#pragma once

#include <cstddef>

namespace tw::bench {

class BodeShifters {
public:
    // Loads the library and makes the two instances at the rate; loaded() says if it could.
    explicit BodeShifters(float sampleRate);
    ~BodeShifters();
    BodeShifters(const BodeShifters&) = delete;
    BodeShifters& operator=(const BodeShifters&) = delete;

    bool loaded() const { return handles_[0] != nullptr && handles_[1] != nullptr; }

    // Shifts n samples of each channel (n at most kMaxBlock) into the outputs.
    void run(const float* left, const float* right, float* outLeft, float* outRight, std::size_t n);

    static constexpr std::size_t kMaxBlock = 512;

private:
    void* library_ = nullptr;
    const void* descriptor_ = nullptr;
    void* handles_[2] = {nullptr, nullptr};
    float in_[2][kMaxBlock] = {};
    float up_[2][kMaxBlock] = {};
    float down_[2][kMaxBlock] = {};
    unsigned long inputPort_ = 0, upPort_ = 0;
    float shift_ = 100.0f;  // hertz
    float latency_ = 0.0f;
};

}  // namespace tw::bench
