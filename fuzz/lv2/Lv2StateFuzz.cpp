// The LV2 plug-in's state as a host hands it back: the first byte chooses what the state
// holds (the bank with or without a current program, or a preset's program) and which type
// the host claims; the rest is the value. The plug-in answers success or an error, never
// crashes, and always saves a state afterwards.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include <lv2/atom/atom.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include "lv2/Lv2Entry.h"
#include "product/TidewakeLv2.h"

namespace {

std::map<std::string, LV2_URID> ids;
LV2_URID mapUri(LV2_URID_Map_Handle, const char* uri) {
    return ids.emplace(uri, static_cast<LV2_URID>(ids.size() + 1)).first->second;
}
LV2_URID_Map map{nullptr, mapUri};
const LV2_Feature mapFeature{LV2_URID__map, &map};

struct Held {
    std::map<LV2_URID, std::pair<std::string, LV2_URID>> values;
};

const void* retrieve(LV2_State_Handle h, std::uint32_t key, std::size_t* size, std::uint32_t* type, std::uint32_t* flags) {
    auto& values = static_cast<Held*>(h)->values;
    auto it = values.find(key);
    if (it == values.end()) return nullptr;
    *size = it->second.first.size();
    *type = it->second.second;
    *flags = LV2_STATE_IS_POD;
    return it->second.first.data();
}

LV2_State_Status store(LV2_State_Handle, std::uint32_t, const void*, std::size_t, std::uint32_t, std::uint32_t) {
    return LV2_STATE_SUCCESS;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0) return 0;
    static LV2_Handle handle = [] {
        ::setenv("XDG_CONFIG_HOME", "/nonexistent/tidewake-fuzz", 1);
        const LV2_Descriptor* d = tw::lv2::pluginDescriptor(tw::tidewakeLv2());
        const LV2_Feature* features[] = {&mapFeature, nullptr};
        return d->instantiate(d, 48000.0, "/nonexistent/", features);
    }();
    if (handle == nullptr) __builtin_trap();
    const LV2_Descriptor* d = tw::lv2::pluginDescriptor(tw::tidewakeLv2());
    const auto* state = static_cast<const LV2_State_Interface*>(d->extension_data(LV2_STATE__interface));

    const unsigned char choice = data[0];
    const std::string value(reinterpret_cast<const char*>(data + 1), size - 1);
    const LV2_URID type = mapUri(nullptr, (choice & 4) ? LV2_ATOM__Int : LV2_ATOM__Chunk);
    Held held;
    if (choice & 1) {
        held.values[mapUri(nullptr, "urn:marlinworks:tidewake#program")] = {value, type};
    } else {
        held.values[mapUri(nullptr, "urn:marlinworks:tidewake#state")] = {value, type};
        if (choice & 2) {
            // A current program's number from the input's last bytes, in range or not.
            std::int32_t program = 0;
            std::memcpy(&program, value.data() + (value.size() >= 4 ? value.size() - 4 : 0), std::min<std::size_t>(4, value.size()));
            held.values[mapUri(nullptr, "urn:marlinworks:tidewake#currentProgram")] =
                {std::string(reinterpret_cast<const char*>(&program), choice & 8 ? 2 : 4), mapUri(nullptr, LV2_ATOM__Int)};
        }
    }
    state->restore(handle, retrieve, &held, 0, nullptr);
    if (state->save(handle, store, nullptr, 0, nullptr) != LV2_STATE_SUCCESS) __builtin_trap();
    d->run(handle, 0);
    return 0;
}
