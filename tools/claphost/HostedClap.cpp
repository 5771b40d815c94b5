// The host's whole side of the CLAP format in one file, longer than most: the host record,
// its extensions, the event lists and the state streams are small and all serve the one
// hosted instance.
#include "tools/claphost/HostedClap.h"

#include <dlfcn.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>
#include <utility>

#include <clap/ext/thread-check.h>

#include "tools/common/OptionValues.h"

namespace tw {

namespace {

double nowMs() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return double(ts.tv_sec) * 1e3 + double(ts.tv_nsec) / 1e6;
}

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

template <typename Event>
std::vector<unsigned char> bytesOf(const Event& e) {
    const auto* p = reinterpret_cast<const unsigned char*>(&e);
    return std::vector<unsigned char>(p, p + sizeof e);
}

// An input list over events kept as bytes.
struct InputList {
    clap_input_events_t clap;
    const std::vector<std::vector<unsigned char>>* events;
    explicit InputList(const std::vector<std::vector<unsigned char>>& list) : events(&list) {
        clap.ctx = this;
        clap.size = [](const clap_input_events_t* l) {
            return static_cast<std::uint32_t>(static_cast<const InputList*>(l->ctx)->events->size());
        };
        clap.get = [](const clap_input_events_t* l, std::uint32_t i) -> const clap_event_header_t* {
            const auto& list = *static_cast<const InputList*>(l->ctx)->events;
            return i < list.size() ? reinterpret_cast<const clap_event_header_t*>(list[i].data()) : nullptr;
        };
    }
};

// An output list that hands every event to the host.
struct OutputList {
    clap_output_events_t clap;
    std::function<void(const clap_event_header_t*)> take;
    explicit OutputList(std::function<void(const clap_event_header_t*)> f) : take(std::move(f)) {
        clap.ctx = this;
        clap.try_push = [](const clap_output_events_t* l, const clap_event_header_t* e) {
            if (e == nullptr) return false;
            static_cast<const OutputList*>(l->ctx)->take(e);
            return true;
        };
    }
};

// State streams that move at most `step` bytes a call.
struct WriteStream {
    clap_ostream_t clap;
    std::vector<unsigned char> bytes;
    std::size_t step;
    explicit WriteStream(std::size_t s) : step(s) {
        clap.ctx = this;
        clap.write = [](const clap_ostream_t* s, const void* buffer, std::uint64_t size) -> std::int64_t {
            auto& self = *static_cast<WriteStream*>(s->ctx);
            const std::size_t n = self.step ? std::min<std::uint64_t>(size, self.step) : size;
            const auto* p = static_cast<const unsigned char*>(buffer);
            self.bytes.insert(self.bytes.end(), p, p + n);
            return static_cast<std::int64_t>(n);
        };
    }
};

struct ReadStream {
    clap_istream_t clap;
    const std::vector<unsigned char>* bytes;
    std::size_t position = 0, step;
    ReadStream(const std::vector<unsigned char>& b, std::size_t s) : bytes(&b), step(s) {
        clap.ctx = this;
        clap.read = [](const clap_istream_t* s, void* buffer, std::uint64_t size) -> std::int64_t {
            auto& self = *static_cast<ReadStream*>(s->ctx);
            std::size_t n = std::min<std::uint64_t>(size, self.bytes->size() - self.position);
            if (self.step) n = std::min(n, self.step);
            if (n == 0) return 0;
            std::memcpy(buffer, self.bytes->data() + self.position, n);
            self.position += n;
            return static_cast<std::int64_t>(n);
        };
    }
};

}  // namespace

