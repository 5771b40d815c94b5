#include "clap/ClapPlugin.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "clap/ClapGui.h"
#include "clap/ClapParameter.h"
#include "clap/ClapState.h"
#include "clap/ClapStream.h"
#include "patch/Chunk.h"

namespace tw::clap {

namespace {

// Copies text into a host buffer of `size` bytes, cut and NUL-terminated.
void copyText(char* buffer, std::size_t size, std::string_view text) {
    if (buffer == nullptr || size == 0) return;
    const std::size_t n = std::min(text.size(), size - 1);
    std::memcpy(buffer, text.data(), n);
    buffer[n] = 0;
}

Transport transportOf(const clap_event_transport_t* t) {
    Transport out;
    if (t == nullptr) return out;
    // As with VST time information: usable only with both a tempo and a position in beats.
    const bool tempo = (t->flags & CLAP_TRANSPORT_HAS_TEMPO) != 0;
    const bool beats = (t->flags & CLAP_TRANSPORT_HAS_BEATS_TIMELINE) != 0;
    if (!tempo || !beats || !(t->tempo > 0.0)) return out;
    out.valid = true;
    out.playing = (t->flags & CLAP_TRANSPORT_IS_PLAYING) != 0;
    out.tempo = t->tempo;
    out.position = static_cast<double>(t->song_pos_beats) / static_cast<double>(CLAP_BEATTIME_FACTOR);
    return out;
}

std::uint8_t dataByte(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 127)); }

// The largest state read: a bank's chunk is its header and a deflated text that inflates
// to at most the chunk's limit; deflate may grow incompressible text a little.
constexpr std::size_t stateLimit = 2 * chunk::maxInflatedLength + chunk::headerSize + programRecordSize;

}  // namespace

ClapPlugin::ClapPlugin(const clap_host_t* host, const Product& product, const clap_plugin_t& calls)
    : host_(host), product_(product), plugin_(calls) {
    plugin_.desc = &product.descriptor;
    plugin_.plugin_data = this;
}

ClapPlugin::~ClapPlugin() = default;

void ClapPlugin::init() {
    hostParams_ = hostExtension<clap_host_params_t>(CLAP_EXT_PARAMS);
    hostState_ = hostExtension<clap_host_state_t>(CLAP_EXT_STATE);
    HostPort& port = *this;
    instance_ = std::make_unique<Instance>(port, product_.makeFactory());
    const EditorFactory& editor = product_.editor();
    if (!editor.getEditorSize().isEmpty()) gui_ = std::make_unique<ClapGui>(*instance_, editor, host_);
}

bool ClapPlugin::activate(double sampleRate, std::uint32_t, std::uint32_t maxFrames) {
    const float rate = static_cast<float>(sampleRate);
    if (!(rate >= Instance::minSampleRate && rate <= Instance::maxSampleRate)) return false;
    instance_->setSampleRate(rate);
    instance_->setBlockSize(static_cast<long>(std::min<std::uint32_t>(maxFrames, Instance::maxBlockSize)));
    instance_->activate();
    transport_ = {};
    return true;
}

void ClapPlugin::deactivate() { instance_->deactivate(); }

bool ClapPlugin::startProcessing() {
    processing_.store(true);
    return true;
}

void ClapPlugin::stopProcessing() { processing_.store(false); }

void ClapPlugin::flushWaitingGestures() {
    // Gestures queued just as the host stopped processing would wait for the next block:
    // the editor's next timer asks for a flush instead (a host takes that request only from
    // the main thread, never from stop_processing's audio thread).
    if (!processing_.load() && !gestures_.empty() && hostParams_ && hostParams_->request_flush)
        hostParams_->request_flush(host_);
}

void ClapPlugin::reset() { instance_->requestReset(); }

const ParameterSpec* ClapPlugin::row(clap_id id) const {
    if (id >= static_cast<clap_id>(instance_->parameterCount())) return nullptr;
    return &instance_->descriptor().parameters[id];
}

