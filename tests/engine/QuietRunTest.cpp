// A silent engine taking its quiet frames in runs against the same engine taken frame by
// frame: the same samples, the same reports and needles, and the same sound after every
// wake, for LFO shapes and targets whose silent upkeep differs.
#include "EngineHarness.h"

#include "engine/Lfo.h"
#include "engine/WideVectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

using namespace tw;
using namespace tw::test;

namespace {

constexpr float kRate = 48000.0f;
constexpr int kFrame = ShifterEngine::kFrameSize;

bool sameBits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Bursts of tone and noise between long silences, each long enough for the loop to fall
// silent, and a single small sample that wakes it in the middle of a block.
Stereo gappedInput() {
    std::mt19937 generator(7);
    std::uniform_real_distribution<float> noise(-0.4f, 0.4f);
    Stereo s(static_cast<size_t>(kRate * 9.0f));
    auto burst = [&](size_t from, size_t length, bool tone) {
        for (size_t n = from; n < from + length; ++n) {
            float v = tone ? 0.3f * std::sin(0.05f * static_cast<float>(n)) : noise(generator);
            s.left[n] = v;
            s.right[n] = tone ? v * 0.5f : noise(generator);
        }
    };
    burst(0, 12000, true);
    burst(static_cast<size_t>(kRate * 3.0f) + 5, 4000, false);
    s.right[static_cast<size_t>(kRate * 5.5f) + 301] = 1e-6f;
    burst(static_cast<size_t>(kRate * 7.2f) + 100, 2000, true);
    return s;
}

struct Setting {
    const char* name;
    FrameControls controls;
};

std::vector<Setting> settings() {
    std::vector<Setting> all;
    FrameControls c;
    c.feedbackAmount = 0.6f;
    c.delayTime = 0.5f;
    c.lfoAmount = 0.9f;
    c.lfoRate = 0.7f;
    for (int shape = 0; shape < 4; ++shape)
        for (int target = 0; target < 4; ++target) {
            c.lfoShape = shape;
            c.lfoTarget = target;
            c.feedbackAmount = (shape + target) % 2 == 0 ? 0.0f : 0.3f;
            all.push_back({"shape and target", c});
        }
    c.lfoShape = Lfo::kRandom;
    c.lfoSync = true;
    c.playing = true;
    c.songPosition = 3.25f;
    all.push_back({"synced random", c});
    c.lfoShape = Lfo::kSine;
    c.lfoTarget = Lfo::kDelayTime;
    all.push_back({"synced sine on the delay", c});
    FrameControls heavy;
    heavy.smearAmount = 1.0f;
    heavy.feedbackAmount = 0.0f;
    heavy.range = FrameControls::kSync;
    heavy.playing = true;
    heavy.crossChannels = true;
    all.push_back({"smear, sync range, cross", heavy});
    return all;
}

}  // namespace

TEST(QuietRun, RunsMatchFrameByFrameThroughSilenceAndWakes) {
    const Stereo input = gappedInput();
    const size_t frames = input.size() / kFrame;
    // The scan for a wake runs on the wide path where the processor has one: both answer.
    for (bool wide : {false, true})
    for (const Setting& setting : settings()) {
        setWideVectors(wide);
        EngineHarness single(kRate, 99);
        single.controls = setting.controls;
        single.controls.reset = true;
        single.keepReports = true;
        const Stereo expected = single.run(input);

        EngineHarness runs(kRate, 99);
        FrameControls c = setting.controls;
        c.reset = true;
        Stereo out(input.size());
        std::vector<float> needles(64);
        size_t longest = 0;
        for (size_t f = 0; f < frames;) {
            // Blocks of an odd length, so that runs start and end anywhere in the periods.
            int offered = static_cast<int>(std::min<size_t>(37 - f % 37, frames - f));
            c.inputs[0] = input.left.data() + f * kFrame;
            c.inputs[1] = input.right.data() + f * kFrame;
            c.outputs[0] = out.left.data() + f * kFrame;
            c.outputs[1] = out.right.data() + f * kFrame;
            FrameReport report;
            int n = runs.engine().processFrames(c, offered, report, needles.data());
            c.reset = false;
            ASSERT_GE(n, 1);
            ASSERT_LE(n, offered);
            longest = std::max(longest, static_cast<size_t>(n));
            for (int k = 0; k < n; ++k) {
                const FrameReport& one = single.reports[f + static_cast<size_t>(k)];
                ASSERT_TRUE(sameBits(needles[static_cast<size_t>(k)], one.needle)) << setting.name << " frame " << f + k;
                if (n > 1) {
                    ASSERT_TRUE(one.silent) << setting.name << " frame " << f + k;
                }
            }
            const FrameReport& last = single.reports[f + static_cast<size_t>(n) - 1];
            ASSERT_EQ(report.silent, last.silent) << setting.name << " frame " << f;
            ASSERT_TRUE(sameBits(report.level, last.level)) << setting.name << " frame " << f;
            ASSERT_TRUE(sameBits(report.lfoValue, last.lfoValue)) << setting.name << " frame " << f;
            ASSERT_TRUE(sameBits(report.midiActivity, last.midiActivity)) << setting.name << " frame " << f;
            f += static_cast<size_t>(n);
        }
        // A synced LFO stops a run at each control update, every 8 frames.
        EXPECT_GE(longest, setting.controls.lfoSync ? 8u : 9u) << setting.name << ": the silence never ran in runs";
        for (size_t n = 0; n < input.size(); ++n) {
            ASSERT_TRUE(sameBits(out.left[n], expected.left[n])) << setting.name << " sample " << n;
            ASSERT_TRUE(sameBits(out.right[n], expected.right[n])) << setting.name << " sample " << n;
        }
    }
    setWideVectors(true);
}