HostedClap::HostedClap(const std::string& libraryPath, const std::string& id) {
    library_ = ::dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) throw std::runtime_error(std::string("cannot load plug-in: ") + ::dlerror());
    entry_ = static_cast<const clap_plugin_entry_t*>(::dlsym(library_, "clap_entry"));
    if (entry_ == nullptr || !clap_version_is_compatible(entry_->clap_version)) {
        ::dlclose(library_);
        throw std::runtime_error("not a CLAP plug-in: no clap_entry in " + libraryPath);
    }
    // The entry starts once per loaded library, however many instances it makes.
    if (entryUsers()[library_]++ == 0 && !entry_->init(libraryPath.c_str())) {
        entryUsers().erase(library_);
        ::dlclose(library_);
        throw std::runtime_error("the plug-in's entry refused to start");
    }
    auto fail = [&](const std::string& why) {
        releaseEntry();
        throw std::runtime_error(why);
    };
    const auto* factory = static_cast<const clap_plugin_factory_t*>(entry_->get_factory(CLAP_PLUGIN_FACTORY_ID));
    if (factory == nullptr || factory->get_plugin_count(factory) == 0) fail("the library offers no plug-in");
    std::string chosen = id;
    if (chosen.empty()) {
        const clap_plugin_descriptor_t* d = factory->get_plugin_descriptor(factory, 0);
        if (d == nullptr || d->id == nullptr) fail("the library's first plug-in has no descriptor");
        chosen = d->id;
    }
    host_.clap_version = CLAP_VERSION;
    host_.host_data = this;
    host_.name = "claphost";
    host_.vendor = "Marlin Works";
    host_.url = "";
    host_.version = "1.0.0";
    host_.get_extension = &HostedClap::hostExtension;
    host_.request_restart = [](const clap_host_t*) {};
    host_.request_process = [](const clap_host_t*) {};
    host_.request_callback = [](const clap_host_t*) {};
    plugin_ = factory->create_plugin(factory, &host_, chosen.c_str());
    if (plugin_ == nullptr) fail("the plug-in " + chosen + " was not created");
    if (!plugin_->init(plugin_)) {
        plugin_->destroy(plugin_);
        fail("the plug-in " + chosen + " failed to initialise");
    }
    auto ext = [&](const char* name) { return plugin_->get_extension(plugin_, name); };
    params_ = static_cast<const clap_plugin_params_t*>(ext(CLAP_EXT_PARAMS));
    state_ = static_cast<const clap_plugin_state_t*>(ext(CLAP_EXT_STATE));
    latency_ = static_cast<const clap_plugin_latency_t*>(ext(CLAP_EXT_LATENCY));
    audioPorts_ = static_cast<const clap_plugin_audio_ports_t*>(ext(CLAP_EXT_AUDIO_PORTS));
    notePorts_ = static_cast<const clap_plugin_note_ports_t*>(ext(CLAP_EXT_NOTE_PORTS));
    gui_ = static_cast<const clap_plugin_gui_t*>(ext(CLAP_EXT_GUI));
    timerSupport_ = static_cast<const clap_plugin_timer_support_t*>(ext(CLAP_EXT_TIMER_SUPPORT));
}

HostedClap::~HostedClap() {
    if (active_) deactivate();
    plugin_->destroy(plugin_);
    releaseEntry();
}

std::map<void*, int>& HostedClap::entryUsers() {
    static std::map<void*, int> users;
    return users;
}

void HostedClap::releaseEntry() {
    if (--entryUsers()[library_] == 0) {
        entryUsers().erase(library_);
        entry_->deinit();
    }
    ::dlclose(library_);
}

std::vector<std::string> HostedClap::extensionNames() const {
    std::vector<std::string> names;
    for (const char* id : {CLAP_EXT_PARAMS, CLAP_EXT_STATE, CLAP_EXT_LATENCY, CLAP_EXT_AUDIO_PORTS, CLAP_EXT_NOTE_PORTS,
                           CLAP_EXT_GUI, CLAP_EXT_TIMER_SUPPORT})
        if (plugin_->get_extension(plugin_, id)) names.emplace_back(id);
    return names;
}

