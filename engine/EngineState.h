// Every value of ShifterEngine that a reset clears: one plain record, so that a reset is a
// single assignment. The large rings and the LFO meter's needle live beside it.
#pragma once

#include "engine/EngineRandom.h"
#include "engine/HilbertPair.h"
#include "engine/Lfo.h"
#include "engine/MidiTracker.h"
#include "engine/SpecSmoother.h"
#include "engine/SyncFollower.h"

#include <cstdint>

namespace tw {

// A value that moves linearly toward its target, by one step per sample or per frame.
struct Ramp {
    float current = 0.0f;
    float step = 0.0f;
    float target = 0.0f;
};

// An input whose changes the control update acts on; a first look counts as a change.
struct Watched {
    int last = 0;
    bool seen = false;

    bool changed(int value) {
        bool result = !seen || value != last;
        last = value;
        seen = true;
        return result;
    }
};

struct EngineState {
    static constexpr int kSmootherCount = 11;

    EngineRandom random;

    float sampleRate = 0.0f;
    float inverseRate = 0.0f;

    // Coefficients of the sample rate.
    float rateSmooth = 0.0f;
    float lfoPull = 0.0f;
    float phasePull = 0.0f;
    float filterLfoSmooth = 0.0f;
    float controlSmooth = 0.0f;
    float depthSmooth = 0.0f;
    float lengthSmooth = 0.0f;
    float holdDecay = 0.0f;
    float midiDecay = 0.0f;
    float quietStep = 0.0f;  // the seconds of one slow update
    uint32_t delaySize = 0;  // stereo pairs
    uint32_t smearMask = 0;

    int controlCountdown = 0;  // frames to the next control update
    int slowCountdown = 0;     // frames to the next slow update
    int frameIndex = 0;        // frame inside the control period
    int noiseIndex = 0;

    bool silent = false;
    float quietTime = 0.0f;  // seconds without loop signal

    // Shifter oscillators, in cycles.
    float oscillatorPhase[2] = {};
    float lastPhaseValue[2] = {};
    float phaseTarget[2] = {};
    bool phaseLocked[2] = {};
    float shift[2] = {};  // cycles per sample
    float correction[2] = {};
    float increment[2] = {};
    float baseShift = 0.0f;
    float curveAmount = -1.0f;  // the amount and range top of curveShift, the "Fine" or "Wide" shift
    float curveTop = 0.0f;
    float curveShift = 0.0f;
    float syncFrequency = 0.0f;
    float followerValue = 0.0f;
    SyncFollower shiftFollower;
    bool resync = false;
    float syncGain = 1.0f;
    // The rotation per sample of each oscillator, for the increment it was made for.
    float stepIncrement[2] = {};
    float stepSin[2] = {};
    float stepSquare[2] = {};
    // One frame of oscillator output, lanes left, right, left, right per sample.
    alignas(16) float oscillatorCos[8][4] = {};
    alignas(16) float oscillatorSin[8][4] = {};

    // Shifter configuration.
    uint32_t ringMask = 1;
    bool rotate = false;
    float rotationAngle = 0.0f;  // radians
    float rotCos = 1.0f;
    float rotSin = 0.0f;
    bool secondPairOn = false;
    HilbertPair firstPair{};
    HilbertPair secondPair{};

    float feedback[2] = {};

    Ramp sideband;
    Ramp feedbackGain;
    Ramp inputGain;
    Ramp wetGain;
    Ramp dryGain;
    Ramp delayTarget;  // per frame
    Ramp phase;        // per frame, the oscillators' phase control
    Ramp smearCoefficient;
    Ramp lowPass[2];
    float delay[2] = {};  // samples, per channel
    float delaySlope[2] = {};
    float lastDelaySeconds = 0.0f;

    // Filters.
    float lpBase = 0.0f;
    float highPass = 0.0f;
    float lpState[2] = {};
    float lpOut[2] = {};
    float lpSum[2] = {};
    float hpState[2] = {};

    // Smear.
    uint32_t smearWrite = 0;
    float smearTotal = 0.0f;
    bool smearOn = false;

    Lfo lfo;
    MidiTracker midi;
    int lastNote = 0;
    bool noteSeen = false;

    SpecSmoother smoothers[kSmootherCount];

    float heldLevel = 0.0f;
    float midiActivity = 0.0f;

    Watched delaySyncWatch;
    Watched antiReflectionWatch;
    Watched lfoTargetWatch;
    Watched lfoSyncWatch;
    Watched rangeWatch;
    Watched playingWatch;
};

}  // namespace tw
