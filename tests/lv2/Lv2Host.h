// A small LV2 host for the tests: the URID map, one plug-in instance made through the
// library's own descriptor with buffers on every port, and a state store.
#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <lv2/atom/forge.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include "lv2/Lv2Entry.h"
#include "lv2/Lv2Plugin.h"
#include "product/TidewakeLv2.h"

namespace tw::test {

class UridMap {
public:
    UridMap() : feature_{LV2_URID__map, &map_} {}
    LV2_URID map(const std::string& uri) {
        auto [it, added] = ids_.emplace(uri, static_cast<LV2_URID>(ids_.size() + 1));
        return it->second;
    }
    LV2_URID_Map* lv2() { return &map_; }
    const LV2_Feature* feature() const { return &feature_; }

private:
    static LV2_URID mapUri(LV2_URID_Map_Handle handle, const char* uri) { return static_cast<UridMap*>(handle)->map(uri); }
    std::map<std::string, LV2_URID> ids_;
    LV2_URID_Map map_{this, mapUri};
    LV2_Feature feature_;
};

// What a host keeps of a plug-in's state: each property's bytes, type and flags.
struct StateStore {
    struct Value {
        std::string bytes;
        std::uint32_t type, flags;
    };
    std::map<std::uint32_t, Value> values;

    static LV2_State_Status store(LV2_State_Handle h, std::uint32_t key, const void* value, std::size_t size,
                                  std::uint32_t type, std::uint32_t flags) {
        static_cast<StateStore*>(h)->values[key] = {std::string(static_cast<const char*>(value), size), type, flags};
        return LV2_STATE_SUCCESS;
    }
    static const void* retrieve(LV2_State_Handle h, std::uint32_t key, std::size_t* size, std::uint32_t* type,
                                std::uint32_t* flags) {
        auto& values = static_cast<StateStore*>(h)->values;
        auto it = values.find(key);
        if (it == values.end()) return nullptr;
        *size = it->second.bytes.size();
        *type = it->second.type;
        *flags = it->second.flags;
        return it->second.bytes.data();
    }
};

class Lv2Host {
public:
    static constexpr std::uint32_t maxFrames = 4096;

    explicit Lv2Host(UridMap& map, double rate = 48000.0) : map_(map) {
        const LV2_Feature* features[] = {map.feature(), nullptr};
        descriptor = lv2::pluginDescriptor(tidewakeLv2());
        handle = descriptor->instantiate(descriptor, rate, "/nonexistent/", features);
        if (!handle) return;
        for (auto& b : audio) b.assign(maxFrames, 0.0f);
        for (std::uint32_t p = 0; p < 4; ++p) descriptor->connect_port(handle, p, audio[p].data());
        descriptor->connect_port(handle, lv2::events, events.data());
        descriptor->connect_port(handle, lv2::latency, &latency);
        controls.assign(19, 0.0f);
        showParameters();  // as a host starts from the description's defaults
        for (std::uint32_t i = 0; i < 19; ++i) descriptor->connect_port(handle, lv2::firstControl + i, &controls[i]);
        clearEvents();
        descriptor->activate(handle);
    }
    ~Lv2Host() {
        if (!handle) return;
        descriptor->deactivate(handle);
        descriptor->cleanup(handle);
    }
    Lv2Host(const Lv2Host&) = delete;
    Lv2Host& operator=(const Lv2Host&) = delete;

    lv2::Lv2Plugin& plugin() { return lv2::pluginOf(handle); }
    // The ports show the current program's values, as the plug-in's UI makes them.
    void showParameters() {
        for (std::uint32_t i = 0; i < 19; ++i) {
            const int id = plugin().idOf(lv2::firstControl + i);
            const ParameterSpec& row = plugin().instance().descriptor().parameters[static_cast<std::size_t>(id)];
            controls[i] = lv2::toPort(row, plugin().instance().parameterValue(id));
        }
    }
    float& control(const std::string& symbol) {
        const ModelDescriptor& d = plugin().instance().descriptor();
        for (std::uint32_t i = 0; i < 19; ++i)
            if (d.parameters[static_cast<std::size_t>(plugin().idOf(lv2::firstControl + i))].name == symbol) return controls[i];
        throw std::runtime_error("no port " + symbol);
    }
    void run(std::uint32_t frames) { descriptor->run(handle, frames); }
    const LV2_State_Interface* state() {
        return static_cast<const LV2_State_Interface*>(descriptor->extension_data(LV2_STATE__interface));
    }
    LV2_State_Status save(StateStore& store) { return state()->save(handle, StateStore::store, &store, 0, nullptr); }
    LV2_State_Status restore(StateStore& store) {
        return state()->restore(handle, StateStore::retrieve, &store, 0, nullptr);
    }

    // The events port: an empty sequence, or one the test forges.
    void clearEvents() {
        lv2_atom_forge_init(&forge, map_.lv2());
        lv2_atom_forge_set_buffer(&forge, reinterpret_cast<std::uint8_t*>(events.data()), events.size() * 8);
        lv2_atom_forge_sequence_head(&forge, &frame, 0);
    }

    UridMap& map_;
    const LV2_Descriptor* descriptor = nullptr;
    LV2_Handle handle = nullptr;
    std::vector<float> audio[4];
    std::vector<std::uint64_t> events = std::vector<std::uint64_t>(4096);
    float latency = -1.0f;
    std::vector<float> controls;
    LV2_Atom_Forge forge{};
    LV2_Atom_Forge_Frame frame{};
};

}  // namespace tw::test
