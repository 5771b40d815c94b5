#include "vst2/Vst2Plugin.h"

#include <algorithm>
#include <cstring>

#include "core/EntryFault.h"
#include "vst2/VendorProtocol.h"

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

std::string_view nameOf(vst2::AEffect* e) { return Vst2Plugin::of(e)->instance().descriptor().publicName; }

// The effect record's entry points. Nothing may leave them as an exception: a failure
// answers 0, is said once on stderr, and the host goes on.
vst2::intptr dispatcherProc(vst2::AEffect* e, vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr,
                            float opt) {
    try {
        if (opcode == vst2::effClose) {
            delete Vst2Plugin::of(e);
            return 1;
        }
        return Vst2Plugin::of(e)->dispatch(opcode, index, value, ptr, opt);
    } catch (...) {
        // A fault inside the destructor leaves no instance to name.
        if (opcode == vst2::effClose) {
            reportEntryFault("plug-in", "effClose");
            return 0;
        }
        reportEntryFault(nameOf(e), "dispatcher");
        return 0;
    }
}

void processReplacingProc(vst2::AEffect* e, float** inputs, float** outputs, vst2::int32 frames) {
    try {
        Vst2Plugin::of(e)->processBlock(inputs, outputs, frames, false);
    } catch (...) {
        reportEntryFault(nameOf(e), "processReplacing");
    }
}

void processProc(vst2::AEffect* e, float** inputs, float** outputs, vst2::int32 frames) {
    try {
        Vst2Plugin::of(e)->processBlock(inputs, outputs, frames, true);
    } catch (...) {
        reportEntryFault(nameOf(e), "process");
    }
}

void setParameterProc(vst2::AEffect* e, vst2::int32 index, float value) {
    try {
        Vst2Plugin::of(e)->setHostParameter(index, value);
    } catch (...) {
        reportEntryFault(nameOf(e), "setParameter");
    }
}

float getParameterProc(vst2::AEffect* e, vst2::int32 index) {
    try {
        return Vst2Plugin::of(e)->getHostParameter(index);
    } catch (...) {
        reportEntryFault(nameOf(e), "getParameter");
        return 0.0f;
    }
}

}  // namespace

Vst2Plugin::Vst2Plugin(vst2::HostCallback host, std::unique_ptr<ModelFactory> factory, const EditorFactory* editor)
    : host_(host), instance_(*this, std::move(factory)) {
    const ModelDescriptor& descriptor = instance_.descriptor();
    effect_.magic = vst2::kEffectMagic;
    effect_.object = this;
    effect_.dispatcher = dispatcherProc;
    effect_.process = processProc;
    effect_.processReplacing = processReplacingProc;
    effect_.setParameter = setParameterProc;
    effect_.getParameter = getParameterProc;
    effect_.numPrograms = descriptor.programCount;
    effect_.numParams = instance_.parameterCount();
    effect_.version = static_cast<vst2::int32>(descriptor.version);
    effect_.uniqueID = descriptor.uniqueId;
    effect_.numInputs = instance_.inputChannels();
    effect_.numOutputs = instance_.outputChannels();
    effect_.flags = vst2::effFlagsCanMono | vst2::effFlagsCanReplacing | vst2::effFlagsProgramChunks;
    if (descriptor.isSynth) effect_.flags |= vst2::effFlagsIsSynth;
    effect_.initialDelay = instance_.latency();

    const IntRect size = editor ? editor->getEditorSize() : IntRect{};
    if (!size.isEmpty()) {
        editor_ = std::make_unique<Editor>(instance_, *editor, "VST 2.4");
        effect_.flags |= vst2::effFlagsHasEditor;
        // A zoom picked with the editor open asks the host to size its window anew; a host
        // that does not know the call answers 0 and the zoom stays as it was.
        editor_->setResizeRequest([this](std::int32_t width, std::int32_t height) {
            return hostCall(vst2::audioMasterSizeWindow, width, height, nullptr, 0) != 0;
        });
    }
}

Vst2Plugin::~Vst2Plugin() = default;

vst2::intptr Vst2Plugin::hostCall(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr,
                                  float opt) const {
    return host_ ? host_(const_cast<vst2::AEffect*>(&effect_), opcode, index, value, ptr, opt) : 0;
}

void Vst2Plugin::open() {
    vst2::intptr rate = hostCall(vst2::audioMasterGetSampleRate);
    if (rate > 0) setSampleRate(static_cast<float>(rate));
    instance_.setBlockSize(static_cast<long>(hostCall(vst2::audioMasterGetBlockSize)));
}

