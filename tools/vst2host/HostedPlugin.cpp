#include "tools/vst2host/HostedPlugin.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cctype>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "vst2/VendorProtocol.h"

namespace tw {

namespace {

// The instance being created: the plug-in calls back before its effect record exists.
thread_local HostedPlugin* constructing = nullptr;

// The words of a text in lower case, split at anything but letters and digits, and with
// `camel` also where a capital follows a small letter.
std::vector<std::string> wordsOf(const std::string& text, bool camel) {
    std::vector<std::string> words;
    auto previous = static_cast<unsigned char>(' ');
    for (char c : text) {
        const auto u = static_cast<unsigned char>(c);
        if (std::isalnum(u)) {
            const bool capitalAfterSmall = camel && std::isupper(u) && std::islower(previous);
            if (!std::isalnum(previous) || capitalAfterSmall) words.emplace_back();
            words.back() += static_cast<char>(std::tolower(u));
        }
        previous = u;
    }
    return words;
}

bool beginsEachWord(const std::vector<std::string>& keys, const std::vector<std::string>& words) {
    if (keys.empty() || keys.size() != words.size()) return false;
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (words[i].compare(0, keys[i].size(), keys[i]) != 0) return false;
    return true;
}

}  // namespace

HostedPlugin::HostedPlugin(const std::string& libraryPath) {
    library_ = ::dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) throw std::runtime_error(std::string("cannot load plug-in: ") + ::dlerror());
    auto entry = reinterpret_cast<EntryPoint>(::dlsym(library_, "VSTPluginMain"));
    if (entry == nullptr) entry = reinterpret_cast<EntryPoint>(::dlsym(library_, "main"));
    if (entry == nullptr) {
        ::dlclose(library_);
        throw std::runtime_error("not a VST 2.4 plug-in: no VSTPluginMain in " + libraryPath);
    }
    create(entry);
}

HostedPlugin::HostedPlugin(EntryPoint entry) { create(entry); }

void HostedPlugin::create(EntryPoint entry) {
    constructing = this;
    effect_ = entry(&HostedPlugin::callback);
    constructing = nullptr;
    if (effect_ == nullptr || effect_->magic != vst2::kEffectMagic) {
        if (library_ != nullptr) ::dlclose(library_);
        throw std::runtime_error("the plug-in did not create an instance");
    }
    effect_->user = this;
}

HostedPlugin::~HostedPlugin() {
    dispatch(vst2::effClose);
    if (library_ != nullptr) ::dlclose(library_);
}

vst2::intptr HostedPlugin::dispatch(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr, float opt) {
    return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
}

vst2::intptr HostedPlugin::callback(vst2::AEffect* effect, vst2::int32 opcode, vst2::int32 index, vst2::intptr value,
                                    void* ptr, float opt) {
    HostedPlugin* self = effect && effect->user ? static_cast<HostedPlugin*>(effect->user) : constructing;
    if (opcode == vst2::audioMasterVersion) return 2400;
    return self ? self->answer(opcode, index, value, ptr, opt) : 0;
}

vst2::intptr HostedPlugin::answer(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void*, float opt) {
    switch (opcode) {
        case vst2::audioMasterSizeWindow:
            return sizeWindow && sizeWindow(index, static_cast<int>(value)) ? 1 : 0;
        case vst2::audioMasterBeginEdit:
        case vst2::audioMasterAutomate:
        case vst2::audioMasterEndEdit:
        case vst2::audioMasterUpdateDisplay:
            if (recordEditorCalls) {
                std::lock_guard<std::mutex> hold(editorCallsLock_);
                editorCalls_.push_back({opcode, index, opt});
            }
            return opcode == vst2::audioMasterUpdateDisplay ? 1 : 0;
        case vst2::audioMasterGetSampleRate:
            return static_cast<vst2::intptr>(sampleRate_);
        case vst2::audioMasterGetBlockSize:
            return blockSize_;
        case vst2::audioMasterWantMidi:
            return 1;
        case vst2::audioMasterGetTime: {
            if (!transport.timeInfo) return 0;
            time_ = {};
            time_.samplePos = samplePosition_;
            time_.sampleRate = sampleRate_;
            time_.tempo = transport.tempo;
            time_.ppqPos = samplePosition_ / sampleRate_ * transport.tempo / 60.0;
            time_.timeSigNumerator = 4;
            time_.timeSigDenominator = 4;
            time_.flags = vst2::kVstPpqPosValid | vst2::kVstTempoValid | vst2::kVstTimeSigValid |
                          (transport.playing ? vst2::kVstTransportPlaying : 0);
            return reinterpret_cast<vst2::intptr>(&time_);
        }
        default:
            return 0;
    }
}

