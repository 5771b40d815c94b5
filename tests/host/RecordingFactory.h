// A product for the host tests: Tidewake's descriptor with a processor that delays
// nothing (output = input) and records every frame, event and context it is given.
#pragma once

#include <vector>

#include "patch/Processor.h"
#include "product/TidewakeFactory.h"

namespace tw::test {

struct FrameRecord {
    double tempo, songPosition;
    bool playing, bypassed;
    std::vector<MidiEventRecord> events;
};

struct Recording {
    int resets = 0;
    float resetRate = 0;
    std::uint32_t resetSeed = 0;
    int suspends = 0;
    long frames = 0;
    bool keep = true;  // store a FrameRecord per frame (off for the allocation test)
    std::vector<FrameRecord> records;
    int eventsSeen = 0;
    std::uint8_t answerSilent = 0;
};

class RecordingProcessor final : public Processor {
public:
    explicit RecordingProcessor(Recording& r) : r_(r) {}
    void reset(float rate, std::uint32_t seed) override {
        ++r_.resets;
        r_.resetRate = rate;
        r_.resetSeed = seed;
    }
    int latency(float) override { return 0; }
    void suspend(FeedbackSink&) override { ++r_.suspends; }
    void process(ProcessContext& c) override {
        ++r_.frames;
        r_.eventsSeen += c.eventCount;
        if (r_.keep)
            r_.records.push_back({c.tempo, c.songPosition, c.playing, c.bypassed,
                                  std::vector<MidiEventRecord>(c.events, c.events + c.eventCount)});
        *c.silence = r_.answerSilent;  // the frame is processed in place: output = input
    }

private:
    Recording& r_;
};

class RecordingFactory final : public TidewakeFactory {
public:
    explicit RecordingFactory(Recording& r) : r_(r) {}
    std::unique_ptr<Processor> createProcessor(int) const override { return std::make_unique<RecordingProcessor>(r_); }

private:
    Recording& r_;
};

}  // namespace tw::test
