// The engine on its AVX2 loops against the same engine on the baseline ones: the same
// bits out, sample for sample, over settings that take every hot loop (a sweeping delay
// read primed, a smear, both shifter pairs) and over input no host should send.
#include "EngineHarness.h"

#include "engine/Lfo.h"
#include "engine/StereoDelayLine.h"
#include "engine/WideVectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>

using namespace tw;
using namespace tw::test;

namespace {

struct Setting {
    const char* name;
    FrameControls controls;
};

std::vector<Setting> settings() {
    std::vector<Setting> all;
    FrameControls heavy;
    heavy.antiReflection = true;
    heavy.smearAmount = 1.0f;
    heavy.lfoTarget = Lfo::kDelayTime;
    heavy.lfoRate = 0.8f;
    heavy.lfoAmount = 1.0f;
    heavy.feedbackAmount = 0.9f;
    heavy.delayTime = 0.6f;
    heavy.freqShiftAmount = 0.6f;
    heavy.crossChannels = true;
    all.push_back({"heavy", heavy});
    FrameControls shortDelay = heavy;
    shortDelay.delayTime = 0.05f;  // reads that reach into the frame's own writes
    shortDelay.lfoAmount = 0.6f;
    all.push_back({"short sweeping delay", shortDelay});
    FrameControls slow = heavy;
    slow.lfoRate = 0.1f;  // a delay that moves too slowly to be primed
    slow.lfoAmount = 0.55f;
    slow.antiReflection = false;
    slow.sidebandMix = 0.3f;
    all.push_back({"slow delay, both sidebands", slow});
    FrameControls phase;
    phase.lfoTarget = Lfo::kPhaseShift;
    phase.lfoAmount = 0.9f;
    phase.lfoStereo = true;
    phase.feedbackAmount = 0.5f;
    phase.delayTime = 0.4f;
    phase.lowPassFreq = 0.3f;
    phase.highPassFreq = 0.4f;
    all.push_back({"phase LFO and filters", phase});
    all.push_back({"default", FrameControls()});
    return all;
}

// A tone with noise, then what no host should send: NaN, infinities, huge values,
// subnormals and a full-scale square, each between stretches of music.
Stereo hostileInput(float rate) {
    const size_t length = static_cast<size_t>(rate * 3.0f) / 8 * 8;
    Stereo s(length);
    std::mt19937 generator(23);
    std::uniform_real_distribution<float> noise(-0.1f, 0.1f);
    for (size_t n = 0; n < length; ++n) {
        float v = 0.4f * std::sin(0.013f * static_cast<float>(n)) + noise(generator);
        s.left[n] = v;
        s.right[n] = -0.7f * v + noise(generator);
    }
    const size_t step = length / 8;
    s.left[step] = std::numeric_limits<float>::quiet_NaN();
    s.right[2 * step + 3] = std::numeric_limits<float>::infinity();
    s.left[3 * step + 5] = -std::numeric_limits<float>::infinity();
    for (size_t n = 4 * step; n < 4 * step + 400; ++n) s.left[n] = s.right[n] = (n % 2 ? 1e30f : -1e30f);
    for (size_t n = 5 * step; n < 5 * step + 4000; ++n) s.left[n] = s.right[n] = 1e-41f;
    for (size_t n = 6 * step; n < 6 * step + 4000; ++n) s.left[n] = s.right[n] = (n / 50) % 2 ? 1.0f : -1.0f;
    return s;
}

Stereo render(const FrameControls& controls, float rate, const Stereo& input, bool wide) {
    setWideVectors(wide);
    EngineHarness h(rate, 77);
    h.controls = controls;
    h.controls.reset = true;
    Stereo out = h.run(input);
    setWideVectors(true);
    return out;
}

}  // namespace