void Vst2Plugin::setSampleRate(float rate) {
    instance_.setSampleRate(rate);
    effect_.initialDelay = instance_.latency();
}

void Vst2Plugin::resume() {
    hostCall(vst2::audioMasterWantMidi, 0, 1);
    instance_.activate();
}

int Vst2Plugin::canDo(std::string_view q) const {
    const ModelDescriptor& descriptor = instance_.descriptor();
    if (q == "conformsToWindowRules" || q == "receiveVstTimeInfo") return 1;
    if (q == "bypass") return descriptor.isSynth ? 0 : 1;
    if (q == "receiveVstEvents" || q == "receiveVstMidiEvent") return descriptor.receivesMidi ? 1 : 0;
    if (q == "sendVstEvents" || q == "sendVstMidiEvent") return descriptor.sendsMidi ? 1 : 0;
    return 0;
}

vst2::intptr Vst2Plugin::vendorSpecific(vst2::int32 code, vst2::intptr argument, void* ptr, float opt) {
    // The scale of the host's windows, as hosts that know it tell it ('PreS', 'AeCs', the
    // factor in opt): the editor opens, or is drawn anew, at the nearest zoom.
    if (code == vst2::fourCC("PreS") && argument == vst2::fourCC("AeCs") && editor_ && opt > 0) {
        editor_->setHostScale(opt);
        return 1;
    }
    switch (code) {
        case vendor::probeCode:
            return 1;
        case vendor::inputSilenceCode:
            instance_.setInputSilent(argument != 0);
            return 1;
        case vendor::outputSilenceCode:
            return instance_.outputSilent() ? 1 : 0;
        case vendor::textToValueCode:
        case vendor::valueToTextCode: {
            const int id = argument >= 0 && argument < effect_.numParams ? instance_.parameterId(static_cast<int>(argument)) : -1;
            if (id < 0 || ptr == nullptr) return 0;
            auto& record = *static_cast<vendor::ParameterText*>(ptr);
            if (code == vendor::valueToTextCode) {
                copyText(record.text, instance_.parameterText(id, record.value), sizeof record.text - 1);
                return 1;
            }
            const char* end = std::find(record.text, record.text + sizeof record.text, '\0');
            return instance_.parameterFromText(id, std::string_view(record.text, end), record.value) ? 1 : 0;
        }
        default:
            return 0;
    }
}

float Vst2Plugin::getHostParameter(int hostIndex) {
    int id = instance_.parameterId(hostIndex);
    if (id < 0) return 0.0f;
    return instance_.parameterValue(id);
}

vst2::intptr Vst2Plugin::dispatch(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr, float opt) {
    using namespace vst2;
    switch (opcode) {
        case effOpen:
            open();
            return 0;
        case effSetProgram:
            instance_.setCurrentProgram(static_cast<int>(value));
            return 0;
        case effGetProgram:
            return instance_.getCurrentProgram();
        case effSetProgramName:
            if (ptr) instance_.setPatchName(instance_.getCurrentProgram(), static_cast<const char*>(ptr));
            return 0;
        case effGetProgramName: {
            char name[Patch::maxNameLength + 1];
            instance_.getPatchName(instance_.getCurrentProgram(), Patch::maxNameLength, name);
            copyText(ptr, name, nameLimit);
            return 0;
        }
        case effGetProgramNameIndexed: {
            if (index < 0 || index >= effect_.numPrograms) return 0;
            char name[Patch::maxNameLength + 1];
            instance_.getPatchName(index, Patch::maxNameLength, name);
            copyText(ptr, name, nameLimit);
            return 1;
        }
        case effGetParamName:
        case effGetParamLabel:
        case effGetParamDisplay: {
            int id = instance_.parameterId(index);
            if (id < 0) return 0;
            const ParameterSpec& row = instance_.descriptor().parameters[static_cast<std::size_t>(id)];
            if (opcode == effGetParamName) copyText(ptr, row.label, nameLimit);
            else if (opcode == effGetParamLabel) copyText(ptr, row.unit, nameLimit);
            else copyText(ptr, instance_.currentParameterText(id), nameLimit);
            return 0;
        }
        case effSetSampleRate:
            setSampleRate(opt);
            return 0;
        case effSetBlockSize:
            instance_.setBlockSize(static_cast<long>(value));
            return 0;
        case effMainsChanged:
            value ? resume() : instance_.deactivate();
            return 0;
        case effProcessEvents:
            return processEvents(static_cast<const VstEvents*>(ptr));
        case effCanBeAutomated:
            return 1;
        case effGetPlugCategory:
            return instance_.descriptor().isSynth ? kPlugCategSynth : kPlugCategEffect;
        case effSetBypass:
            instance_.setBypass(value != 0);
            return 1;
        case effGetEffectName:
            copyText(ptr, instance_.descriptor().publicName, 31);
            return 1;
        case effGetProductString:
            copyText(ptr, instance_.descriptor().publicName, 63);
            return 1;
        case effGetVendorString:
            copyText(ptr, instance_.descriptor().vendorName, 63);
            return 1;
        case effGetVendorVersion:
            return static_cast<intptr>(instance_.descriptor().version);
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
            return editor_ ? editorCall(opcode, ptr) : 0;
        case effEditKeyDown:
        case effEditKeyUp:
            return editor_ ? editorKey(opcode, index, value, opt) : 0;
        default:
            return 0;
    }
}

