// What a refresh of the view tree costs when nothing changed, against reading the same
// variables from the host's map, in the same run. The editor refreshes the whole tree every
// fast tick (11 ms), so an idle refresh must cost little more than the reads themselves.
#include "cushy/CushyView.h"
#include "cushy/CushyWindowClient.h"
#include "cushy/doubles/MapHost.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/ResourceManager.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
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
    if (reporter.times.count("refreshUnchanged") && reporter.times.count("readVariables"))
        std::printf("refreshUnchanged %6.2f x readVariables (200 views, 200 variables)\n",
                    reporter.times["refreshUnchanged"] / reporter.times["readVariables"]);
    benchmark::Shutdown();
    return 0;
}
