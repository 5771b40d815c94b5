// What a Ketch statement costs. The reference does, per pass, the work that any interpreter
// keeping its values as text must do: write a number as text and read it back, twice. The
// ratio of the two is the price of scanning, expanding and dispatching from the text.
#include "vector/KetchExecutor.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchVariables.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace tw::Ketch;

constexpr int passes = 1000;

class NullExecutor : public Executor {
public:
    bool format(Frame&, std::string_view, const std::vector<std::string>&, const std::vector<std::string>&) override {
        return true;
    }
    bool execute(Frame&, std::string_view, std::string_view) override { return false; }
    bool progress(Frame&, std::int32_t) override { return true; }
    bool load(Frame&, std::string_view, std::string&) override { return false; }
    void trace(Frame&, std::string_view) override {}
};

void textArithmeticReference(benchmark::State& state) {
    for (auto _ : state) {
        char sum[32] = "0";
        for (int i = 1; i <= passes; ++i) {
            char counter[32];
            std::snprintf(counter, sizeof counter, "%.13g", double(i));
            std::snprintf(sum, sizeof sum, "%.13g", std::strtod(sum, nullptr) + std::strtod(counter, nullptr));
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * passes);
}

void ketchLoop(benchmark::State& state) {
    NullExecutor executor;
    for (auto _ : state) {
        VariableMap variables;
        Frame frame(executor, variables, 1000000, 100);
        run(frame, "s=0\nfor i from:1 to:1000 [s={$s + $i}]");
        benchmark::DoNotOptimize(variables);
    }
    state.SetItemsProcessed(state.iterations() * passes);
}

}  // namespace

BENCHMARK(textArithmeticReference);
BENCHMARK(ketchLoop);
BENCHMARK_MAIN();
