// What the editor costs over a real plug-in instance with the product's main layout. The
// polling, against a plain clone of the patch measured in the same run: a fast tick when
// nothing changed (it runs every 11 ms), and a fast tick after the host changed a
// parameter, which takes a new snapshot and refreshes every control, live value and
// button state. The painting, against a plain copy of the window's pixels: a full repaint
// of the face, and what one turn of the delay-time knob repaints. And one mouse move of a
// knob drag through the variable's number handle, against the same write as text by name.
// The zoom, at 200 % against 100 % in the same run: opening (layout, pictures and fonts
// read afresh, first frame painted), an idle tick with the window's animations, a knob turn,
// and the memory the open editor holds.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include <cstring>
#include <vector>

#include "product/TidewakeEditorFactory.h"
#include "bench/RatioReporter.h"
#include "cushy/CushyView.h"
#include "cushy/VariableReading.h"
#include "cushy/StringTable.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/ResourceManager.h"
#include "vst2/Entry.h"
#include "vst2/Vst2Plugin.h"
#include "editor/ModelController.h"
#include "product/TidewakeDescriptor.h"
#include "product/TidewakeFactory.h"

namespace {

using namespace tw;

vst2::intptr silentHost(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

struct Editor {
    ResourceManager ownResources{"Tidewake", "/nonexistent/"};
    ResourceManager& resources;
    StringTable strings;
    vst2::AEffect* effect = createEffect(&silentHost, std::make_unique<TidewakeFactory>(), &tidewakeEditor());
    Instance& instance = Vst2Plugin::of(effect)->instance();
    std::unique_ptr<ModelController> controller;

    std::unique_ptr<WindowDouble> window;

    // With `painted`, the editor opens in a window of its size and paints once.
    // With `shared`, the pictures and fonts of earlier editors, as a plug-in's process keeps them.
    explicit Editor(bool painted = false, std::int32_t zoom = 100, ResourceManager* shared = nullptr)
        : resources(shared ? *shared : ownResources) {
        strings.load(resources, "Tidewake");
        controller = tidewakeEditor().createController(instance, resources, strings);
        controller->setZoom(Zoom(zoom));
        const IntRect size = controller->size();
        if (painted) window = std::make_unique<WindowDouble>(controller->client(), size.width, size.height);
        controller->open(window.get());
        if (controller->rootView().currentLayout() != "Tidewake_main") throw std::runtime_error("no main layout");
        if (window) window->paintAll();
    }
    ~Editor() {
        if (controller) controller->close();
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
        editor.instance.editParameter(0, Param::wetMix, value);
        editor.controller->fastTick();
    }
}
BENCHMARK(updateAfterChange);

void plainWindowCopy(benchmark::State& state) {
    std::vector<std::uint32_t> from(525 * 475, 0xFF102436), to(from.size());
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size() * 4);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(plainWindowCopy);

void fullRepaint(benchmark::State& state) {
    Editor editor(true);
    for (auto _ : state) editor.window->paintAll();
}
BENCHMARK(fullRepaint);

// Pixels repainted for one turn of the delay-time knob, against the whole window.
double turnArea = 0;

// One step of a drag on the delay-time knob as the screen sees it: the value changes,
// the next fast tick refreshes, and what that invalidated is painted.
void delayKnobTurn(benchmark::State& state) {
    Editor editor(true, std::int32_t(state.range(0)));
    float value = 0.25f;
    auto turn = [&] {
        value = 0.75f - value + 0.25f;
        editor.controller->setVariable(editor.controller->rootView(), "params.delayTime", std::to_string(value), false);
        editor.controller->fastTick();
    };
    editor.window->clearInvalidations();
    turn();
    std::int64_t area = 0;
    for (const IntRect& r : editor.window->invalidations()) area += std::int64_t(r.width) * r.height;
    const IntRect size = editor.controller->size();
    if (state.range(0) == 100) turnArea = double(area) / (double(size.width) * size.height);
    editor.window->paintInvalid();
    for (auto _ : state) {
        turn();
        editor.window->paintInvalid();
    }
}
BENCHMARK(delayKnobTurn)->Arg(100)->Arg(200);

// An editor opened from nothing: its own store of pictures and fonts, the layout read and
// built at the zoom, and the first frame painted.
void openEditor(benchmark::State& state) {
    for (auto _ : state) {
        Editor editor(true, std::int32_t(state.range(0)));
        benchmark::DoNotOptimize(editor.window.get());
    }
}
BENCHMARK(openEditor)->Arg(100)->Arg(200)->Unit(benchmark::kMillisecond);

// The same once the process holds the pictures and fonts: every open after the first.
void reopenEditor(benchmark::State& state) {
    ResourceManager shared("Tidewake", "/nonexistent/");
    { Editor first(true, std::int32_t(state.range(0)), &shared); }
    for (auto _ : state) {
        Editor editor(true, std::int32_t(state.range(0)), &shared);
        benchmark::DoNotOptimize(editor.window.get());
    }
}
BENCHMARK(reopenEditor)->Arg(100)->Arg(200)->Unit(benchmark::kMillisecond);

// The open editor at rest over 100 ms of its timers: the meters, lamps and needle tick and
// paint what changed, with audio feeding them as a playing host does.
void idleTicks(benchmark::State& state) {
    Editor editor(true, std::int32_t(state.range(0)));
    float in[2][64] = {}, out[2][64];
    float* ins[2] = {in[0], in[1]};
    float* outs[2] = {out[0], out[1]};
    for (int i = 0; i < 64; ++i) in[0][i] = in[1][i] = (i % 16 < 8) ? 0.5f : -0.5f;
    for (auto _ : state) {
        // The audio is the host's cost, not the editor's.
        state.PauseTiming();
        for (int block = 0; block < 75; ++block) editor.effect->processReplacing(editor.effect, ins, outs, 64);
        state.ResumeTiming();
        editor.window->advance(100);
        editor.window->paintInvalid();
    }
}
BENCHMARK(idleTicks)->Arg(100)->Arg(200);

// The bytes the heap holds for an open, painted editor at a zoom, beyond the instance's.
double editorBytes(std::int32_t zoom) {
    Editor base(false);
    base.controller->close();
    const struct mallinfo2 before = mallinfo2();
    double bytes = 0;
    {
        Editor editor(true, zoom);
        const struct mallinfo2 open = mallinfo2();
        bytes = double(open.uordblks + open.hblkhd) - double(before.uordblks + before.hblkhd);
    }
    return bytes;
}

// What one mouse move of a drag costs the model, before anything is painted: the value
// written as text through the variable's name, as the controls once did, and through the
// number handle a control holds from the moment its layout loads.
void dragMoveByName(benchmark::State& state) {
    Editor editor;
    double value = 0.25;
    for (auto _ : state) {
        value = 0.75 - value + 0.25;
        editor.controller->setVariable(editor.controller->rootView(), "params.delayTime", formatVariableNumber(value), true);
    }
}
BENCHMARK(dragMoveByName);

void dragMoveByHandle(benchmark::State& state) {
    Editor editor;
    auto handle = editor.controller->numberVariable(editor.controller->rootView(), "params.delayTime");
    double value = 0.25;
    for (auto _ : state) {
        value = 0.75 - value + 0.25;
        handle->write(value, true);
    }
}
BENCHMARK(dragMoveByHandle);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    tw::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double clone = reporter.times["clonePatch"];
    if (clone > 0) {
        std::printf("fastTickUnchanged %8.2f x clonePatch\n", reporter.times["fastTickUnchanged"] / clone);
        std::printf("updateAfterChange %8.2f x clonePatch (the main layout)\n",
                    reporter.times["updateAfterChange"] / clone);
    }
    const double byName = reporter.times["dragMoveByName"], byHandle = reporter.times["dragMoveByHandle"];
    if (byName > 0) std::printf("dragMoveByHandle %8.2f x dragMoveByName (one mouse move of a knob drag)\n", byHandle / byName);
    const double copy = reporter.times["plainWindowCopy"], full = reporter.times["fullRepaint"];
    if (copy > 0 && full > 0) {
        std::printf("fullRepaint %8.2f x plainWindowCopy (525 x 475; %.3f ms)\n", full / copy, full / 1e6);
        std::printf("delayKnobTurn %8.3f x fullRepaint; it invalidates %.3f of the window\n",
                    reporter.times["delayKnobTurn/100"] / full, turnArea);
    }
    auto zoomRatio = [&](const char* name, const char* what) {
        const double at100 = reporter.times[std::string(name) + "/100"], at200 = reporter.times[std::string(name) + "/200"];
        if (at100 > 0) std::printf("%s/200 %8.2f x %s/100 (%s)\n", name, at200 / at100, name, what);
    };
    zoomRatio("openEditor", "at most 2; the pictures decoded afresh");
    zoomRatio("reopenEditor", "the pictures kept from the first open");
    zoomRatio("idleTicks", "at most 4, the pixel count");
    zoomRatio("delayKnobTurn", "at most 4, the pixel count");
    const double bytes100 = editorBytes(100), bytes200 = editorBytes(200);
    std::printf("open editor's heap: %.1f MiB at 100 %%, %.1f MiB at 200 %% (%.2f x)\n", bytes100 / 1048576,
                bytes200 / 1048576, bytes200 / bytes100);
    benchmark::Shutdown();
    return 0;
}
