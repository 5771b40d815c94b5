// Throughput of the engine in multiples of real time at 48 kHz stereo, for the default
// setting, a heavy one (also on the baseline loops) and silent input (in blocks, and
// frame by frame), each also as a ratio against a plain copy of the same buffers in
// frames of 8 and the heavy one against two Bode frequency shifters, in the same run.
#include "bench/engine/BodeShifters.h"
#include "engine/EngineTables.h"
#include "engine/FrameControls.h"
#include "engine/ShifterEngine.h"
#include "engine/WideVectors.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr float kRate = 48000.0f;
constexpr size_t kSeconds = 1;
constexpr size_t kSamples = static_cast<size_t>(kRate) * kSeconds;

// A second of music-like input: a few partials and a little noise at about -12 dB.
struct Input {
    std::vector<float> left = std::vector<float>(kSamples);
    std::vector<float> right = std::vector<float>(kSamples);
    Input() {
        std::mt19937 generator(1);
        std::uniform_real_distribution<float> noise(-0.02f, 0.02f);
        for (size_t n = 0; n < kSamples; ++n) {
            double t = static_cast<double>(n) / kRate;
            float v = static_cast<float>(0.12 * std::sin(2 * M_PI * 220.0 * t) + 0.08 * std::sin(2 * M_PI * 331.0 * t) +
                                         0.05 * std::sin(2 * M_PI * 1250.0 * t));
            left[n] = v + noise(generator);
            right[n] = v * 0.8f + noise(generator);
        }
    }
};

const Input& input() {
    static const Input in;
    return in;
}

const std::vector<float>& silence() {
    static const std::vector<float> zeros(kSamples, 0.0f);
    return zeros;
}

tw::FrameControls heavySetting() {
    tw::FrameControls c;
    c.antiReflection = true;
    c.smearAmount = 1.0f;
    c.lfoTarget = tw::Lfo::kDelayTime;
    c.lfoRate = 0.8f;  // about 25 Hz
    c.lfoAmount = 1.0f;
    c.feedbackAmount = 0.9f;
    c.delayTime = 0.6f;
    c.freqShiftAmount = 0.6f;
    return c;
}

void runEngine(benchmark::State& state, tw::FrameControls controls, const float* left, const float* right,
               bool frameByFrame = false) {
    tw::buildEngineTables();
    auto engine = std::make_unique<tw::ShifterEngine>();
    engine->reset(kRate, 1);
    std::vector<float> outL(kSamples), outR(kSamples);
    tw::FrameReport report;
    controls.reset = true;
    // In blocks of 512, as the processor hands them over.
    constexpr size_t kBlock = 512;
    float needles[kBlock / tw::ShifterEngine::kFrameSize];
    auto second = [&] {
        for (size_t at = 0; at < kSamples;) {
            controls.inputs[0] = left + at;
            controls.inputs[1] = right + at;
            controls.outputs[0] = outL.data() + at;
            controls.outputs[1] = outR.data() + at;
            size_t frames = frameByFrame ? 1 : std::min(kBlock - at % kBlock, kSamples - at) / tw::ShifterEngine::kFrameSize;
            at += static_cast<size_t>(engine->processFrames(controls, static_cast<int>(frames), report, needles)) *
                  tw::ShifterEngine::kFrameSize;
            controls.reset = false;
        }
    };
    second();  // past the start, into the steady state
    for (auto _ : state) {
        second();
        benchmark::DoNotOptimize(outL.data());
        benchmark::ClobberMemory();
    }
    state.counters["xRealtime"] = benchmark::Counter(static_cast<double>(state.iterations() * kSeconds),
                                                     benchmark::Counter::kIsRate);
}

void PlainCopy(benchmark::State& state) {
    const Input& in = input();
    std::vector<float> outL(kSamples), outR(kSamples);
    for (auto _ : state) {
        for (size_t at = 0; at < kSamples; at += tw::ShifterEngine::kFrameSize) {
            benchmark::DoNotOptimize(at);
            std::copy_n(in.left.data() + at, tw::ShifterEngine::kFrameSize, outL.data() + at);
            std::copy_n(in.right.data() + at, tw::ShifterEngine::kFrameSize, outR.data() + at);
        }
        benchmark::DoNotOptimize(outL.data());
        benchmark::ClobberMemory();
    }
    state.counters["xRealtime"] = benchmark::Counter(static_cast<double>(state.iterations() * kSeconds),
                                                     benchmark::Counter::kIsRate);
}

