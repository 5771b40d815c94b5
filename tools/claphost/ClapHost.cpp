// claphost: a small command-line host for any CLAP plug-in on Linux.
//
//   claphost info   <plugin.clap> [settings]
//   claphost render <plugin.clap> [input] [-o output] [settings] [render options]
//   claphost save   <plugin.clap> <state file> [settings] [--io-step N]
//   claphost load   <plugin.clap> <state file> [--io-step N]
//   claphost edit   <plugin.clap> [input] [settings] [--seconds S] [--no-audio] [--trace] [--scale S]
//   claphost snapshot <plugin.clap> <picture.png> [settings] [--idle N] [--no-audio] [--scale S]
//
// --id ID picks a plug-in of the library (the first by default). Settings, applied in this
// order: --state FILE (a saved state), then --param NAME=VALUE (the parameter's plain value,
// in the range `info` lists) and --set NAME=TEXT (its text, such as "250 ms" or "A3", read
// by the plug-in's text_to_value) in the order given. NAME is the parameter's id, its name,
// or a camel-case key such as delayTime or freqShiftAmount. The parameters are set through
// the parameters' flush, as a host does while the plug-in is inactive.
// Render options: --block N (default 512), --rate R (the demo input's rate, default
// 48000), --tempo BPM (default 120), --stopped (transport not running), --no-time (no
// transport), --note N (hold a note for the length of the input, as a CLAP note event, or
// as MIDI with --midi-note), --tail SECONDS (default 3), --raw (keep the plug-in's latency
// at the start).
// State: --io-step N makes the state streams move at most N bytes per call, as a host may.
// `load` fails when the plug-in refuses the state.
// Editor: both play the demo phrase round and round through the plug-in while the editor is
// open (unless --no-audio: then the plug-in is inactive and what the editor does leaves
// through the flush it asks for); `edit --trace` prints what the host hears: gestures and
// values with the way they came, flush requests, rescans (with the parameters whose text
// changed) and the state marked dirty; `snapshot` writes the editor as the X server shows it
// after N further timer passes (default 60) once its first frame is there.
#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "graphics/PNGWriter.h"
#include "tools/claphost/ClapAudioLoop.h"
#include "tools/claphost/ClapEditorHost.h"
#include "tools/claphost/HostedClap.h"
#include "tools/common/AudioFile.h"
#include "tools/common/DemoSignal.h"
#include "tools/common/OptionValues.h"