// Events and a restart go frame by frame; the quiet run never swallows them.
TEST(QuietRun, EventsAndResetsTakeOneFrame) {
    EngineHarness h(kRate);
    h.runSilence(static_cast<size_t>(kRate * 2.0f));
    Stereo quiet(64 * kFrame);
    std::vector<float> needles(64);
    FrameControls c = h.controls;
    c.inputs[0] = quiet.left.data();
    c.inputs[1] = quiet.right.data();
    c.outputs[0] = quiet.left.data();
    c.outputs[1] = quiet.right.data();
    FrameReport report;
    const uint32_t noteOn = 0x90u << 16 | 64u << 8 | 100u;
    c.events = &noteOn;
    c.eventCount = 1;
    EXPECT_EQ(h.engine().processFrames(c, 64, report, needles.data()), 1);
    EXPECT_GT(report.midiActivity, 0.9f);
    c.eventCount = 0;
    c.reset = true;
    EXPECT_EQ(h.engine().processFrames(c, 64, report, needles.data()), 1);
    c.reset = false;
    EXPECT_EQ(h.engine().processFrames(c, 64, report, needles.data()), 64);
}

// The silent LFO step leaves the phase and the shown value exactly where the full step
// does, for every shape it takes on itself.
TEST(QuietRun, LfoAdvanceMatchesRun) {
    std::mt19937 generator(3);
    std::uniform_real_distribution<float> phase(-0.5f, 0.5f);
    std::uniform_real_distribution<float> rate(-0.2f, 0.2f);
    for (int shape = 0; shape < 4; ++shape)
        for (int delay = 0; delay < 2; ++delay)
            for (int trial = 0; trial < 200; ++trial) {
                Lfo a;
                a.phase = phase(generator);
                a.increment = trial % 10 == 0 ? 0.0f : rate(generator);
                Lfo b = a;
                EngineRandom ra, rb;
                ra.seed(5, 6);
                rb.seed(5, 6);
                a.run(shape, false, delay != 0, ra);
                b.advance(shape, false, delay != 0, rb);
                a.updateShownValue(delay != 0);
                b.updateShownValue(delay != 0);
                ASSERT_TRUE(sameBits(a.phase, b.phase)) << shape << " " << trial;
                ASSERT_TRUE(sameBits(a.value, b.value)) << shape << " " << trial;
                ASSERT_EQ(ra.x, rb.x);
                ASSERT_EQ(ra.y, rb.y);
            }
}

