#include "engine/MidiTracker.h"

namespace tw {

namespace {
constexpr float kOneOver127 = 0.007874016f;
}

MidiTracker::Result MidiTracker::run(const uint32_t* events, int count) {
    Result result;
    for (int e = 0; e < count; ++e) {
        int status = (events[e] >> 16) & 0xff;
        int d1 = (events[e] >> 8) & 0xff;
        int d2 = events[e] & 0xff;
        switch (status >> 4) {
        case 0x9:
            if (d2 != 0) {
                noteOn(d1, static_cast<float>(d2) * kOneOver127, result);
                break;
            }
            noteOff(d1, result);
            break;
        case 0x8:
            noteOff(d1, result);
            break;
        case 0xb:
            if (d1 == 1) {
                modWheel = static_cast<float>(d2) * kOneOver127;
            } else if (d1 == 64) {
                sustain = d2 != 0;
                if (d2 == 0 && pendingRelease) {
                    pendingRelease = false;
                    result.released = true;
                }
            }
            break;
        case 0xe: {
            int bend = (d1 | (d2 * 128)) - 8192;
            pitchBend = bend < 0 ? static_cast<float>(bend) / 8192.0f : static_cast<float>(bend) / 8191.0f;
            break;
        }
        default:
            break;
        }
    }
    result.held = heldCount > 0 || pendingRelease;
    return result;
}

void MidiTracker::noteOn(int number, float v, Result& result) {
    if (heldCount == 0) {
        result.triggered = true;
        result.released = false;
    }
    if (heldCount == kMaxHeld) {
        for (int i = 1; i < heldCount; ++i) {
            heldNotes[i - 1] = heldNotes[i];
            heldVelocities[i - 1] = heldVelocities[i];
        }
        --heldCount;
    }
    removeHeld(number);
    heldNotes[heldCount] = number;
    heldVelocities[heldCount] = v;
    ++heldCount;
    note = number;
    velocity = v;
}

void MidiTracker::noteOff(int number, Result& result) {
    removeHeld(number);
    if (heldCount > 0) {
        note = heldNotes[heldCount - 1];
        velocity = heldVelocities[heldCount - 1];
    } else if (sustain) {
        pendingRelease = true;
    } else {
        result.released = true;
    }
}

void MidiTracker::removeHeld(int number) {
    int kept = 0;
    for (int i = 0; i < heldCount; ++i) {
        if (heldNotes[i] == number) continue;
        heldNotes[kept] = heldNotes[i];
        heldVelocities[kept] = heldVelocities[i];
        ++kept;
    }
    heldCount = kept;
}

}  // namespace tw
