// A small last-note-priority keyboard model: the held notes in order of arrival, sustain,
// modulation wheel and pitch bend. The engine reads its note to steer the shift in the
// "Midi" range; nothing in it ever gates the audio.
#pragma once

#include <cstdint>

namespace tw {

struct MidiTracker {
    static constexpr int kMaxHeld = 128;

    int32_t note = 60;
    float velocity = 0.0f;
    float modWheel = 0.0f;
    float pitchBend = 0.0f;
    bool sustain = false;
    bool pendingRelease = false;
    int32_t heldNotes[kMaxHeld] = {};
    float heldVelocities[kMaxHeld] = {};
    int32_t heldCount = 0;

    // What one frame's events did.
    struct Result {
        bool triggered = false;  // a note went down with no other note held
        bool released = false;   // the last note went up, sustain included
        bool held = false;
    };

    void clear() { *this = MidiTracker(); }

    // Runs one frame's events, each packed as status << 16 | data1 << 8 | data2.
    Result run(const uint32_t* events, int count);

private:
    void noteOn(int number, float v, Result& result);
    void noteOff(int number, Result& result);
    void removeHeld(int number);
};

}  // namespace tw