const void* HostedClap::hostExtension(const clap_host_t*, const char* id) {
    static const clap_host_params_t params{
        [](const clap_host_t* h, clap_param_rescan_flags flags) {
            of(h).hear({Heard::Kind::rescan, 0, double(flags), false});
        },
        [](const clap_host_t*, clap_id, clap_param_clear_flags) {},
        [](const clap_host_t* h) {
            of(h).flushRequested_ = true;
            of(h).hear({Heard::Kind::requestFlush, 0, 0.0, false});
        },
    };
    static const clap_host_state_t state{[](const clap_host_t* h) { of(h).hear({Heard::Kind::dirty, 0, 0.0, false}); }};
    static const clap_host_latency_t latency{[](const clap_host_t*) {}};
    static const clap_host_audio_ports_t audioPorts{[](const clap_host_t*, std::uint32_t) { return false; },
                                                    [](const clap_host_t*, std::uint32_t) {}};
    static const clap_host_note_ports_t notePorts{
        [](const clap_host_t*) -> std::uint32_t { return CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI; },
        [](const clap_host_t*, std::uint32_t) {}};
    static const clap_host_gui_t gui{
        [](const clap_host_t*) {},
        [](const clap_host_t* h, std::uint32_t w, std::uint32_t height) {
            HostedClap& self = of(h);
            self.hear({Heard::Kind::resize, 0, double(w), false});
            return self.resizeWindow && self.resizeWindow(w, height);
        },
        [](const clap_host_t*) { return false; }, [](const clap_host_t*) { return false; },
        [](const clap_host_t*, bool) {}};
    static const clap_host_timer_support_t timers{
        [](const clap_host_t* h, std::uint32_t period, clap_id* id) {
            HostedClap& self = of(h);
            if (id == nullptr) return false;
            const std::uint32_t ms = std::max<std::uint32_t>(period, 1);
            *id = self.nextTimer_++;
            self.timers_.push_back({*id, ms, nowMs() + ms});
            return true;
        },
        [](const clap_host_t* h, clap_id id) {
            auto& timers = of(h).timers_;
            const auto before = timers.size();
            timers.erase(std::remove_if(timers.begin(), timers.end(), [id](const Timer& t) { return t.id == id; }),
                         timers.end());
            return timers.size() != before;
        }};
    static const clap_host_thread_check_t threadCheck{
        [](const clap_host_t* h) { return !of(h).processingElsewhere.load(); },
        [](const clap_host_t* h) { return of(h).processingElsewhere.load(); }};
    if (id == nullptr) return nullptr;
    const std::pair<const char*, const void*> table[] = {
        {CLAP_EXT_PARAMS, &params},     {CLAP_EXT_STATE, &state},       {CLAP_EXT_LATENCY, &latency},
        {CLAP_EXT_AUDIO_PORTS, &audioPorts}, {CLAP_EXT_NOTE_PORTS, &notePorts}, {CLAP_EXT_GUI, &gui},
        {CLAP_EXT_TIMER_SUPPORT, &timers}, {CLAP_EXT_THREAD_CHECK, &threadCheck}};
    for (const auto& [name, extension] : table)
        if (std::strcmp(id, name) == 0) return extension;
    return nullptr;
}

void HostedClap::hear(const Heard& heard) {
    if (!recordHeard.load()) return;
    std::lock_guard<std::mutex> hold(heardLock_);
    heard_.push_back(heard);
}

void HostedClap::hearEvent(const clap_event_header_t* e, bool viaFlush) {
    if (e->space_id != CLAP_CORE_EVENT_SPACE_ID) return;
    if (e->type == CLAP_EVENT_PARAM_VALUE) {
        const auto* v = reinterpret_cast<const clap_event_param_value_t*>(e);
        hear({Heard::Kind::value, v->param_id, v->value, viaFlush});
    } else if (e->type == CLAP_EVENT_PARAM_GESTURE_BEGIN || e->type == CLAP_EVENT_PARAM_GESTURE_END) {
        const auto* g = reinterpret_cast<const clap_event_param_gesture_t*>(e);
        hear({e->type == CLAP_EVENT_PARAM_GESTURE_BEGIN ? Heard::Kind::begin : Heard::Kind::end, g->param_id, 0.0, viaFlush});
    }
}

std::vector<HostedClap::Heard> HostedClap::takeHeard() {
    std::lock_guard<std::mutex> hold(heardLock_);
    return std::exchange(heard_, {});
}

std::vector<clap_param_info_t> HostedClap::parameters() const {
    std::vector<clap_param_info_t> out;
    if (params_ == nullptr) return out;
    const std::uint32_t n = params_->count(plugin_);
    for (std::uint32_t i = 0; i < n; ++i) {
        clap_param_info_t info{};
        if (params_->get_info(plugin_, i, &info)) out.push_back(info);
    }
    return out;
}

