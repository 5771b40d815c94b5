// The interface between the product-independent plug-in instance and the product's
// signal processor, and the record the instance fills for each frame it hands over.
#pragma once

#include <cstdint>

namespace tw {

class Patch;
class FeedbackSink;

// One MIDI event as the processor receives it: 8 bytes, the offset counted from the
// first sample of the frame.
struct MidiEventRecord {
    std::int32_t offset;
    std::uint8_t status, data1, data2, unused;
};
static_assert(sizeof(MidiEventRecord) == 8);

struct ProcessContext {
    const Patch* patch;
    FeedbackSink* feedbackSink;
    float sampleRate;
    bool bypassed;
    double tempo;         // beats per minute, 120 when the host tells none
    bool playing;         // transport running
    double songPosition;  // quarter notes at the first sample of the frame
    std::int32_t eventCount;
    const MidiEventRecord* events;
    std::int32_t frames;
    // Samples the inputs and outputs hold from the frame on, a multiple of frames, with no
    // events after the first frame; the processor may take more than one frame when its
    // state lets it, and says how many samples it took in framesDone (frames if untouched).
    std::int32_t framesOffered;
    std::int32_t framesDone;
    float* const* inputs;
    float* const* outputs;
    // In: the host declared the input silent. Out: the processor's output is silent.
    std::uint8_t* silence;
};

class Processor {
public:
    virtual ~Processor() = default;
    virtual void reset(float sampleRate, std::uint32_t seed) = 0;
    virtual int latency(float sampleRate) = 0;
    virtual void suspend(FeedbackSink& sink) = 0;
    virtual void process(ProcessContext& context) = 0;
};

}  // namespace tw
