// One plug-in instance per host insert: the VST 2.4 effect record, the programs, the
// audio call with its 8-sample frame buffering and MIDI queue, and the services the
// model and editor use. All that is particular to the product comes from the factory
// and its descriptor.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/Editor.h"
#include "host/ProcessServices.h"
#include "host/Vst2.h"
#include "model/FeedbackSink.h"
#include "model/ModelFactory.h"
#include "model/ModelServices.h"
#include "model/Processor.h"
#include "platform/Mutex.h"
#include "platform/SlotCell.h"

namespace tw {

class PluginInstance final : public ModelServices {
public:
    static constexpr int maxEvents = 4096;
    // The rates the engine's rings and clocks are sized for; a host's rate outside them
    // is refused.
    static constexpr float minSampleRate = 1000.0f;
    static constexpr float maxSampleRate = 3072000.0f;
    static constexpr vst2::intptr maxBlockSize = 1 << 24;

    PluginInstance(vst2::HostCallback host, std::unique_ptr<ModelFactory> factory);
    ~PluginInstance() override;

    vst2::AEffect* effect() { return &effect_; }
    static PluginInstance* of(vst2::AEffect* effect) { return static_cast<PluginInstance*>(effect->object); }

    // Host operations.
    vst2::intptr dispatch(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr, float opt);
    void processBlock(float** inputs, float** outputs, int frames, bool accumulate);
    void setHostParameter(int hostIndex, float value);
    float getHostParameter(int hostIndex);

    void open();
    void setSampleRate(float rate);
    void setBlockSize(vst2::intptr size);
    void resume();
    void suspend();
    int processEvents(const vst2::VstEvents* events);
    int canDo(std::string_view question) const;
    vst2::intptr vendorSpecific(vst2::int32 code, vst2::intptr argument, void* ptr, float opt);

    // The host's chunk: the bank of all programs, or with `isPreset` the current one. The
    // buffer is the instance's and stays valid until the next call; size 0 on failure.
    vst2::intptr getChunk(void** data, bool isPreset);
    // Answers `size`, or 0 when the chunk was refused; programs already read stay.
    vst2::intptr setChunk(const void* data, vst2::intptr size, bool isPreset);
    // A bank in its FXB container, or the one embedded under `name`; these raise.
    void loadFxb(const void* data, std::size_t size);
    void loadFactoryBank(const std::string& name);

    float sampleRate() const { return sampleRate_; }
    int instanceNumber() const { return instanceNumber_; }
    std::uint32_t seed() const { return seed_; }
    bool isActive() const { return active_.load() != 0; }
    int parameterId(int hostIndex) const;
    int hostIndex(int parameterId) const { return hostIndexOfId_[static_cast<std::size_t>(parameterId)]; }

    // ModelServices.
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
    void setParameter(int program, int parameter, float value) override;
    FeedbackSink::Snapshot getFeedback() override { return feedbackSink_->snapshot(); }
    bool isEnabled() override { return active_.load() != 0 && bypassed_.load() == 0; }
    double getTempo() override { return tempoCell_.read(); }
    void setEditPatch(const Patch* patch) override;
    void updateDisplay() override { hostCall(vst2::audioMasterUpdateDisplay); }

private:
    vst2::intptr hostCall(vst2::int32 opcode, vst2::int32 index = 0, vst2::intptr value = 0, void* ptr = nullptr,
                          float opt = 0.0f) const;
    void runPendingReset();
    void sortEvents();
    bool validProgram(int program) const { return program >= 0 && program < descriptor_.programCount; }

    ProcessServices::Lease processServices_;
    vst2::AEffect effect_{};
    vst2::HostCallback host_;
    std::unique_ptr<ModelFactory> factory_;
    const ModelDescriptor& descriptor_;
    int instanceNumber_;
    std::uint32_t seed_;
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
    Mutex chunkMutex_;
    std::string chunkBuffer_;
    std::vector<std::unique_ptr<PatchCell>> patches_;
    PatchCell editPatch_{nullptr};
    SlotCell<std::uint8_t, Retire::Plain, 3> guardCell_{0};
    std::unique_ptr<FeedbackSink> feedbackSink_;
    std::vector<std::uint8_t> gestures_;
    // Last, so that the editor's window goes before everything it shows.
    std::unique_ptr<Editor> editor_;
};

}  // namespace tw