std::vector<HostedPlugin::EditorCall> HostedPlugin::takeEditorCalls() {
    std::lock_guard<std::mutex> hold(editorCallsLock_);
    return std::exchange(editorCalls_, {});
}

void HostedPlugin::open(float sampleRate, int blockSize) {
    sampleRate_ = sampleRate;
    blockSize_ = blockSize;
    dispatch(vst2::effOpen);
    dispatch(vst2::effSetSampleRate, 0, 0, nullptr, sampleRate);
    dispatch(vst2::effSetBlockSize, 0, blockSize);
}

void HostedPlugin::resume() {
    dispatch(vst2::effMainsChanged, 0, 1);
    dispatch(vst2::effStartProcess);
}

void HostedPlugin::suspend() {
    dispatch(vst2::effStopProcess);
    dispatch(vst2::effMainsChanged, 0, 0);
}

std::string HostedPlugin::text(vst2::int32 opcode, vst2::int32 index) {
    char buffer[512] = {};
    dispatch(opcode, index, 0, buffer);
    buffer[sizeof buffer - 1] = 0;
    return buffer;
}

std::string HostedPlugin::effectName() { return text(vst2::effGetEffectName, 0); }
std::string HostedPlugin::vendor() { return text(vst2::effGetVendorString, 0); }
std::string HostedPlugin::product() { return text(vst2::effGetProductString, 0); }
std::string HostedPlugin::parameterName(int index) { return text(vst2::effGetParamName, index); }
std::string HostedPlugin::parameterLabel(int index) { return text(vst2::effGetParamLabel, index); }
std::string HostedPlugin::parameterDisplay(int index) { return text(vst2::effGetParamDisplay, index); }
std::string HostedPlugin::programName(int index) { return text(vst2::effGetProgramNameIndexed, index); }
std::string HostedPlugin::currentProgramName() { return text(vst2::effGetProgramName, 0); }

int HostedPlugin::findParameter(const std::string& key) {
    char* end = nullptr;
    long number = std::strtol(key.c_str(), &end, 10);
    if (!key.empty() && *end == 0) return number >= 0 && number < effect_->numParams ? static_cast<int>(number) : -1;
    for (int i = 0; i < effect_->numParams; ++i)
        if (::strcasecmp(parameterName(i).c_str(), key.c_str()) == 0) return i;
    const std::vector<std::string> keys = wordsOf(key, true);
    int found = -1;
    for (int i = 0; i < effect_->numParams; ++i) {
        if (!beginsEachWord(keys, wordsOf(parameterName(i), false))) continue;
        if (found >= 0) return -1;
        found = i;
    }
    return found;
}

void HostedPlugin::apply(int program, const std::vector<Setting>& settings, bool bypass, const ParameterLookup& lookup) {
    if (program >= 0) {
        if (program >= effect_->numPrograms) throw std::runtime_error("no program " + std::to_string(program));
        dispatch(vst2::effSetProgram, 0, program);
    }
    for (const Setting& s : settings) {
        const int index = lookup(*this, s.key);
        if (index < 0) throw std::runtime_error("no parameter " + s.key);
        float v;
        if (s.text) {
            if (!speaksVendorProtocol()) throw std::runtime_error("the plug-in reads no parameter text; use --param");
            if (!textToValue(index, s.value, v))
                throw std::runtime_error("the plug-in cannot read \"" + s.value + "\" for " + parameterName(index));
        } else {
            char* end = nullptr;
            const double number = std::strtod(s.value.c_str(), &end);
            if (s.value.empty() || *end != 0 || !(number >= 0 && number <= 1))
                throw std::runtime_error("--param values lie in 0 to 1: " + s.value);
            v = static_cast<float>(number);
        }
        effect_->setParameter(effect_, index, v);
    }
    if (bypass) dispatch(vst2::effSetBypass, 0, 1);
}

bool HostedPlugin::speaksVendorProtocol() {
    return dispatch(vst2::effVendorSpecific, tw::vendor::probeCode) == 1;
}

bool HostedPlugin::textToValue(int index, const std::string& text, float& value) {
    tw::vendor::ParameterText record{};
    if (text.size() >= sizeof record.text) return false;
    std::memcpy(record.text, text.c_str(), text.size() + 1);
    if (dispatch(vst2::effVendorSpecific, tw::vendor::textToValueCode, index, &record) != 1) return false;
    value = record.value;
    return true;
}

std::vector<unsigned char> HostedPlugin::getChunk(bool program) {
    void* data = nullptr;
    vst2::intptr size = dispatch(vst2::effGetChunk, program ? 1 : 0, 0, &data);
    if (size <= 0 || data == nullptr) return {};
    auto* bytes = static_cast<unsigned char*>(data);
    return std::vector<unsigned char>(bytes, bytes + size);
}

