#include "clap/ClapEntry.h"

#include <cstring>

#include <clap/ext/audio-ports.h>
#include <clap/ext/gui.h>
#include <clap/ext/latency.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/ext/timer-support.h>

#include "clap/ClapGui.h"
#include "clap/ClapPlugin.h"
#include "core/EntryFault.h"

namespace tw::clap {

namespace {

struct FactoryEntry {
    clap_plugin_factory_t clap;
    const Product* product;
};

ClapPlugin& of(const clap_plugin_t* p) { return *ClapPlugin::of(p); }

// Each entry point catches everything: nothing may unwind into a host, which gets the
// neutral answer `failed` instead.
template <typename Result, typename Body>
Result guarded(const clap_plugin_t* p, const char* entry, Result failed, Body body) {
    try {
        return body(of(p));
    } catch (...) {
        reportEntryFault(of(p).product().name, entry);
        return failed;
    }
}

// The same for calls with nothing to answer.
template <typename Body>
void guardedVoid(const clap_plugin_t* p, const char* entry, Body body) {
    guarded<int>(p, entry, 0, [&](ClapPlugin& c) {
        body(c);
        return 0;
    });
}

// The editor's calls, for a plug-in that has one.
template <typename Result, typename Body>
Result withGui(const clap_plugin_t* p, const char* entry, Result failed, Body body) {
    return guarded<Result>(p, entry, failed, [&](ClapPlugin& c) { return c.gui() ? body(*c.gui()) : failed; });
}

const clap_plugin_params_t paramsExtension{
    [](const clap_plugin_t* p) { return guarded<std::uint32_t>(p, "params.count", 0, [](ClapPlugin& c) { return c.parameterCount(); }); },
    [](const clap_plugin_t* p, std::uint32_t index, clap_param_info_t* info) {
        return guarded(p, "params.get_info", false, [&](ClapPlugin& c) { return c.parameterInfo(index, info); });
    },
    [](const clap_plugin_t* p, clap_id id, double* value) {
        return guarded(p, "params.get_value", false, [&](ClapPlugin& c) { return c.parameterValue(id, value); });
    },
    [](const clap_plugin_t* p, clap_id id, double value, char* display, std::uint32_t size) {
        return guarded(p, "params.value_to_text", false,
                       [&](ClapPlugin& c) { return c.valueToText(id, value, display, size); });
    },
    [](const clap_plugin_t* p, clap_id id, const char* display, double* value) {
        return guarded(p, "params.text_to_value", false, [&](ClapPlugin& c) { return c.textToValue(id, display, value); });
    },
    [](const clap_plugin_t* p, const clap_input_events_t* in, const clap_output_events_t* out) {
        guardedVoid(p, "params.flush", [&](ClapPlugin& c) { c.flush(in, out); });
    },
};

const clap_plugin_state_t stateExtension{
    [](const clap_plugin_t* p, const clap_ostream_t* stream) {
        return guarded(p, "state.save", false, [&](ClapPlugin& c) { return c.saveState(stream); });
    },
    [](const clap_plugin_t* p, const clap_istream_t* stream) {
        return guarded(p, "state.load", false, [&](ClapPlugin& c) { return c.loadState(stream); });
    },
};

const clap_plugin_latency_t latencyExtension{
    [](const clap_plugin_t* p) { return guarded<std::uint32_t>(p, "latency.get", 0, [](ClapPlugin& c) { return c.latency(); }); },
};

const clap_plugin_audio_ports_t audioPortsExtension{
    [](const clap_plugin_t* p, bool isInput) {
        return guarded<std::uint32_t>(p, "audio_ports.count", 0, [&](ClapPlugin& c) { return c.audioPortCount(isInput); });
    },
    [](const clap_plugin_t* p, std::uint32_t index, bool isInput, clap_audio_port_info_t* info) {
        return guarded(p, "audio_ports.get", false, [&](ClapPlugin& c) { return c.audioPortInfo(index, isInput, info); });
    },
};

const clap_plugin_note_ports_t notePortsExtension{
    [](const clap_plugin_t* p, bool isInput) {
        return guarded<std::uint32_t>(p, "note_ports.count", 0, [&](ClapPlugin& c) { return c.notePortCount(isInput); });
    },
    [](const clap_plugin_t* p, std::uint32_t index, bool isInput, clap_note_port_info_t* info) {
        return guarded(p, "note_ports.get", false, [&](ClapPlugin& c) { return c.notePortInfo(index, isInput, info); });
    },
};

const clap_plugin_gui_t guiExtension{
    [](const clap_plugin_t*, const char* api, bool isFloating) { return ClapGui::isApiSupported(api, isFloating); },
    [](const clap_plugin_t*, const char** api, bool* isFloating) {
        if (api == nullptr || isFloating == nullptr) return false;
        *api = CLAP_WINDOW_API_X11;
        *isFloating = false;
        return true;
    },
    [](const clap_plugin_t* p, const char* api, bool isFloating) {
        return withGui(p, "gui.create", false, [&](ClapGui& g) { return g.create(api, isFloating); });
    },
    [](const clap_plugin_t* p) {
        withGui(p, "gui.destroy", 0, [](ClapGui& g) {
            g.destroy();
            return 0;
        });
    },
    // The host's scale: the editor is drawn anew at the nearest zoom, never scaled up.
    [](const clap_plugin_t* p, double scale) {
        return withGui(p, "gui.set_scale", false, [&](ClapGui& g) { return g.setScale(scale); });
    },
    [](const clap_plugin_t* p, std::uint32_t* width, std::uint32_t* height) {
        return withGui(p, "gui.get_size", false, [&](ClapGui& g) { return g.size(width, height); });
    },
    [](const clap_plugin_t*) { return false; },
    // Neither way: the face is drawn at one size (its aspect given for hosts that ask).
    [](const clap_plugin_t* p, clap_gui_resize_hints_t* hints) {
        return withGui(p, "gui.get_resize_hints", false, [&](ClapGui& g) {
            std::uint32_t w = 0, h = 0;
            if (hints == nullptr || !g.size(&w, &h)) return false;
            *hints = {false, false, true, w, h};
            return true;
        });
    },
    // A fixed size: the one asked is adjusted to it, and only it is taken.
    [](const clap_plugin_t* p, std::uint32_t* width, std::uint32_t* height) {
        return withGui(p, "gui.adjust_size", false, [&](ClapGui& g) { return g.size(width, height); });
    },
    [](const clap_plugin_t* p, std::uint32_t width, std::uint32_t height) {
        return withGui(p, "gui.set_size", false, [&](ClapGui& g) {
            std::uint32_t w = 0, h = 0;
            return g.size(&w, &h) && w == width && h == height;
        });
    },
    [](const clap_plugin_t* p, const clap_window_t* window) {
        return withGui(p, "gui.set_parent", false, [&](ClapGui& g) { return g.setParent(window); });
    },
    // Embedded only: there is no window of ours to keep above the host's.
    [](const clap_plugin_t*, const clap_window_t*) { return false; },
    [](const clap_plugin_t*, const char*) {},
    [](const clap_plugin_t* p) { return withGui(p, "gui.show", false, [](ClapGui& g) { return g.show(); }); },
    [](const clap_plugin_t* p) { return withGui(p, "gui.hide", false, [](ClapGui& g) { return g.hide(); }); },
};

const clap_plugin_timer_support_t timerExtension{
    [](const clap_plugin_t* p, clap_id timer) {
        guardedVoid(p, "timer_support.on_timer", [&](ClapPlugin& c) {
            if (c.gui() == nullptr) return;
            c.gui()->onTimer(timer);
            c.flushWaitingGestures();
        });
    },
};

const void* extension(const clap_plugin_t* p, const char* id) {
    if (id == nullptr) return nullptr;
    if (std::strcmp(id, CLAP_EXT_PARAMS) == 0) return &paramsExtension;
    if (std::strcmp(id, CLAP_EXT_STATE) == 0) return &stateExtension;
    if (std::strcmp(id, CLAP_EXT_LATENCY) == 0) return &latencyExtension;
    if (std::strcmp(id, CLAP_EXT_AUDIO_PORTS) == 0) return &audioPortsExtension;
    if (std::strcmp(id, CLAP_EXT_NOTE_PORTS) == 0) return &notePortsExtension;
    // Before init there is no instance to ask whether the product has an editor.
    const bool hasGui = of(p).gui() != nullptr;
    if (hasGui && std::strcmp(id, CLAP_EXT_GUI) == 0) return &guiExtension;
    if (hasGui && std::strcmp(id, CLAP_EXT_TIMER_SUPPORT) == 0) return &timerExtension;
    return nullptr;
}

clap_plugin_t pluginCalls() {
    clap_plugin_t t{};
    t.init = [](const clap_plugin_t* p) {
        return guarded(p, "init", false, [](ClapPlugin& c) {
            c.init();
            return true;
        });
    };
    t.destroy = [](const clap_plugin_t* p) {
        const char* name = of(p).product().name;
        try {
            delete ClapPlugin::of(p);
        } catch (...) {
            reportEntryFault(name, "destroy");
        }
    };
    t.activate = [](const clap_plugin_t* p, double rate, std::uint32_t minFrames, std::uint32_t maxFrames) {
        return guarded(p, "activate", false, [&](ClapPlugin& c) { return c.activate(rate, minFrames, maxFrames); });
    };
    t.deactivate = [](const clap_plugin_t* p) { guardedVoid(p, "deactivate", [](ClapPlugin& c) { c.deactivate(); }); };
    t.start_processing = [](const clap_plugin_t* p) {
        return guarded(p, "start_processing", false, [](ClapPlugin& c) { return c.startProcessing(); });
    };
    t.stop_processing = [](const clap_plugin_t* p) {
        guardedVoid(p, "stop_processing", [](ClapPlugin& c) { c.stopProcessing(); });
    };
    t.reset = [](const clap_plugin_t* p) { guardedVoid(p, "reset", [](ClapPlugin& c) { c.reset(); }); };
    t.process = [](const clap_plugin_t* p, const clap_process_t* process) {
        return guarded<clap_process_status>(p, "process", CLAP_PROCESS_ERROR,
                                            [&](ClapPlugin& c) { return process ? c.process(process) : CLAP_PROCESS_ERROR; });
    };
    t.get_extension = [](const clap_plugin_t* p, const char* id) {
        return guarded<const void*>(p, "get_extension", nullptr, [&](ClapPlugin&) { return extension(p, id); });
    };
    // Nothing is left for the main thread to do later (Qtractor never calls this anyway).
    t.on_main_thread = [](const clap_plugin_t*) {};
    return t;
}

std::uint32_t pluginCount(const clap_plugin_factory_t*) { return 1; }

const clap_plugin_descriptor_t* pluginDescriptor(const clap_plugin_factory_t* factory, std::uint32_t index) {
    return index == 0 ? &reinterpret_cast<const FactoryEntry*>(factory)->product->descriptor : nullptr;
}

const clap_plugin_t* createPlugin(const clap_plugin_factory_t* factory, const clap_host_t* host, const char* id) {
    const Product* product = reinterpret_cast<const FactoryEntry*>(factory)->product;
    try {
        if (host == nullptr || id == nullptr || std::strcmp(id, product->descriptor.id) != 0) return nullptr;
        if (!clap_version_is_compatible(host->clap_version)) return nullptr;
        static const clap_plugin_t calls = pluginCalls();
        return (new ClapPlugin(host, *product, calls))->plugin();
    } catch (...) {
        reportEntryFault(product->name, "create_plugin");
        return nullptr;
    }
}

}  // namespace

bool entryInit(const Product&, const char* path) { return path != nullptr; }

void entryDeinit(const Product&) {}

const void* entryFactory(const Product& product, const char* factoryId) {
    static const FactoryEntry entry{{pluginCount, pluginDescriptor, createPlugin}, &product};
    if (factoryId == nullptr || std::strcmp(factoryId, CLAP_PLUGIN_FACTORY_ID) != 0) return nullptr;
    return &entry.clap;
}

}  // namespace tw::clap