void DefaultProgram(benchmark::State& state) {
    runEngine(state, tw::FrameControls(), input().left.data(), input().right.data());
}

void HeavySetting(benchmark::State& state) {
    runEngine(state, heavySetting(), input().left.data(), input().right.data());
}

// The same on the baseline loops, as a processor without AVX2 runs it.
void HeavyBaselinePath(benchmark::State& state) {
    tw::setWideVectors(false);
    runEngine(state, heavySetting(), input().left.data(), input().right.data());
    tw::setWideVectors(true);
}

void SilentInput(benchmark::State& state) { runEngine(state, tw::FrameControls(), silence().data(), silence().data()); }

// Two Bode shifters, one per channel, over the same second in blocks of 512.
void TwoBodeShifters(benchmark::State& state) {
    tw::bench::BodeShifters bode(kRate);
    if (!bode.loaded()) {
        state.SkipWithError("swh-plugins' bode_shifter_1431.so is not installed");
        return;
    }
    const Input& in = input();
    std::vector<float> outL(kSamples), outR(kSamples);
    constexpr size_t kBlock = tw::bench::BodeShifters::kMaxBlock;
    for (auto _ : state) {
        for (size_t at = 0; at < kSamples; at += kBlock) {
            size_t n = std::min(kBlock, kSamples - at);
            bode.run(in.left.data() + at, in.right.data() + at, outL.data() + at, outR.data() + at, n);
        }
        benchmark::DoNotOptimize(outL.data());
        benchmark::ClobberMemory();
    }
    state.counters["xRealtime"] = benchmark::Counter(static_cast<double>(state.iterations() * kSeconds),
                                                     benchmark::Counter::kIsRate);
}

// The same, handed over one frame at a time, as the plug-in's audio call does today.
void SilentFrameByFrame(benchmark::State& state) {
    runEngine(state, tw::FrameControls(), silence().data(), silence().data(), true);
}

BENCHMARK(PlainCopy)->Unit(benchmark::kMillisecond);
BENCHMARK(DefaultProgram)->Unit(benchmark::kMillisecond);
BENCHMARK(HeavySetting)->Unit(benchmark::kMillisecond);
BENCHMARK(HeavyBaselinePath)->Unit(benchmark::kMillisecond);
BENCHMARK(SilentInput)->Unit(benchmark::kMillisecond);
BENCHMARK(SilentFrameByFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(TwoBodeShifters)->Unit(benchmark::kMillisecond);

// Prints the ratios once all runs are in, so they hold on a noisy machine.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) seconds_[run.benchmark_name()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        auto ratio = [&](const char* a, const char* b) { return seconds_[a] / seconds_[b]; };
        if (seconds_.count("PlainCopy") == 0 || seconds_.count("DefaultProgram") == 0) return;
        std::printf("heavy / plain copy:   %.1f\n", ratio("HeavySetting", "PlainCopy"));
        std::printf("default / plain copy: %.1f\n", ratio("DefaultProgram", "PlainCopy"));
        std::printf("heavy / default:      %.2f\n", ratio("HeavySetting", "DefaultProgram"));
        std::printf("silent / default:     %.4f\n", ratio("SilentInput", "DefaultProgram"));
        std::printf("silent frame by frame / default: %.4f\n", ratio("SilentFrameByFrame", "DefaultProgram"));
        if (seconds_.count("HeavyBaselinePath"))
            std::printf("heavy throughput / the same on the baseline path: %.2f\n",
                        ratio("HeavyBaselinePath", "HeavySetting"));
        if (seconds_.count("TwoBodeShifters") && seconds_["TwoBodeShifters"] > 0.0)
            std::printf("heavy throughput / two Bode shifters: %.2f\n", ratio("TwoBodeShifters", "HeavySetting"));
    }

private:
    std::map<std::string, double> seconds_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