void ClapPlugin::applyEvent(const clap_event_header_t* e, int offset) {
    if (e->space_id != CLAP_CORE_EVENT_SPACE_ID) return;
    switch (e->type) {
        case CLAP_EVENT_PARAM_VALUE: {
            const auto* p = reinterpret_cast<const clap_event_param_value_t*>(e);
            if (const ParameterSpec* r = row(p->param_id))
                instance_->setParameterFromHost(static_cast<int>(p->param_id), fromPlain(*r, p->value));
            break;
        }
        case CLAP_EVENT_NOTE_ON:
        case CLAP_EVENT_NOTE_OFF:
        case CLAP_EVENT_NOTE_CHOKE: {
            const auto* n = reinterpret_cast<const clap_event_note_t*>(e);
            // A wildcard key or channel names no note the engine could follow.
            if (n->key < 0 || n->key > 127 || n->channel < 0 || n->channel > 15) break;
            const auto channel = static_cast<std::uint8_t>(n->channel);
            const int velocity = static_cast<int>(std::lround(std::clamp(n->velocity, 0.0, 1.0) * 127.0));
            if (e->type == CLAP_EVENT_NOTE_ON)
                // A note on at velocity 0 is a note off in MIDI: the softest on is 1.
                instance_->queueMidi(offset, 0x90 | channel, dataByte(n->key), dataByte(std::max(velocity, 1)));
            else
                instance_->queueMidi(offset, 0x80 | channel, dataByte(n->key), dataByte(velocity));
            break;
        }
        case CLAP_EVENT_MIDI: {
            const auto* m = reinterpret_cast<const clap_event_midi_t*>(e);
            instance_->queueMidi(offset, m->data[0], m->data[1], m->data[2]);
            break;
        }
        default:
            break;
    }
}

double ClapPlugin::continuedPosition(const Transport& now) const {
    // The host's position comes in steps of 2^-31 beats. While it agrees with where the
    // last block left the running position, that one goes on at full precision, so that the
    // synced delay and LFO run as smoothly as under a host that counts in doubles.
    const Transport& last = transport_;
    const double step = 1.0 / static_cast<double>(CLAP_BEATTIME_FACTOR);
    if (now.valid && last.valid && now.playing && last.playing && now.tempo == last.tempo &&
        std::fabs(now.position - last.position) <= 2.0 * step)
        return last.position;
    return now.position;
}

clap_process_status ClapPlugin::process(const clap_process_t* p) {
    const std::uint32_t frames = p->frames_count;
    Transport transport = p->transport ? transportOf(p->transport) : transport_;
    if (p->transport) transport.position = continuedPosition(transport);
    float* inputs[2] = {nullptr, nullptr};
    float* outputs[2] = {nullptr, nullptr};
    if (p->audio_inputs_count > 0 && p->audio_inputs[0].data32)
        for (std::uint32_t c = 0; c < std::min<std::uint32_t>(p->audio_inputs[0].channel_count, 2); ++c)
            inputs[c] = p->audio_inputs[0].data32[c];
    if (p->audio_outputs_count > 0 && p->audio_outputs[0].data32)
        for (std::uint32_t c = 0; c < std::min<std::uint32_t>(p->audio_outputs[0].channel_count, 2); ++c)
            outputs[c] = p->audio_outputs[0].data32[c];

    const float rate = instance_->sampleRate();
    std::uint32_t start = 0;
    // Runs the audio up to `end` with the parameters and transport in force, so that a
    // host's change lands on its sample.
    auto segment = [&](std::uint32_t end) {
        if (end <= start) return;
        float* in[2] = {inputs[0] ? inputs[0] + start : nullptr, inputs[1] ? inputs[1] + start : nullptr};
        float* out[2] = {outputs[0] ? outputs[0] + start : nullptr, outputs[1] ? outputs[1] + start : nullptr};
        const int n = static_cast<int>(end - start);
        instance_->process(in, out, n, false, transport);
        if (transport.valid && transport.playing) transport.position += n * transport.tempo / 60.0 / rate;
        start = end;
    };
    const clap_input_events_t* in = p->in_events;
    const std::uint32_t count = in && in->size ? in->size(in) : 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const clap_event_header_t* e = in->get(in, i);
        if (e == nullptr) continue;
        const std::uint32_t at = std::clamp(e->time, start, frames);
        if (e->space_id == CLAP_CORE_EVENT_SPACE_ID && e->type == CLAP_EVENT_TRANSPORT) {
            segment(at);
            transport_ = transport;
            transport = transportOf(reinterpret_cast<const clap_event_transport_t*>(e));
            transport.position = continuedPosition(transport);
            continue;
        }
        if (e->space_id == CLAP_CORE_EVENT_SPACE_ID && e->type == CLAP_EVENT_PARAM_VALUE) segment(at);
        applyEvent(e, static_cast<int>(at - start));
    }
    segment(frames);
    transport_ = transport;
    sendGestures(p->out_events);
    return CLAP_PROCESS_CONTINUE;
}

