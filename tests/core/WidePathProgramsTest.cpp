// Every factory program through the instance's audio call, on the engine's AVX2 loops and
// on its baseline ones: the same bits out, with a note and a tempo as a host sends them.
#include "WatchedInstance.h"

#include "engine/WideVectors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace tw::test {
namespace {

constexpr float kRate = 44100.0f;

std::vector<float> render(int program, bool wide) {
    setWideVectors(wide);
    QuietHost host;
    Instance instance(host, std::make_unique<WatchedFactory>());
    instance.setSampleRate(kRate);
    instance.setCurrentProgram(program);
    instance.activate();
    const std::size_t length = static_cast<std::size_t>(kRate) * 3;
    std::vector<float> inL(length), inR(length), outL(length), outR(length);
    for (std::size_t n = 0; n < length / 3; ++n) {
        inL[n] = 0.5f * std::sin(0.0314f * static_cast<float>(n)) * (n % 5000 < 2500 ? 1.0f : 0.2f);
        inR[n] = 0.4f * std::sin(0.0511f * static_cast<float>(n));
    }
    Transport transport;
    transport.valid = true;
    transport.playing = true;
    transport.tempo = 133.0;
    const int block = 37;
    for (std::size_t at = 0; at < length; at += block) {
        int n = static_cast<int>(std::min<std::size_t>(block, length - at));
        if (at == 0) instance.queueMidi(3, 0x90, 52, 100);
        float* ins[2] = {inL.data() + at, inR.data() + at};
        float* outs[2] = {outL.data() + at, outR.data() + at};
        instance.process(ins, outs, n, false, transport);
        transport.position += n * transport.tempo / 60.0 / kRate;
    }
    instance.deactivate();
    setWideVectors(true);
    outL.insert(outL.end(), outR.begin(), outR.end());
    return outL;
}

TEST(WidePathPrograms, EveryFactoryProgramGivesTheSameBitsOnBothPaths) {
    if (!wideVectorsAvailable()) GTEST_SKIP() << "this processor has no AVX2";
    QuietHost host;
    const int programs = Instance(host, std::make_unique<TidewakeFactory>()).descriptor().programCount;
    ASSERT_GT(programs, 1);
    for (int program = 0; program < programs; ++program) {
        const std::vector<float> base = render(program, false);
        const std::vector<float> wide = render(program, true);
        ASSERT_EQ(std::memcmp(base.data(), wide.data(), base.size() * sizeof(float)), 0) << "program " << program;
        double energy = 0.0;
        for (float v : wide) energy += static_cast<double>(v) * v;
        EXPECT_GT(energy, 0.0) << "program " << program << " made no sound to compare";
    }
}

}  // namespace
}  // namespace tw::test
