// What a refresh of the view tree costs when nothing changed, against reading the same
// variables from the host's map, in the same run. The editor refreshes the whole tree every
// fast tick (11 ms), so an idle refresh must cost little more than the reads themselves.
// And what one step of a knob drag costs (the move, the value, the repaint of what changed)
// against a repaint of the whole window, on a screen of panels and 19 knobs, with the
// pixels repainted against the knob's own area.
#include "bench/RatioReporter.h"
#include "cushy/CushyView.h"
#include "cushy/CushyWindowClient.h"
#include "cushy/doubles/MapHost.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/ResourceManager.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

namespace {

constexpr int viewCount = 200;

std::string name(int i) { return "params.p" + std::to_string(i) + ".human"; }

// 200 live captions, each showing one variable, as the value texts under the knobs do.
std::string makeLayout() {
    std::string text = "views: {\n";
    for (int i = 0; i < viewCount; ++i)
        text += "  { type: caption, bounds: { " + std::to_string(i % 20 * 25) + ", " + std::to_string(i / 20 * 40) +
                ", 25, 40 }, text: \"[var]" + name(i) + "[/var]\" }\n";
    return text + "}\n";
}

struct Tree {
    tw::ResourceManager resources{"Tidewake", "/nonexistent/"};
    tw::MapHost host{&resources};
    std::shared_ptr<tw::CushyView> root = std::make_shared<tw::CushyView>(host, tw::IntRect{0, 0, 525, 475});
    tw::CushyWindowClient client{root};
    tw::WindowDouble window{client, 525, 475};

    Tree() {
        for (int i = 0; i < viewCount; ++i) host.variables[name(i)] = std::to_string(i * 0.25) + " ms";
        host.layouts["bench"] = makeLayout();
        root->load("bench");
        client.attach(&window);
    }
    ~Tree() { client.attach(nullptr); }
};

void readVariables(benchmark::State& state) {
    Tree tree;
    std::vector<std::string> names;
    for (int i = 0; i < viewCount; ++i) names.push_back(name(i));
    for (auto _ : state) {
        std::size_t total = 0;
        for (const std::string& n : names) total += tree.host.getVariable(*tree.root, n).size();
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(readVariables);

void refreshUnchanged(benchmark::State& state) {
    Tree tree;
    tree.window.clearInvalidations();
    for (auto _ : state) tree.root->refresh();
    if (!tree.window.invalidations().empty()) state.SkipWithError("an unchanged refresh repainted");
}
BENCHMARK(refreshUnchanged);

// A screen like the editor's: a gradient ground, panels, 19 knobs with drawn caps and their
// value captions.
std::string knobScreen() {
    std::string text = "views: {\n  { type: gradient, start: { 0, 0 }, end: { 0, 475 }, stops: { { 0, { 16, 36, 54 } },"
                       " { 1, { 11, 22, 32 } } } }\n";
    for (int panel = 0; panel < 4; ++panel)
        text += "  { type: rectangle, bounds: { " + std::to_string(8 + panel * 128) +
                ", 48, 120, 400 }, fill: { 16, 36, 54 }, frame: { color: { 36, 70, 94 } }, rounded: { 6, 6 } }\n";
    for (int i = 0; i < 19; ++i) {
        const std::string x = std::to_string(20 + i % 4 * 128), y = std::to_string(60 + i / 4 * 76);
        text += "  { type: knob, bounds: { " + x + ", " + y + ", 56, 56 }, variable: k" + std::to_string(i) +
                ", cap: { color: { 24, 40, 52 }, frame: { color: { 60, 100, 130 }, stroke: 2 } },"
                " dial: { color: white, stroke: 2.5, caps: round } }\n";
        text += "  { type: caption, bounds: { " + x + ", " + std::to_string(60 + i / 4 * 76 + 58) +
                ", 56, 14 }, align: center, text: \"[var]k" + std::to_string(i) + "[/var]\" }\n";
    }
    return text + "}\n";
}

struct KnobScreen {
    tw::ResourceManager resources{"Tidewake", "/nonexistent/"};
    tw::MapHost host{&resources};
    std::shared_ptr<tw::CushyView> root = std::make_shared<tw::CushyView>(host, tw::IntRect{0, 0, 525, 475});
    tw::CushyWindowClient client{root};
    tw::WindowDouble window{client, 525, 475};

    KnobScreen() {
        for (int i = 0; i < 19; ++i) host.variables["k" + std::to_string(i)] = "0.5";
        host.layouts["knobs"] = knobScreen();
        root->load("knobs");
        client.attach(&window);
        root->refresh();
        window.paintAll();
        // The first knob, grabbed at its centre.
        window.mouseMove(48, 88);
        window.mouseDown(48, 88);
    }
    ~KnobScreen() {
        window.mouseUp(48, 88);
        client.attach(nullptr);
    }
};

// Pixels repainted for one value change, against the knob's own 56 by 56.
double repaintedArea = 0;

void knobDragStep(benchmark::State& state) {
    KnobScreen screen;
    int y = 88;
    screen.window.paintInvalid();
    screen.window.clearInvalidations();
    screen.window.mouseMove(48, --y, 1);
    tw::IntRect area;
    for (const tw::IntRect& r : screen.window.invalidations()) area = tw::unionOf(area, r);
    repaintedArea = double(area.width) * area.height / (56.0 * 56.0);
    screen.window.paintInvalid();
    for (auto _ : state) {
        // Up and down by a pixel: each step is a value change.
        y += (y < 88) ? 1 : -1;
        screen.window.mouseMove(48, y, 1);
        screen.window.paintInvalid();
    }
}
BENCHMARK(knobDragStep);

void fullRepaint(benchmark::State& state) {
    KnobScreen screen;
    for (auto _ : state) screen.window.paintAll();
}
BENCHMARK(fullRepaint);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    tw::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (reporter.times.count("refreshUnchanged") && reporter.times.count("readVariables"))
        std::printf("refreshUnchanged %6.2f x readVariables (200 views, 200 variables)\n",
                    reporter.times["refreshUnchanged"] / reporter.times["readVariables"]);
    if (reporter.times.count("knobDragStep") && reporter.times.count("fullRepaint")) {
        std::printf("knobDragStep %6.3f x fullRepaint (525 x 475, 19 knobs)\n",
                    reporter.times["knobDragStep"] / reporter.times["fullRepaint"]);
        std::printf("pixels repainted per value change: %6.3f x the knob's own area\n", repaintedArea);
    }
    benchmark::Shutdown();
    return 0;
}
