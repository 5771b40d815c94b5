// Tidewake's processor: turns one frame handed over by the plug-in instance into one
// call of the engine for exactly 8 samples, and reports the engine's meters to the
// editor through the feedback sink.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "engine/ShifterEngine.h"
#include "patch/FeedbackSink.h"
#include "patch/Processor.h"
#include "product/TidewakeDescriptor.h"

namespace tw {

class ShifterProcessor final : public Processor {
public:
    static constexpr int maxEvents = 4096;
    static constexpr int maxRun = 512;  // frames taken in one call at most

    ShifterProcessor();

    void reset(float sampleRate, std::uint32_t seed) override;
    int latency(float) override { return 0; }
    // When audio stops the needle rests, and the level and the MIDI lamp go dark.
    void suspend(FeedbackSink& sink) override {
        sink.restNeedles();
        sink.set(Feedback::measuredInputLevel, 0.0f);
        sink.set(Feedback::midiActivity, 0.0f);
    }
    void process(ProcessContext& context) override;

    // What the engine's frame reports, turned into the editor's feedback values.
    struct Meters {
        float lfoValue = 0, needle = 0, level = 0, midiActivity = 0;
    };
    void report(const Meters& meters, float lfoAmount, FeedbackSink& sink);
    // The same for a run of frames that share all but the needle, one per frame; the
    // values the sink keeps are the last frame's.
    void report(const Meters& meters, float lfoAmount, FeedbackSink& sink, const float* needles, int frames);

private:
    std::unique_ptr<ShifterEngine> engine_;
    // The parameter rows, looked up once: the audio call reads them every frame.
    const std::vector<ParameterSpec>& rows_ = tidewakeDescriptor().parameters;
    bool firstCall_ = true;
    double needleTick_ = 1.0, needleStep_ = 400.0 / 44100.0;
    FeedbackSink::NeedleHistory needles_{};
    std::array<std::uint32_t, maxEvents> packedEvents_{};
    std::array<float, Param::count> values_{};
    std::array<float, maxRun> runNeedles_{};
};

}  // namespace tw