TEST(WidePath, SameBitsAsTheBaselineForEverySettingRateAndHostileInput) {
    if (!wideVectorsAvailable()) GTEST_SKIP() << "this processor has no AVX2";
    for (float rate : {44100.0f, 48000.0f, 96000.0f, 192000.0f}) {
        const Stereo input = hostileInput(rate);
        for (const Setting& setting : settings()) {
            const Stereo base = render(setting.controls, rate, input, false);
            const Stereo wide = render(setting.controls, rate, input, true);
            ASSERT_EQ(std::memcmp(base.left.data(), wide.left.data(), base.size() * sizeof(float)), 0)
                << setting.name << " at " << rate;
            ASSERT_EQ(std::memcmp(base.right.data(), wide.right.data(), base.size() * sizeof(float)), 0)
                << setting.name << " at " << rate;
        }
    }
}

// The comparison above is only worth something if the setting reaches the loops: the
// heavy one does sound, and differs from what the default makes of the same input.
TEST(WidePath, TheHeavySettingSounds) {
    const Stereo input = hostileInput(48000.0f);
    const Stereo heavy = render(settings()[0].controls, 48000.0f, input, wideVectorsAvailable());
    const Stereo plain = render(FrameControls(), 48000.0f, input, wideVectorsAvailable());
    double energy = 0.0, difference = 0.0;
    for (size_t n = 0; n < input.size() / 8; ++n) {
        energy += static_cast<double>(heavy.left[n]) * heavy.left[n];
        difference += std::fabs(static_cast<double>(heavy.left[n]) - plain.left[n]);
    }
    EXPECT_GT(energy, 1.0);
    EXPECT_GT(difference, 1.0);
}

// Two lines fed the same, one read on the wide loops and one on the baseline, frame by
// frame round a small ring many times over: delays that sweep fast and slowly, apart and
// together on the two channels, with reads that run across the ring's end.
TEST(WidePath, DelayReadsMatchTheBaselineRoundTheRing) {
    if (!wideVectorsAvailable()) GTEST_SKIP() << "this processor has no AVX2";
    constexpr int kFrame = StereoDelayLine::kFrame;
    StereoDelayLine wide;
    StereoDelayLine base;
    wide.setSize(1024);
    base.setSize(1024);
    wide.restart();
    base.restart();
    std::mt19937 generator(31);
    std::uniform_real_distribution<float> signal(-1.0f, 1.0f);
    int primedFrames = 0;
    float delay[2] = {300.0f, 300.0f};
    for (int frame = 0; frame < 4000; ++frame) {
        // Sweeps of different speeds, now on both channels alike, now apart.
        const float speed = frame % 800 < 400 ? 0.9f : 0.01f;
        const float wobble = std::sin(static_cast<float>(frame) * 0.05f);
        float delays[2][kFrame];
        float slopes[2];
        for (int c = 0; c < 2; ++c) {
            const float target = 400.0f + 350.0f * wobble * (c == 1 && frame % 1600 >= 800 ? -1.0f : 1.0f);
            slopes[c] = std::clamp((target - delay[c]) / kFrame, -speed, speed);
            for (int n = 0; n < kFrame; ++n) {
                delay[c] = std::max(delay[c] + slopes[c], 1e-7f);
                delays[c][n] = delay[c];
            }
        }
        float outWide[2][kFrame];
        float outBase[2][kFrame];
        bool aheadWide[2];
        bool aheadBase[2];
        setWideVectors(true);
        wide.readStereoFrame(delays, slopes, outWide, aheadWide);
        setWideVectors(false);
        base.readStereoFrame(delays, slopes, outBase, aheadBase);
        setWideVectors(true);
        for (int c = 0; c < 2; ++c) {
            ASSERT_EQ(aheadWide[c], aheadBase[c]) << frame;
            if (aheadWide[c]) {
                ASSERT_EQ(std::memcmp(outWide[c], outBase[c], sizeof(outWide[c])), 0) << "frame " << frame << " channel " << c;
            }
        }
        if (aheadWide[0] && aheadWide[1] && std::fabs(slopes[0]) >= StereoDelayLine::kFastSlope &&
            std::fabs(slopes[1]) >= StereoDelayLine::kFastSlope)
            ++primedFrames;
        for (int n = 0; n < kFrame; ++n) {
            const float l = signal(generator);
            const float r = signal(generator);
            for (StereoDelayLine* line : {&wide, &base}) {
                line->write(l, r);
                line->advance();
            }
        }
    }
    EXPECT_GT(primedFrames, 1000);
}