// Many silent steps at once leave the LFO where as many single steps do, and show the
// same value after each, for the plain shapes on both kinds of target.
TEST(QuietRun, PlainStepsInOneCallMatchSingleSteps) {
    constexpr int kMaxSteps = 16;
    std::mt19937 generator(17);
    std::uniform_real_distribution<float> phase(-0.5f, 0.5f);
    std::uniform_real_distribution<float> rate(-0.3f, 0.3f);
    for (int shape : {Lfo::kSine, Lfo::kSaw, Lfo::kSquare})
        for (bool delay : {false, true})
            for (int trial = 0; trial < 100; ++trial) {
                Lfo a;
                a.phase = phase(generator);
                a.increment = trial % 10 == 0 ? 1e-7f : rate(generator);
                a.value = 0.25f;
                Lfo b = a;
                EngineRandom random;
                random.seed(1, 2);
                const int steps = 1 + trial % kMaxSteps;
                float shown[kMaxSteps];
                b.advancePlain(shape, delay, steps, [&](int j, float value) { shown[j] = value; });
                for (int j = 0; j < steps; ++j) {
                    a.advance(shape, false, delay, random);
                    a.updateShownValue(delay);
                    ASSERT_TRUE(sameBits(a.value, shown[j])) << shape << " " << trial << " step " << j;
                }
                ASSERT_TRUE(sameBits(a.phase, b.phase)) << shape << " " << trial;
                ASSERT_TRUE(sameBits(a.value, b.value)) << shape << " " << trial;
                ASSERT_TRUE(sameBits(a.values[0], b.values[0])) << shape << " " << trial;
                if (delay) {
                    ASSERT_TRUE(sameBits(a.values[4], b.values[4])) << shape << " " << trial;
                }
                ASSERT_EQ(random.x, 1u);  // plain shapes draw nothing
            }
}

// The user turns the LFO's rate and shape while the engine is silent: the runs that
// follow step the LFO in full while its rate's smoother moves, and in bulk once it rests,
// and show the needle as frame by frame does throughout.
TEST(QuietRun, TurningTheLfoDuringSilenceMatchesFrameByFrame) {
    const size_t frames = static_cast<size_t>(kRate * 6.0f) / kFrame;
    Stereo input(frames * kFrame);
    for (size_t n = 0; n < 6000; ++n) input.left[n] = input.right[n] = 0.3f * std::sin(0.01f * static_cast<float>(n));
    // The controls of each frame: the rate and the shape change after the loop fell silent.
    auto controlsAt = [](size_t frame) {
        FrameControls c;
        c.lfoAmount = 0.8f;
        c.lfoTarget = frame < 20000 ? Lfo::kFrequencyShift : Lfo::kDelayTime;
        c.lfoRate = frame < 12000 ? 0.4f : (frame < 24000 ? 0.75f : 0.2f);
        c.lfoShape = frame < 28000 ? Lfo::kSine : Lfo::kSaw;
        return c;
    };
    EngineHarness single(kRate, 5);
    std::vector<FrameReport> expected;
    Stereo expectedOut(input.size());
    for (size_t f = 0; f < frames; ++f) {
        FrameControls c = controlsAt(f);
        c.reset = f == 0;
        c.inputs[0] = input.left.data() + f * kFrame;
        c.inputs[1] = input.right.data() + f * kFrame;
        c.outputs[0] = expectedOut.left.data() + f * kFrame;
        c.outputs[1] = expectedOut.right.data() + f * kFrame;
        FrameReport report;
        single.engine().processFrame(c, report);
        expected.push_back(report);
    }
    EngineHarness runs(kRate, 5);
    Stereo out(input.size());
    std::vector<float> needles(64);
    size_t longest = 0;
    for (size_t f = 0; f < frames;) {
        // A run never spans a change of the controls, as the processor's blocks do not.
        size_t end = std::min(frames, f + 64 - f % 64);
        for (size_t g = f + 1; g < end; ++g)
            if (controlsAt(g).lfoRate != controlsAt(f).lfoRate || controlsAt(g).lfoShape != controlsAt(f).lfoShape ||
                controlsAt(g).lfoTarget != controlsAt(f).lfoTarget)
                end = g;
        FrameControls c = controlsAt(f);
        c.reset = f == 0;
        c.inputs[0] = input.left.data() + f * kFrame;
        c.inputs[1] = input.right.data() + f * kFrame;
        c.outputs[0] = out.left.data() + f * kFrame;
        c.outputs[1] = out.right.data() + f * kFrame;
        FrameReport report;
        const int n = runs.engine().processFrames(c, static_cast<int>(end - f), report, needles.data());
        longest = std::max(longest, static_cast<size_t>(n));
        for (int k = 0; k < n; ++k)
            ASSERT_TRUE(sameBits(needles[static_cast<size_t>(k)], expected[f + static_cast<size_t>(k)].needle))
                << "frame " << f + static_cast<size_t>(k);
        const FrameReport& last = expected[f + static_cast<size_t>(n) - 1];
        ASSERT_TRUE(sameBits(report.lfoValue, last.lfoValue)) << "frame " << f;
        f += static_cast<size_t>(n);
    }
    EXPECT_GT(longest, 32u);
    EXPECT_EQ(std::memcmp(out.left.data(), expectedOut.left.data(), out.size() * sizeof(float)), 0);
}
