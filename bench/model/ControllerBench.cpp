// What the editor's polling costs over a real plug-in instance, against a plain clone of the
// patch measured in the same run: a fast tick when nothing changed (it runs every 11 ms),
// and a fast tick after the host changed a parameter, which takes a new snapshot and
// refreshes the plain main layout: 19 controls, their live values and the buttons' states.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>

#include "cushy/CushyView.h"
#include "cushy/StringTable.h"
#include "graphics/ResourceManager.h"
#include "host/Entry.h"
#include "host/PluginInstance.h"
#include "model/ModelController.h"
#include "model/TidewakeDescriptor.h"
#include "model/TidewakeFactory.h"

namespace {

using namespace tw;

vst2::intptr silentHost(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
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
        if (controller->rootView().currentLayout() != "Tidewake_main") throw std::runtime_error("no main layout");
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
        std::printf("updateAfterChange %8.2f x clonePatch (the plain main layout)\n",
                    reporter.times["updateAfterChange"] / clone);
    }
    benchmark::Shutdown();
    return 0;
}
