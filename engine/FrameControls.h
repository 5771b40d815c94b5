// What one call of ShifterEngine::processFrame takes and gives: the 8 samples of both
// channels, the host's tempo and position, the frame's MIDI and the 19 parameters as the
// engine reads them, and the five values reported back for the meters.
#pragma once

#include <cstdint>

namespace tw {

struct FrameControls {
    enum Range { kFine, kWide, kSync, kMidi };

    bool reset = false;  // the first frame after a reset of the processor
    const float* inputs[2] = {};
    float* outputs[2] = {};  // may be the inputs: the frame is processed in place
    float tempo = 120.0f;    // beats per minute
    bool playing = false;    // transport running
    float songPosition = 0.0f;  // whole notes, 0 up to 96
    int eventCount = 0;
    const uint32_t* events = nullptr;  // status << 16 | data1 << 8 | data2
    int range = kWide;
    // Parameter values from 0 to 1, unsmoothed.
    float freqShiftAmount = 0.5f;
    float phaseShift = 0.5f;
    float sidebandMix = 1.0f;
    bool antiReflection = true;
    float feedbackAmount = 0.0f;
    float highPassFreq = 0.0f;
    float lowPassFreq = 1.0f;
    float delayTime = 0.0f;
    bool delaySync = false;
    bool crossChannels = false;
    float smearAmount = 0.0f;
    int lfoShape = 0;   // Lfo::Shape
    int lfoTarget = 0;  // Lfo::Target
    float lfoRate = 0.5f;
    float lfoAmount = 0.5f;
    bool lfoStereo = false;
    bool lfoSync = false;
    float wetMix = 1.0f;
};

struct FrameReport {
    float lfoValue = 0.0f;
    float needle = 0.0f;
    float level = 0.0f;  // held input level, 0 up to 1
    bool silent = false;  // the outputs are exact zeros
    float midiActivity = 0.0f;
};

}  // namespace tw
