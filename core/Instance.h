// One plug-in instance whatever the format: the programs, the parameters by id, the state
// as bytes, the audio call with its frame buffering and MIDI queue, the latency, and the
// services the editor uses. A format adapter (VST 2.4, CLAP, LV2) owns one and turns its
// host's calls into these; what it needs back from its host goes through `HostPort`.
//
// Threads. "main" is the host's main (GUI) thread, the one that creates the instance and
// runs the editor; "audio" is the host's processing thread. Methods marked "any" may be
// called from either, beside the audio thread: they never block it for long and never
// wait on it.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/ProcessServices.h"
#include "patch/FeedbackSink.h"
#include "patch/ModelFactory.h"
#include "patch/ModelServices.h"
#include "patch/Processor.h"
#include "platform/Mutex.h"
#include "platform/SlotCell.h"

namespace tw {

// What the instance tells its host, whatever the format. Called on the main thread, from
// the editor's gestures and the patch operations.
class HostPort {
public:
    virtual ~HostPort() = default;
    // The user starts or ends a gesture on a parameter (by id).
    virtual void beginGesture(int id) = 0;
    virtual void endGesture(int id) = 0;
    // A value the editor wrote inside a gesture, for the host to record as automation.
    virtual void automate(int id, float value) = 0;
    // Names or programs changed.
    virtual void updateDisplay() = 0;
};

// The host's transport at the first sample of a block.
struct Transport {
    bool valid = false;     // the host told a usable tempo and position
    bool playing = false;
    double tempo = 120.0;   // beats per minute
    double position = 0.0;  // quarter notes
};

class Instance final : public ModelServices {
public:
    static constexpr int maxEvents = 4096;
    // Frames offered to the processor in one call at most: the frame due and those after
    // it whose input the host's block already holds.
    static constexpr int runFrames = 64;
    // The rates the engine's rings and clocks are sized for; a rate outside them is refused.
    static constexpr float minSampleRate = 1000.0f;
    static constexpr float maxSampleRate = 3072000.0f;
    static constexpr int maxBlockSize = 1 << 24;

    // Main thread. Loads the factory bank and the user's startup bank; raises when the
    // factory bank can't be read.
    Instance(HostPort& host, std::unique_ptr<ModelFactory> factory);
    ~Instance() override;
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    // Any thread.
    const ModelDescriptor& descriptor() const { return descriptor_; }
    int parameterCount() const { return static_cast<int>(descriptor_.parameters.size()); }
    int inputChannels() const { return inputChannels_; }
    int outputChannels() const { return outputChannels_; }
    // The host order: the parameter id at a host index, -1 outside it; and back.
    int parameterId(int hostIndex) const;
    int hostIndex(int parameterId) const { return hostIndexOfId_[static_cast<std::size_t>(parameterId)]; }
    int instanceNumber() const { return instanceNumber_; }
    std::uint32_t seed() const { return seed_; }
    bool isActive() const { return active_.load() != 0; }
    float sampleRate() const { return sampleRate_; }
    // Samples of delay the host must compensate: the frame plus the processor's own.
    int latency() const { return latency_; }

    // Parameters of the current program. Any thread.
    // The host's write: automation or a host control; no gesture, nothing sent back.
    void setParameterFromHost(int id, float value);
    float parameterValue(int id) { return getParameter(getCurrentProgram(), id); }
    // The display text of `value` for parameter `id` in the current program, and of the
    // value the current program holds.
    std::string parameterText(int id, float value);
    std::string currentParameterText(int id);
    // False, leaving `out` alone, when the text does not read.
    bool parameterFromText(int id, std::string_view text, float& out);

    // State: the bank of all programs, or with `isPreset` the current one, as the chunk's
    // bytes. Main thread. Saving raises on failure; loading raises and keeps the programs
    // already read when the bytes are refused.
    std::string saveState(bool isPreset);
    void loadState(std::string_view bytes, bool isPreset);
    // A bank in its FXB container, or the one embedded under `name`; these raise.
    void loadFxb(const void* data, std::size_t size);
    void loadFactoryBank(const std::string& name);

