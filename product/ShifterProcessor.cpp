#include "product/ShifterProcessor.h"

#include <algorithm>
#include <cmath>

#include "patch/Patch.h"

namespace tw {

ShifterProcessor::ShifterProcessor() : engine_(std::make_unique<ShifterEngine>()) {}

void ShifterProcessor::reset(float sampleRate, std::uint32_t seed) {
    engine_->reset(sampleRate, seed);
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
    auto step = [this](int id) { return discreteStep(rows_[static_cast<std::size_t>(id)], values_[id]); };
    auto on = [this](int id) { return isOn(values_[id]); };
    // Bypass only fades the wet signal: the loop runs on, and its tail with it.
    if (context.bypassed) values_[Param::wetMix] = 0.0f;

    FrameControls frame;
    frame.reset = firstCall_;
    frame.inputs[0] = context.inputs[0];
    frame.inputs[1] = context.inputs[1];
    frame.outputs[0] = context.outputs[0];
    frame.outputs[1] = context.outputs[1];
    frame.tempo = static_cast<float>(context.tempo);
    frame.playing = context.playing;
    // Whole notes, kept positive and within 96 so that float holds them finely enough.
    double wholeNotes = context.songPosition * 0.25;
    frame.songPosition = static_cast<float>(std::fmod(std::fmod(wholeNotes, 96.0) + 96.0, 96.0));
    frame.eventCount = eventCount;
    frame.events = packedEvents_.data();
    frame.range = step(Param::freqShiftRange);
    frame.freqShiftAmount = values_[Param::freqShiftAmount];
    frame.phaseShift = values_[Param::phaseShift];
    frame.sidebandMix = values_[Param::sidebandMix];
    frame.antiReflection = on(Param::antiReflection);
    frame.feedbackAmount = values_[Param::feedbackAmount];
    frame.highPassFreq = values_[Param::highPassFreq];
    frame.lowPassFreq = values_[Param::lowPassFreq];
    frame.delayTime = values_[Param::delayTime];
    frame.delaySync = on(Param::delaySync);
    frame.crossChannels = on(Param::crossChannels);
    frame.smearAmount = values_[Param::smearAmount];
    frame.lfoShape = step(Param::lfoShape);
    frame.lfoTarget = step(Param::lfoTarget);
    frame.lfoRate = values_[Param::lfoRate];
    frame.lfoAmount = values_[Param::lfoAmount];
    frame.lfoStereo = on(Param::lfoStereo);
    frame.lfoSync = on(Param::lfoSync);
    frame.wetMix = values_[Param::wetMix];

    FrameReport result;
    int offered = std::clamp(context.framesOffered / ShifterEngine::kFrameSize, 1, maxRun);
    int done = engine_->processFrames(frame, offered, result, runNeedles_.data());
    context.framesDone = done * ShifterEngine::kFrameSize;
    firstCall_ = false;
    *context.silence = result.silent ? 1 : 0;
    report(Meters{result.lfoValue, result.needle, result.level, result.midiActivity}, values_[Param::lfoAmount],
           *context.feedbackSink, runNeedles_.data(), done);
}

void ShifterProcessor::report(const Meters& meters, float lfoAmount, FeedbackSink& sink) {
    report(meters, lfoAmount, sink, &meters.needle, 1);
}

void ShifterProcessor::report(const Meters& meters, float lfoAmount, FeedbackSink& sink, const float* needles,
                              int frames) {
    float level = std::clamp(meters.level, 0.004f, 1.0f);
    float dB = std::log(level) * 8.685889f;
    float levelShown = std::clamp((dB + 60.0f) / 60.0f, 0.0f, 1.0f);

    bool pushed = false;
    for (int k = 0; k < frames; ++k) {
        needleTick_ += needleStep_;
        while (needleTick_ >= 1.0) {
            needleTick_ -= 1.0;
            std::copy_backward(needles_.begin(), needles_.end() - 1, needles_.end());
            needles_[0] = needles[k];
            pushed = true;
        }
    }
    if (pushed) sink.publishNeedles(needles_);

    // Any amount away from the centre by 1% lights the LFO lamp fully.
    float lfoActive = std::clamp(std::fabs(lfoAmount * 200.0f - 100.0f), 0.0f, 1.0f);
    const float values[FeedbackSink::valueCount] = {meters.lfoValue, levelShown, meters.needle, meters.midiActivity, lfoActive};
    sink.write(values, 0, FeedbackSink::valueCount);
}

}  // namespace tw
