// How the spec scanners compare with a plain pass over the same text, and the evaluator
// with the bare number conversion, measured in the same run. Layouts are parsed at view
// construction and action parameters at every click, so the scanners should stay within a
// small factor of reading the bytes once.
#include "bench/RatioReporter.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecLanguage.h"

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <string>

namespace {

// A layout in the shape of the main screen, with 120 views of the usual kinds.
std::string makeLayout() {
    std::string text = "// Main screen\nbounds: { 0, 0, 525, 475 }\nviews: {\n";
    for (int i = 0; i < 120; ++i) {
        const std::string n = std::to_string(i);
        text += "\t{ type: knob, variable: params.p" + n + ", bounds: { " + n + "*4, 50, 64, h-100 }\n"
                "\t  , film: { name: \"knob\", frames: 101 }, default: 0.5 /* centre */\n"
                "\t  , hint: \"[xlate]Knob " + n + "[/xlate]: [var]params.p" + n + ".human[/var]\" }\n";
    }
    return text + "}\nautoexecs: { { action: \"refresh\", delay: 0.1 sec, repeat: 1/3 } }\n";
}

const std::string layout = makeLayout();

// The floor: one pass that copies the bytes and looks at each of them.
void copyAndCount(benchmark::State& state) {
    for (auto _ : state) {
        std::string copy = layout;
        int lines = 0;
        for (char c : copy) lines += c == '\n';
        benchmark::DoNotOptimize(lines);
    }
}
BENCHMARK(copyAndCount);

// What view construction does: the top map, the list of views, and each view's map.
void parseLayout(benchmark::State& state) {
    for (auto _ : state) {
        tw::SpecMap top = tw::parseMap(layout);
        std::size_t entries = 0;
        for (const std::string& view : tw::parseList(tw::lookup(top, "views"))) {
            entries += tw::parseMap(view).size();
        }
        benchmark::DoNotOptimize(entries);
    }
}
BENCHMARK(parseLayout);

void convertNumber(benchmark::State& state) {
    const std::string text = "0.1";
    for (auto _ : state) {
        double value;
        std::from_chars(text.data(), text.data() + text.size(), value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(convertNumber);

void evaluateExpression(benchmark::State& state) {
    const std::string text = "$ * 0.1 + (20 - 4) / 2";
    for (auto _ : state) benchmark::DoNotOptimize(tw::evaluateDouble(text, 5));
}
BENCHMARK(evaluateExpression);

void evaluateBounds(benchmark::State& state) {
    const std::string text = "{ 50, 50, w-100, h-100 }";
    for (auto _ : state) benchmark::DoNotOptimize(tw::parseBounds(text, {0, 0, 525, 475}));
}
BENCHMARK(evaluateBounds);

// Keeps each benchmark's time per iteration so that the ratios can be printed at the end.
}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    tw::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    auto ratio = [&reporter](const char* name, const char* reference) {
        if (reporter.times.count(name) && reporter.times.count(reference)) {
            std::printf("%-20s %6.1f x %s\n", name, reporter.times[name] / reporter.times[reference], reference);
        }
    };
    ratio("parseLayout", "copyAndCount");
    ratio("evaluateExpression", "convertNumber");
    ratio("evaluateBounds", "convertNumber");
    benchmark::Shutdown();
    return 0;
}
