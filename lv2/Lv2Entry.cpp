#include "lv2/Lv2Entry.h"

#include <cstdint>
#include <cstring>
#include <exception>
#include <optional>

#include <lv2/atom/atom.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/options/options.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include "core/EntryFault.h"
#include "lv2/Lv2Plugin.h"
#include "lv2/Lv2Ui.h"

namespace tw::lv2 {

namespace {

// The host's descriptor with the product behind it: every callback gets the descriptor or
// an instance made from it, and finds the product there.
struct PluginEntry {
    LV2_Descriptor lv2;
    const Product* product;
};

struct UiEntry {
    LV2UI_Descriptor lv2;
    const Product* product;
};

struct UiInstance {
    const Product* product;
    std::unique_ptr<Lv2Ui> ui;
};

struct PluginInstance {
    const Product* product;
    std::unique_ptr<Lv2Plugin> plugin;
};

PluginInstance* of(LV2_Handle handle) { return static_cast<PluginInstance*>(handle); }
UiInstance* uiOf(LV2UI_Handle handle) { return static_cast<UiInstance*>(handle); }

// Each entry point catches everything: nothing may unwind into a host.
template <typename Result, typename Body>
Result guarded(const Product* product, const char* entry, Result failed, Body body) {
    try {
        return body();
    } catch (...) {
        reportEntryFault(product ? product->name : "plug-in", entry);
        return failed;
    }
}

LV2_Handle instantiate(const LV2_Descriptor* descriptor, double rate, const char*, const LV2_Feature* const* features) {
    const Product* product = reinterpret_cast<const PluginEntry*>(descriptor)->product;
    return guarded<LV2_Handle>(product, "instantiate", nullptr, [&] {
        auto instance = std::make_unique<PluginInstance>();
        instance->product = product;
        instance->plugin = std::make_unique<Lv2Plugin>(product->pluginUri, rate, features, product->makeFactory());
        return instance.release();
    });
}

void connectPort(LV2_Handle h, uint32_t port, void* data) {
    guarded<int>(of(h)->product, "connect_port", 0, [&] {
        of(h)->plugin->connect(port, data);
        return 0;
    });
}

void activate(LV2_Handle h) {
    guarded<int>(of(h)->product, "activate", 0, [&] {
        of(h)->plugin->activate();
        return 0;
    });
}

void run(LV2_Handle h, uint32_t frames) {
    guarded<int>(of(h)->product, "run", 0, [&] {
        of(h)->plugin->run(frames);
        return 0;
    });
}

void deactivate(LV2_Handle h) {
    guarded<int>(of(h)->product, "deactivate", 0, [&] {
        of(h)->plugin->deactivate();
        return 0;
    });
}

void cleanup(LV2_Handle h) {
    const Product* product = of(h)->product;
    guarded<int>(product, "cleanup", 0, [&] {
        delete of(h);
        return 0;
    });
}

LV2_State_Status save(LV2_Handle h, LV2_State_Store_Function store, LV2_State_Handle handle, uint32_t,
                      const LV2_Feature* const*) {
    return guarded(of(h)->product, "state save", LV2_STATE_ERR_UNKNOWN,
                   [&] { return of(h)->plugin->save(store, handle); });
}

LV2_State_Status restore(LV2_Handle h, LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle, uint32_t,
                         const LV2_Feature* const*) {
    return guarded(of(h)->product, "state restore", LV2_STATE_ERR_UNKNOWN,
                   [&] { return of(h)->plugin->restore(retrieve, handle); });
}

const void* extensionData(const char* uri) {
    static const LV2_State_Interface state{save, restore};
    return std::strcmp(uri, LV2_STATE__interface) == 0 ? &state : nullptr;
}

// The UI.

const LV2_Feature* feature(const LV2_Feature* const* features, const char* uri) {
    for (; features && *features; ++features)
        if (std::strcmp((*features)->URI, uri) == 0) return *features;
    return nullptr;
}

// The host's ui:scaleFactor among its options: a Float, 1 for 100 %.
std::optional<double> scaleFactorOption(const LV2_Feature* const* features) {
    const LV2_Feature* mapFeature = feature(features, LV2_URID__map);
    const LV2_Feature* optionsFeature = feature(features, LV2_OPTIONS__options);
    if (mapFeature == nullptr || mapFeature->data == nullptr || optionsFeature == nullptr || optionsFeature->data == nullptr)
        return std::nullopt;
    const auto* map = static_cast<const LV2_URID_Map*>(mapFeature->data);
    const LV2_URID scaleFactor = map->map(map->handle, LV2_UI__scaleFactor);
    const LV2_URID floatType = map->map(map->handle, LV2_ATOM__Float);
    for (auto* o = static_cast<const LV2_Options_Option*>(optionsFeature->data); o->key != 0; ++o)
        if (o->key == scaleFactor && o->type == floatType && o->size == sizeof(float) && o->value != nullptr)
            return *static_cast<const float*>(o->value);
    return std::nullopt;
}

LV2UI_Handle instantiateUi(const LV2UI_Descriptor* descriptor, const char*, const char*, LV2UI_Write_Function write,
                           LV2UI_Controller controller, LV2UI_Widget* widget, const LV2_Feature* const* features) {
    const Product* product = reinterpret_cast<const UiEntry*>(descriptor)->product;
    return guarded<LV2UI_Handle>(product, "UI instantiate", nullptr, [&]() -> LV2UI_Handle {
        const LV2_Feature* parent = feature(features, LV2_UI__parent);
        const LV2_Feature* access = feature(features, LV2_INSTANCE_ACCESS_URI);
        // Both are required in the description; a host that gives neither gets no UI.
        if (parent == nullptr || access == nullptr || access->data == nullptr || write == nullptr) return nullptr;
        Lv2Ui::Host host;
        host.write = write;
        host.controller = controller;
        if (const LV2_Feature* f = feature(features, LV2_UI__touch)) host.touch = static_cast<const LV2UI_Touch*>(f->data);
        if (const LV2_Feature* f = feature(features, LV2_UI__resize))
            host.resize = static_cast<const LV2UI_Resize*>(f->data);
        host.scale = scaleFactorOption(features);
        auto instance = std::make_unique<UiInstance>();
        instance->product = product;
        Lv2Plugin& plugin = pluginOf(access->data);
        instance->ui = std::make_unique<Lv2Ui>(plugin, product->editor(), host,
                                               reinterpret_cast<std::uintptr_t>(parent->data));
        *widget = reinterpret_cast<LV2UI_Widget>(instance->ui->widget());
        return instance.release();
    });
}

void cleanupUi(LV2UI_Handle h) {
    const Product* product = uiOf(h)->product;
    guarded<int>(product, "UI cleanup", 0, [&] {
        delete uiOf(h);
        return 0;
    });
}

void portEvent(LV2UI_Handle h, uint32_t port, uint32_t size, uint32_t format, const void* buffer) {
    if (format != 0 || size != sizeof(float) || buffer == nullptr) return;
    guarded<int>(uiOf(h)->product, "UI port_event", 0, [&] {
        uiOf(h)->ui->portEvent(port, *static_cast<const float*>(buffer));
        return 0;
    });
}

int idleUi(LV2UI_Handle h) {
    return guarded<int>(uiOf(h)->product, "UI idle", 0, [&] {
        uiOf(h)->ui->idle();
        return 0;
    });
}

const void* uiExtensionData(const char* uri) {
    static const LV2UI_Idle_Interface idle{idleUi};
    return std::strcmp(uri, LV2_UI__idleInterface) == 0 ? &idle : nullptr;
}

}  // namespace

Lv2Plugin& pluginOf(LV2_Handle handle) { return *of(handle)->plugin; }

const LV2_Descriptor* pluginDescriptor(const Product& product) {
    static PluginEntry entry{{product.pluginUri, instantiate, connectPort, activate, run, deactivate, cleanup, extensionData},
                             &product};
    return &entry.lv2;
}

const LV2UI_Descriptor* uiDescriptor(const Product& product) {
    static UiEntry entry{{product.uiUri, instantiateUi, cleanupUi, portEvent, uiExtensionData}, &product};
    return &entry.lv2;
}

}  // namespace tw::lv2