std::uint32_t ClapPlugin::parameterCount() const { return static_cast<std::uint32_t>(instance_->parameterCount()); }

bool ClapPlugin::parameterInfo(std::uint32_t index, clap_param_info_t* info) {
    const int id = instance_->parameterId(static_cast<int>(index));
    if (id < 0 || info == nullptr) return false;
    const ParameterSpec& r = instance_->descriptor().parameters[static_cast<std::size_t>(id)];
    const PlainRange range = plainRange(r);
    *info = {};
    info->id = static_cast<clap_id>(id);
    info->flags = flagsOf(r);
    info->cookie = nullptr;
    copyText(info->name, sizeof info->name, r.label);
    copyText(info->module, sizeof info->module, "");
    info->min_value = range.minimum;
    info->max_value = range.maximum;
    info->default_value = toPlain(r, r.defaultValue);
    return true;
}

bool ClapPlugin::parameterValue(clap_id id, double* value) {
    const ParameterSpec* r = row(id);
    if (r == nullptr || value == nullptr) return false;
    *value = toPlain(*r, instance_->parameterValue(static_cast<int>(id)));
    return true;
}

bool ClapPlugin::valueToText(clap_id id, double value, char* display, std::uint32_t size) {
    const ParameterSpec* r = row(id);
    if (r == nullptr || display == nullptr || size == 0) return false;
    std::string text = instance_->parameterText(static_cast<int>(id), fromPlain(*r, value));
    if (!r->unit.empty()) text += " " + r->unit;
    copyText(display, size, text);
    return true;
}

bool ClapPlugin::textToValue(clap_id id, const char* display, double* value) {
    const ParameterSpec* r = row(id);
    if (r == nullptr || display == nullptr || value == nullptr) return false;
    std::string_view text(display);
    // The unit valueToText adds is read back too.
    if (!r->unit.empty() && text.size() > r->unit.size() && text.substr(text.size() - r->unit.size()) == r->unit)
        text.remove_suffix(r->unit.size());
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    float parameter = 0.0f;
    if (!instance_->parameterFromText(static_cast<int>(id), text, parameter)) return false;
    *value = toPlain(*r, parameter);
    return true;
}

void ClapPlugin::flush(const clap_input_events_t* in, const clap_output_events_t* out) {
    const std::uint32_t count = in && in->size ? in->size(in) : 0;
    for (std::uint32_t i = 0; i < count; ++i)
        if (const clap_event_header_t* e = in->get(in, i))
            if (e->space_id == CLAP_CORE_EVENT_SPACE_ID && e->type == CLAP_EVENT_PARAM_VALUE) applyEvent(e, 0);
    sendGestures(out);
}

