// The audio call hands a silent processor the frames a block already holds, all at once:
// every factory program over bursts and long silences sounds the same, sample for sample,
// in blocks of one sample (a frame at a time) as in blocks of 512 and of 333.
#include "product/TidewakeEditorFactory.h"
#include "product/TidewakeFactory.h"
#include "vst2/Entry.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <vector>

using namespace tw;

namespace {

vst2::intptr quietHost(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

constexpr int kRate = 48000;

// Two short bursts, each followed by more silence than the loop needs to fall silent.
std::vector<float> gapped(int channel) {
    std::vector<float> x(std::size_t(kRate) * 5);
    for (std::size_t n = 0; n < 9000; ++n) x[n] = 0.3f * std::sin(0.031f * float(n + std::size_t(channel) * 7));
    for (std::size_t n = 0; n < 3000; ++n) x[n + std::size_t(kRate) * 3 + 77] = (n % 13 < 6 ? 0.2f : -0.2f);
    return x;
}

std::vector<float> renderHere(int program, int block) {
    vst2::AEffect* e = createEffect(&quietHost, std::make_unique<TidewakeFactory>(), &tidewakeEditor());
    e->dispatcher(e, vst2::effSetSampleRate, 0, 0, nullptr, float(kRate));
    e->dispatcher(e, vst2::effSetProgram, 0, program, nullptr, 0);
    e->dispatcher(e, vst2::effMainsChanged, 0, 1, nullptr, 0);
    std::vector<float> inL = gapped(0), inR = gapped(1);
    std::vector<float> outL(inL.size()), outR(inL.size());
    for (std::size_t at = 0; at < inL.size(); at += std::size_t(block)) {
        int n = int(std::min(std::size_t(block), inL.size() - at));
        float* ins[2] = {inL.data() + at, inR.data() + at};
        float* outs[2] = {outL.data() + at, outR.data() + at};
        e->processReplacing(e, ins, outs, n);
    }
    e->dispatcher(e, vst2::effClose, 0, 0, nullptr, 0);
    outL.insert(outL.end(), outR.begin(), outR.end());
    return outL;
}

// Each instance of a process gets a seed of its own; a child process per rendering makes
// every one the first instance after the fork, with the same seed.
std::vector<float> render(int program, int block) {
    int fds[2];
    if (pipe(fds) != 0) return {};
    pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        std::vector<float> out = renderHere(program, block);
        const char* p = reinterpret_cast<const char*>(out.data());
        std::size_t left = out.size() * sizeof(float);
        while (left > 0) {
            ssize_t n = write(fds[1], p, left);
            if (n <= 0) _exit(1);
            p += n;
            left -= std::size_t(n);
        }
        _exit(0);
    }
    close(fds[1]);
    std::vector<float> out(std::size_t(kRate) * 5 * 2);
    char* p = reinterpret_cast<char*>(out.data());
    std::size_t got = 0, want = out.size() * sizeof(float);
    while (got < want) {
        ssize_t n = read(fds[0], p + got, want - got);
        if (n <= 0) break;
        got += std::size_t(n);
    }
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (got != want || !WIFEXITED(status) || WEXITSTATUS(status) != 0) out.clear();
    return out;
}

}  // namespace

TEST(SilentBlocks, EveryProgramSoundsTheSameInAnyBlockSize) {
    for (int program = 0; program < 16; ++program) {
        std::vector<float> single = render(program, 1);
        for (int block : {512, 333}) {
            std::vector<float> blocks = render(program, block);
            ASSERT_FALSE(blocks.empty());
            ASSERT_EQ(single.size(), blocks.size());
            EXPECT_EQ(std::memcmp(single.data(), blocks.data(), single.size() * sizeof(float)), 0)
                << "program " << program << " in blocks of " << block;
        }
    }
}
