// Follows the host's song position, given as a fraction of a note length, with a phase
// that runs forward smoothly: the synced shifter oscillators and the synced LFO lock to it.
#pragma once

namespace tw {

struct SyncFollower {
    float phase = 0.0f;
    float rate = 0.0f;
    float lastTarget = -1000.0f;  // below -999: no target seen yet

    void clear() {
        phase = 0.0f;
        rate = 0.0f;
        lastTarget = -1000.0f;
    }

    // One control-rate step toward target (0 up to 1) with gain; returns the phase.
    float step(float target, float gain);
};

}  // namespace tw
