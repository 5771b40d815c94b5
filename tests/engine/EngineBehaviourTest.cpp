#include "EngineHarness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

namespace tw::test {
namespace {

constexpr float kRate = 48000.0f;

// The plain shifter setting: all wet, no feedback, the shortest delay.
EngineHarness shifter(float rate = kRate) {
    EngineHarness h(rate);
    h.controls.delayTime = 0.0f;
    h.controls.feedbackAmount = 0.0f;
    h.controls.wetMix = 1.0f;
    h.controls.lowPassFreq = 1.0f;
    h.controls.highPassFreq = 0.0f;
    return h;
}

TEST(ShifterEngine, ShiftsASineByTheAmountAndSuppressesTheOtherSideband) {
    for (double hertz : {500.0, -500.0}) {
        EngineHarness h = shifter();
        h.controls.range = FrameControls::kWide;
        h.controls.freqShiftAmount = shiftAmount(hertz, 200.0);
        Stereo out = h.run(sine(1000.0f, kRate, 48000));
        size_t from = 16384, length = 16384;
        double peak = peakFrequency(out.left, from, length, kRate, 10.0, 4000.0);
        EXPECT_NEAR(peak, 1000.0 + hertz, 10.0) << hertz;
        double wanted = toneLevel(out.left, from, length, 1000.0 + hertz, kRate);
        double mirror = toneLevel(out.left, from, length, 1000.0 - hertz, kRate);
        double carrier = toneLevel(out.left, from, length, 1000.0, kRate);
        EXPECT_NEAR(wanted, 0.5, 0.05);
        EXPECT_LT(decibels(mirror / wanted), -40.0) << hertz;
        EXPECT_LT(decibels(carrier / wanted), -40.0) << hertz;
        EXPECT_NEAR(toneLevel(out.right, from, length, 1000.0 + hertz, kRate), wanted, 1e-3);
    }
}

TEST(ShifterEngine, SidebandMixChoosesTheSidebandAndItsMiddleIsRingModulation) {
    struct Case { float mix; double up; double down; };
    for (Case c : {Case{1.0f, 1.0, 0.0}, Case{0.0f, 0.0, 1.0}, Case{0.5f, 0.5, 0.5}}) {
        EngineHarness h = shifter();
        h.controls.freqShiftAmount = shiftAmount(300.0, 200.0);
        h.controls.sidebandMix = c.mix;
        Stereo out = h.run(sine(1000.0f, kRate, 32768));
        double up = toneLevel(out.left, 16384, 16384, 1300.0, kRate);
        double down = toneLevel(out.left, 16384, 16384, 700.0, kRate);
        EXPECT_NEAR(up, 0.5 * c.up, 0.03) << c.mix;
        EXPECT_NEAR(down, 0.5 * c.down, 0.03) << c.mix;
    }
}

TEST(ShifterEngine, AntiReflectionKeepsPartialsShiftedBelowZeroFromFoldingBack) {
    double mirrored[2];
    for (int anti = 0; anti < 2; ++anti) {
        EngineHarness h = shifter();
        h.controls.antiReflection = anti == 1;
        h.controls.freqShiftAmount = shiftAmount(-800.0, 200.0);
        Stereo out = h.run(sine(300.0f, kRate, 48000));
        mirrored[anti] = toneLevel(out.left, 16384, 16384, 500.0, kRate);
    }
    EXPECT_GT(mirrored[0], 0.4);
    EXPECT_LT(decibels(mirrored[1] / mirrored[0]), -30.0);
}


// A Hann-shaped tone burst at the start of an otherwise silent signal.
Stereo burst(float frequency, size_t length, size_t total, float amplitude = 0.5f) {
    Stereo s = sine(frequency, kRate, length, amplitude);
    for (size_t n = 0; n < length; ++n) {
        float w = 0.5f - 0.5f * std::cos(6.2831853f * static_cast<float>(n) / static_cast<float>(length));
        s.left[n] *= w;
        s.right[n] *= w;
    }
    s.left.resize(total);
    s.right.resize(total);
    return s;
}

// Energy-weighted centre in time of a stretch of the signal.
double centreOfEnergy(const std::vector<float>& x, size_t from, size_t to) {
    double sum = 0.0, weighted = 0.0;
    for (size_t n = from; n < to; ++n) {
        sum += double(x[n]) * x[n];
        weighted += double(x[n]) * x[n] * double(n);
    }
    return weighted / sum;
}

double energy(const std::vector<float>& x, size_t from, size_t to) {
    double sum = 0.0;
    for (size_t n = from; n < to; ++n) sum += double(x[n]) * x[n];
    return sum;
}

TEST(ShifterEngine, EchoesArriveAtTheDelayTimeEachShiftedOnceMore) {
    EngineHarness h = shifter();
    h.controls.delayTime = delayAmount(0.2);
    h.controls.feedbackAmount = 0.6f;
    h.controls.freqShiftAmount = shiftAmount(100.0, 200.0);
    const size_t burstLength = 2400, period = 9600;  // 50 ms, 200 ms
    Stereo out = h.run(burst(2000.0f, burstLength, 5 * period));
    // Nothing but the burst's own tail before the first echo: the dry path is not wet.
    EXPECT_LT(energy(out.left, burstLength + 200, period - 200), 1e-6);
    for (int k = 1; k <= 3; ++k) {
        size_t from = k * period - 1500, to = k * period + burstLength + 1500;
        double expected = burstLength / 2.0 + k * period - 1.0;
        EXPECT_NEAR(centreOfEnergy(out.left, from, to), expected, 48.0) << k;
        EXPECT_NEAR(peakFrequency(out.left, k * period - 400, 4096, kRate, 5.0, 4000.0), 2000.0 + 100.0 * k, 6.0)
            << k;
        EXPECT_NEAR(centreOfEnergy(out.right, from, to), centreOfEnergy(out.left, from, to), 1.0);
    }
    // Each pass loses what the feedback takes away.
    EXPECT_LT(energy(out.left, 2 * period - 1500, 3 * period - 1500),
              energy(out.left, period - 1500, 2 * period - 1500));
}

TEST(ShifterEngine, SyncedDelayFollowsTheTempoAndFoldsLongNotesIntoOneSecond) {
    struct Case { float tempo; float raw; double seconds; };
    // "1/4" at 120 bpm; "1/2" at 30 bpm is 4 s, halved twice; "1/128" at 60 bpm.
    for (Case c : {Case{120.0f, 1.0f - 3.0f / 14.0f, 0.5}, Case{30.0f, 1.0f, 1.0}, Case{60.0f, 0.0f, 1.0 / 32.0}}) {
        EngineHarness h = shifter();
        h.controls.delaySync = true;
        h.controls.delayTime = c.raw;
        h.controls.tempo = c.tempo;
        h.run(sine(440.0f, kRate, 4096));
        EXPECT_NEAR(h.engine().delaySamples(0), kRate * c.seconds - 1.0, 1e-2) << c.tempo;
        EXPECT_EQ(h.engine().delaySamples(1), h.engine().delaySamples(0));
    }
}

TEST(ShifterEngine, SyncedDelayLosesHalfTheSmearSoTheEchoStaysOnTheBeat) {
    EngineHarness h = shifter();
    h.controls.delaySync = true;
    h.controls.delayTime = 1.0f - 3.0f / 14.0f;  // "1/4" at 120 bpm: 0.5 s
    h.controls.smearAmount = 1.0f;
    h.run(sine(440.0f, kRate, 4096));
    EXPECT_NEAR(h.engine().delaySamples(0), kRate * 0.5 - 1.0 - h.engine().smearTotalLength() * 0.5, 1e-2);
}

TEST(ShifterEngine, FullSmearSpreadsEachEchoOverItsTotalLength) {
    EngineHarness h = shifter();
    h.controls.smearAmount = 1.0f;
    h.controls.freqShiftAmount = 0.5f;
    h.controls.delayTime = delayAmount(0.05);
    Stereo in(48000);
    in.left[0] = in.right[0] = 0.9f;
    Stereo out = h.run(in);
    double total = h.engine().smearTotalLength();
    EXPECT_NEAR(total / kRate * 1000.0, 121.40320241451263, 1e-3);
    // The click comes out as a long, dense tail: more than a tenth of its energy arrives
    // later than half the total length after the echo, and little after four times it.
    size_t echo = 2400;
    double all = energy(out.left, echo - 100, 48000);
    EXPECT_GT(energy(out.left, echo + size_t(total / 2), 48000) / all, 0.1);
    EXPECT_LT(energy(out.left, echo + size_t(total * 4), 48000) / all, 0.05);
    EXPECT_GT(energy(out.right, echo + size_t(total / 2), 48000) / energy(out.right, echo - 100, 48000), 0.1);
}

TEST(ShifterEngine, SilenceGivesExactZerosAfterOnePointOneSecondsAndAWakeHasNoOldEchoes) {
    EngineHarness h = shifter();
    h.keepReports = true;
    h.controls.delayTime = 1.0f;  // 1 s: the old burst stays in the line
    h.controls.freqShiftAmount = 0.5f;
    const size_t burstLength = 4800;
    Stereo out = h.run(burst(1000.0f, burstLength, 96000));
    // The loop is quiet from the burst's end; silence comes 1.1 s later, within 256 samples.
    size_t quietFrom = burstLength / 8, silentBy = quietFrom + size_t(1.1 * kRate / 8) + 32 + 1;
    ASSERT_LT(silentBy, h.reports.size());
    EXPECT_FALSE(h.reports[silentBy - 40].silent);
    for (size_t f = silentBy; f < h.reports.size(); ++f) ASSERT_TRUE(h.reports[f].silent) << f;
    for (size_t n = silentBy * 8; n < out.size(); ++n) ASSERT_EQ(out.left[n], 0.0f) << n;
    // The echo of the burst was there before the rest began.
    EXPECT_GT(energy(out.left, 48000, 48000 + burstLength), 1.0);

    // Wake with a new burst: the output is what a fresh engine makes of it, with none of
    // the old burst still in the delay line.
    Stereo again = burst(3000.0f, 960, 96000);
    Stereo woken = h.run(again);
    EngineHarness fresh = shifter();
    fresh.controls = h.controls;
    fresh.controls.reset = true;
    Stereo clean = fresh.run(again);
    for (size_t n = 0; n < woken.size(); ++n) ASSERT_NEAR(woken.left[n], clean.left[n], 1e-6) << n;
    EXPECT_GT(energy(woken.left, 48000, 49000), 0.1);
}

TEST(ShifterEngine, BypassFadesTheWetSignalWhileTheTailGoesOn) {
    auto echoing = [] {
        EngineHarness h = shifter();
        h.controls.delayTime = delayAmount(0.1);
        h.controls.feedbackAmount = 0.8f;
        h.controls.freqShiftAmount = shiftAmount(20.0, 200.0);
        h.run(burst(1000.0f, 2400, 25200));
        return h;
    };
    EngineHarness h = echoing();
    EngineHarness reference = echoing();  // the same, left unbypassed

    h.controls.wetMix = 0.0f;  // what the processor gives the engine while bypassed
    Stereo bypassed = h.run(Stereo(96000));
    Stereo open = reference.run(Stereo(96000));
    // A fade, not a cut: a fifth of the wet signal is still there in the first 10 ms, and
    // less than a hundredth after 100 ms.
    EXPECT_GT(energy(bypassed.left, 0, 480), 0.2 * energy(open.left, 0, 480));
    EXPECT_LT(energy(bypassed.left, 4800, 9600), 0.01 * energy(open.left, 4800, 9600));
    // The smoother lands exactly: the wet gain ends at zero.
    for (size_t n = 72000; n < 96000; ++n) ASSERT_EQ(bypassed.left[n], 0.0f) << n;

    h.controls.wetMix = 1.0f;
    Stereo after = h.run(Stereo(24000));
    EXPECT_GT(energy(after.left, 4800, 24000), 0.1);  // the tail kept circulating
}

TEST(ShifterEngine, DryOnlyOutputEqualsTheInputOnceTheWetRampHasEnded) {
    EngineHarness h = shifter();
    h.controls.wetMix = 0.0f;
    Stereo in = sine(700.0f, kRate, 9600);
    Stereo out = h.run(in);
    for (size_t n = 64; n < in.size(); ++n) ASSERT_EQ(out.left[n], in.left[n]) << n;
}

TEST(ShifterEngine, FullFeedbackSettlesOnTheSoftClip) {
    EngineHarness h = shifter();
    h.controls.feedbackAmount = 1.0f;
    h.controls.delayTime = delayAmount(0.01);
    h.controls.freqShiftAmount = 0.5f;
    std::mt19937 generator(3);
    std::uniform_real_distribution<float> quiet(-0.05f, 0.05f);
    Stereo in(96000);
    for (size_t n = 0; n < in.size(); ++n) in.left[n] = in.right[n] = quiet(generator);
    Stereo out = h.run(in);
    float top = 0.0f;
    for (size_t n = 48000; n < out.size(); ++n) top = std::max(top, std::fabs(out.left[n]));
    EXPECT_GT(top, 0.3f);
    EXPECT_LT(top, 3.0f);
}

TEST(ShifterEngine, NoParameterCornerGivesNanOrInfinityOnFullScaleNoise) {
    std::mt19937 generator(7);
    std::uniform_real_distribution<float> full(-1.0f, 1.0f);
    Stereo noise(24000);
    for (size_t n = 0; n < noise.size(); ++n) {
        noise.left[n] = full(generator);
        noise.right[n] = full(generator);
    }
    std::bernoulli_distribution coin(0.5);
    for (int trial = 0; trial < 48; ++trial) {
        EngineHarness h(trial % 3 == 0 ? 192000.0f : kRate, trial);
        FrameControls& c = h.controls;
        auto corner = [&] { return coin(generator) ? 1.0f : 0.0f; };
        c.range = trial % 4;
        c.lfoShape = (trial / 4) % 4;
        c.lfoTarget = (trial / 16) % 4;
        c.freqShiftAmount = corner();
        c.phaseShift = corner();
        c.sidebandMix = corner();
        c.antiReflection = coin(generator);
        c.feedbackAmount = trial % 2 == 0 ? 1.0f : corner();
        c.highPassFreq = corner();
        c.lowPassFreq = corner();
        c.delayTime = corner();
        c.delaySync = coin(generator);
        c.crossChannels = coin(generator);
        c.smearAmount = corner();
        c.lfoRate = corner();
        c.lfoAmount = corner();
        c.lfoStereo = coin(generator);
        c.lfoSync = coin(generator);
        c.wetMix = corner();
        c.playing = coin(generator);
        c.tempo = coin(generator) ? 300.0f : 20.0f;
        Stereo out = h.run(noise);
        for (size_t n = 0; n < out.size(); ++n) {
            ASSERT_TRUE(std::isfinite(out.left[n]) && std::isfinite(out.right[n])) << trial << " at " << n;
        }
        EXPECT_TRUE(std::isfinite(h.report.lfoValue) && std::isfinite(h.report.needle)) << trial;
    }
}

TEST(ShifterEngine, ALoopPoisonedByANonFiniteValueRecoversWithinAFrame) {
    // The host keeps such values out; should one ever reach the loop, through the input
    // here, the frame that shows it goes out silent and the next ones sound again.
    for (bool smear : {false, true}) {
        EngineHarness h(kRate);
        h.controls.delayTime = delayAmount(0.05);
        h.controls.feedbackAmount = 0.9f;
        h.controls.smearAmount = smear ? 0.8f : 0.0f;
        h.controls.wetMix = 0.6f;
        h.run(sine(440.0f, kRate, 4800));
        Stereo poison = sine(440.0f, kRate, 48000);
        poison.left[3] = std::numeric_limits<float>::quiet_NaN();
        poison.right[4001] = std::numeric_limits<float>::infinity();
        Stereo out = h.run(poison);
        for (size_t n = 0; n < out.size(); ++n)
            ASSERT_TRUE(std::isfinite(out.left[n]) && std::isfinite(out.right[n])) << smear << " at " << n;
        double late = 0;
        for (size_t n = 4008; n < out.size(); ++n) late += double(out.left[n]) * out.left[n];
        EXPECT_GT(late, 100.0) << "sounds again after the poisoned frames";
        EXPECT_TRUE(std::isfinite(h.report.level));
    }
}

TEST(ShifterEngine, MidiNotesSetTheShiftWithTheAmountAsOctaveOffset) {
    EngineHarness h = shifter();
    h.controls.range = FrameControls::kMidi;
    h.controls.freqShiftAmount = 0.5f;
    h.run(sine(100.0f, kRate, 128));
    EXPECT_NEAR(h.engine().shiftPerSample(0) * kRate, 261.62558, 0.01);  // note 60 before any MIDI
    const uint32_t events[] = {0x904564, 0x904864};  // A4, then C5 on top
    h.controls.events = events;
    h.controls.eventCount = 2;
    h.run(sine(100.0f, kRate, 64));
    EXPECT_NEAR(h.engine().shiftPerSample(0) * kRate, 523.2511, 0.05);
    EXPECT_GT(h.report.midiActivity, 0.9f);
    const uint32_t release[] = {0x804800};
    h.controls.events = release;
    h.controls.eventCount = 1;
    h.run(sine(100.0f, kRate, 64));
    EXPECT_NEAR(h.engine().shiftPerSample(0) * kRate, 440.0, 0.05);
    h.controls.freqShiftAmount = 0.625f;  // one octave up
    h.run(sine(100.0f, kRate, 48000));
    EXPECT_NEAR(h.engine().shiftPerSample(0) * kRate, 880.0, 0.1);
}

}  // namespace
}  // namespace tw::test