double HostedClap::value(clap_id id) const {
    double v = 0.0;
    if (params_ == nullptr || !params_->get_value(plugin_, id, &v)) return NAN;
    return v;
}

std::string HostedClap::text(clap_id id, double value) const {
    char buffer[CLAP_NAME_SIZE] = {};
    if (params_ == nullptr || !params_->value_to_text(plugin_, id, value, buffer, sizeof buffer)) return "";
    buffer[sizeof buffer - 1] = 0;
    return buffer;
}

bool HostedClap::fromText(clap_id id, const std::string& text, double& value) const {
    return params_ != nullptr && params_->text_to_value(plugin_, id, text.c_str(), &value);
}

long HostedClap::findParameter(const std::string& key) const {
    const std::vector<clap_param_info_t> list = parameters();
    char* end = nullptr;
    const long number = std::strtol(key.c_str(), &end, 10);
    if (!key.empty() && *end == 0) {
        for (const clap_param_info_t& p : list)
            if (static_cast<long>(p.id) == number) return number;
        return -1;
    }
    for (const clap_param_info_t& p : list)
        if (::strcasecmp(p.name, key.c_str()) == 0) return static_cast<long>(p.id);
    const std::vector<std::string> keys = wordsOf(key, true);
    long found = -1;
    for (const clap_param_info_t& p : list) {
        if (!beginsEachWord(keys, wordsOf(p.name, false))) continue;
        if (found >= 0) return -1;
        found = static_cast<long>(p.id);
    }
    return found;
}

void HostedClap::flushParameters(const std::vector<std::vector<unsigned char>>& events) {
    InputList in(events);
    OutputList out([this](const clap_event_header_t* e) { hearEvent(e, true); });
    params_->flush(plugin_, &in.clap, &out.clap);
}

void HostedClap::apply(const std::vector<Setting>& settings) {
    if (settings.empty()) return;
    if (params_ == nullptr) throw std::runtime_error("the plug-in has no parameters");
    const std::vector<clap_param_info_t> list = parameters();
    for (const Setting& s : settings) {
        const long id = findParameter(s.key);
        if (id < 0) throw std::runtime_error("no parameter " + s.key);
        const auto info = std::find_if(list.begin(), list.end(), [id](const clap_param_info_t& p) { return long(p.id) == id; });
        double v = 0.0;
        if (s.text) {
            if (!fromText(clap_id(id), s.value, v))
                throw std::runtime_error("the plug-in cannot read \"" + s.value + "\" for " + info->name);
        } else {
            v = numberOption("--param " + std::string(info->name), s.value, info->min_value, info->max_value);
        }
        clap_event_param_value_t e{};
        e.header = {sizeof e, 0, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_PARAM_VALUE, 0};
        e.param_id = clap_id(id);
        e.cookie = info->cookie;
        e.note_id = -1;
        e.port_index = e.channel = e.key = -1;
        e.value = v;
        // One at a time while inactive, so that a setting's text reads in the meaning the
        // settings before it gave (an amount after its range).
        if (active_)
            pending_.push_back(bytesOf(e));
        else
            flushParameters({bytesOf(e)});
    }
}

std::vector<unsigned char> HostedClap::saveState(std::size_t step) {
    if (state_ == nullptr) throw std::runtime_error("the plug-in keeps no state");
    WriteStream stream(step);
    if (!state_->save(plugin_, &stream.clap)) return {};
    return stream.bytes;
}

bool HostedClap::loadState(const std::vector<unsigned char>& bytes, std::size_t step) {
    if (state_ == nullptr) throw std::runtime_error("the plug-in keeps no state");
    ReadStream stream(bytes, step);
    return state_->load(plugin_, &stream.clap);
}

void HostedClap::activate(double sampleRate, std::uint32_t blockSize) {
    if (active_) deactivate();
    sampleRate_ = sampleRate;
    blockSize_ = blockSize;
    if (!plugin_->activate(plugin_, sampleRate, 1, blockSize)) throw std::runtime_error("the plug-in refused to activate");
    active_ = true;
    samplePosition_ = 0.0;
    if (!plugin_->start_processing(plugin_)) {
        plugin_->deactivate(plugin_);
        active_ = false;
        throw std::runtime_error("the plug-in refused to start processing");
    }
}