void ClapPlugin::sendGestures(const clap_output_events_t* out) {
    if (out == nullptr || out->try_push == nullptr) return;
    Gesture g;
    while (gestures_.peek(g)) {
        const ParameterSpec& r = instance_->descriptor().parameters[static_cast<std::size_t>(g.id)];
        bool sent;
        if (g.kind == Gesture::Kind::value) {
            clap_event_param_value_t e{};
            e.header = {sizeof e, 0, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_PARAM_VALUE, 0};
            e.param_id = static_cast<clap_id>(g.id);
            e.note_id = -1;
            e.port_index = e.channel = e.key = -1;
            e.value = toPlain(r, g.value);
            sent = out->try_push(out, &e.header);
        } else {
            clap_event_param_gesture_t e{};
            const std::uint16_t type = g.kind == Gesture::Kind::begin ? CLAP_EVENT_PARAM_GESTURE_BEGIN
                                                                      : CLAP_EVENT_PARAM_GESTURE_END;
            e.header = {sizeof e, 0, CLAP_CORE_EVENT_SPACE_ID, type, 0};
            e.param_id = static_cast<clap_id>(g.id);
            sent = out->try_push(out, &e.header);
        }
        // A full list keeps the rest for the next call.
        if (!sent) break;
        gestures_.pop();
    }
}

void ClapPlugin::queueGesture(const Gesture& gesture) {
    gestures_.push(gesture);
    // While the host processes, the next block takes them; otherwise it is asked to flush.
    if (!processing_.load() && hostParams_ && hostParams_->request_flush) hostParams_->request_flush(host_);
}

void ClapPlugin::beginGesture(int id) { queueGesture({Gesture::Kind::begin, id, 0.0f}); }

void ClapPlugin::endGesture(int id) {
    queueGesture({Gesture::Kind::end, id, 0.0f});
    if (hostState_ && hostState_->mark_dirty) hostState_->mark_dirty(host_);
}

void ClapPlugin::automate(int id, float value) { queueGesture({Gesture::Kind::value, id, value}); }

void ClapPlugin::updateDisplay() {
    if (hostParams_ && hostParams_->rescan) hostParams_->rescan(host_, CLAP_PARAM_RESCAN_VALUES | CLAP_PARAM_RESCAN_TEXT);
    if (hostState_ && hostState_->mark_dirty) hostState_->mark_dirty(host_);
}

bool ClapPlugin::saveState(const clap_ostream_t* stream) {
    std::string bytes;
    try {
        bytes = saveClapState(*instance_);
    } catch (const std::exception&) {
        return false;
    }
    return writeWhole(stream, bytes);
}

bool ClapPlugin::loadState(const clap_istream_t* stream) {
    std::string bytes;
    if (!readWhole(stream, bytes, stateLimit) || bytes.empty()) return false;
    try {
        loadClapState(*instance_, bytes);
    } catch (const std::exception&) {
        return false;
    }
    if (hostParams_ && hostParams_->rescan) hostParams_->rescan(host_, CLAP_PARAM_RESCAN_VALUES | CLAP_PARAM_RESCAN_TEXT);
    return true;
}

std::uint32_t ClapPlugin::audioPortCount(bool isInput) const {
    for (const BusSpec& bus : instance_->descriptor().buses)
        if ((bus.direction == 0) == isInput) return 1;
    return 0;
}

bool ClapPlugin::audioPortInfo(std::uint32_t index, bool isInput, clap_audio_port_info_t* info) const {
    if (index != 0 || info == nullptr) return false;
    for (const BusSpec& bus : instance_->descriptor().buses) {
        if ((bus.direction == 0) != isInput) continue;
        *info = {};
        info->id = 0;
        copyText(info->name, sizeof info->name, bus.name);
        info->flags = CLAP_AUDIO_PORT_IS_MAIN;
        info->channel_count = bus.stereo ? 2 : 1;
        info->port_type = bus.stereo ? CLAP_PORT_STEREO : CLAP_PORT_MONO;
        info->in_place_pair = CLAP_INVALID_ID;
        return true;
    }
    return false;
}

std::uint32_t ClapPlugin::notePortCount(bool isInput) const {
    return isInput && instance_->descriptor().receivesMidi ? 1 : 0;
}

bool ClapPlugin::notePortInfo(std::uint32_t index, bool isInput, clap_note_port_info_t* info) const {
    if (index != 0 || !isInput || info == nullptr || !instance_->descriptor().receivesMidi) return false;
    *info = {};
    info->id = 0;
    info->supported_dialects = CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI;
    info->preferred_dialect = CLAP_NOTE_DIALECT_MIDI;
    copyText(info->name, sizeof info->name, "MIDI In");
    return true;
}

}  // namespace tw::clap