    // Processing setup. Main thread, while not processing.
    void setSampleRate(float rate);
    void setBlockSize(long size);
    void activate();
    void deactivate();
    // Any thread.
    void setBypass(bool bypassed) { bypassed_.store(bypassed ? 1 : 0); }

    // Audio thread. MIDI for the next `process`, its offset counted from that block's
    // first sample; false, dropping it, when the queue is full.
    bool queueMidi(int offset, std::uint8_t status, std::uint8_t data1, std::uint8_t data2);
    // Takes any number of frames; with `accumulate` adds to the outputs instead of
    // writing them. Null buffers are silence in and nowhere to write.
    void process(float* const* inputs, float* const* outputs, int frames, bool accumulate, const Transport& transport);
    // The host says whether the next block's input is silent; whether the last output was.
    void setInputSilent(bool silent) { inputSilent_ = silent ? 1 : 0; }
    bool outputSilent() const { return outputSilent_ != 0; }
    // Applies a reset asked for since the last block. Audio thread (or any while inactive).
    void runPendingReset();
    // Asks for the reset that the next block applies: delay lines and filters cleared,
    // as after activation. Any thread.
    void requestReset() { needsReset_.store(1); }

    // ModelServices: main thread (the editor), beside the audio thread.
    ModelFactory& getFactory() override { return *factory_; }
    int getCurrentProgram() override { return currentProgram_.load(); }
    void setCurrentProgram(int program) override;
    std::uint32_t getPatchStamp(int program) override;
    std::unique_ptr<Patch> clonePatch(int program) override;
    void setPatch(int program, const Patch& patch) override;
    PatchHandle acquirePatch(int program) override;
    void getPatchName(int program, std::size_t maxLength, char* buffer) override;
    bool setPatchName(int program, std::string_view text) override;
    void beginEnd(int parameter, bool beginning) override;
    float getParameter(int program, int parameter) override;
    void editParameter(int program, int parameter, float value) override;
    FeedbackSink::Snapshot getFeedback() override { return feedbackSink_->snapshot(); }
    bool isEnabled() override { return active_.load() != 0 && bypassed_.load() == 0; }
    double getTempo() override { return tempoCell_.read(); }
    void setEditPatch(const Patch* patch) override;
    void updateDisplay() override { host_.updateDisplay(); }

private:
    void sortEvents();
    bool validProgram(int program) const { return program >= 0 && program < descriptor_.programCount; }

    ProcessServices::Lease processServices_;
    HostPort& host_;
    std::unique_ptr<ModelFactory> factory_;
    const ModelDescriptor& descriptor_;
    int instanceNumber_;
    std::uint32_t seed_;
    int inputChannels_ = 0, outputChannels_ = 0;
    int latency_ = 0;
    std::vector<int> hostIndexOfId_;
    std::unique_ptr<Processor> processor_;
    Mutex audioMutex_;
    std::atomic<int> needsReset_{1};
    std::atomic<int> active_{0};
    std::atomic<int> bypassed_{0};
    std::atomic<int> currentProgram_{0};
    // Three slots: the audio thread publishes the tempo while the editor may hold one.
    SlotCell<double, Retire::Plain, 3> tempoCell_{120.0};
    float sampleRate_ = 0.0f;
    int blockSize_ = 1024;
    int frameSize_;
    std::vector<std::vector<float>> frameBuffers_;
    std::vector<float*> inputPointers_, outputPointers_;
    std::uint8_t inputSilent_ = 0, outputSilent_ = 1;
    int framePosition_ = 0;
    std::uint8_t frameInputSilent_ = 1, frameOutputSilent_ = 1;
    int eventCount_ = 0;
    std::vector<MidiEventRecord> events_, eventScratch_;
    std::vector<std::unique_ptr<PatchCell>> patches_;
    PatchCell editPatch_{nullptr};
    std::unique_ptr<FeedbackSink> feedbackSink_;
    std::vector<std::uint8_t> gestures_;
};

}  // namespace tw
