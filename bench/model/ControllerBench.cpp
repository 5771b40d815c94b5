// What the editor's polling costs over a real plug-in instance, against a plain clone of the
// patch measured in the same run: a fast tick when nothing changed (it runs every 11 ms),
// and a fast tick after the host changed a parameter, which takes a new snapshot and
// refreshes a layout showing every parameter's name and live value.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

#include "cushy/CushyView.h"
#include "cushy/StringTable.h"
#include "graphics/ResourceManager.h"
#include "host/Entry.h"
#include "host/PluginInstance.h"
#include "model/ModelController.h"
#include "model/TidewakeDescriptor.h"
#include "model/TidewakeFactory.h"
#include "speclang/SpecLanguage.h"

namespace {

using namespace tw;

vst2::intptr silentHost(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

// Two captions per parameter, as the plain main layout has under each knob.
std::string parameterLayout() {
    std::string text = "views: {\n";
    const auto& rows = tidewakeDescriptor().parameters;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::string x = std::to_string(i % 5 * 105), y = std::to_string(i / 5 * 100);
        text += "  { type: caption, bounds: { " + x + ", " + y + ", 100, 20 }, text: \"" + rows[i].label + "\" }\n";
        text += "  { type: caption, bounds: { " + x + ", " + y + " + 60, 100, 20 }, text: \"[var]params." +
                rows[i].name + ".human[/var]\" }\n";
    }
    return text + "}\n";
}

struct Editor {
    ResourceManager resources{"Tidewake", "/nonexistent/"};
    StringTable strings;
    vst2::AEffect* effect = createEffect(&silentHost, std::make_unique<TidewakeFactory>());
    PluginInstance& instance = *PluginInstance::of(effect);
    std::unique_ptr<ModelController> controller;

    Editor() {
        strings.load(resources, "Tidewake");
        controller = instance.getFactory().createController(instance, resources, strings);
        controller->open(nullptr);
        controller->rootView().load("");
        controller->rootView().build(parseMap(parameterLayout()));
        controller->fastTick();
    }
    ~Editor() {
        controller.reset();
        effect->dispatcher(effect, vst2::effClose, 0, 0, nullptr, 0);
    }
};

void clonePatch(benchmark::State& state) {
    Editor editor;
    for (auto _ : state) benchmark::DoNotOptimize(editor.instance.clonePatch(0));
}
BENCHMARK(clonePatch);

void fastTickUnchanged(benchmark::State& state) {
    Editor editor;
    for (auto _ : state) editor.controller->fastTick();
}
BENCHMARK(fastTickUnchanged);

void updateAfterChange(benchmark::State& state) {
    Editor editor;
    float value = 0.25f;
    for (auto _ : state) {
        value = 0.75f - value + 0.25f;
        editor.instance.setParameter(0, Param::wetMix, value);
        editor.controller->fastTick();
    }
}
BENCHMARK(updateAfterChange);

class RatioReporter : public benchmark::ConsoleReporter {
public:
    std::map<std::string, double> times;
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) times[run.benchmark_name()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double clone = reporter.times["clonePatch"];
    if (clone > 0) {
        std::printf("fastTickUnchanged %8.2f x clonePatch\n", reporter.times["fastTickUnchanged"] / clone);
        std::printf("updateAfterChange %8.2f x clonePatch (38 captions, 19 live values)\n",
                    reporter.times["updateAfterChange"] / clone);
    }
    benchmark::Shutdown();
    return 0;
}
