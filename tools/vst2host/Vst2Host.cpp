// vst2host: a small command-line host for any VST 2.4 plug-in on Linux.
//
//   vst2host info   <plugin.so> [settings]
//   vst2host render <plugin.so> [input] [-o output] [settings] [render options]
//   vst2host save   <plugin.so> <chunk file> [--preset] [settings]
//   vst2host load   <plugin.so> <chunk file> [--preset]
//   vst2host edit   <plugin.so> [input] [settings] [editor options] [--seconds S] [--no-audio] [--cpu]
//                   [--trace] [--hidden | --closed]
//   vst2host snapshot <plugin.so> <picture.png> [settings] [editor options] [--idle N] [--no-audio]
//
// Settings, applied in this order: --chunk FILE (a saved chunk; with --preset a program
// chunk), --program N, then --param NAME=VALUE (value 0..1) and --set NAME=TEXT (the
// parameter's human text, such as "250 ms" or "A3", read by plug-ins of Tidewake's family
// through their vendor protocol) in the order given, then --bypass. NAME is a host index,
// the parameter's name, or a camel-case key such as delayTime or freqShiftAmount.
// Render options: --block N (default 512), --rate R (the demo input's rate, default
// 48000), --tempo BPM (default 120), --stopped (transport not running), --no-time (answer
// no time information), --note N (hold a MIDI note for the length of the input),
// --tail SECONDS (default 3), --raw (keep the plug-in's latency at the start).
// Editor options: --idle-rate N (effEditIdle calls per second, default 30), --ardour (as
// Ardour: events to the editor's _XEventProc every millisecond, idle every 50th pass),
// --scale S (the host's scale, told as Windows hosts tell it), --refuse-resize (the host
// keeps its window's size when the editor asks for another).
// `edit --hidden` hides the host's window once the first frame is there, the editor left
// open (Ardour's way of closing a plug-in's window); `edit --closed` closes the editor
// then and runs the host's loop on without it. With --cpu, the CPU is that of the run
// after that point, of the process and of the host's GUI thread alone.
// Both play the demo phrase round and round through the plug-in while the editor is open
// (unless --no-audio), so that meters move; `snapshot` writes the editor as the X server
// shows it after N further idle passes (default 60) once its first frame is there.
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "graphics/PNGWriter.h"
#include "tools/common/AudioFile.h"
#include "tools/common/DemoSignal.h"
#include "tools/common/OptionValues.h"
#include "tools/vst2host/AudioLoop.h"
#include "tools/vst2host/EditorHost.h"
#include "tools/vst2host/HostedPlugin.h"

