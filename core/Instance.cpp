#include "core/Instance.h"

#include <algorithm>

#include "patch/Chunk.h"
#include "patch/FxbBank.h"
#include "patch/StartupBank.h"
#include "platform/Folders.h"
#include "platform/Resources.h"

namespace tw {

Instance::Instance(HostPort& host, std::unique_ptr<ModelFactory> factory)
    : host_(host),
      factory_(std::move(factory)),
      descriptor_(factory_->getDescriptor()),
      instanceNumber_(ProcessServices::nextInstanceNumber()),
      seed_(ProcessServices::nextSeed()),
      frameSize_(descriptor_.frameSize) {
    // 1. Parameter id to host index, the inverse of the host order.
    hostIndexOfId_.assign(descriptor_.parameters.size(), -1);
    for (std::size_t i = 0; i < descriptor_.hostOrder.size(); ++i)
        hostIndexOfId_[static_cast<std::size_t>(descriptor_.hostOrder[i])] = static_cast<int>(i);

    // 2. One patch per program.
    for (int i = 0; i < descriptor_.programCount; ++i)
        patches_.push_back(std::make_unique<PatchCell>(factory_->createInitPatch()));

    // 3. Channels from the buses: one each, one more when stereo.
    for (const BusSpec& bus : descriptor_.buses)
        (bus.direction == 0 ? inputChannels_ : outputChannels_) += bus.stereo ? 2 : 1;

    // 4. The factory bank, then the programs the user changed in earlier sessions and the
    // program they were on. The factory bank is part of the library: a failure there ends
    // the construction. A store that can't be read leaves the factory programs in force.
    if (!descriptor_.factoryBankName.empty()) loadFactoryBank(descriptor_.factoryBankName);
    int program = 0;
    try {
        loadStartupPatches(*this, program);
    } catch (const std::exception&) {
    }
    setCurrentProgram(program);

    // 5. Frame buffers, processed in place.
    int bufferLength = frameSize_ > 0 ? frameSize_ * runFrames : 256;
    int bufferCount = frameSize_ > 0 && inputChannels_ > outputChannels_ ? inputChannels_ : outputChannels_;
    frameBuffers_.assign(static_cast<std::size_t>(bufferCount), std::vector<float>(static_cast<std::size_t>(bufferLength)));
    inputPointers_.resize(static_cast<std::size_t>(inputChannels_));
    outputPointers_.resize(static_cast<std::size_t>(outputChannels_));
    events_.resize(maxEvents);
    eventScratch_.resize(maxEvents);
    gestures_.assign(descriptor_.parameters.size(), 0);

    // 6. The processor and what it reports to the editor.
    processor_ = factory_->createProcessor(instanceNumber_);
    feedbackSink_ = factory_->createFeedbackSink();

    // 7. A first sample rate; the host tells the real one before it runs audio.
    setSampleRate(44100.0f);
    needsReset_.store(1);
}

Instance::~Instance() = default;

int Instance::parameterId(int hostIndex) const {
    if (hostIndex < 0 || hostIndex >= static_cast<int>(descriptor_.hostOrder.size())) return -1;
    return descriptor_.hostOrder[static_cast<std::size_t>(hostIndex)];
}

void Instance::setSampleRate(float rate) {
    // A rate the engine can't run at is refused and the last good one kept: zero would
    // make the meters' clock spin for ever, a non-finite rate fills every ring with NaN.
    if (!(rate >= minSampleRate && rate <= maxSampleRate)) return;
    if (rate != sampleRate_) {
        latency_ = std::max(frameSize_, 0) + processor_->latency(rate);
        needsReset_.store(1);
    }
    sampleRate_ = rate;
}

void Instance::setBlockSize(long size) {
    // Only a hint: the audio call takes blocks of any length. A size that is not a
    // positive int is kept out.
    if (size > 0 && size <= maxBlockSize) blockSize_ = static_cast<int>(size);
}

void Instance::activate() {
    active_.store(1);
    needsReset_.store(1);
    runPendingReset();
}

void Instance::deactivate() {
    Mutex::Guard guard(audioMutex_);
    active_.store(0);
    processor_->suspend(*feedbackSink_);
}

void Instance::setParameterFromHost(int id, float value) {
    if (id < 0 || id >= parameterCount()) return;
    PatchHandle r = acquirePatch(getCurrentProgram());
    (*r)->storeParameter(id, safeParameterValue(descriptor_.parameters[static_cast<std::size_t>(id)], value));
}

std::string Instance::parameterText(int id, float value) {
    PatchHandle r = acquirePatch(getCurrentProgram());
    return factory_->valueToText(**r, id, safeParameterValue(descriptor_.parameters[static_cast<std::size_t>(id)], value),
                                 false);
}

std::string Instance::currentParameterText(int id) {
    PatchHandle r = acquirePatch(getCurrentProgram());
    return factory_->valueToText(**r, id, (*r)->getParameter(id), false);
}

bool Instance::parameterFromText(int id, std::string_view text, float& out) {
    PatchHandle r = acquirePatch(getCurrentProgram());
    return factory_->textToValue(**r, id, text, out);
}

std::string Instance::saveState(bool isPreset) { return saveChunk(*this, isPreset); }

void Instance::loadState(std::string_view bytes, bool isPreset) {
    loadChunk(*this, bytes, isPreset);
    needsReset_.store(1);
}

void Instance::loadFxb(const void* data, std::size_t size) {
    loadChunk(*this, bankChunkOfFxb(descriptor_, std::string_view(static_cast<const char*>(data), size)), false);
    needsReset_.store(1);
}

void Instance::loadFactoryBank(const std::string& name) {
    const std::string folder = getResourceFolder(descriptor_.modelName, binaryDir());
    std::optional<std::vector<std::uint8_t>> bank = loadResource(folder, "fxb", name);
    if (!bank) bank.emplace();  // read as an empty bank, which says so
    try {
        loadFxb(bank->data(), bank->size());
    } catch (const std::exception& e) {
        // The instance can't be made; a host only says that the plug-in failed to load.
        if (auto file = overridingFile(folder, "fxb", name)) reportOverrideFault(descriptor_.publicName, *file, e.what());
        throw;
    }
}

// ModelServices.

void Instance::setCurrentProgram(int program) {
    if (validProgram(program)) currentProgram_.store(program);
}

std::uint32_t Instance::getPatchStamp(int program) {
    PatchHandle r = acquirePatch(program);
    return (*r)->getChangeStamp();
}

std::unique_ptr<Patch> Instance::clonePatch(int program) {
    PatchHandle r = acquirePatch(program);
    return (*r)->clone();
}

void Instance::setPatch(int program, const Patch& patch) {
    if (validProgram(program)) patches_[static_cast<std::size_t>(program)]->publish(patch.clone());
}

PatchHandle Instance::acquirePatch(int program) {
    if (!validProgram(program)) program = 0;
    return patches_[static_cast<std::size_t>(program)]->acquire();
}

void Instance::getPatchName(int program, std::size_t maxLength, char* buffer) {
    PatchHandle r = acquirePatch(program);
    (*r)->getName(maxLength, buffer);
}

bool Instance::setPatchName(int program, std::string_view text) {
    PatchHandle r = acquirePatch(program);
    return (*r)->setName(text);
}

void Instance::beginEnd(int parameter, bool beginning) {
    if (parameter < 0 || parameter >= static_cast<int>(gestures_.size())) return;
    std::uint8_t& flag = gestures_[static_cast<std::size_t>(parameter)];
    if (flag == (beginning ? 1 : 0)) return;
    flag = beginning ? 1 : 0;
    beginning ? host_.beginGesture(parameter) : host_.endGesture(parameter);
}

float Instance::getParameter(int program, int parameter) {
    if (parameter < 0 || parameter >= static_cast<int>(gestures_.size())) return 0.0f;
    PatchHandle r = acquirePatch(program);
    return (*r)->getParameter(parameter);
}

void Instance::editParameter(int program, int parameter, float value) {
    if (parameter < 0 || parameter >= static_cast<int>(gestures_.size())) return;
    value = safeParameterValue(descriptor_.parameters[static_cast<std::size_t>(parameter)], value);
    {
        PatchHandle r = acquirePatch(program);
        (*r)->storeParameter(parameter, value);
    }
    if (program == getCurrentProgram() && gestures_[static_cast<std::size_t>(parameter)])
        host_.automate(parameter, value);
}

void Instance::setEditPatch(const Patch* patch) { editPatch_.publish(patch ? patch->clone() : nullptr); }

}  // namespace tw