vst2::intptr Vst2Plugin::editorCall(vst2::int32 opcode, void* ptr) {
    switch (opcode) {
        case vst2::effEditGetRect: {
            // The size at the zoom the editor opens at, or is open at.
            const IntRect size = editor_->size();
            rect_.left = static_cast<vst2::int16>(size.left);
            rect_.top = static_cast<vst2::int16>(size.top);
            rect_.right = static_cast<vst2::int16>(size.left + size.width);
            rect_.bottom = static_cast<vst2::int16>(size.top + size.height);
            if (ptr) *static_cast<vst2::ERect**>(ptr) = &rect_;
            return 1;
        }
        case vst2::effEditOpen:
            return editor_->open(reinterpret_cast<std::uintptr_t>(ptr)) ? 1 : 0;
        case vst2::effEditIdle:
            editor_->idle();
            return 1;
        default:
            // Refused when a careless host closes from another thread and the editor's
            // thread does not let go in time.
            return editor_->close() ? 1 : 0;
    }
}

vst2::intptr Vst2Plugin::editorKey(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, float opt) {
    KeyEvent event = vst2KeyEvent(index, value, opt);
    if (opcode == vst2::effEditKeyDown) {
        event.repeat = heldKeys_.press(index, value);
    } else {
        heldKeys_.release(index, value);
    }
    if (event.key == Key::other) return 0;
    event.time = millisecondTick();
    const bool used = opcode == vst2::effEditKeyDown ? editor_->keyDown(event) : editor_->keyUp(event);
    return used ? 1 : 0;
}

int Vst2Plugin::processEvents(const vst2::VstEvents* list) {
    instance_.runPendingReset();
    if (list == nullptr) return 1;
    // The list is declared with two entries and allocated longer: walk it by pointer.
    vst2::VstEvent* const* entries = list->events;
    for (vst2::int32 i = 0; i < list->numEvents; ++i) {
        const vst2::VstEvent* e = entries[i];
        if (e == nullptr || e->type != vst2::kVstMidiType) continue;
        const auto* midi = reinterpret_cast<const vst2::VstMidiEvent*>(e);
        if (!instance_.queueMidi(midi->deltaFrames, static_cast<std::uint8_t>(midi->midiData[0]),
                                 static_cast<std::uint8_t>(midi->midiData[1]), static_cast<std::uint8_t>(midi->midiData[2])))
            break;
    }
    return 1;
}

void Vst2Plugin::processBlock(float** inputs, float** outputs, int frames, bool accumulate) {
    Transport transport;
    auto* time = reinterpret_cast<const vst2::VstTimeInfo*>(hostCall(vst2::audioMasterGetTime, 0, 0x1606));
    if (time && (time->flags & vst2::kVstPpqPosValid) && (time->flags & vst2::kVstTempoValid)) {
        transport.valid = true;
        transport.playing = (time->flags & vst2::kVstTransportPlaying) != 0;
        transport.tempo = time->tempo;
        transport.position = time->ppqPos;
    }
    instance_.process(inputs, outputs, frames, accumulate, transport);
}

vst2::intptr Vst2Plugin::getChunk(void** data, bool isPreset) {
    Mutex::Guard guard(chunkMutex_);
    chunkBuffer_.clear();
    try {
        chunkBuffer_ = instance_.saveState(isPreset);
    } catch (const std::exception&) {
        chunkBuffer_.clear();
    }
    if (data != nullptr) *data = chunkBuffer_.data();
    return static_cast<vst2::intptr>(chunkBuffer_.size());
}

vst2::intptr Vst2Plugin::setChunk(const void* data, vst2::intptr size, bool isPreset) {
    if (data == nullptr || size <= 0) return 0;
    try {
        instance_.loadState(std::string_view(static_cast<const char*>(data), static_cast<std::size_t>(size)), isPreset);
    } catch (const std::exception&) {
        return 0;
    }
    return size;
}

}  // namespace tw