namespace tw {
namespace {

struct Options {
    std::string command, plugin, id, input, output = "out.wav", stateFile, saveFile;
    bool raw = false, midiNote = false;
    int block = 512, rate = 48000, note = -1;
    std::size_t ioStep = 0;
    double tail = 3.0, seconds = 0;
    int idlePasses = 60;
    double scale = 0;
    bool noAudio = false, trace = false;
    std::vector<HostedClap::Setting> params;
    HostedClap::Transport transport;
};

[[noreturn]] void usage(const std::string& problem) {
    std::fprintf(stderr,
                 "claphost: %s\n"
                 "usage: claphost info|render|save|load|edit|snapshot <plugin.clap> [...]\n"
                 "  info   <plugin.clap> [settings]\n"
                 "  render <plugin.clap> [input] [-o output] [settings] [--block N] [--rate R] [--tempo BPM]\n"
                 "         [--stopped] [--no-time] [--note N] [--midi-note] [--tail SECONDS] [--raw]\n"
                 "  save   <plugin.clap> <file> [settings] [--io-step N]\n"
                 "  load   <plugin.clap> <file> [--io-step N]\n"
                 "  edit   <plugin.clap> [input] [settings] [--seconds S] [--no-audio] [--trace] [--scale S]\n"
                 "  snapshot <plugin.clap> <picture.png> [settings] [--idle N] [--no-audio] [--scale S]\n"
                 "settings: --state FILE  --param NAME=VALUE  --set NAME=TEXT; any command: --id ID\n",
                 problem.c_str());
    std::exit(2);
}

Options parse(int argc, char** argv) {
    Options o;
    std::vector<std::string> positional;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto next = [&]() -> std::string {
            if (i + 1 >= argc) usage("missing value after " + a);
            return argv[++i];
        };
        if (a == "-o" || a == "--output") o.output = next();
        else if (a == "--id") o.id = next();
        else if (a == "--state") o.stateFile = next();
        else if (a == "--param" || a == "--set") {
            std::string kv = next();
            auto eq = kv.find('=');
            if (eq == std::string::npos) usage(a + " wants NAME=" + (a == "--set" ? "TEXT: " : "VALUE: ") + kv);
            o.params.push_back({kv.substr(0, eq), kv.substr(eq + 1), a == "--set"});
        } else if (a == "--block") o.block = wholeOption(a, next(), 1, 65536);
        else if (a == "--rate") o.rate = wholeOption(a, next(), 1000, 768000);
        else if (a == "--tempo") o.transport.tempo = numberOption(a, next(), 1, 999);
        else if (a == "--stopped") o.transport.playing = false;
        else if (a == "--no-time") o.transport.timeInfo = false;
        else if (a == "--note") o.note = wholeOption(a, next(), 0, 127);
        else if (a == "--midi-note") o.midiNote = true;
        else if (a == "--tail") o.tail = numberOption(a, next(), 0, 600);
        else if (a == "--raw") o.raw = true;
        else if (a == "--io-step") o.ioStep = static_cast<std::size_t>(wholeOption(a, next(), 1, 1 << 30));
        else if (a == "--seconds") o.seconds = numberOption(a, next(), 0, 86400);
        else if (a == "--idle") o.idlePasses = wholeOption(a, next(), 0, 100000);
        else if (a == "--scale") o.scale = numberOption(a, next(), 0.5, 8);
        else if (a == "--no-audio") o.noAudio = true;
        else if (a == "--trace") o.trace = true;
        else if (a.size() > 1 && a[0] == '-') usage("unknown option " + a);
        else positional.push_back(a);
    }
    if (positional.size() < 2) usage("a command and a plug-in are needed");
    o.command = positional[0];
    o.plugin = positional[1];
    if (o.command == "render" || o.command == "edit") {
        if (positional.size() > 3) usage(o.command + " takes one input file");
        if (positional.size() == 3) o.input = positional[2];
    } else if (o.command == "snapshot") {
        if (positional.size() != 3) usage("snapshot needs a picture file");
        o.output = positional[2];
    } else if (o.command == "save" || o.command == "load") {
        if (positional.size() != 3) usage(o.command + " needs a state file");
        o.saveFile = positional[2];
    } else if (o.command != "info" || positional.size() != 2) {
        usage("unknown command or extra arguments: " + o.command);
    }
    return o;
}

std::vector<unsigned char> readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeFile(const std::string& path, const std::vector<unsigned char>& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("cannot write " + path);
}

void applySettings(HostedClap& plugin, const Options& o) {
    if (!o.stateFile.empty() && !plugin.loadState(readFile(o.stateFile), o.ioStep))
        throw std::runtime_error("the plug-in refused the state in " + o.stateFile);
    plugin.apply(o.params);
}

std::string flagsText(clap_param_info_flags flags) {
    std::string s;
    const std::pair<clap_param_info_flags, const char*> names[] = {
        {CLAP_PARAM_IS_STEPPED, "stepped"},     {CLAP_PARAM_IS_PERIODIC, "periodic"},
        {CLAP_PARAM_IS_HIDDEN, "hidden"},       {CLAP_PARAM_IS_READONLY, "read-only"},
        {CLAP_PARAM_IS_BYPASS, "bypass"},       {CLAP_PARAM_IS_AUTOMATABLE, "automatable"},
        {CLAP_PARAM_IS_MODULATABLE, "modulatable"}, {CLAP_PARAM_REQUIRES_PROCESS, "requires-process"}};
    for (auto [bit, name] : names)
        if (flags & bit) s += std::string(s.empty() ? "" : " ") + name;
    return s;
}

void printInfo(HostedClap& plugin) {
    const clap_plugin_descriptor_t& d = plugin.descriptor();
    auto text = [](const char* s) { return s ? s : ""; };
    std::printf("name:        %s\n", text(d.name));
    std::printf("id:          %s\n", text(d.id));
    std::printf("vendor:      %s\n", text(d.vendor));
    std::printf("version:     %s (CLAP %u.%u.%u)\n", text(d.version), d.clap_version.major, d.clap_version.minor,
                d.clap_version.revision);
    std::printf("description: %s\n", text(d.description));
    std::string features;
    for (const char* const* f = d.features; f && *f; ++f) features += std::string(features.empty() ? "" : " ") + *f;
    std::printf("features:    %s\n", features.c_str());
    std::string extensions;
    for (const std::string& e : plugin.extensionNames()) extensions += (extensions.empty() ? "" : " ") + e;
    std::printf("extensions:  %s\n", extensions.c_str());
    const clap_plugin_t* p = &plugin.plugin();
    if (const clap_plugin_audio_ports_t* ports = plugin.audioPorts()) {
        for (bool input : {true, false}) {
            const std::uint32_t n = ports->count(p, input);
            for (std::uint32_t i = 0; i < n; ++i) {
                clap_audio_port_info_t info{};
                if (!ports->get(p, i, input, &info)) continue;
                std::printf("audio %-6s %u \"%s\": %u channels, %s%s\n", input ? "in" : "out", info.id, info.name,
                            info.channel_count, info.port_type ? info.port_type : "?",
                            info.flags & CLAP_AUDIO_PORT_IS_MAIN ? ", main" : "");
            }
        }
    }
    if (const clap_plugin_note_ports_t* ports = plugin.notePorts()) {
        for (bool input : {true, false}) {
            const std::uint32_t n = ports->count(p, input);
            for (std::uint32_t i = 0; i < n; ++i) {
                clap_note_port_info_t info{};
                if (!ports->get(p, i, input, &info)) continue;
                std::string dialects;
                const std::pair<std::uint32_t, const char*> names[] = {{CLAP_NOTE_DIALECT_CLAP, "clap"},
                                                                       {CLAP_NOTE_DIALECT_MIDI, "midi"},
                                                                       {CLAP_NOTE_DIALECT_MIDI_MPE, "midi-mpe"},
                                                                       {CLAP_NOTE_DIALECT_MIDI2, "midi2"}};
                std::string preferred;
                for (auto [bit, name] : names) {
                    if (info.supported_dialects & bit) dialects += std::string(dialects.empty() ? "" : " ") + name;
                    if (info.preferred_dialect == bit) preferred = name;
                }
                std::printf("notes %-6s %u \"%s\": %s (prefers %s)\n", input ? "in" : "out", info.id, info.name,
                            dialects.c_str(), preferred.c_str());
            }
        }
    }
    std::printf("latency:     %u samples\n", plugin.latencyFrames());
    if (const clap_plugin_gui_t* gui = plugin.gui()) {
        const char* api = nullptr;
        bool floating = false;
        const bool preferred = gui->get_preferred_api(p, &api, &floating);
        std::printf("editor:      %s%s\n", preferred && api ? api : "?", floating ? " (floating)" : " (embedded)");
    }
    const std::vector<clap_param_info_t> list = plugin.parameters();
    std::printf("parameters:  %zu\n", list.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
        const clap_param_info_t& info = list[i];
        const double v = plugin.value(info.id);
        std::printf("  %3zu  %-28s %-24s %.7g  (id %u, %.7g to %.7g, default %.7g, %s)\n", i, info.name,
                    plugin.text(info.id, v).c_str(), v, info.id, info.min_value, info.max_value, info.default_value,
                    flagsText(info.flags).c_str());
    }
}

void render(HostedClap& plugin, const Options& o) {
    AudioBuffer input = o.input.empty() ? makeDemoSignal(o.rate) : readAudioFile(o.input);
    if (input.sampleRate < 1) throw std::runtime_error("the input holds no audio");
    plugin.transport = o.transport;
    applySettings(plugin, o);
    HostedClap::RenderSettings settings;
    settings.note = o.note;
    settings.midiNote = o.midiNote;
    settings.tail = o.tail;
    settings.keepLatency = o.raw;
    settings.progressLabel = o.output;
    AudioBuffer output = plugin.render(input, input.sampleRate, static_cast<std::uint32_t>(o.block), settings);
    writeAudioFile(o.output, output);
    std::printf("rendered %.2f s at %d Hz through %s into %s\n", double(output.frames()) / output.sampleRate,
                output.sampleRate, plugin.descriptor().name, o.output.c_str());
}

// Settings applied, then, unless --no-audio, the input playing round and round through the
// active plug-in; the audio stops when the answer goes.
std::unique_ptr<ClapAudioLoop> startAudio(HostedClap& plugin, const Options& o) {
    AudioBuffer input = o.input.empty() ? makeDemoSignal(o.rate) : readAudioFile(o.input);
    if (input.sampleRate < 1 || input.frames() == 0) throw std::runtime_error("the input holds no audio");
    plugin.transport = o.transport;
    applySettings(plugin, o);
    if (o.noAudio) return nullptr;
    return std::make_unique<ClapAudioLoop>(plugin, std::move(input), static_cast<std::uint32_t>(o.block));
}

// Prints, one line each, what the plug-in told the host, with a value's text as a host
// would show it; on a rescan, as a host does, it reads every parameter again and prints
// those whose text changed since last seen (`shown`, by parameter index).
void printHeard(HostedClap& plugin, const std::vector<clap_param_info_t>& list, std::vector<std::string>& shown) {
    for (const HostedClap::Heard& h : plugin.takeHeard()) {
        const char* way = h.viaFlush ? "flush" : "process";
        switch (h.kind) {
            case HostedClap::Heard::Kind::begin:
                std::printf("begin %u via %s\n", h.id, way);
                break;
            case HostedClap::Heard::Kind::value: {
                const std::string text = plugin.text(h.id, h.value);
                for (std::size_t i = 0; i < list.size(); ++i)
                    if (list[i].id == h.id) shown[i] = plugin.currentText(h.id);
                std::printf("value %u %.6f \"%s\" via %s\n", h.id, h.value, text.c_str(), way);
                break;
            }
            case HostedClap::Heard::Kind::end:
                std::printf("end %u via %s\n", h.id, way);
                break;
            case HostedClap::Heard::Kind::requestFlush:
                std::printf("request flush\n");
                break;
            case HostedClap::Heard::Kind::dirty:
                std::printf("dirty\n");
                break;
            case HostedClap::Heard::Kind::resize:
                std::printf("resize %g\n", h.value);
                break;
            case HostedClap::Heard::Kind::rescan:
                std::printf("rescan %d\n", static_cast<int>(h.value));
                for (std::size_t i = 0; i < list.size(); ++i) {
                    std::string now = plugin.currentText(list[i].id);
                    if (now != shown[i]) std::printf("parameter %u \"%s\"\n", list[i].id, now.c_str());
                    shown[i] = std::move(now);
                }
                break;
        }
    }
    std::fflush(stdout);
}

volatile std::sig_atomic_t stopRequested = 0;
void requestStop(int) { stopRequested = 1; }

void edit(HostedClap& plugin, const Options& o) {
    plugin.recordHeard = o.trace;
    const std::unique_ptr<ClapAudioLoop> audio = startAudio(plugin, o);
    // Interrupted or terminated, the editor closes as a host closes it, and the plug-in
    // ends as it would in a host.
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
    const std::vector<clap_param_info_t> list = plugin.parameters();
    std::vector<std::string> shown;
    for (const clap_param_info_t& p : list) shown.push_back(plugin.currentText(p.id));
    plugin.takeHeard();  // what the settings caused is not the editor's
    ClapEditorHost host(plugin, &stopRequested, o.scale);
    const double firstFrame = host.waitForFirstFrame(10);
    std::printf("%s: editor %d x %d, first frame %.1f ms after set_parent\n", plugin.descriptor().name, host.width(),
                host.height(), firstFrame);
    std::fflush(stdout);
    host.run(o.seconds, [&] {
        if (o.trace) printHeard(plugin, list, shown);
    });
    std::fflush(stdout);
}

void snapshot(HostedClap& plugin, const Options& o) {
    const std::unique_ptr<ClapAudioLoop> audio = startAudio(plugin, o);
    ClapEditorHost host(plugin, nullptr, o.scale);
    const double firstFrame = host.waitForFirstFrame(10);
    if (firstFrame < 0) throw std::runtime_error("the editor showed nothing within 10 s");
    // One pass of the plug-in's timer each.
    for (int i = 0; i < o.idlePasses; ++i) host.run(0.02);
    writePNG(o.output, host.capture());
    std::printf("%s: %d x %d into %s; first frame %.1f ms after set_parent\n", plugin.descriptor().name, host.width(),
                host.height(), o.output.c_str(), firstFrame);
    std::fflush(stdout);
}

int run(int argc, char** argv) {
    Options o;
    try {
        o = parse(argc, argv);
    } catch (const UsageError& e) {
        std::fprintf(stderr, "claphost: %s\n", e.what());
        return 2;
    }
    HostedClap plugin(o.plugin, o.id);
    if (o.command == "render") {
        render(plugin, o);
    } else if (o.command == "edit") {
        edit(plugin, o);
    } else if (o.command == "snapshot") {
        snapshot(plugin, o);
    } else if (o.command == "load") {
        if (!plugin.loadState(readFile(o.saveFile), o.ioStep))
            throw std::runtime_error("the plug-in refused the state in " + o.saveFile);
        printInfo(plugin);
    } else {
        applySettings(plugin, o);
        if (o.command == "info") {
            printInfo(plugin);
        } else {
            const std::vector<unsigned char> state = plugin.saveState(o.ioStep);
            if (state.empty()) throw std::runtime_error("the plug-in gave no state");
            writeFile(o.saveFile, state);
            std::printf("saved a state of %zu bytes into %s\n", state.size(), o.saveFile.c_str());
        }
    }
    return 0;
}

}  // namespace
}  // namespace tw

int main(int argc, char** argv) {
    try {
        return tw::run(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "claphost: %s\n", e.what());
        return 1;
    }
}
