// The whole audio call of the plug-in, as a host makes it: blocks of 512 samples of
// music-like input through the default program, in multiples of real time at 48 kHz
// stereo, beside a plain copy of the same blocks measured in the same run. It shows what
// the host boundary adds to the engine: the frame buffering and the guards on what the
// host sends.
#include "vst2/Entry.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr float kRate = 48000.0f;
constexpr int kBlock = 512;
constexpr int kBlocks = 94;  // about a second

vst2::intptr host(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

struct Blocks {
    std::vector<float> left = std::vector<float>(kBlock * kBlocks), right = left;
    Blocks() {
        for (size_t n = 0; n < left.size(); ++n) {
            double t = static_cast<double>(n) / kRate;
            left[n] = static_cast<float>(0.12 * std::sin(2 * M_PI * 220.0 * t) + 0.05 * std::sin(2 * M_PI * 1250.0 * t));
            right[n] = left[n] * 0.8f;
        }
    }
};

void counters(benchmark::State& state) {
    state.counters["xRealtime"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kBlock * kBlocks / kRate, benchmark::Counter::kIsRate);
}

void PlainBlockCopy(benchmark::State& state) {
    Blocks in;
    std::vector<float> outL(kBlock), outR(kBlock);
    for (auto _ : state) {
        for (int b = 0; b < kBlocks; ++b) {
            std::copy_n(in.left.data() + b * kBlock, kBlock, outL.data());
            std::copy_n(in.right.data() + b * kBlock, kBlock, outR.data());
            benchmark::DoNotOptimize(outL.data());
            benchmark::ClobberMemory();
        }
    }
    counters(state);
}

void runAudioCall(benchmark::State& state, bool silent) {
    ::setenv("XDG_CONFIG_HOME", "/nonexistent/tidewake-bench", 1);
    vst2::AEffect* e = VSTPluginMain(&host);
    e->dispatcher(e, vst2::effSetSampleRate, 0, 0, nullptr, kRate);
    e->dispatcher(e, vst2::effMainsChanged, 0, 1, nullptr, 0);
    Blocks in;
    if (silent) {
        std::fill(in.left.begin(), in.left.end(), 0.0f);
        std::fill(in.right.begin(), in.right.end(), 0.0f);
    }
    std::vector<float> outL(kBlock), outR(kBlock);
    auto second = [&] {
        for (int b = 0; b < kBlocks; ++b) {
            float* ins[2] = {in.left.data() + b * kBlock, in.right.data() + b * kBlock};
            float* outs[2] = {outL.data(), outR.data()};
            e->processReplacing(e, ins, outs, kBlock);
            benchmark::DoNotOptimize(outL.data());
        }
    };
    second();
    for (auto _ : state) second();
    counters(state);
    e->dispatcher(e, vst2::effClose, 0, 0, nullptr, 0);
}

void AudioCall(benchmark::State& state) { runAudioCall(state, false); }

// Silent input from the start: the instance as it sits on an idle track.
void SilentAudioCall(benchmark::State& state) { runAudioCall(state, true); }

// Prints the ratio once all runs are in, so that it holds on a noisy machine.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) seconds_[run.benchmark_name()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        if (seconds_.count("AudioCall") && seconds_.count("SilentAudioCall"))
            std::printf("silent / active audio call: %.4f\n", seconds_["SilentAudioCall"] / seconds_["AudioCall"]);
    }

private:
    std::map<std::string, double> seconds_;
};

}  // namespace

BENCHMARK(PlainBlockCopy)->Unit(benchmark::kMillisecond);
BENCHMARK(AudioCall)->Unit(benchmark::kMillisecond);
BENCHMARK(SilentAudioCall)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
