#include "model/ShifterProcessor.h"

#include <algorithm>
#include <cmath>

#include "model/Patch.h"

namespace tw {

void ShifterProcessor::reset(float sampleRate, std::uint32_t) {
    firstCall_ = true;
    needleTick_ = 1.0;
    needleStep_ = 400.0 / sampleRate;
}

void ShifterProcessor::process(ProcessContext& context) {
    int eventCount = std::min(context.eventCount, maxEvents);
    for (int i = 0; i < eventCount; ++i) {
        const MidiEventRecord& e = context.events[i];
        packedEvents_[static_cast<std::size_t>(i)] = std::uint32_t(e.status) << 16 | std::uint32_t(e.data1) << 8 | e.data2;
    }
    context.patch->getParameters(0, Param::count, values_.data());
    if (context.bypassed) values_[Param::wetMix] = 0.0f;

    // The engine's frame is not wired yet: the frame passes through unchanged.
    firstCall_ = false;
    *context.silence = 0;
    report(Meters{}, values_[Param::lfoAmount], *context.feedbackSink);
}

void ShifterProcessor::report(const Meters& meters, float lfoAmount, FeedbackSink& sink) {
    float level = std::clamp(meters.level, 0.004f, 1.0f);
    float dB = std::log(level) * 8.685889f;
    float levelShown = std::clamp((dB + 60.0f) / 60.0f, 0.0f, 1.0f);

    needleTick_ += needleStep_;
    bool pushed = false;
    while (needleTick_ >= 1.0) {
        needleTick_ -= 1.0;
        std::copy_backward(needles_.begin(), needles_.end() - 1, needles_.end());
        needles_[0] = meters.needle;
        pushed = true;
    }
    if (pushed) sink.publishNeedles(needles_);

    // Any amount away from the centre by 1% lights the LFO lamp fully.
    float lfoActive = std::clamp(std::fabs(lfoAmount * 200.0f - 100.0f), 0.0f, 1.0f);
    const float values[FeedbackSink::valueCount] = {meters.lfoValue, levelShown, meters.needle, meters.midiActivity, lfoActive};
    sink.write(values, 0, FeedbackSink::valueCount);
}

}  // namespace tw
