// The factory programs as a listener meets them: each one, rendered over the demo input,
// gives a sound of its own that is finite, audible and unlike every other program's.
#include "product/TidewakeEditorFactory.h"
#include "vst2/Entry.h"
#include "product/TidewakeFactory.h"
#include "tools/common/DemoSignal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace tw;

namespace {

vst2::intptr quietHost(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

// The left and right outputs of a program over the first seconds of the demo input.
std::vector<float> render(int program, const AudioBuffer& input, long frames) {
    vst2::AEffect* e = createEffect(&quietHost, std::make_unique<TidewakeFactory>(), &tidewakeEditor());
    e->dispatcher(e, vst2::effSetSampleRate, 0, 0, nullptr, float(input.sampleRate));
    e->dispatcher(e, vst2::effSetProgram, 0, program, nullptr, 0);
    e->dispatcher(e, vst2::effMainsChanged, 0, 1, nullptr, 0);
    const int block = 512;
    std::vector<float> inL(block), inR(block), outL(block), outR(block), out;
    for (long at = 0; at < frames; at += block) {
        for (int i = 0; i < block; ++i) {
            long n = std::min(at + i, input.frames() - 1);
            inL[std::size_t(i)] = input.samples[std::size_t(2 * n)];
            inR[std::size_t(i)] = input.samples[std::size_t(2 * n + 1)];
        }
        float* ins[2] = {inL.data(), inR.data()};
        float* outs[2] = {outL.data(), outR.data()};
        e->processReplacing(e, ins, outs, block);
        for (int i = 0; i < block; ++i) {
            out.push_back(outL[std::size_t(i)]);
            out.push_back(outR[std::size_t(i)]);
        }
    }
    e->dispatcher(e, vst2::effClose, 0, 0, nullptr, 0);
    return out;
}

double rms(const std::vector<float>& a, const std::vector<float>* b = nullptr) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        double d = a[i] - (b ? (*b)[i] : 0.0f);
        sum += d * d;
    }
    return std::sqrt(sum / double(a.size()));
}

}  // namespace

TEST(FactorySound, EveryProgramSoundsFiniteAudibleAndItsOwn) {
    AudioBuffer input = makeDemoSignal(48000);
    long frames = 4 * 48000;
    std::vector<std::vector<float>> outputs;
    for (int program = 0; program < 16; ++program) {
        outputs.push_back(render(program, input, frames));
        const std::vector<float>& out = outputs.back();
        bool finite = true;
        for (float v : out) finite = finite && std::isfinite(v);
        EXPECT_TRUE(finite) << "program " << program;
        EXPECT_GT(rms(out), 0.01) << "program " << program;
    }
    for (int a = 0; a < 16; ++a)
        for (int b = a + 1; b < 16; ++b)
            EXPECT_GT(rms(outputs[std::size_t(a)], &outputs[std::size_t(b)]), 0.005) << a << " and " << b;
}
