#include "lv2/Lv2Plugin.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>
#include <lv2/time/time.h>

namespace tw::lv2 {

namespace {

const LV2_URID_Map* findMap(const LV2_Feature* const* features) {
    for (; features && *features; ++features)
        if (std::strcmp((*features)->URI, LV2_URID__map) == 0) return static_cast<const LV2_URID_Map*>((*features)->data);
    return nullptr;
}

double numberOf(const LV2_Atom* atom, const Uris& u, double otherwise) {
    if (atom == nullptr) return otherwise;
    if (atom->type == u.atomFloat) return reinterpret_cast<const LV2_Atom_Float*>(atom)->body;
    if (atom->type == u.atomDouble) return reinterpret_cast<const LV2_Atom_Double*>(atom)->body;
    if (atom->type == u.atomInt) return reinterpret_cast<const LV2_Atom_Int*>(atom)->body;
    if (atom->type == u.atomLong) return static_cast<double>(reinterpret_cast<const LV2_Atom_Long*>(atom)->body);
    return otherwise;
}

}  // namespace

Uris::Uris(const LV2_URID_Map* map, const std::string& pluginUri) {
    // Without the map (a bare host such as lv2apply) every URID stays 0, which no event
    // or state key carries: the events port and the state are then unused.
    auto m = [map](const char* uri) -> LV2_URID { return map ? map->map(map->handle, uri) : 0; };
    atomChunk = m(LV2_ATOM__Chunk);
    atomSequence = m(LV2_ATOM__Sequence);
    atomObject = m(LV2_ATOM__Object);
    atomBlank = m(LV2_ATOM__Blank);
    atomFloat = m(LV2_ATOM__Float);
    atomDouble = m(LV2_ATOM__Double);
    atomInt = m(LV2_ATOM__Int);
    atomLong = m(LV2_ATOM__Long);
    midiEvent = m(LV2_MIDI__MidiEvent);
    timePosition = m(LV2_TIME__Position);
    timeSpeed = m(LV2_TIME__speed);
    timeBar = m(LV2_TIME__bar);
    timeBarBeat = m(LV2_TIME__barBeat);
    timeBeatsPerBar = m(LV2_TIME__beatsPerBar);
    timeBeatUnit = m(LV2_TIME__beatUnit);
    timeBeatsPerMinute = m(LV2_TIME__beatsPerMinute);
    bankKey = m((pluginUri + "#state").c_str());
    currentProgramKey = m((pluginUri + "#currentProgram").c_str());
    programKey = m((pluginUri + "#program").c_str());
}

Lv2Plugin::Lv2Plugin(const std::string& pluginUri, double sampleRate, const LV2_Feature* const* features,
                     std::unique_ptr<ModelFactory> factory)
    : instance_(*this, std::move(factory)),
      uris_(findMap(features), pluginUri),
      parameterCount_(instance_.parameterCount()),
      controls_(static_cast<std::size_t>(parameterCount_), nullptr),
      seen_(static_cast<std::size_t>(parameterCount_), 0.0f) {
    const float rate = static_cast<float>(sampleRate);
    if (!(rate >= Instance::minSampleRate && rate <= Instance::maxSampleRate))
        throw std::runtime_error("sample rate " + std::to_string(sampleRate) + " is outside what the engine runs at");
    instance_.setSampleRate(rate);
    seeParameters();
}

Lv2Plugin::~Lv2Plugin() = default;

int Lv2Plugin::idOf(std::uint32_t port) const {
    if (port < firstControl) return -1;
    return instance_.parameterId(static_cast<int>(port - firstControl));
}

void Lv2Plugin::connect(std::uint32_t port, void* data) {
    if (port <= outputRight) {
        audio_[port] = static_cast<float*>(data);
    } else if (port == events) {
        events_ = static_cast<const LV2_Atom_Sequence*>(data);
    } else if (port == latency) {
        latency_ = static_cast<float*>(data);
    } else if (port - firstControl < static_cast<std::uint32_t>(parameterCount_)) {
        controls_[port - firstControl] = static_cast<const float*>(data);
    }
}

void Lv2Plugin::activate() { instance_.activate(); }

void Lv2Plugin::deactivate() { instance_.deactivate(); }

void Lv2Plugin::seeParameters() {
    const ModelDescriptor& d = instance_.descriptor();
    for (int i = 0; i < parameterCount_; ++i) {
        const int id = instance_.parameterId(i);
        seen_[static_cast<std::size_t>(i)] = toPort(d.parameters[static_cast<std::size_t>(id)], instance_.parameterValue(id));
    }
}

void Lv2Plugin::applyControls() {
    const ModelDescriptor& d = instance_.descriptor();
    for (int i = 0; i < parameterCount_; ++i) {
        const float* port = controls_[static_cast<std::size_t>(i)];
        if (port == nullptr) continue;
        const float value = *port;
        float& seen = seen_[static_cast<std::size_t>(i)];
        // Bitwise, so that a NaN from the host is taken once and not every block.
        if (std::memcmp(&value, &seen, sizeof value) == 0) continue;
        seen = value;
        const int id = instance_.parameterId(i);
        instance_.setParameterFromHost(id, fromPort(d.parameters[static_cast<std::size_t>(id)], value));
    }
}

void Lv2Plugin::readPosition(const LV2_Atom_Object* position) {
    const LV2_Atom *bar = nullptr, *barBeat = nullptr, *beatsPerBar = nullptr, *beatUnit = nullptr, *bpm = nullptr,
                   *speed = nullptr;
    lv2_atom_object_get(position, uris_.timeBar, &bar, uris_.timeBarBeat, &barBeat, uris_.timeBeatsPerBar,
                        &beatsPerBar, uris_.timeBeatUnit, &beatUnit, uris_.timeBeatsPerMinute, &bpm, uris_.timeSpeed,
                        &speed, 0);
    beatsPerBar_ = numberOf(beatsPerBar, uris_, beatsPerBar_);
    const double unit = numberOf(beatUnit, uris_, beatUnit_);
    if (unit > 0.0) beatUnit_ = unit;
    speed_ = numberOf(speed, uris_, speed_);
    // The host counts in its beat unit; the engine in quarter notes.
    const double quarters = 4.0 / beatUnit_;
    if (bpm) {
        transport_.tempo = numberOf(bpm, uris_, 120.0) * quarters;
        positionKnown_ = true;
    }
    if (bar || barBeat) {
        const double bars = numberOf(bar, uris_, 0.0), beat = numberOf(barBeat, uris_, 0.0);
        transport_.position = (bars * beatsPerBar_ + beat) * quarters;
        positionKnown_ = true;
    }
    transport_.playing = speed_ != 0.0;
    transport_.valid = positionKnown_;
}

void Lv2Plugin::run(std::uint32_t frames) {
    if (latency_) *latency_ = static_cast<float>(instance_.latency());
    applyControls();
    if (frames == 0) return;

    const float rate = instance_.sampleRate();
    std::uint32_t start = 0;
    auto segment = [&](std::uint32_t end) {
        if (end <= start) return;
        float* in[2] = {audio_[inputLeft] ? audio_[inputLeft] + start : nullptr,
                        audio_[inputRight] ? audio_[inputRight] + start : nullptr};
        float* out[2] = {audio_[outputLeft] ? audio_[outputLeft] + start : nullptr,
                         audio_[outputRight] ? audio_[outputRight] + start : nullptr};
        const int n = static_cast<int>(end - start);
        instance_.process(in, out, n, false, transport_);
        if (transport_.valid && transport_.playing)
            transport_.position += n * speed_ * transport_.tempo / 60.0 / rate;
        start = end;
    };
    if (events_ && uris_.atomSequence != 0 && events_->atom.type == uris_.atomSequence) {
        LV2_ATOM_SEQUENCE_FOREACH(events_, ev) {
            const std::uint32_t at = std::clamp<std::uint32_t>(static_cast<std::uint32_t>(std::max<std::int64_t>(ev->time.frames, 0)), start, frames);
            if (ev->body.type == uris_.midiEvent) {
                const auto* bytes = reinterpret_cast<const std::uint8_t*>(ev + 1);
                const std::uint32_t size = ev->body.size;
                if (size >= 1 && size <= 3)
                    instance_.queueMidi(static_cast<int>(at - start), bytes[0], size > 1 ? bytes[1] : 0,
                                        size > 2 ? bytes[2] : 0);
            } else if (ev->body.type == uris_.atomObject || ev->body.type == uris_.atomBlank) {
                const auto* object = reinterpret_cast<const LV2_Atom_Object*>(&ev->body);
                if (object->body.otype == uris_.timePosition) {
                    // The block is cut where the transport changes, so that the synced
                    // delay and LFO follow it from that sample on.
                    segment(at);
                    readPosition(object);
                }
            }
        }
    }
    segment(frames);
}

LV2_State_Status Lv2Plugin::save(LV2_State_Store_Function store, LV2_State_Handle handle) {
    if (uris_.bankKey == 0) return LV2_STATE_ERR_NO_FEATURE;
    std::string bytes;
    try {
        bytes = instance_.saveState(false);
    } catch (const std::exception&) {
        return LV2_STATE_ERR_UNKNOWN;
    }
    const std::uint32_t flags = LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE;
    const LV2_State_Status status = store(handle, uris_.bankKey, bytes.data(), bytes.size(), uris_.atomChunk, flags);
    if (status != LV2_STATE_SUCCESS) return status;
    const std::int32_t program = instance_.getCurrentProgram();
    return store(handle, uris_.currentProgramKey, &program, sizeof program, uris_.atomInt, flags);
}

LV2_State_Status Lv2Plugin::restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle) {
    if (uris_.bankKey == 0) return LV2_STATE_ERR_NO_FEATURE;
    std::size_t size = 0;
    std::uint32_t type = 0, flags = 0;
    // A session's state holds the bank; a preset's, one program for the current one.
    bool isPreset = false;
    const void* data = retrieve(handle, uris_.bankKey, &size, &type, &flags);
    if (data == nullptr) {
        data = retrieve(handle, uris_.programKey, &size, &type, &flags);
        isPreset = true;
    }
    if (data == nullptr) return LV2_STATE_ERR_NO_PROPERTY;
    try {
        instance_.loadState(std::string_view(static_cast<const char*>(data), size), isPreset);
    } catch (const std::exception&) {
        return LV2_STATE_ERR_UNKNOWN;
    }
    if (!isPreset) {
        const void* program = retrieve(handle, uris_.currentProgramKey, &size, &type, &flags);
        if (program && type == uris_.atomInt && size == sizeof(std::int32_t))
            instance_.setCurrentProgram(*static_cast<const std::int32_t*>(program));
    }
    // The state holds the exact values: a port the host sets to the same value leaves
    // them alone, one it sets otherwise (changed after the state was taken) wins.
    seeParameters();
    if (ui_) ui_->portsChanged();
    return LV2_STATE_SUCCESS;
}

void Lv2Plugin::beginGesture(int id) {
    if (ui_) ui_->touch(portOf(id), true);
}

void Lv2Plugin::endGesture(int id) {
    if (ui_) ui_->touch(portOf(id), false);
}

void Lv2Plugin::automate(int id, float value) {
    if (ui_) ui_->write(portOf(id), toPort(instance_.descriptor().parameters[static_cast<std::size_t>(id)], value));
}

void Lv2Plugin::updateDisplay() {
    if (ui_) ui_->portsChanged();
}

}  // namespace tw::lv2