bool HostedPlugin::setChunk(const std::vector<unsigned char>& data, bool program) {
    std::vector<unsigned char> copy = data;  // the plug-in may keep reading while it loads
    return dispatch(vst2::effSetChunk, program ? 1 : 0, static_cast<vst2::intptr>(copy.size()), copy.data()) != 0;
}

void HostedPlugin::queueMidi(int offset, unsigned char status, unsigned char data1, unsigned char data2) {
    vst2::VstMidiEvent e{};
    e.type = vst2::kVstMidiType;
    e.byteSize = sizeof e;
    e.deltaFrames = offset;
    e.midiData[0] = static_cast<char>(status);
    e.midiData[1] = static_cast<char>(data1);
    e.midiData[2] = static_cast<char>(data2);
    midi_.push_back(e);
}

void HostedPlugin::process(float** inputs, float** outputs, int frames) {
    if (!midi_.empty()) {
        eventList_.assign(sizeof(vst2::VstEvents) + midi_.size() * sizeof(vst2::VstEvent*), 0);
        auto* list = reinterpret_cast<vst2::VstEvents*>(eventList_.data());
        list->numEvents = static_cast<vst2::int32>(midi_.size());
        vst2::VstEvent** entries = list->events;  // declared with two, allocated longer
        for (std::size_t i = 0; i < midi_.size(); ++i) entries[i] = reinterpret_cast<vst2::VstEvent*>(&midi_[i]);
        dispatch(vst2::effProcessEvents, 0, 0, list);
    }
    effect_->processReplacing(effect_, inputs, outputs, frames);
    midi_.clear();  // the list stays valid until the block that follows it has run
    samplePosition_ += frames;
}

AudioBuffer HostedPlugin::render(const AudioBuffer& input, const RenderSettings& settings) {
    const int ins = std::max(effect_->numInputs, 0), outs = std::max(effect_->numOutputs, 0);
    if (outs == 0) throw std::runtime_error("the plug-in has no outputs");
    if (input.channels < 1 || input.frames() == 0) throw std::runtime_error("the input holds no audio");
    resume();

    const int block = blockSize_;
    const long latency = settings.keepLatency ? 0 : std::max(effect_->initialDelay, 0);
    const long inputFrames = input.frames();
    const long total = inputFrames + static_cast<long>(settings.tail * input.sampleRate) + latency;
    AudioBuffer output;
    output.sampleRate = input.sampleRate;
    output.channels = outs;
    output.samples.assign(static_cast<std::size_t>((total - latency) * outs), 0.0f);

    std::vector<std::vector<float>> inBuffers(static_cast<std::size_t>(std::max(ins, 1)), std::vector<float>(static_cast<std::size_t>(block)));
    std::vector<std::vector<float>> outBuffers(static_cast<std::size_t>(outs), std::vector<float>(static_cast<std::size_t>(block)));
    std::vector<float*> inPointers, outPointers;
    for (auto& b : inBuffers) inPointers.push_back(b.data());
    for (auto& b : outBuffers) outPointers.push_back(b.data());

    const bool progress = !settings.progressLabel.empty() && ::isatty(2) != 0;
    int shown = -1;
    for (long position = 0; position < total; position += block) {
        int n = static_cast<int>(std::min<long>(block, total - position));
        for (int c = 0; c < ins; ++c) {
            // A mono file feeds every input; a wider one gives each input its own channel.
            int source = std::min(c, input.channels - 1);
            for (int k = 0; k < n; ++k) {
                long frame = position + k;
                inBuffers[static_cast<std::size_t>(c)][static_cast<std::size_t>(k)] =
                    frame < inputFrames ? input.samples[static_cast<std::size_t>(frame * input.channels + source)] : 0.0f;
            }
        }
        if (settings.note >= 0 && position == 0) queueMidi(0, 0x90, static_cast<unsigned char>(settings.note), 100);
        if (settings.note >= 0 && position <= inputFrames && inputFrames < position + n)
            queueMidi(static_cast<int>(inputFrames - position), 0x80, static_cast<unsigned char>(settings.note), 0);
        process(inPointers.data(), outPointers.data(), n);
        for (int c = 0; c < outs; ++c)
            for (int k = 0; k < n; ++k) {
                long frame = position + k - latency;
                if (frame >= 0)
                    output.samples[static_cast<std::size_t>(frame * outs + c)] = outBuffers[static_cast<std::size_t>(c)][static_cast<std::size_t>(k)];
            }
        int percent = static_cast<int>(100 * (position + n) / total);
        if (progress && percent != shown) {
            std::fprintf(stderr, "\rrendering %s: %3d%%", settings.progressLabel.c_str(), percent);
            shown = percent;
        }
    }
    if (progress) std::fprintf(stderr, "\n");
    suspend();
    return output;
}

}  // namespace tw
