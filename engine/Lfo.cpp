#include "engine/Lfo.h"

#include "engine/EngineMath.h"
#include "engine/NoteRatios.h"

#include <cmath>

namespace tw {

void Lfo::pullTo(float target, bool resync, float lfoPull) {
    if (resync) {
        phase = target;
        return;
    }
    float d = target - phase;
    if (std::fabs(d) > 0.5f) d -= signOf(d);
    if (std::fabs(d) >= 0.0001f)
        increment += d * lfoPull;
    else
        phase = target;
}

void Lfo::updateRate(const RateInput& in) {
    if (!in.synced) {
        // A rate at rest costs no power.
        if (in.smoothedRate != freeRate) {
            freeRate = in.smoothedRate;
            freeIncrement = (std::pow(1001.0f, in.smoothedRate) * 0.1f - 0.1f) * 8.0f / in.sampleRate;
        }
        increment = freeIncrement;
        syncIncrement = increment;
        if (std::fabs(increment) < 1e-7f) pullTo(-0.5f, in.resync, in.lfoPull);
        return;
    }
    float r = clampFloat(in.rawRate, 0.0f, 1.0f);
    int i = static_cast<int>(std::floor(r * 24.0f + 0.5f)) + 3;
    float v = static_cast<float>(kNoteDenominators[i]) / static_cast<float>(kNoteNumerators[i]);
    float n = v * in.tempo / in.sampleRate * 0.033333335f;
    if (!in.resync) {
        float m = (n - syncIncrement) * in.controlSmooth + syncIncrement;
        if (std::fabs(m - n) >= 1e-6f) n = m;
    }
    syncIncrement = n;
    increment = n;
    float position = v * in.songPosition;
    float followed = follower.step(position - std::floor(position), in.syncGain);
    if (in.playing) pullTo(followed - 0.5f, in.resync, in.lfoPull);
}

void Lfo::run(int shape, bool synced, bool delayTarget, EngineRandom& random) {
    int selector = (shape + (shape == kRandom && synced ? 1 : 0)) * 2 + (delayTarget ? 1 : 0);
    for (float& out : values) {
        switch (selector) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
        case 5:
            out = plainShape(selector, phase);
            break;
        case 6:
            out = clampFloat(smoothRandom.step(increment, random) * 1.4142135f, -1.0f, 1.0f);
            break;
        case 7:
            out = smoothRandom.step(increment, random) * 1.4142135f * 2.3333333f;
            break;
        case 8:
            out = randomValue;
            break;
        default:
            out = randomValue * 3.1415927f;
            randomValue += increment * randomStep;
            break;
        }
        phase += increment;
        if (selector < 8) {
            if (std::fabs(phase) > 0.5f) phase -= signOf(phase);
        } else if (phase < -0.5f) {
            phase += 1.0f;
        } else if (phase >= 0.5f) {
            phase -= 1.0f;
            float r = random.next();
            // The synced integral draws a line that arrives at a new random value at the
            // next wrap.
            if (selector == 8)
                randomValue = r * 2.0f - 1.0f;
            else
                randomStep = (r * 2.0f - 1.0f) - randomValue;
        }
    }
}

void Lfo::advance(int shape, bool synced, bool delayTarget, EngineRandom& random) {
    int selector = (shape + (shape == kRandom && synced ? 1 : 0)) * 2 + (delayTarget ? 1 : 0);
    // The random shapes draw as they go, and every draw counts: those run in full.
    if (selector >= 6) {
        run(shape, synced, delayTarget, random);
        return;
    }
    for (int k = 0; k < kSteps; ++k) {
        if (k == 0 || (k == 4 && delayTarget)) values[k] = plainShape(selector, phase);
        phase += increment;
        if (std::fabs(phase) > 0.5f) phase -= signOf(phase);
    }
}

void Lfo::updateShownValue(bool delayTarget) {
    if (!delayTarget) {
        value = values[0];
        return;
    }
    float n = increment * -6.2831855f * 8.0f * 0.5f;
    if (std::fabs(n) > 1e-5f) value = (values[4] - values[0]) / n;
}

}  // namespace tw
