// tidewake-render: renders an audio file (WAV, FLAC, AIFF, anything libsndfile reads)
// through Tidewake, built in, with a program and parameter settings. With no input it
// renders the demo phrase.
//
//   tidewake-render [input] [-o output] [--program N] [--param NAME=VALUE]... [--set NAME=TEXT]...
//                   [--tempo BPM] [--stopped] [--note N] [--tail SECONDS] [--rate R] [--bypass]
//
// NAME is a parameter's name (delayTime, feedbackAmount ...) or its label ("Delay Time");
// VALUE its setting from 0 to 1, TEXT its setting as the plug-in shows it ("250 ms").
// Output defaults to tidewake.wav.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "vst2/Entry.h"
#include "product/TidewakeDescriptor.h"
#include "tools/common/AudioFile.h"
#include "tools/common/DemoSignal.h"
#include "tools/common/OptionValues.h"
#include "tools/vst2host/HostedPlugin.h"

namespace tw {
namespace {

struct Options {
    std::string input, output = "tidewake.wav";
    int program = -1, rate = 48000, note = -1;
    double tail = 4.0;
    bool bypass = false;
    std::vector<HostedPlugin::Setting> settings;
    HostedPlugin::Transport transport;
};

[[noreturn]] void usage(const std::string& problem) {
    std::fprintf(stderr,
                 "tidewake-render: %s\n"
                 "usage: tidewake-render [input] [-o output] [--program N] [--param NAME=VALUE]... [--set NAME=TEXT]...\n"
                 "                       [--tempo BPM] [--stopped] [--note N] [--tail SECONDS] [--rate R] [--bypass]\n",
                 problem.c_str());
    std::exit(2);
}

Options parse(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto next = [&] {
            if (i + 1 >= argc) usage("missing value after " + a);
            return std::string(argv[++i]);
        };
        if (a == "-o" || a == "--output") {
            o.output = next();
        } else if (a == "--program") {
            o.program = wholeOption(a, next(), 0, tidewakeDescriptor().programCount - 1);
        } else if (a == "--param" || a == "--set") {
            std::string kv = next();
            size_t eq = kv.find('=');
            if (eq == std::string::npos) usage(a + " wants NAME=" + (a == "--set" ? "TEXT: " : "VALUE: ") + kv);
            o.settings.push_back({kv.substr(0, eq), kv.substr(eq + 1), a == "--set"});
        } else if (a == "--tempo") {
            o.transport.tempo = numberOption(a, next(), 1, 999);
        } else if (a == "--stopped") {
            o.transport.playing = false;
        } else if (a == "--note") {
            o.note = wholeOption(a, next(), 0, 127);
        } else if (a == "--tail") {
            o.tail = numberOption(a, next(), 0, 600);
        } else if (a == "--rate") {
            o.rate = wholeOption(a, next(), 8000, 384000);
        } else if (a == "--bypass") {
            o.bypass = true;
        } else if (a.size() > 1 && a[0] == '-') {
            usage("unknown option " + a);
        } else if (o.input.empty()) {
            o.input = a;
        } else {
            usage("one input file at most");
        }
    }
    return o;
}

// The host index of a parameter named by its name in patches or by its label.
int hostIndex(HostedPlugin& plugin, const std::string& key) {
    const ModelDescriptor& d = tidewakeDescriptor();
    for (size_t index = 0; index < d.hostOrder.size(); ++index)
        if (d.parameters[static_cast<size_t>(d.hostOrder[index])].name == key) return static_cast<int>(index);
    return plugin.findParameter(key);
}

void render(const Options& o) {
    AudioBuffer input = o.input.empty() ? makeDemoSignal(o.rate) : readAudioFile(o.input);
    if (input.channels < 1 || input.frames() == 0) throw std::runtime_error("the input holds no audio");

    HostedPlugin plugin(&VSTPluginMain);
    constexpr int block = 512;
    plugin.transport = o.transport;
    plugin.open(static_cast<float>(input.sampleRate), block);
    plugin.apply(o.program, o.settings, o.bypass, hostIndex);
    AudioBuffer output = plugin.render(input, {o.note, o.tail, false, o.output});
    writeAudioFile(o.output, output);
    std::printf("rendered %.2f s at %d Hz into %s\n", double(output.frames()) / output.sampleRate, output.sampleRate,
                o.output.c_str());
}

}  // namespace
}  // namespace tw

int main(int argc, char** argv) {
    try {
        tw::Options options;
        try {
            options = tw::parse(argc, argv);
        } catch (const tw::UsageError& e) {
            std::fprintf(stderr, "tidewake-render: %s\n", e.what());
            return 2;
        }
        tw::render(options);
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "tidewake-render: %s\n", e.what());
        return 1;
    }
}
