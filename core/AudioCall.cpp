// The audio call: the host's blocks of any length become frames of exactly `frameSize`
// samples, processed in place in the frame buffers, so the effect adds one frame of
// latency. MIDI events wait in a queue until the frame that holds their sample runs.
#include <algorithm>
#include <cstring>
#include <xmmintrin.h>

#include "core/Instance.h"

namespace tw {

namespace {

// Whether a host's tempo and position can be used: a tempo that is not a positive
// number a float can hold, or a position that is not finite, counts as no time
// information at all.
bool usableTime(double tempo, double position) {
    return tempo > 0.0 && tempo <= 1.0e6 && position - position == 0.0;
}

// What is not a finite number becomes silence: one NaN let into the loop would ring in
// the feedback for good. x * 0 is NaN exactly for NaN and the infinities.
void silenceNonFinite(float* x, int n) {
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        __m128 v = _mm_loadu_ps(x + i);
        __m128 zero = _mm_mul_ps(v, _mm_setzero_ps());
        _mm_storeu_ps(x + i, _mm_and_ps(v, _mm_cmpord_ps(zero, zero)));
    }
    for (; i < n; ++i)
        if (!(x[i] - x[i] == 0.0f)) x[i] = 0.0f;
}

}  // namespace

void Instance::runPendingReset() {
    int expected = 1;
    if (!needsReset_.compare_exchange_strong(expected, 0)) return;
    Mutex::Guard guard(audioMutex_);
    inputSilent_ = 0;
    outputSilent_ = 1;
    frameInputSilent_ = 1;
    frameOutputSilent_ = 1;
    framePosition_ = 0;
    for (auto& buffer : frameBuffers_) std::fill(buffer.begin(), buffer.end(), 0.0f);
    processor_->reset(sampleRate_, seed_);
}

bool Instance::queueMidi(int offset, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    Mutex::Guard guard(audioMutex_);
    if (eventCount_ >= maxEvents) return false;
    events_[static_cast<std::size_t>(eventCount_++)] = {std::max(offset, 0), status, data1, data2, 0};
    return true;
}

// A stable merge sort by offset into the preallocated scratch: hosts send events in order
// most of the time, and then each pass is a plain copy.
void Instance::sortEvents() {
    MidiEventRecord* from = events_.data();
    MidiEventRecord* to = eventScratch_.data();
    int n = eventCount_;
    for (int width = 1; width < n; width *= 2) {
        for (int left = 0; left < n; left += 2 * width) {
            int mid = std::min(left + width, n), right = std::min(left + 2 * width, n);
            int a = left, b = mid, k = left;
            while (a < mid && b < right) to[k++] = from[b].offset < from[a].offset ? from[b++] : from[a++];
            while (a < mid) to[k++] = from[a++];
            while (b < right) to[k++] = from[b++];
        }
        std::swap(from, to);
    }
    if (from != events_.data()) std::copy(from, from + n, events_.data());
}