namespace tw {
namespace {

struct Options {
    std::string command, plugin, input, output = "out.wav", chunkFile, saveFile;
    bool preset = false, bypass = false, raw = false;
    int program = -1, block = 512, rate = 48000, note = -1;
    double tail = 3.0;
    double seconds = 0;
    int idlePasses = 60;
    bool noAudio = false, cpu = false, trace = false;
    bool hidden = false, closedEditor = false;  // for the measured run, after the first frame
    EditorHost::Settings editor;
    std::vector<HostedPlugin::Setting> params;
    HostedPlugin::Transport transport;
};

[[noreturn]] void usage(const std::string& problem) {
    std::fprintf(stderr,
                 "vst2host: %s\n"
                 "usage: vst2host info|render|save|load|edit|snapshot <plugin.so> [...]\n"
                 "  info   <plugin.so> [settings]\n"
                 "  render <plugin.so> [input] [-o output] [settings] [--block N] [--rate R] [--tempo BPM]\n"
                 "         [--stopped] [--no-time] [--note N] [--tail SECONDS] [--raw]\n"
                 "  save   <plugin.so> <file> [--preset] [settings]\n"
                 "  load   <plugin.so> <file> [--preset]\n"
                 "  edit   <plugin.so> [input] [settings] [--idle-rate N] [--ardour] [--seconds S] [--no-audio] [--cpu]\n"
                 "         [--scale S] [--refuse-resize]\n"
                 "         [--trace] [--hidden | --closed]\n"
                 "  snapshot <plugin.so> <picture.png> [settings] [--idle-rate N] [--ardour] [--idle N] [--no-audio] [--scale S]\n"
                 "settings: --chunk FILE  --program N  --param NAME=VALUE  --set NAME=TEXT  --bypass\n",
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
        else if (a == "--chunk") o.chunkFile = next();
        else if (a == "--preset") o.preset = true;
        else if (a == "--program") o.program = wholeOption(a, next(), 0, 9999);
        else if (a == "--param" || a == "--set") {
            std::string kv = next();
            auto eq = kv.find('=');
            if (eq == std::string::npos) usage(a + " wants NAME=" + (a == "--set" ? "TEXT: " : "VALUE: ") + kv);
            o.params.push_back({kv.substr(0, eq), kv.substr(eq + 1), a == "--set"});
        } else if (a == "--bypass") o.bypass = true;
        else if (a == "--block") o.block = wholeOption(a, next(), 1, 65536);
        else if (a == "--rate") o.rate = wholeOption(a, next(), 1000, 768000);
        else if (a == "--tempo") o.transport.tempo = numberOption(a, next(), 1, 999);
        else if (a == "--stopped") o.transport.playing = false;
        else if (a == "--no-time") o.transport.timeInfo = false;
        else if (a == "--note") o.note = wholeOption(a, next(), 0, 127);
        else if (a == "--tail") o.tail = numberOption(a, next(), 0, 600);
        else if (a == "--raw") o.raw = true;
        else if (a == "--seconds") o.seconds = numberOption(a, next(), 0, 86400);
        else if (a == "--idle") o.idlePasses = wholeOption(a, next(), 0, 100000);
        else if (a == "--idle-rate") o.editor.idleRate = wholeOption(a, next(), 1, 1000);
        else if (a == "--ardour") o.editor.ardour = true;
        else if (a == "--scale") o.editor.scale = numberOption(a, next(), 0.5, 8);
        else if (a == "--refuse-resize") o.editor.refuseResize = true;
        else if (a == "--no-audio") o.noAudio = true;
        else if (a == "--cpu") o.cpu = true;
        else if (a == "--trace") o.trace = true;
        else if (a == "--hidden") o.hidden = true;
        else if (a == "--closed") o.closedEditor = true;
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
        if (positional.size() != 3) usage(o.command + " needs a chunk file");
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

void applySettings(HostedPlugin& plugin, const Options& o) {
    if (!o.chunkFile.empty() && !plugin.setChunk(readFile(o.chunkFile), o.preset))
        throw std::runtime_error("the plug-in refused the chunk in " + o.chunkFile);
    plugin.apply(o.program, o.params, o.bypass, [](HostedPlugin& p, const std::string& key) { return p.findParameter(key); });
}

std::string fourCharText(vst2::int32 id) {
    std::string s;
    for (int shift = 24; shift >= 0; shift -= 8) {
        char c = static_cast<char>((static_cast<std::uint32_t>(id) >> shift) & 0xff);
        s += (c >= 32 && c < 127) ? c : '?';
    }
    return s;
}

void printInfo(HostedPlugin& plugin) {
    vst2::AEffect& e = plugin.effect();
    std::printf("name:        %s\n", plugin.effectName().c_str());
    std::printf("vendor:      %s\n", plugin.vendor().c_str());
    std::printf("product:     %s\n", plugin.product().c_str());
    std::printf("version:     %ld (vendor), %ld (VST)\n", static_cast<long>(plugin.dispatch(vst2::effGetVendorVersion)),
                static_cast<long>(plugin.dispatch(vst2::effGetVstVersion)));
    std::printf("unique id:   %s (0x%08x)\n", fourCharText(e.uniqueID).c_str(), static_cast<unsigned>(e.uniqueID));
    std::printf("category:    %ld\n", static_cast<long>(plugin.dispatch(vst2::effGetPlugCategory)));
    std::printf("channels:    %d in, %d out\n", e.numInputs, e.numOutputs);
    std::printf("latency:     %d samples\n", e.initialDelay);
    std::printf("tail:        %ld samples\n", static_cast<long>(plugin.dispatch(vst2::effGetTailSize)));
    std::string flags;
    const std::pair<int, const char*> names[] = {{vst2::effFlagsHasEditor, "editor"},   {vst2::effFlagsHasClip, "clip"},
                                                 {vst2::effFlagsHasVu, "vu"},           {vst2::effFlagsCanMono, "mono"},
                                                 {vst2::effFlagsCanReplacing, "replacing"}, {vst2::effFlagsProgramChunks, "chunks"},
                                                 {vst2::effFlagsIsSynth, "synth"},      {vst2::effFlagsNoSoundInStop, "no-sound-in-stop"},
                                                 {vst2::effFlagsCanDoubleReplacing, "double"}};
    for (auto [bit, name] : names)
        if (e.flags & bit) flags += std::string(flags.empty() ? "" : " ") + name;
    std::printf("flags:       %s\n", flags.c_str());
    std::string cando;
    for (const char* q : {"receiveVstEvents", "receiveVstMidiEvent", "receiveVstTimeInfo", "sendVstEvents", "bypass"}) {
        long a = static_cast<long>(plugin.dispatch(vst2::effCanDo, 0, 0, const_cast<char*>(q)));
        cando += std::string(cando.empty() ? "" : " ") + q + "=" + std::to_string(a);
    }
    std::printf("can do:      %s\n", cando.c_str());
    std::printf("programs:    %d, current %ld\n", e.numPrograms, static_cast<long>(plugin.dispatch(vst2::effGetProgram)));
    for (int i = 0; i < e.numPrograms; ++i) std::printf("  %3d  %s\n", i, plugin.programName(i).c_str());
    std::printf("parameters:  %d\n", e.numParams);
    for (int i = 0; i < e.numParams; ++i) {
        std::string label = plugin.parameterLabel(i);
        std::printf("  %3d  %-28s %-24s %.7g\n", i, plugin.parameterName(i).c_str(),
                    (plugin.parameterDisplay(i) + (label.empty() ? "" : " " + label)).c_str(),
                    static_cast<double>(e.getParameter(&e, i)));
    }
}

void render(HostedPlugin& plugin, const Options& o) {
    AudioBuffer input = o.input.empty() ? makeDemoSignal(o.rate) : readAudioFile(o.input);
    if (input.sampleRate < 1) throw std::runtime_error("the input holds no audio");
    plugin.transport = o.transport;
    plugin.open(static_cast<float>(input.sampleRate), o.block);
    applySettings(plugin, o);
    AudioBuffer output = plugin.render(input, {o.note, o.tail, o.raw, o.output});
    writeAudioFile(o.output, output);
    std::printf("rendered %.2f s at %d Hz through %s into %s\n", double(output.frames()) / output.sampleRate,
                output.sampleRate, plugin.effectName().c_str(), o.output.c_str());
}

// The CPU of the whole process, or of the calling thread alone (the host's GUI thread).
double cpuSeconds(int who = RUSAGE_SELF) {
    rusage usage{};
    getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Opens the plug-in at the input's rate and starts playing it round and round, unless
// --no-audio; the audio stops when the answer goes.
std::unique_ptr<AudioLoop> startAudio(HostedPlugin& plugin, const Options& o) {
    AudioBuffer input = o.input.empty() ? makeDemoSignal(o.rate) : readAudioFile(o.input);
    if (input.sampleRate < 1 || input.frames() == 0) throw std::runtime_error("the input holds no audio");
    plugin.transport = o.transport;
    plugin.open(static_cast<float>(input.sampleRate), o.block);
    applySettings(plugin, o);
    if (o.noAudio) return nullptr;
    return std::make_unique<AudioLoop>(plugin, std::move(input), o.block);
}

// Prints, one line each, the calls of the editor that a host acts on, with the display
// text as a host would show it then; on a display update, as a host does, it reads every
// parameter again and prints those whose text changed since last seen (`shown`).
void printEditorCalls(HostedPlugin& plugin, std::vector<std::string>& shown) {
    for (const HostedPlugin::EditorCall& call : plugin.takeEditorCalls()) {
        switch (call.opcode) {
            case vst2::audioMasterBeginEdit:
                std::printf("begin %d\n", call.index);
                break;
            case vst2::audioMasterAutomate:
                if (call.index >= 0 && size_t(call.index) < shown.size())
                    shown[size_t(call.index)] = plugin.parameterDisplay(call.index);
                std::printf("automate %d %.6f \"%s\"\n", call.index, double(call.value),
                            plugin.parameterDisplay(call.index).c_str());
                break;
            case vst2::audioMasterEndEdit:
                std::printf("end %d\n", call.index);
                break;
            default:
                std::printf("display \"%s\"\n", plugin.currentProgramName().c_str());
                for (size_t i = 0; i < shown.size(); ++i) {
                    std::string now = plugin.parameterDisplay(int(i));
                    if (now != shown[i]) std::printf("parameter %zu \"%s\"\n", i, now.c_str());
                    shown[i] = std::move(now);
                }
        }
    }
    std::fflush(stdout);
}

// Runs the editor for `seconds` (until closed when 0), printing the editor's calls as
// they come, a few milliseconds after each.
void runTraced(HostedPlugin& plugin, EditorHost& host, double seconds) {
    std::vector<std::string> shown;
    for (int i = 0; i < plugin.effect().numParams; ++i) shown.push_back(plugin.parameterDisplay(i));
    const double step = 0.005;
    for (double done = 0; !host.closed() && (seconds <= 0 || done < seconds); done += step) {
        host.run(step);
        printEditorCalls(plugin, shown);
    }
}

// The process's resident memory in MiB, from the kernel's status of it.
double residentMiB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmRSS:", 0) == 0) return std::strtod(line.c_str() + 6, nullptr) / 1024.0;
    return 0;
}

volatile std::sig_atomic_t stopRequested = 0;
void requestStop(int) { stopRequested = 1; }

void edit(HostedPlugin& plugin, const Options& o) {
    const std::unique_ptr<AudioLoop> audio = startAudio(plugin, o);
    // Interrupted or terminated, the editor closes as a host closes it, and the
    // plug-in ends as it would in a host.
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
    EditorHost::Settings editor = o.editor;
    editor.stop = &stopRequested;
    plugin.recordEditorCalls = o.trace;
    const double residentBefore = residentMiB();
    EditorHost host(plugin, editor);
    const double firstFrame = host.waitForFirstFrame(10);
    std::printf("%s: editor %d x %d, first frame %.1f ms after effEditOpen\n", plugin.effectName().c_str(), host.width(),
                host.height(), firstFrame);
    std::fflush(stdout);
    // After the first frame, as a user does: the window hidden with the editor left open
    // (Ardour's close), or the editor closed while the host goes on.
    if (o.hidden) host.setShown(false);
    if (o.closedEditor) host.closeEditor();
    const char* state = o.closedEditor ? "closed" : o.hidden ? "hidden" : "open";
    const double cpuBefore = cpuSeconds();
    const double threadBefore = cpuSeconds(RUSAGE_THREAD);
    // A menu left open must not keep the run from ending on time or on a signal.
    host.endBy(o.seconds);
    if (o.trace)
        runTraced(plugin, host, o.seconds);
    else
        host.run(o.seconds);
    if (o.cpu && o.seconds > 0) {
        const double used = cpuSeconds() - cpuBefore, thread = cpuSeconds(RUSAGE_THREAD) - threadBefore;
        std::printf("%s: %.3f s of CPU in %.1f s with the editor %s (%.2f%%); the host's GUI thread %.3f s (%.2f%%)\n",
                    plugin.effectName().c_str(), used, o.seconds, state, 100 * used / o.seconds, thread,
                    100 * thread / o.seconds);
        std::printf("%s: resident memory %.1f MiB before the editor opened, %+.1f MiB with it open\n",
                    plugin.effectName().c_str(), residentBefore, residentMiB() - residentBefore);
    }
    std::fflush(stdout);
}

void snapshot(HostedPlugin& plugin, const Options& o) {
    const std::unique_ptr<AudioLoop> audio = startAudio(plugin, o);
    EditorHost host(plugin, o.editor);
    const double firstFrame = host.waitForFirstFrame(10);
    if (firstFrame < 0) throw std::runtime_error("the editor showed nothing within 10 s");
    for (int i = 0; i < o.idlePasses; ++i) host.run(1.0 / o.editor.idleRate);
    writePNG(o.output, host.capture());
    std::printf("%s: %d x %d into %s; first frame %.1f ms after effEditOpen\n", plugin.effectName().c_str(), host.width(),
                host.height(), o.output.c_str(), firstFrame);
    // Now: another maker's plug-in may end the process in ways that skip the flush.
    std::fflush(stdout);
}

int run(int argc, char** argv) {
    Options o;
    try {
        o = parse(argc, argv);
    } catch (const UsageError& e) {
        std::fprintf(stderr, "vst2host: %s\n", e.what());
        return 2;
    }
    HostedPlugin plugin(o.plugin);
    if (o.command == "render") {
        render(plugin, o);
        return 0;
    }
    if (o.command == "edit") {
        edit(plugin, o);
        return 0;
    }
    if (o.command == "snapshot") {
        snapshot(plugin, o);
        return 0;
    }
    plugin.open(static_cast<float>(o.rate), o.block);
    if (o.command == "load") {
        if (!plugin.setChunk(readFile(o.saveFile), o.preset))
            throw std::runtime_error("the plug-in refused the chunk in " + o.saveFile);
        printInfo(plugin);
        return 0;
    }
    applySettings(plugin, o);
    if (o.command == "info") {
        printInfo(plugin);
    } else {
        std::vector<unsigned char> chunk = plugin.getChunk(o.preset);
        if (chunk.empty()) throw std::runtime_error("the plug-in gave no chunk");
        writeFile(o.saveFile, chunk);
        std::printf("saved a %s chunk of %zu bytes into %s\n", o.preset ? "program" : "bank", chunk.size(), o.saveFile.c_str());
    }
    return 0;
}

}  // namespace
}  // namespace tw

int main(int argc, char** argv) {
    try {
        return tw::run(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vst2host: %s\n", e.what());
        return 1;
    }
}
