// The real plug-in, end to end: what comes out of the audio call for a listener, with the
// frame latency the host is told about.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "vst2/Entry.h"

namespace tw {
namespace {

constexpr float kRate = 48000.0f;

vst2::intptr silentHost(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

class Plugin {
public:
    Plugin() : effect_(VSTPluginMain(&silentHost)) {
        effect_->dispatcher(effect_, vst2::effSetSampleRate, 0, 0, nullptr, kRate);
    }
    ~Plugin() { effect_->dispatcher(effect_, vst2::effClose, 0, 0, nullptr, 0.0f); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    void set(int hostIndex, float value) { effect_->setParameter(effect_, hostIndex, value); }
    void start() { effect_->dispatcher(effect_, vst2::effMainsChanged, 0, 1, nullptr, 0.0f); }
    void bypass(bool on) { effect_->dispatcher(effect_, vst2::effSetBypass, 0, on ? 1 : 0, nullptr, 0.0f); }

    // Runs a mono signal into both inputs in blocks of an awkward size; returns the left output.
    std::vector<float> run(const std::vector<float>& input, int block = 100) {
        std::vector<float> out(input.size());
        std::vector<float> inL(block), inR(block), outL(block), outR(block);
        for (size_t at = 0; at < input.size(); at += block) {
            int n = static_cast<int>(std::min<size_t>(block, input.size() - at));
            std::copy_n(input.begin() + at, n, inL.begin());
            std::copy_n(input.begin() + at, n, inR.begin());
            float* ins[2] = {inL.data(), inR.data()};
            float* outs[2] = {outL.data(), outR.data()};
            effect_->processReplacing(effect_, ins, outs, n);
            std::copy_n(outL.begin(), n, out.begin() + at);
        }
        return out;
    }

private:
    vst2::AEffect* effect_;
};

// Host indices, which differ from the parameter ids on purpose.
constexpr int kAmount = 1, kDelayTime = 5, kFeedback = 7, kWet = 12;

std::vector<float> burst(size_t length, size_t total) {
    std::vector<float> x(total, 0.0f);
    for (size_t n = 0; n < length; ++n) {
        double w = 0.5 - 0.5 * std::cos(2 * M_PI * n / length);
        x[n] = static_cast<float>(0.5 * w * std::sin(2 * M_PI * 2000.0 * n / kRate));
    }
    return x;
}

double centre(const std::vector<float>& x, size_t from, size_t to) {
    double sum = 0, weighted = 0;
    for (size_t n = from; n < to; ++n) {
        sum += double(x[n]) * x[n];
        weighted += double(x[n]) * x[n] * n;
    }
    return weighted / sum;
}

TEST(TidewakeSound, TheDryPathArrivesExactlyOneFrameLate) {
    Plugin p;
    p.set(kWet, 0.0f);
    p.start();
    std::vector<float> in = burst(4800, 9600);
    std::vector<float> out = p.run(in);
    for (size_t n = 0; n < 8; ++n) EXPECT_EQ(out[n], 0.0f);
    for (size_t n = 8; n < out.size(); ++n) ASSERT_EQ(out[n], in[n - 8]) << n;
}

TEST(TidewakeSound, EchoesArriveAtTheDelayTimeAfterTheFrameLatency) {
    Plugin p;
    // 0.1 s: pow(44100, sqrt(v)) / 44100 seconds.
    double root = std::log(0.1 * 44100.0) / std::log(44100.0);
    p.set(kDelayTime, static_cast<float>(root * root));
    p.set(kFeedback, 0.5f);
    p.set(kAmount, 0.5f);  // no shift: the echo keeps its pitch
    p.start();
    const size_t length = 2400, period = 4800;
    std::vector<float> out = p.run(burst(length, 4 * period));
    double dry = length / 2.0;
    for (int k = 1; k <= 2; ++k) {
        double echo = centre(out, k * period - 1000, k * period + length + 1000);
        EXPECT_NEAR(echo - dry, 8.0 + k * period - 1.0, 40.0) << k;
    }
}

TEST(TidewakeSound, BypassFadesTheWetSignalWhileTheTailRingsOn) {
    Plugin p;
    double root = std::log(0.1 * 44100.0) / std::log(44100.0);
    p.set(kDelayTime, static_cast<float>(root * root));
    p.set(kFeedback, 0.8f);
    p.start();
    p.run(burst(2400, 24000));
    p.bypass(true);
    std::vector<float> quiet = p.run(std::vector<float>(96000, 0.0f));
    double early = 0, late = 0;
    for (size_t n = 0; n < 4800; ++n) early += double(quiet[n]) * quiet[n];
    for (size_t n = 72000; n < 96000; ++n) late += std::fabs(quiet[n]);
    EXPECT_GT(early, 1e-3);
    EXPECT_EQ(late, 0.0);
    p.bypass(false);
    std::vector<float> back = p.run(std::vector<float>(24000, 0.0f));
    double tail = 0;
    for (size_t n = 4800; n < back.size(); ++n) tail += double(back[n]) * back[n];
    EXPECT_GT(tail, 0.05);
}

}  // namespace
}  // namespace tw