void Instance::process(float* const* inputs, float* const* outputs, int frames, bool accumulate,
                       const Transport& transport) {
    Mutex::Guard guard(audioMutex_);
    runPendingReset();

    ProcessContext context{};
    context.feedbackSink = feedbackSink_.get();
    context.sampleRate = sampleRate_;
    context.bypassed = bypassed_.load() != 0;
    context.tempo = 120.0;
    double quarterNotesPerSample = 0.0, blockPosition = 0.0;
    if (transport.valid && usableTime(transport.tempo, transport.position)) {
        context.playing = transport.playing;
        context.tempo = transport.tempo;
        blockPosition = transport.position;
        quarterNotesPerSample = transport.tempo / 60.0 / sampleRate_;
    }
    tempoCell_.publish(context.tempo);
    sortEvents();

    PatchHandle edit = editPatch_.acquire();
    PatchHandle program = *edit ? PatchHandle() : acquirePatch(getCurrentProgram());
    context.patch = *edit ? edit->get() : program->get();

    const int channelsIn = inputChannels_, channelsOut = outputChannels_;
    const int frameSize = frameSize_;
    outputSilent_ = 1;
    int consumed = 0;
    for (int i = 0; i < frames;) {
        if (framePosition_ == frameSize) {
            // The frame holds the samples just before i: events before i belong to it,
            // counted from its first sample.
            int first = consumed;
            while (consumed < eventCount_ && events_[static_cast<std::size_t>(consumed)].offset < i) {
                events_[static_cast<std::size_t>(consumed)].offset += frameSize - i;
                ++consumed;
            }
            context.eventCount = consumed - first;
            context.events = events_.data() + first;
            context.songPosition = blockPosition + i * quarterNotesPerSample;
            for (int c = 0; c < channelsIn; ++c) inputPointers_[static_cast<std::size_t>(c)] = frameBuffers_[static_cast<std::size_t>(c)].data();
            for (int c = 0; c < channelsOut; ++c) outputPointers_[static_cast<std::size_t>(c)] = frameBuffers_[static_cast<std::size_t>(c)].data();
            for (int c = 0; c < channelsIn; ++c) silenceNonFinite(frameBuffers_[static_cast<std::size_t>(c)].data(), frameSize);
            // The frames after this one whose input the block holds and that have no
            // events go along, behind it in the buffers: a processor that can take them
            // at once (a silent one) saves a call per frame. Only a processor whose last
            // frame came back silent is asked: one at work takes a frame per call anyway,
            // and the copy would be thrown away.
            int more = 0;
            if (frameOutputSilent_ != 0) {
                int nextEvent = consumed < eventCount_ ? events_[static_cast<std::size_t>(consumed)].offset : frames;
                more = std::min({(frames - i) / frameSize, (std::min(nextEvent, frames) - i) / frameSize, runFrames - 1});
            }
            if (more > 0) {
                for (int c = 0; c < std::max(channelsIn, channelsOut); ++c) {
                    float* ahead = frameBuffers_[static_cast<std::size_t>(c)].data() + frameSize;
                    const float* in = inputs && c < channelsIn && inputs[c] ? inputs[c] + i : nullptr;
                    if (in)
                        std::copy_n(in, more * frameSize, ahead);
                    else
                        std::fill_n(ahead, more * frameSize, 0.0f);
                    if (c < channelsIn) silenceNonFinite(ahead, more * frameSize);
                }
            }
            context.inputs = inputPointers_.data();
            context.outputs = outputPointers_.data();
            context.frames = frameSize;
            context.framesOffered = (more + 1) * frameSize;
            context.framesDone = frameSize;
            std::uint8_t silence = frameInputSilent_;
            context.silence = &silence;
            processor_->process(context);
            frameOutputSilent_ = silence;
            frameInputSilent_ = 1;
            framePosition_ = 0;
            int done = std::clamp(context.framesDone / frameSize, 1, more + 1) - 1;
            if (done > 0) {
                // The frames taken ahead: all but the last go out now, in the host's order;
                // the last one's output waits in the frame as usual, and its input is used.
                int samples = done * frameSize;
                for (int c = 0; c < std::max(channelsIn, channelsOut); ++c) {
                    float* buffer = frameBuffers_[static_cast<std::size_t>(c)].data();
                    float* out = outputs && c < channelsOut && outputs[c] ? outputs[c] + i : nullptr;
                    if (out) {
                        for (int k = 0; k < samples; ++k) out[k] = accumulate ? out[k] + buffer[k] : buffer[k];
                    }
                    std::copy_n(buffer + samples, frameSize, buffer);
                }
                if (frameOutputSilent_ == 0) outputSilent_ = 0;
                i += samples;
            }
        }
        int n = std::min(frameSize - framePosition_, frames - i);
        for (int c = 0; c < std::max(channelsIn, channelsOut); ++c) {
            float* frame = frameBuffers_[static_cast<std::size_t>(c)].data() + framePosition_;
            // A missing buffer is silence in, or nowhere to write.
            float* in = inputs && c < channelsIn && inputs[c] ? inputs[c] + i : nullptr;
            float* out = outputs && c < channelsOut && outputs[c] ? outputs[c] + i : nullptr;
            for (int k = 0; k < n; ++k) {
                // The output takes what the last frame produced, the frame takes the new
                // input; reading the input first keeps hosts that process in place right.
                float produced = frame[k];
                frame[k] = in ? in[k] : 0.0f;
                if (out) out[k] = accumulate ? out[k] + produced : produced;
            }
        }
        if (frameOutputSilent_ == 0) outputSilent_ = 0;
        if (inputSilent_ == 0) frameInputSilent_ = 0;
        framePosition_ += n;
        i += n;
    }

    // Events not yet delivered wait for the next block, their offsets counted from it.
    std::copy(events_.begin() + consumed, events_.begin() + eventCount_, events_.begin());
    eventCount_ -= consumed;
    for (int k = 0; k < eventCount_; ++k) events_[static_cast<std::size_t>(k)].offset -= frames;
}

}  // namespace tw
