// The audio call offers the processor the frames ahead that the block holds only while
// its last frame came back silent: a processor at work is handed one frame per call and
// nothing is copied for it in vain, and a silent one still takes its runs.
#include "WatchedInstance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace tw::test {
namespace {

constexpr float kRate = 48000.0f;

// A tone, then silence long enough for the loop to fall silent, then a second tone.
std::vector<float> toneGapTone() {
    std::vector<float> x(static_cast<std::size_t>(kRate) * 4);
    for (std::size_t n = 0; n < 6000; ++n) {
        x[n] = 0.3f * std::sin(0.02f * static_cast<float>(n));
        x[n + static_cast<std::size_t>(kRate) * 3] = 0.2f * std::sin(0.07f * static_cast<float>(n));
    }
    return x;
}

struct Rendered {
    std::vector<float> left, right;
    std::vector<AudioCallRecord> calls;
};

Rendered render(int block) {
    QuietHost host;
    auto factory = std::make_unique<WatchedFactory>();
    WatchedFactory& watched = *factory;
    Instance instance(host, std::move(factory));
    instance.setSampleRate(kRate);
    instance.activate();
    const std::vector<float> input = toneGapTone();
    Rendered out;
    out.left.resize(input.size());
    out.right.resize(input.size());
    std::vector<float> inL = input, inR = input;
    for (std::size_t at = 0; at < input.size(); at += static_cast<std::size_t>(block)) {
        int n = static_cast<int>(std::min(static_cast<std::size_t>(block), input.size() - at));
        float* ins[2] = {inL.data() + at, inR.data() + at};
        float* outs[2] = {out.left.data() + at, out.right.data() + at};
        instance.process(ins, outs, n, false, Transport());
    }
    instance.deactivate();
    out.calls = watched.calls;
    return out;
}

TEST(FramesAhead, OfferedOnlyAfterASilentFrameAndTheSoundStaysTheSame) {
    const Rendered blocks = render(512);
    int runs = 0;
    int loudCalls = 0;
    for (std::size_t k = 0; k < blocks.calls.size(); ++k) {
        const AudioCallRecord& c = blocks.calls[k];
        if (!c.silentBefore) {
            ++loudCalls;
            ASSERT_EQ(c.offered, 1) << "call " << k;
        }
        if (c.done > 1) ++runs;
        ASSERT_LE(c.done, c.offered) << "call " << k;
    }
    // Both kinds happened: the tones kept the processor at work, the gap let it run.
    EXPECT_GT(loudCalls, 1000);
    EXPECT_GT(runs, 10);

    // Sample by sample, where no frame ever has one ahead: the same samples.
    const Rendered frames = render(1);
    for (const AudioCallRecord& c : frames.calls) ASSERT_EQ(c.offered, 1);
    ASSERT_EQ(frames.left.size(), blocks.left.size());
    for (std::size_t n = 0; n < blocks.left.size(); ++n) {
        ASSERT_EQ(std::memcmp(&frames.left[n], &blocks.left[n], sizeof(float)), 0) << n;
        ASSERT_EQ(std::memcmp(&frames.right[n], &blocks.right[n], sizeof(float)), 0) << n;
    }
}

}  // namespace
}  // namespace tw::test