void HostedClap::deactivate() {
    if (!active_) return;
    plugin_->stop_processing(plugin_);
    plugin_->deactivate(plugin_);
    active_ = false;
}

std::uint32_t HostedClap::latencyFrames() const { return latency_ ? latency_->get(plugin_) : 0; }

std::uint32_t HostedClap::channels(bool isInput) const {
    if (audioPorts_ == nullptr || audioPorts_->count(plugin_, isInput) == 0) return 0;
    clap_audio_port_info_t info{};
    return audioPorts_->get(plugin_, 0, isInput, &info) ? info.channel_count : 0;
}

void HostedClap::queueNote(std::uint32_t offset, bool on, int key, bool midi) {
    if (midi) {
        clap_event_midi_t e{};
        e.header = {sizeof e, offset, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_MIDI, 0};
        e.port_index = 0;
        e.data[0] = static_cast<std::uint8_t>(on ? 0x90 : 0x80);
        e.data[1] = static_cast<std::uint8_t>(key);
        e.data[2] = static_cast<std::uint8_t>(on ? 100 : 0);
        pending_.push_back(bytesOf(e));
        return;
    }
    clap_event_note_t e{};
    e.header = {sizeof e, offset, CLAP_CORE_EVENT_SPACE_ID, std::uint16_t(on ? CLAP_EVENT_NOTE_ON : CLAP_EVENT_NOTE_OFF), 0};
    e.note_id = -1;
    e.port_index = 0;
    e.channel = 0;
    e.key = static_cast<std::int16_t>(key);
    e.velocity = on ? 100.0 / 127.0 : 0.0;
    pending_.push_back(bytesOf(e));
}

void HostedClap::process(float** inputs, float** outputs, std::uint32_t frames) {
    clap_event_transport_t time{};
    time.header = {sizeof time, 0, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_TRANSPORT, 0};
    const double beats = samplePosition_ / sampleRate_ * transport.tempo / 60.0;
    time.flags = CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_HAS_BEATS_TIMELINE | CLAP_TRANSPORT_HAS_SECONDS_TIMELINE |
                 CLAP_TRANSPORT_HAS_TIME_SIGNATURE | (transport.playing ? CLAP_TRANSPORT_IS_PLAYING : 0);
    time.song_pos_beats = std::llround(beats * double(CLAP_BEATTIME_FACTOR));
    time.song_pos_seconds = std::llround(samplePosition_ / sampleRate_ * double(CLAP_SECTIME_FACTOR));
    time.tempo = transport.tempo;
    time.bar_start = std::llround(std::floor(beats / 4.0) * 4.0 * double(CLAP_BEATTIME_FACTOR));
    time.bar_number = static_cast<std::int32_t>(beats / 4.0);
    time.tsig_num = 4;
    time.tsig_denom = 4;

    const std::uint32_t ins = channels(true), outs = channels(false);
    clap_audio_buffer_t in{inputs, nullptr, ins, 0, 0};
    clap_audio_buffer_t out{outputs, nullptr, outs, 0, 0};
    // The plug-in wants its events in time order: a stable sort keeps the order given.
    blockEvents_.swap(pending_);
    pending_.clear();
    std::stable_sort(blockEvents_.begin(), blockEvents_.end(), [](const auto& a, const auto& b) {
        return reinterpret_cast<const clap_event_header_t*>(a.data())->time <
               reinterpret_cast<const clap_event_header_t*>(b.data())->time;
    });
    InputList inEvents(blockEvents_);
    OutputList outEvents([this](const clap_event_header_t* e) { hearEvent(e, false); });
    clap_process_t p{};
    p.steady_time = static_cast<std::int64_t>(samplePosition_);
    p.frames_count = frames;
    p.transport = transport.timeInfo ? &time : nullptr;
    p.audio_inputs = ins ? &in : nullptr;
    p.audio_outputs = outs ? &out : nullptr;
    p.audio_inputs_count = ins ? 1 : 0;
    p.audio_outputs_count = outs ? 1 : 0;
    p.in_events = &inEvents.clap;
    p.out_events = &outEvents.clap;
    plugin_->process(plugin_, &p);
    blockEvents_.clear();
    samplePosition_ += frames;
}

