// The engine's one LFO: four shapes, free or synced to the host's tempo and position, run
// one step per 8-sample frame and computed ahead in groups of eight per control update.
// For the delay-time target the shapes are the running integrals of the ones the user sees.
#pragma once

#include "engine/EngineRandom.h"
#include "engine/SmoothRandom.h"
#include "engine/SyncFollower.h"

namespace tw {

struct Lfo {
    enum Shape { kSine, kSaw, kSquare, kRandom };
    enum Target { kFrequencyShift, kPhaseShift, kLowPass, kDelayTime };
    static constexpr int kSteps = 8;

    float phase = -0.5f;  // cycles, -0.5 up to 0.5; -0.5 is the top of the sine
    float increment = 0.0f;
    float syncIncrement = 0.0f;
    float values[kSteps] = {};
    float randomValue = 0.0f;
    float randomStep = 0.0f;
    SmoothRandom smoothRandom;
    SyncFollower follower;
    float depth = 0.0f;
    float depthStep = 0.0f;
    float depthTarget = 0.0f;
    float sign = 1.0f;  // -1 hands the right channel the LFO inverted
    float filterLast = 0.0f;
    float value = 0.0f;  // the value shown to the user
    float freeRate = -1.0f;  // the smoothed rate of freeIncrement, the free-running increment
    float freeIncrement = 0.0f;

    // What the rate update needs from the control update.
    struct RateInput {
        bool synced;
        float smoothedRate;
        float rawRate;
        float tempo;
        float sampleRate;
        float songPosition;  // whole notes
        bool playing;
        bool resync;
        float syncGain;
        float controlSmooth;
        float lfoPull;
    };

    // Sets the increment, and pulls the phase where it must stand.
    void updateRate(const RateInput& in);

    // Fills values with the next eight steps of the shape.
    void run(int shape, bool synced, bool delayTarget, EngineRandom& random);

    // The same eight steps, leaving in values only what updateShownValue reads: while the
    // engine is silent nothing else looks at them, and a wake runs the LFO afresh.
    void advance(int shape, bool synced, bool delayTarget, EngineRandom& random);

    // The value shown to the user: the shape itself, so for the delay target the slope of
    // its integral.
    void updateShownValue(bool delayTarget);

    // Free and of a plain shape (not random), as many silent steps as `steps` (at most
    // kMaxQuietSteps), each followed by updateShownValue, exactly as that many calls of
    // advance and updateShownValue leave it; shown receives the value after each step.
    // The phase runs first and the shapes after it, so that the steps overlap.
    static constexpr int kMaxQuietSteps = 16;
    void advancePlain(int shape, bool delayTarget, int steps, float* shown);

private:
    void pullTo(float target, bool resync, float lfoPull);
};

}  // namespace tw
