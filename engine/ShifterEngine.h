// The whole sound of the product: a stereo delay whose feedback loop holds a smear, a
// low-pass and a high-pass filter and a frequency shifter, so each echo is shifted once
// more. ShifterProcessor owns one per instance and calls it once per 8-sample frame.
#pragma once

#include "engine/DiffuserUnit.h"
#include "engine/EngineState.h"
#include "engine/FrameControls.h"
#include "engine/LfoNeedle.h"
#include "engine/StereoDelayLine.h"

#include <cstdint>

namespace tw {

class ShifterEngine : private EngineState {
public:
    static constexpr int kFrameSize = 8;
    static constexpr int kSmearUnits = 4;

    // Builds the engine tables if no engine has yet.
    ShifterEngine();

    // Clears all state for a sample rate; the seed starts the random generator.
    void reset(float sampleRate, uint32_t seed);

    // One frame of kFrameSize samples.
    void processFrame(const FrameControls& in, FrameReport& out);

    // What the tests and the meters may look at.
    uint32_t delayPairs() const { return delaySize; }
    uint32_t smearRingMask() const { return smearMask; }
    float smearTotalLength() const { return smearTotal; }
    float shiftPerSample(int channel) const { return shift[channel]; }
    float delaySamples(int channel) const { return delay[channel]; }
    float hilbertRotation() const { return rotate ? rotationAngle : 0.0f; }
    int hilbertRingSize() const { return static_cast<int>(ringMask) + 1; }

private:
    void clearLoop();
    void controlUpdate(const FrameControls& in, bool reset);
    void configureShifter(bool antiReflection);
    void updateBaseShift(const FrameControls& in, float amount);
    void updateDepthTarget(int target, float amount);
    void updateSmear(float amount, float feedbackAmount);
    void updateDelayTarget(const FrameControls& in, float smoothedTime, bool reset);
    void updateOscillatorTargets(const FrameControls& in, float phaseLeft, float phaseRight, bool reset);
    void updateRamps(bool reset);
    void slowUpdate();
    void frameUpdate(int target);
    void lowPassTargets(float octaves);
    void oscillatorTables();
    template <bool kFeedback>
    void runSamples(const FrameControls& in, bool first, float& peak);

    StereoDelayLine line_;
    DiffuserUnit units_[kSmearUnits];
    LfoNeedle needle_;
    float needleValue_ = 0.0f;
    uint32_t seed_ = 0;
    bool restart_ = false;  // the next frame starts the loop afresh
};

}  // namespace tw