AudioBuffer HostedClap::render(const AudioBuffer& input, double sampleRate, std::uint32_t blockSize,
                               const RenderSettings& settings) {
    const std::uint32_t ins = channels(true), outs = channels(false);
    if (outs == 0) throw std::runtime_error("the plug-in has no outputs");
    if (input.channels < 1 || input.frames() == 0) throw std::runtime_error("the input holds no audio");
    activate(sampleRate, blockSize);

    const long latency = settings.keepLatency ? 0 : static_cast<long>(latencyFrames());
    const long inputFrames = input.frames();
    const long total = inputFrames + static_cast<long>(settings.tail * input.sampleRate) + latency;
    AudioBuffer output;
    output.sampleRate = input.sampleRate;
    output.channels = static_cast<int>(outs);
    output.samples.assign(static_cast<std::size_t>((total - latency) * outs), 0.0f);

    const auto block = static_cast<std::size_t>(blockSize);
    std::vector<std::vector<float>> inBuffers(std::max<std::uint32_t>(ins, 1), std::vector<float>(block));
    std::vector<std::vector<float>> outBuffers(outs, std::vector<float>(block));
    std::vector<float*> inPointers, outPointers;
    for (auto& b : inBuffers) inPointers.push_back(b.data());
    for (auto& b : outBuffers) outPointers.push_back(b.data());

    const bool progress = !settings.progressLabel.empty() && ::isatty(2) != 0;
    int shown = -1;
    for (long position = 0; position < total; position += static_cast<long>(block)) {
        const int n = static_cast<int>(std::min<long>(static_cast<long>(block), total - position));
        for (std::uint32_t c = 0; c < ins; ++c) {
            // A mono file feeds every input; a wider one gives each input its own channel.
            const int source = std::min(static_cast<int>(c), input.channels - 1);
            for (int k = 0; k < n; ++k) {
                const long frame = position + k;
                inBuffers[c][static_cast<std::size_t>(k)] =
                    frame < inputFrames ? input.samples[static_cast<std::size_t>(frame * input.channels + source)] : 0.0f;
            }
        }
        if (settings.note >= 0 && position == 0) queueNote(0, true, settings.note, settings.midiNote);
        if (settings.note >= 0 && position <= inputFrames && inputFrames < position + n)
            queueNote(static_cast<std::uint32_t>(inputFrames - position), false, settings.note, settings.midiNote);
        process(inPointers.data(), outPointers.data(), static_cast<std::uint32_t>(n));
        for (std::uint32_t c = 0; c < outs; ++c)
            for (int k = 0; k < n; ++k) {
                const long frame = position + k - latency;
                if (frame >= 0) output.samples[static_cast<std::size_t>(frame * outs + c)] = outBuffers[c][static_cast<std::size_t>(k)];
            }
        const int percent = static_cast<int>(100 * (position + n) / total);
        if (progress && percent != shown) {
            std::fprintf(stderr, "\rrendering %s: %3d%%", settings.progressLabel.c_str(), percent);
            shown = percent;
        }
    }
    if (progress) std::fprintf(stderr, "\n");
    deactivate();
    return output;
}

int HostedClap::serviceMainThread() {
    if (flushRequested_.exchange(false) && !processingElsewhere.load() && params_) flushParameters({});
    const double now = nowMs();
    // The list may change inside a timer's call (the editor closing): walk a copy.
    const std::vector<Timer> due = timers_;
    for (const Timer& t : due) {
        if (t.dueMs > now) continue;
        for (Timer& kept : timers_)
            if (kept.id == t.id) kept.dueMs = now + kept.periodMs;
        if (timerSupport_) timerSupport_->on_timer(plugin_, t.id);
    }
    double next = -1;
    for (const Timer& t : timers_) next = next < 0 ? t.dueMs : std::min(next, t.dueMs);
    if (next < 0) return -1;
    return static_cast<int>(std::max(0.0, std::ceil(next - nowMs())));
}

}  // namespace tw
