// The engine's one LFO: four shapes, free or synced to the host's tempo and position, run
// one step per 8-sample frame and computed ahead in groups of eight per control update.
// For the delay-time target the shapes are the running integrals of the ones the user sees.
#pragma once

#include "engine/EngineMath.h"
#include "engine/EngineRandom.h"
#include "engine/SmoothRandom.h"
#include "engine/SyncFollower.h"

#include <cmath>

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

    // Free and of a plain shape (not random), as many silent steps as `steps`, each
    // followed by updateShownValue, exactly as that many calls of advance and
    // updateShownValue leave it; each(j, value) receives the value shown after step j.
    // One loop, so that the chain of phase steps runs on beside the shapes and whatever
    // each does with them.
    template <class Each>
    void advancePlain(int shape, bool delayTarget, int steps, Each&& each) {
        if (steps <= 0) return;
        const int selector = shape * 2 + (delayTarget ? 1 : 0);
        const float slope = increment * -6.2831855f * 8.0f * 0.5f;
        const bool sloped = std::fabs(slope) > 1e-5f;
        float p = phase;
        float v = value;
        float first = 0.0f;
        float middle = 0.0f;
        for (int j = 0; j < steps; ++j) {
            const float start = p;
            float half = p;
            for (int k = 0; k < kSteps; ++k) {
                if (k == 4) half = p;
                p += increment;
                if (std::fabs(p) > 0.5f) p -= signOf(p);
            }
            first = plainShape(selector, start);
            if (delayTarget) {
                middle = plainShape(selector, half);
                if (sloped) v = (middle - first) / slope;
            } else {
                v = first;
            }
            each(j, v);
        }
        phase = p;
        value = v;
        values[0] = first;
        if (delayTarget) values[4] = middle;
    }

    // The shapes that are a function of the phase alone, by run's selector (0 to 5).
    static float plainShape(int selector, float phase) {
        float u = phase + 0.5f;
        switch (selector) {
        case 0:
        case 1:
            return std::cos(u * kTwoPi);
        case 2:
            return 1.0f - (phase * 2.0f + 1.0f);
        case 3:
            return (1.0f - (1.0f - u) * u * 6.0f) * 1.0471976f;
        case 4:
            return u >= 0.5f ? -1.0f : 1.0f;
        default:
            return (u >= 0.5f ? u * 4.0f - 3.0f : 1.0f - u * 4.0f) * 1.5707964f;
        }
    }

private:
    void pullTo(float target, bool resync, float lfoPull);
};

}  // namespace tw
