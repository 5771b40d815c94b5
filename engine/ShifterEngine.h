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

    // Up to `frames` frames (the inputs and outputs hold that many); returns how many it
    // processed, at least one. A silent engine takes many quiet frames at once, exactly as
    // frame by frame; anything else goes one frame at a time. The events and the song
    // position are the first frame's. out reports the last frame processed, and needles
    // (room for `frames`) the needle of each: the needle's history is the one value of a
    // report that the meters keep frame by frame.
    int processFrames(const FrameControls& in, int frames, FrameReport& out, float* needles);

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
    int quietRun(const FrameControls& in, int frames, FrameReport& out, float* needles);
    bool restingLfo(const FrameControls& in) const;
    void fillReport(FrameReport& out) const;
    void controlUpdate(const FrameControls& in, bool reset);
    void quietControlUpdate(const FrameControls& in);
    void runLfo(const FrameControls& in, float lfoRate);
    void updateSyncGain();
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
