#include "host/PluginInstance.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "host/ProcessServices.h"
#include "host/VendorProtocol.h"
#include "model/Chunk.h"
#include "model/FxbBank.h"
#include "model/StartupBank.h"
#include "platform/Folders.h"
#include "platform/Resources.h"

namespace tw {

namespace {

// Copies text into a host buffer, cut to `limit` characters and NUL-terminated.
void copyText(void* buffer, std::string_view text, std::size_t limit) {
    if (buffer == nullptr) return;
    std::size_t n = std::min(text.size(), limit);
    std::memcpy(buffer, text.data(), n);
    static_cast<char*>(buffer)[n] = 0;
}

constexpr std::size_t nameLimit = 24;  // program and parameter names, labels, displays

// The effect record's entry points. Nothing may leave them as an exception: a failure
// answers 0 and the host goes on.
vst2::intptr dispatcherProc(vst2::AEffect* e, vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr,
                            float opt) {
    try {
        if (opcode == vst2::effClose) {
            delete PluginInstance::of(e);
            return 1;
        }
        return PluginInstance::of(e)->dispatch(opcode, index, value, ptr, opt);
    } catch (...) {
        return 0;
    }
}

void processReplacingProc(vst2::AEffect* e, float** inputs, float** outputs, vst2::int32 frames) {
    try {
        PluginInstance::of(e)->processBlock(inputs, outputs, frames, false);
    } catch (...) {
    }
}

void processProc(vst2::AEffect* e, float** inputs, float** outputs, vst2::int32 frames) {
    try {
        PluginInstance::of(e)->processBlock(inputs, outputs, frames, true);
    } catch (...) {
    }
}

void setParameterProc(vst2::AEffect* e, vst2::int32 index, float value) {
    try {
        PluginInstance::of(e)->setHostParameter(index, value);
    } catch (...) {
    }
}

float getParameterProc(vst2::AEffect* e, vst2::int32 index) {
    try {
        return PluginInstance::of(e)->getHostParameter(index);
    } catch (...) {
        return 0.0f;
    }
}

}  // namespace

PluginInstance::PluginInstance(vst2::HostCallback host, std::unique_ptr<ModelFactory> factory)
    : host_(host),
      factory_(std::move(factory)),
      descriptor_(factory_->getDescriptor()),
      instanceNumber_(ProcessServices::nextInstanceNumber()),
      seed_(ProcessServices::nextSeed()),
      frameSize_(descriptor_.frameSize) {
    effect_.magic = vst2::kEffectMagic;
    effect_.object = this;
    effect_.dispatcher = dispatcherProc;
    effect_.process = processProc;
    effect_.processReplacing = processReplacingProc;
    effect_.setParameter = setParameterProc;
    effect_.getParameter = getParameterProc;
    effect_.numPrograms = descriptor_.programCount;
    effect_.numParams = static_cast<vst2::int32>(descriptor_.parameters.size());
    effect_.version = static_cast<vst2::int32>(descriptor_.version);

    // 1. Parameter id to host index, the inverse of the host order.
    hostIndexOfId_.assign(descriptor_.parameters.size(), -1);
    for (std::size_t i = 0; i < descriptor_.hostOrder.size(); ++i)
        hostIndexOfId_[static_cast<std::size_t>(descriptor_.hostOrder[i])] = static_cast<int>(i);

    // 2. One patch per program.
    for (int i = 0; i < descriptor_.programCount; ++i)
        patches_.push_back(std::make_unique<PatchCell>(factory_->createInitPatch()));

    // 3. Channels from the buses: one each, one more when stereo.
    int inputs = 0, outputs = 0;
    for (const BusSpec& bus : descriptor_.buses) (bus.direction == 0 ? inputs : outputs) += bus.stereo ? 2 : 1;

    // 4. What the host is told.
    effect_.uniqueID = descriptor_.uniqueId;
    effect_.numInputs = inputs;
    effect_.numOutputs = outputs;
    effect_.flags = vst2::effFlagsCanMono | vst2::effFlagsCanReplacing | vst2::effFlagsProgramChunks;
    if (descriptor_.isSynth) effect_.flags |= vst2::effFlagsIsSynth;

    // 5. The factory bank, then the programs the user changed in earlier sessions and the
    // program they were on. The factory bank is part of the library: a failure there ends
    // the construction. A store that can't be read leaves the factory programs in force.
    if (!descriptor_.factoryBankName.empty()) loadFactoryBank(descriptor_.factoryBankName);
    int program = 0;
    try {
        loadStartupPatches(*this, program);
    } catch (const std::exception&) {
    }
    setCurrentProgram(program);

    // 6. Frame buffers, processed in place.
    int bufferLength = frameSize_ > 0 ? frameSize_ : 256;
    int bufferCount = frameSize_ > 0 && inputs > outputs ? inputs : outputs;
    frameBuffers_.assign(static_cast<std::size_t>(bufferCount), std::vector<float>(static_cast<std::size_t>(bufferLength)));
    inputPointers_.resize(static_cast<std::size_t>(inputs));
    outputPointers_.resize(static_cast<std::size_t>(outputs));
    events_.resize(maxEvents);
    eventScratch_.resize(maxEvents);
    gestures_.assign(descriptor_.parameters.size(), 0);

    // 7. The processor, what it reports to the editor, and the editor when the product
    // has one.
    processor_ = factory_->createProcessor(instanceNumber_);
    feedbackSink_ = factory_->createFeedbackSink();
    if (!factory_->getEditorSize().isEmpty()) {
        editor_ = std::make_unique<Editor>(*this);
        effect_.flags |= vst2::effFlagsHasEditor;
    }

    // 8. A first sample rate; the host tells the real one before it runs audio.
    setSampleRate(44100.0f);
    needsReset_.store(1);
}

PluginInstance::~PluginInstance() = default;

vst2::intptr PluginInstance::hostCall(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr,
                                      float opt) const {
    return host_ ? host_(const_cast<vst2::AEffect*>(&effect_), opcode, index, value, ptr, opt) : 0;
}

int PluginInstance::parameterId(int hostIndex) const {
    if (hostIndex < 0 || hostIndex >= static_cast<int>(descriptor_.hostOrder.size())) return -1;
    return descriptor_.hostOrder[static_cast<std::size_t>(hostIndex)];
}

void PluginInstance::open() {
    vst2::intptr rate = hostCall(vst2::audioMasterGetSampleRate);
    if (rate > 0) setSampleRate(static_cast<float>(rate));
    setBlockSize(hostCall(vst2::audioMasterGetBlockSize));
}

void PluginInstance::setSampleRate(float rate) {
    // A rate the engine can't run at is refused and the last good one kept: zero would
    // make the meters' clock spin for ever, a non-finite rate fills every ring with NaN.
    if (!(rate >= minSampleRate && rate <= maxSampleRate)) return;
    if (rate != sampleRate_) {
        effect_.initialDelay = std::max(frameSize_, 0) + processor_->latency(rate);
        needsReset_.store(1);
    }
    sampleRate_ = rate;
}

void PluginInstance::setBlockSize(vst2::intptr size) {
    // Only a hint: the audio call takes blocks of any length. A size that is not a
    // positive int is kept out.
    if (size > 0 && size <= maxBlockSize) blockSize_ = static_cast<int>(size);
}

void PluginInstance::resume() {
    hostCall(vst2::audioMasterWantMidi, 0, 1);
    active_.store(1);
    needsReset_.store(1);
    runPendingReset();
}

void PluginInstance::suspend() {
    Mutex::Guard guard(audioMutex_);
    active_.store(0);
    processor_->suspend(*feedbackSink_);
}

int PluginInstance::canDo(std::string_view q) const {
    if (q == "conformsToWindowRules" || q == "receiveVstTimeInfo") return 1;
    if (q == "bypass") return descriptor_.isSynth ? 0 : 1;
    if (q == "receiveVstEvents" || q == "receiveVstMidiEvent") return descriptor_.receivesMidi ? 1 : 0;
    if (q == "sendVstEvents" || q == "sendVstMidiEvent") return descriptor_.sendsMidi ? 1 : 0;
    return 0;
}

vst2::intptr PluginInstance::vendorSpecific(vst2::int32 code, vst2::intptr argument, void* ptr, float) {
    switch (code) {
        case vendor::probeCode:
            return 1;
        case vendor::inputSilenceCode:
            inputSilent_ = argument != 0 ? 1 : 0;
            return 1;
        case vendor::outputSilenceCode:
            return outputSilent_;
        case vendor::textToValueCode:
        case vendor::valueToTextCode: {
            const int id = argument >= 0 && argument < effect_.numParams ? parameterId(static_cast<int>(argument)) : -1;
            if (id < 0 || ptr == nullptr) return 0;
            auto& record = *static_cast<vendor::ParameterText*>(ptr);
            PatchHandle r = acquirePatch(getCurrentProgram());
            if (code == vendor::valueToTextCode) {
                const float value = safeParameterValue(descriptor_.parameters[static_cast<std::size_t>(id)], record.value);
                copyText(record.text, factory_->valueToText(**r, id, value, false), sizeof record.text - 1);
                return 1;
            }
            const char* end = std::find(record.text, record.text + sizeof record.text, '\0');
            return factory_->textToValue(**r, id, std::string_view(record.text, end), record.value) ? 1 : 0;
        }
        default:
            return 0;
    }
}

void PluginInstance::setHostParameter(int hostIndex, float value) {
    int id = parameterId(hostIndex);
    if (id < 0) return;
    PatchHandle r = acquirePatch(getCurrentProgram());
    (*r)->setParameter(id, safeParameterValue(descriptor_.parameters[static_cast<std::size_t>(id)], value));
}

float PluginInstance::getHostParameter(int hostIndex) {
    int id = parameterId(hostIndex);
    if (id < 0) return 0.0f;
    return getParameter(getCurrentProgram(), id);
}

vst2::intptr PluginInstance::dispatch(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr, float opt) {
    using namespace vst2;
    switch (opcode) {
        case effOpen:
            open();
            return 0;
        case effSetProgram:
            setCurrentProgram(static_cast<int>(value));
            return 0;
        case effGetProgram:
            return getCurrentProgram();
        case effSetProgramName:
            if (ptr) setPatchName(getCurrentProgram(), static_cast<const char*>(ptr));
            return 0;
        case effGetProgramName: {
            char name[Patch::maxNameLength + 1];
            getPatchName(getCurrentProgram(), Patch::maxNameLength, name);
            copyText(ptr, name, nameLimit);
            return 0;
        }
        case effGetProgramNameIndexed: {
            if (!validProgram(index)) return 0;
            char name[Patch::maxNameLength + 1];
            getPatchName(index, Patch::maxNameLength, name);
            copyText(ptr, name, nameLimit);
            return 1;
        }
        case effGetParamName:
        case effGetParamLabel:
        case effGetParamDisplay: {
            int id = parameterId(index);
            if (id < 0) return 0;
            const ParameterSpec& row = descriptor_.parameters[static_cast<std::size_t>(id)];
            if (opcode == effGetParamName) {
                copyText(ptr, row.label, nameLimit);
            } else if (opcode == effGetParamLabel) {
                copyText(ptr, row.unit, nameLimit);
            } else {
                PatchHandle r = acquirePatch(getCurrentProgram());
                copyText(ptr, factory_->valueToText(**r, id, (*r)->getParameter(id), false), nameLimit);
            }
            return 0;
        }
        case effSetSampleRate:
            setSampleRate(opt);
            return 0;
        case effSetBlockSize:
            setBlockSize(value);
            return 0;
        case effMainsChanged:
            value ? resume() : suspend();
            return 0;
        case effProcessEvents:
            return processEvents(static_cast<const VstEvents*>(ptr));
        case effCanBeAutomated:
            return 1;
        case effGetPlugCategory:
            return descriptor_.isSynth ? kPlugCategSynth : kPlugCategEffect;
        case effSetBypass:
            bypassed_.store(value != 0 ? 1 : 0);
            return 1;
        case effGetEffectName:
            copyText(ptr, descriptor_.publicName, 31);
            return 1;
        case effGetProductString:
            copyText(ptr, descriptor_.publicName, 63);
            return 1;
        case effGetVendorString:
            copyText(ptr, descriptor_.vendorName, 63);
            return 1;
        case effGetVendorVersion:
            return static_cast<intptr>(descriptor_.version);
        case effVendorSpecific:
            return vendorSpecific(index, value, ptr, opt);
        case effCanDo:
            return ptr ? canDo(static_cast<const char*>(ptr)) : 0;
        case effGetChunk:
            return getChunk(static_cast<void**>(ptr), index != 0);
        case effSetChunk:
            return setChunk(ptr, value, index != 0);
        case effGetTailSize:
            return 2400;
        case effGetVstVersion:
            return 2400;
        case effEditGetRect:
        case effEditOpen:
        case effEditIdle:
        case effEditClose:
            return editor_ ? editor_->dispatch(opcode, value, ptr) : 0;
        default:
            return 0;
    }
}

vst2::intptr PluginInstance::getChunk(void** data, bool isPreset) {
    Mutex::Guard guard(chunkMutex_);
    chunkBuffer_.clear();
    try {
        chunkBuffer_ = saveChunk(*this, isPreset);
    } catch (const std::exception&) {
        chunkBuffer_.clear();
    }
    if (data != nullptr) *data = chunkBuffer_.data();
    return static_cast<vst2::intptr>(chunkBuffer_.size());
}

vst2::intptr PluginInstance::setChunk(const void* data, vst2::intptr size, bool isPreset) {
    if (data == nullptr || size <= 0) return 0;
    try {
        loadChunk(*this, std::string_view(static_cast<const char*>(data), static_cast<std::size_t>(size)), isPreset);
    } catch (const std::exception&) {
        return 0;
    }
    needsReset_.store(1);
    return size;
}

void PluginInstance::loadFxb(const void* data, std::size_t size) {
    loadChunk(*this, bankChunkOfFxb(descriptor_, std::string_view(static_cast<const char*>(data), size)), false);
    needsReset_.store(1);
}

void PluginInstance::loadFactoryBank(const std::string& name) {
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

void PluginInstance::setCurrentProgram(int program) {
    if (validProgram(program)) currentProgram_.store(program);
}

std::uint32_t PluginInstance::getPatchStamp(int program) {
    PatchHandle r = acquirePatch(program);
    return (*r)->getChangeStamp();
}

std::unique_ptr<Patch> PluginInstance::clonePatch(int program) {
    PatchHandle r = acquirePatch(program);
    return (*r)->clone();
}

void PluginInstance::setPatch(int program, const Patch& patch) {
    if (validProgram(program)) patches_[static_cast<std::size_t>(program)]->publish(patch.clone());
}

PatchHandle PluginInstance::acquirePatch(int program) {
    if (!validProgram(program)) program = 0;
    return patches_[static_cast<std::size_t>(program)]->acquire();
}

void PluginInstance::getPatchName(int program, std::size_t maxLength, char* buffer) {
    PatchHandle r = acquirePatch(program);
    (*r)->getName(maxLength, buffer);
}

bool PluginInstance::setPatchName(int program, std::string_view text) {
    PatchHandle r = acquirePatch(program);
    return (*r)->setName(text);
}

void PluginInstance::beginEnd(int parameter, bool beginning) {
    if (parameter < 0 || parameter >= static_cast<int>(gestures_.size())) return;
    std::uint8_t& flag = gestures_[static_cast<std::size_t>(parameter)];
    if (flag == (beginning ? 1 : 0)) return;
    flag = beginning ? 1 : 0;
    hostCall(beginning ? vst2::audioMasterBeginEdit : vst2::audioMasterEndEdit, hostIndex(parameter));
}

float PluginInstance::getParameter(int program, int parameter) {
    if (parameter < 0 || parameter >= static_cast<int>(gestures_.size())) return 0.0f;
    PatchHandle r = acquirePatch(program);
    return (*r)->getParameter(parameter);
}

void PluginInstance::setParameter(int program, int parameter, float value) {
    if (parameter < 0 || parameter >= static_cast<int>(gestures_.size())) return;
    value = safeParameterValue(descriptor_.parameters[static_cast<std::size_t>(parameter)], value);
    {
        PatchHandle r = acquirePatch(program);
        (*r)->setParameter(parameter, value);
    }
    if (program == getCurrentProgram() && gestures_[static_cast<std::size_t>(parameter)])
        hostCall(vst2::audioMasterAutomate, hostIndex(parameter), 0, nullptr, value);
}

void PluginInstance::setEditPatch(const Patch* patch) { editPatch_.publish(patch ? patch->clone() : nullptr); }

}  // namespace tw
