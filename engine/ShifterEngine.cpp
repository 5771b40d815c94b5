// The engine's frame, its control-rate and slow updates and its sample loop in one file,
// longer than most: they share the engine's state record field by field and follow one
// signal path, which reads best from input to output without jumping between files.
#include "engine/ShifterEngine.h"

#include "engine/EngineMath.h"
#include "engine/EngineTables.h"
#include "engine/WideLoops.h"
#include "engine/WideVectors.h"
#include "engine/NoteRatios.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <immintrin.h>

namespace tw {

namespace {

constexpr int kFramesPerControl = 8;  // 64 samples
constexpr int kFramesPerSlow = 32;    // 256 samples
constexpr float kWakeThreshold = 2e-8f;
constexpr int kMaxQuietSteps = 16;  // control updates stepped at once in a quiet run

// 1 - exp(-2 pi f T): the coefficient of a one-pole at f hertz, stepped every T seconds.
float onePole(float frequency, float step) { return 1.0f - std::exp(-kTwoPi * frequency * step); }

// Brings a phase in cycles back by whole cycles into -0.5 to 0.5.
float wrapCycles(float p) { return p - std::rint(p); }

// Whether any sample of the two channels' frames has a magnitude above threshold.
bool anyAbove(const float* left, const float* right, float threshold) {
    const __m128 magnitude = _mm_castsi128_ps(_mm_set1_epi32(0x7fffffff));
    const __m128 limit = _mm_set1_ps(threshold);
    __m128 above = _mm_setzero_ps();
    for (const float* x : {left, left + 4, right, right + 4})
        above = _mm_or_ps(above, _mm_cmpgt_ps(_mm_and_ps(_mm_loadu_ps(x), magnitude), limit));
    return _mm_movemask_ps(above) != 0;
}

// The quiet frames at the start of a run, their outputs zeroed as each is found quiet;
// stops at the first frame with a sample above threshold. Outputs may be the inputs.
int quietFramesBaseline(const float* inL, const float* inR, float* outL, float* outR, int frames,
                        float threshold) {
    const __m128 magnitude = _mm_castsi128_ps(_mm_set1_epi32(0x7fffffff));
    const __m128 limit = _mm_set1_ps(threshold);
    const __m128 zero = _mm_setzero_ps();
    for (int k = 0; k < frames; ++k) {
        const size_t at = static_cast<size_t>(k) * 8;
        __m128 above = _mm_or_ps(_mm_cmpgt_ps(_mm_and_ps(_mm_loadu_ps(inL + at), magnitude), limit),
                                 _mm_cmpgt_ps(_mm_and_ps(_mm_loadu_ps(inL + at + 4), magnitude), limit));
        above = _mm_or_ps(above, _mm_cmpgt_ps(_mm_and_ps(_mm_loadu_ps(inR + at), magnitude), limit));
        above = _mm_or_ps(above, _mm_cmpgt_ps(_mm_and_ps(_mm_loadu_ps(inR + at + 4), magnitude), limit));
        if (_mm_movemask_ps(above) != 0) return k;
        _mm_storeu_ps(outL + at, zero);
        _mm_storeu_ps(outL + at + 4, zero);
        _mm_storeu_ps(outR + at, zero);
        _mm_storeu_ps(outR + at + 4, zero);
    }
    return frames;
}

int quietFrames(const float* inL, const float* inR, float* outL, float* outR, int frames, float threshold) {
    return wideVectors() ? wide::quietFrames(inL, inR, outL, outR, frames, threshold)
                         : quietFramesBaseline(inL, inR, outL, outR, frames, threshold);
}

// Whether every sample of the two channels' frames is a finite number: x * 0 is NaN
// exactly for NaN and the infinities.
bool allFinite(const float* left, const float* right) {
    const __m128 zero = _mm_setzero_ps();
    __m128 bad = _mm_setzero_ps();
    for (const float* x : {left, left + 4, right, right + 4}) {
        __m128 v = _mm_mul_ps(_mm_loadu_ps(x), zero);
        bad = _mm_or_ps(bad, _mm_cmpunord_ps(v, v));
    }
    return _mm_movemask_ps(bad) == 0;
}

uint32_t powerOfTwoAbove(uint32_t n, uint32_t limit) {
    uint32_t size = 1;
    while (size <= n && size < limit) size <<= 1;
    return size;
}

float noteLengthsPerWhole(int entry) {
    return static_cast<float>(kNoteDenominators[entry]) / static_cast<float>(kNoteNumerators[entry]);
}

}  // namespace

ShifterEngine::ShifterEngine() { buildEngineTables(); }

void ShifterEngine::reset(float rate, uint32_t seed) {
    static_cast<EngineState&>(*this) = EngineState();
    seed_ = seed;
    restart_ = false;
    random.seed(seed, 0x159a55e5);
    sampleRate = rate;
    float control = 64.0f / rate;
    rateSmooth = std::min(onePole(2.0f, control), 0.5f);
    lfoPull = onePole(0.5f, control) * 8.0f / 64.0f;
    phasePull = onePole(0.5f, control) / 64.0f;
    filterLfoSmooth = onePole(100.0f, 8.0f / rate);
    controlSmooth = onePole(1.0f, control);
    depthSmooth = onePole(10.0f, control);
    lengthSmooth = onePole(1.0f, 1.0f / rate);
    quietStep = 256.0f / rate;
    float ln100 = std::log(100.0f);
    holdDecay = rate == 0.0f ? 0.0f : std::exp(-ln100 / (rate * 0.5f / 256.0f));
    midiDecay = rate == 0.0f ? 0.0f : std::exp(-ln100 / (rate / 256.0f));
    delaySize = powerOfTwoAbove(static_cast<uint32_t>(std::ceil(rate * 1.1f)), StereoDelayLine::kMaxPairs);
    smearMask = powerOfTwoAbove(static_cast<uint32_t>(std::ceil(rate / 23.0f)), DiffuserUnit::kFrames) - 1;
    line_.setSize(delaySize);
    for (DiffuserUnit& unit : units_) unit.clear();
}

// Restart of the loop at a reset or a wake from silence: the loop is treated as empty
// from here on, without clearing its rings.
void ShifterEngine::clearLoop() {
    for (int c = 0; c < 2; ++c) {
        lpState[c] = lpOut[c] = lpSum[c] = hpState[c] = 0.0f;
        oscillatorPhase[c] = 0.0f;
        feedback[c] = 0.0f;
    }
    firstPair.clear();
    secondPair.clear();
    heldLevel = 0.0f;
    smearWrite = 0;
    lfo.phase = -0.5f;
    float r1 = random.next();
    float r2 = random.next();
    lfo.randomValue = r1 * 2.0f - 1.0f;
    lfo.randomStep = (r2 * 2.0f - 1.0f) - lfo.randomValue;
    lfo.smoothRandom.clear();
}

void ShifterEngine::processFrame(const FrameControls& in, FrameReport& out) {
    const float* inL = in.inputs[0];
    const float* inR = in.inputs[1];
    bool reset = in.reset || restart_;
    restart_ = false;
    if (reset) silent = true;
    if (silent && anyAbove(inL, inR, kWakeThreshold)) {
        silent = false;
        reset = true;
    }
    if (reset) clearLoop();

    MidiTracker::Result keys = midi.run(in.events, in.eventCount);
    if (!noteSeen || midi.note != lastNote || keys.triggered) midiActivity = 1.0f;
    noteSeen = true;
    lastNote = midi.note;

    if (--controlCountdown < 1 || reset) {
        frameIndex = 0;
        controlUpdate(in, reset);
        controlCountdown = kFramesPerControl;
    }

    float level = 0.0f;
    float peak = 0.0f;
    out.silent = silent;
    if (silent) {
        // The oscillators stand still: every way out of silence is a wake, whose restart
        // of the loop sets their phase afresh.
        std::fill(in.outputs[0], in.outputs[0] + kFrameSize, 0.0f);
        std::fill(in.outputs[1], in.outputs[1] + kFrameSize, 0.0f);
    } else {
        frameUpdate(in.lfoTarget);
        // A cheap meter: the even samples only.
        for (int n = 0; n < kFrameSize; n += 2) level = std::max({level, std::fabs(inL[n]), std::fabs(inR[n])});
        if (feedbackGain.current == 0.0f && feedbackGain.step == 0.0f)
            runSamples<false>(in, reset, peak);
        else
            runSamples<true>(in, reset, peak);
        // The loop makes no non-finite value by itself, but one that got in from outside
        // would ring in the feedback, the smear and the filters for good. All that the
        // loop holds reaches the wet outputs, so a look at the frame's outputs finds it:
        // the frame goes out silent and the engine starts afresh, as at a reset.
        if (!allFinite(in.outputs[0], in.outputs[1])) {
            std::fill(in.outputs[0], in.outputs[0] + kFrameSize, 0.0f);
            std::fill(in.outputs[1], in.outputs[1] + kFrameSize, 0.0f);
            ShifterEngine::reset(sampleRate, seed_);
            restart_ = true;
            out.silent = true;
            peak = 0.0f;
            level = 0.0f;
        }
    }

    ++frameIndex;
    if (--slowCountdown < 1 || reset) {
        slowUpdate();
        slowCountdown = kFramesPerSlow;
    }
    if (peak >= kWakeThreshold) {
        quietTime = 0.0f;
        silent = false;
    }
    heldLevel = std::max(heldLevel, level);
    fillReport(out);
}

void ShifterEngine::fillReport(FrameReport& out) const {
    out.level = heldLevel;
    out.lfoValue = lfo.value;
    out.needle = needleValue_;
    out.midiActivity = midiActivity;
}

int ShifterEngine::processFrames(const FrameControls& in, int frames, FrameReport& out, float* needles) {
    if (frames > 1 && silent && !in.reset && !restart_ && noteSeen && in.eventCount == 0) {
        int n = quietRun(in, frames, out, needles);
        if (n > 0) return n;
    }
    processFrame(in, out);
    needles[0] = out.needle;
    return 1;
}

// Silent frames with nothing to wake them, as processFrame takes them one by one, up to
// the first loud frame. With no events the keyboard and its lamp stand still, and with no
// peak and no level the loop stays silent; what is left is the countdowns, the zeros out,
// the slow updates' decay of the meters and, at each control update, the LFO and its
// needle. A synced LFO reads the song position of its frame, which only the first frame
// carries: then the run stops before the next control update.
int ShifterEngine::quietRun(const FrameControls& in, int frames, FrameReport& out, float* needles) {
    int n = in.lfoSync ? std::min(frames, std::max(controlCountdown, 1)) : frames;
    // Each quiet frame's outputs are zeroed as it is found quiet; a frame that would wake
    // the loop (rare inside a run) ends the run before it.
    n = quietFrames(in.inputs[0], in.inputs[1], in.outputs[0], in.outputs[1], n, kWakeThreshold);
    if (n == 0) return 0;
    const bool resting = restingLfo(in) && needle_.readyFor(sampleRate);
    float needleSteps[kMaxQuietSteps];
    int steps = 0;
    int taken = 0;
    for (int done = 0; done < n;) {
        if (--controlCountdown < 1) {
            frameIndex = 0;
            if (resting) {
                if (taken == steps) {
                    // The LFO and the needle for the control updates left in the run, one
                    // every kFramesPerControl frames from this one.
                    steps = std::min((n - done - 1) / kFramesPerControl + 1, static_cast<int>(kMaxQuietSteps));
                    resync = false;
                    // The needle and its draws on copies, which the stores of its steps
                    // cannot alias: its state stays in registers from step to step.
                    LfoNeedle needle = needle_;
                    EngineRandom draws = random;
                    lfo.advancePlain(in.lfoShape, in.lfoTarget == Lfo::kDelayTime, steps,
                                     [&](int j, float shown) { needleSteps[j] = needle.step(shown, draws); });
                    needle_ = needle;
                    random = draws;
                    taken = 0;
                }
                needleValue_ = needleSteps[taken++];
            } else {
                controlUpdate(in, false);
            }
            controlCountdown = kFramesPerControl;
        }
        // This frame and those before the next control update show the same needle; a
        // slow update ends the stretch after its frame.
        int k = std::min({n - done, controlCountdown, std::max(slowCountdown, 1)});
        controlCountdown -= k - 1;
        frameIndex += k;
        std::fill(needles + done, needles + done + k, needleValue_);
        done += k;
        slowCountdown -= k;
        if (slowCountdown < 1) {
            slowUpdate();
            slowCountdown = kFramesPerSlow;
        }
    }
    heldLevel = std::max(heldLevel, 0.0f);
    out.silent = true;
    fillReport(out);
    return n;
}

// Whether the silent control update comes down to stepping a free LFO of a plain shape at
// a rate at rest: no watch would see a change, the rate's smoother stands on its target,
// the sync gain on its fixed point, and the LFO's increment is the one made for that rate
// and large enough that nothing pulls the phase. This holds through a whole run, for the
// run's controls are the same throughout and these steps change none of it.
bool ShifterEngine::restingLfo(const FrameControls& in) const {
    const SpecSmoother& rate = smoothers[7];
    auto same = [](float a, float b) { return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b); };
    return !in.lfoSync && in.lfoShape != Lfo::kRandom && lfoSyncWatch.seen && lfoSyncWatch.last == 0 &&
           playingWatch.seen && playingWatch.last == static_cast<int>(in.playing) && same(rate.y1, in.lfoRate) &&
           same(rate.y2, in.lfoRate) && rate.k == std::min(rateSmooth, 1.0f) && syncGain == controlSmooth &&
           same(lfo.freeRate, rate.y2) && lfo.increment == lfo.freeIncrement &&
           lfo.syncIncrement == lfo.freeIncrement && std::fabs(lfo.freeIncrement) >= 1e-7f;
}

void ShifterEngine::slowUpdate() {
    quietTime += quietStep;
    // The lamp comes to rest at zero, as the level meter does: left to decay, it would sink
    // to the smallest subnormal and stay there, each step a slow subnormal multiply.
    midiActivity *= midiDecay;
    if (midiActivity < 1e-5f) midiActivity = 0.0f;
    if (quietTime >= 1.1f) silent = true;
    heldLevel *= holdDecay;
    if (std::fabs(heldLevel) < 1e-5f) heldLevel = 0.0f;
}

// A control update while silent: only the LFO and its needle move on, for the meter and
// for the random draws they make. The other smoothers, the shift, the shifter's set-up
// and the watches that only they read wait: every way out of silence is a wake, whose
// restart snaps them all afresh.
void ShifterEngine::quietControlUpdate(const FrameControls& in) {
    bool lfoSyncChanged = lfoSyncWatch.changed(in.lfoSync);
    bool playingChanged = playingWatch.changed(in.playing);
    resync = playingChanged && in.playing;
    if (resync) {
        shiftFollower.clear();
        lfo.follower.clear();
        syncGain = 1.0f;
    }
    float lfoRate = smoothers[7].update(in.lfoRate, rateSmooth, 2.0f, lfoSyncChanged);
    updateSyncGain();
    runLfo(in, lfoRate);
}

void ShifterEngine::updateSyncGain() {
    float gain = (controlSmooth - syncGain) * controlSmooth + syncGain;
    syncGain = std::fabs(gain - controlSmooth) < 1e-6f ? controlSmooth : gain;
}

// The LFO's control-rate step, from its smoothed rate, and the needle that shows it.
void ShifterEngine::runLfo(const FrameControls& in, float lfoRate) {
    const bool delayTarget = in.lfoTarget == Lfo::kDelayTime;
    Lfo::RateInput rate{in.lfoSync, lfoRate,       in.lfoRate, in.tempo,      sampleRate, in.songPosition,
                        in.playing, resync,        syncGain,   controlSmooth, lfoPull};
    lfo.updateRate(rate);
    if (silent)
        lfo.advance(in.lfoShape, in.lfoSync, delayTarget, random);
    else
        lfo.run(in.lfoShape, in.lfoSync, delayTarget, random);
    lfo.updateShownValue(delayTarget);
    needleValue_ = needle_.update(lfo.value, sampleRate, random);
}

void ShifterEngine::controlUpdate(const FrameControls& in, bool reset) {
    if (silent && !reset) {
        quietControlUpdate(in);
        return;
    }
    bool delaySyncChanged = delaySyncWatch.changed(in.delaySync);
    bool antiReflectionChanged = antiReflectionWatch.changed(in.antiReflection);
    bool targetChanged = lfoTargetWatch.changed(in.lfoTarget);
    bool lfoSyncChanged = lfoSyncWatch.changed(in.lfoSync);
    bool rangeChanged = rangeWatch.changed(in.range);
    bool playingChanged = playingWatch.changed(in.playing);
    if ((playingChanged && in.playing) || reset) {
        resync = true;
        shiftFollower.clear();
        lfo.follower.clear();
        syncGain = 1.0f;
    } else {
        resync = false;
    }

    const float base = rateSmooth;
    float lfoRate = smoothers[7].update(in.lfoRate, base, 2.0f, reset || lfoSyncChanged);
    updateSyncGain();
    if (silent) {
        runLfo(in, lfoRate);
        return;
    }
    float amount = smoothers[0].update(in.freqShiftAmount, base, 2.0f, reset || rangeChanged);
    float sidebandMix = smoothers[1].update(in.sidebandMix, base, 2.0f, reset);
    float phaseShift = smoothers[2].update(in.phaseShift, base, 2.0f, reset);
    float feedbackAmount = smoothers[3].update(in.feedbackAmount, base, 2.0f, reset);
    float delayTime = smoothers[4].update(in.delayTime, base, 0.5f, reset || delaySyncChanged);
    float lowPassFreq = smoothers[5].update(in.lowPassFreq, base, 2.0f, reset);
    float highPassFreq = smoothers[6].update(in.highPassFreq, base, 2.0f, reset);
    float lfoAmount = smoothers[8].update(in.lfoAmount, base, 2.0f, reset || targetChanged);
    float wetMix = smoothers[9].update(in.wetMix, base, 2.0f, reset);
    float smearAmount = smoothers[10].update(in.smearAmount, base, 2.0f, reset);

    if (antiReflectionChanged || reset) configureShifter(in.antiReflection);
    phase.target = WrapHalf(phaseShift - 0.5f);
    updateBaseShift(in, amount);

    runLfo(in, lfoRate);

    lfo.sign = in.lfoStereo ? -1.0f : 1.0f;
    updateDepthTarget(in.lfoTarget, lfoAmount);
    // The values that hold until the first frame of the period.
    float first = lfo.values[0];
    float phaseLeft = phase.target;
    float phaseRight = phase.target;
    shift[0] = shift[1] = baseShift;
    if (in.lfoTarget == Lfo::kFrequencyShift) {
        shift[0] = clampFloat(baseShift + lfo.depthTarget * first, -0.5f, 0.5f);
        shift[1] = clampFloat(baseShift + lfo.sign * first * lfo.depthTarget, -0.5f, 0.5f);
    } else if (in.lfoTarget == Lfo::kPhaseShift) {
        phaseLeft = WrapHalf(phase.target + first * lfo.depthTarget);
        phaseRight = WrapHalf(phase.target + lfo.sign * first * lfo.depthTarget);
    }
    if (targetChanged || reset) {
        lfo.depth = lfo.depthTarget;
        lfo.filterLast = first;
    }

    updateSmear(smearAmount, feedbackAmount);

    // A constant-power crossfade of wet and dry.
    float angle = wetMix * kPi / 2.0f;
    wetGain.target = std::sin(angle);
    dryGain.target = std::cos(angle);

    updateDelayTarget(in, delayTime, reset);
    // Input falls as feedback rises, and more with a single sideband, which loses nothing
    // in the multiplier.
    float loop = 1.0f - (1.0f - feedbackAmount) * (1.0f - feedbackAmount);
    float mix = sidebandMix * 2.0f - 1.0f;
    sideband.target = mix;
    feedbackGain.target = loop * 1.005f;
    inputGain.target = std::sqrt(1.0f - std::fabs(mix * 0.5f) * loop * loop);
    lpBase = 100.0f / sampleRate * std::pow(400.0f, lowPassFreq);
    lowPass[0].target = lowPass[1].target = 1.0f - std::exp(-kTwoPi * std::min(lpBase / 3.0f, 0.5f));
    float highPassStep = 20.0f / sampleRate * std::pow(100.0f, highPassFreq);
    highPass = std::min(1.0f - std::exp(-kTwoPi * highPassStep), 0.5f);

    updateOscillatorTargets(in, phaseLeft, phaseRight, reset);
    updateRamps(reset);
}

void ShifterEngine::configureShifter(bool antiReflection) {
    rotCos = 1.0f;
    rotSin = 0.0f;
    uint32_t size = 2;
    float x = sampleRate;
    while (x > 66150.0f && size < 8) {
        x *= 0.5f;
        size *= 2;
    }
    ringMask = size - 1;
    // The octaves between the ring's rate and 44100 Hz times the chains' phase error per
    // octave; the second pair doubles it.
    float a = std::log(x * 2.2675737e-05f) / std::log(2.0f) * 1.3038211f;
    if (antiReflection) a *= 2.0f;
    rotate = std::fabs(a) >= 1e-6f;
    rotationAngle = a;
    if (rotate) {
        rotCos = std::cos(a);
        rotSin = std::sin(a);
    }
    if (antiReflection) secondPair.clear();
    secondPairOn = antiReflection;
}

void ShifterEngine::updateBaseShift(const FrameControls& in, float amount) {
    float b = 0.0f;
    switch (in.range) {
    case FrameControls::kFine:
    case FrameControls::kWide: {
        // 0 at the centre, +-2 or +-200 hertz at the ends. A knob at rest costs no power.
        float top = in.range == FrameControls::kFine ? 2.0f : 200.0f;
        if (amount != curveAmount || top != curveTop) {
            curveAmount = amount;
            curveTop = top;
            if (amount >= 0.5f)
                curveShift = (std::pow(101.0f, (amount - 0.5f) * 2.0f) * top - top) / sampleRate;
            else
                curveShift = (top - std::pow(101.0f, (amount - 0.5f) * -2.0f) * top) / sampleRate;
        }
        b = curveShift;
        break;
    }
    case FrameControls::kSync: {
        // One cycle per note length at the host's tempo, from the unsmoothed amount.
        float raw = clampFloat(in.freqShiftAmount, 0.0f, 1.0f);
        float v = noteLengthsPerWhole(static_cast<int>(std::floor(raw * 20.0f + 0.5f)) + 3);
        b = syncFrequency = v * in.tempo / sampleRate * 0.004166667f;
        float position = v * in.songPosition;
        followerValue = shiftFollower.step(position - std::floor(position), syncGain);
        break;
    }
    default:
        b = std::pow(2.0f, static_cast<float>(midi.note - 60) * 0.083333336f + amount * 8.0f - 4.0f) *
            261.62558f / sampleRate;
        break;
    }
    baseShift = clampFloat(b, -0.5f, 0.5f);
}

void ShifterEngine::updateDepthTarget(int target, float amount) {
    float a = clampFloat(amount * 2.0f - 1.0f, -1.0f, 1.0f);
    float depth = 0.0f;
    switch (target) {
    case Lfo::kFrequencyShift:
        depth = signOf(a) * (std::pow(10001.0f, std::fabs(a)) * 2.0f - 2.0f) / sampleRate;
        break;
    case Lfo::kPhaseShift:
        depth = a;
        break;
    case Lfo::kLowPass:
        depth = a * 8.0f;
        break;
    default: {
        depth = signOf(a) * (std::pow(101.0f, std::fabs(a)) * 0.001f - 0.001f) * sampleRate;
        // The excursion shrinks as the rate rises, so the echoes' pitch swing stays bounded.
        float x = sampleRate * 0.1f * kTwoPi * lfo.increment * 0.125f;
        if (x >= 2.0f) depth = depth / (x * 0.5f);
        break;
    }
    }
    lfo.depthTarget = depth;
}

void ShifterEngine::updateSmear(float amount, float feedbackAmount) {
    const EngineTables& tables = engineTables();
    float scale = amount * amount * sampleRate;
    float total = 0.0f;
    for (int k = 0; k < kSmearUnits; ++k) {
        float a = tables.t0[k] * scale;
        float b = tables.t2[k] * scale;
        float c = tables.t3[k] * scale;
        float d = tables.t1[k] * scale;
        float* target = units_[k].targets;
        target[0] = b - c;
        target[1] = a - d;
        target[2] = c;
        target[3] = d;
        total += a + b;
    }
    total *= 0.5f;
    smearTotal = total;
    smearOn = total > 1e-5f;
    // A short smear, under 100 samples, rings longer.
    float g0 = feedbackAmount * 0.5f + 0.25f;
    smearCoefficient.target = g0 - (std::min(total, 100.0f) - 100.0f) * (0.99f - g0) * 0.01f;
    if (!smearOn) {
        smearCoefficient.current = smearCoefficient.target;
        smearCoefficient.step = 0.0f;
        smearWrite = 0;
    }
}

void ShifterEngine::updateDelayTarget(const FrameControls& in, float smoothedTime, bool reset) {
    float seconds;
    if (in.delaySync) {
        float raw = clampFloat(in.delayTime, 0.0f, 1.0f);
        int entry = static_cast<int>(std::floor((1.0f - raw) * 14.0f + 0.5f)) + 15;
        // A host tempo outside any musical range would make the octave search endless.
        float tempo = clampFloat(in.tempo, 1.0f, 1000.0f);
        seconds = static_cast<float>(kNoteNumerators[entry]) * 4.0f / static_cast<float>(kNoteDenominators[entry]) *
                  (60.0f / tempo);
        while (seconds > 1.0f) seconds *= 0.5f;
    } else {
        seconds = std::pow(44100.0f, std::sqrt(smoothedTime)) * 2.2675737e-05f;
    }
    if (!reset) seconds = (seconds - lastDelaySeconds) * controlSmooth + lastDelaySeconds;
    lastDelaySeconds = seconds;
    float samples = sampleRate * seconds - 1.0f;
    // The smear adds delay of its own, which a tempo-locked echo must not gain.
    if (in.delaySync) samples = samples - smearTotal * 0.5f;
    delayTarget.target = std::max(std::min(samples, sampleRate - 1.0f), 1e-7f);
}

void ShifterEngine::updateOscillatorTargets(const FrameControls& in, float phaseLeft, float phaseRight,
                                            bool reset) {
    const float value[2] = {phaseLeft, phaseRight};
    phaseLocked[0] = phaseLocked[1] = false;
    correction[0] = correction[1] = 0.0f;
    // Channels at the same frequency keep exactly the phase difference the control names.
    if (std::fabs(shift[0] - shift[1]) < 1e-6f) {
        shift[1] = shift[0];
        phaseLocked[1] = true;
        phaseTarget[1] = WrapHalf(phaseRight - phaseLeft) + oscillatorPhase[0];
    }
    if (in.range == FrameControls::kSync && in.playing) {
        for (int c = 0; c < 2; ++c) {
            if (std::fabs(shift[c] - syncFrequency) < 1e-6f || resync) {
                phaseLocked[c] = true;
                phaseTarget[c] = WrapHalf(value[c] + followerValue);
            }
        }
    } else {
        // At 0 Hz the oscillator stands still at the phase the knob names.
        for (int c = 0; c < 2; ++c) {
            if (std::fabs(shift[c]) < 1e-7f || reset) {
                shift[c] = 0.0f;
                phaseLocked[c] = true;
                phaseTarget[c] = value[c];
            }
        }
    }
    for (int c = 0; c < 2; ++c) {
        if (!phaseLocked[c]) continue;
        if (resync) {
            oscillatorPhase[c] = phaseTarget[c];
            lastPhaseValue[c] = value[c];
        } else if (!reset) {
            // Pull gently toward the target, with no click.
            float d = phaseTarget[c] - oscillatorPhase[c];
            if (std::fabs(d) < 1e-6f)
                oscillatorPhase[c] = phaseTarget[c];
            else
                correction[c] = WrapHalf(d) * phasePull;
        }
    }
}

void ShifterEngine::updateRamps(bool reset) {
    Ramp* perSample[] = {&sideband, &feedbackGain, &inputGain, &wetGain, &dryGain, &smearCoefficient};
    for (Ramp* r : perSample) {
        if (reset) {
            r->current = r->target;
            r->step = 0.0f;
            continue;
        }
        if (std::fabs(r->target - r->current) < 1e-6f) r->current = r->target;
        r->step = (r->target - r->current) / 64.0f;
    }
    if (reset) {
        delayTarget.current = delayTarget.target;
        delayTarget.step = 0.0f;
        delay[0] = delay[1] = delayTarget.target;
        phase.current = phase.target;
        phase.step = 0.0f;
        lfo.depth = lfo.depthTarget;
        lfo.depthStep = 0.0f;
        return;
    }
    if (std::fabs(delayTarget.target - delayTarget.current) < 1e-6f) delayTarget.current = delayTarget.target;
    delayTarget.step = (delayTarget.target - delayTarget.current) * 8.0f / 64.0f;
    // The phase takes the short way round.
    float d = WrapHalf(phase.target - phase.current);
    if (std::fabs(d) < 1e-6f) {
        phase.current = phase.target;
        d = 0.0f;
    }
    phase.step = d * 8.0f / 64.0f;
    lfo.depthStep = (lfo.depthTarget - lfo.depth) * 8.0f / 64.0f * depthSmooth;
}

void ShifterEngine::frameUpdate(int target) {
    phase.current = WrapHalf(phase.current + phase.step);
    lfo.depth += lfo.depthStep;
    delayTarget.current += delayTarget.step;
    for (int c = 0; c < 2; ++c) delaySlope[c] = (delayTarget.current - delay[c]) / 8.0f;

    float m = lfo.depth * lfo.values[frameIndex];
    float value[2] = {phase.current, phase.current};
    switch (target) {
    case Lfo::kFrequencyShift:
        shift[0] = clampFloat(baseShift + m, -0.5f, 0.5f);
        shift[1] = clampFloat(m * lfo.sign + baseShift, -0.5f, 0.5f);
        break;
    case Lfo::kPhaseShift:
        value[0] = WrapHalf(phase.current + m);
        value[1] = WrapHalf(m * lfo.sign + phase.current);
        break;
    case Lfo::kLowPass:
        lowPassTargets(m);
        break;
    default:
        // A delay that swings through zero mirrors back.
        delaySlope[0] = (std::fabs(delayTarget.current + m) - delay[0]) * 0.125f;
        delaySlope[1] = (std::fabs(m * lfo.sign + delayTarget.current) - delay[1]) * 0.125f;
        break;
    }

    // Turning the phase while shifting rotates the oscillator over the frame, with no step.
    for (int c = 0; c < 2; ++c) {
        float dv = WrapHalf(value[c] - lastPhaseValue[c]);
        lastPhaseValue[c] = value[c];
        increment[c] = shift[c] + correction[c] + dv / 8.0f;
    }
    oscillatorTables();

    for (Ramp& r : lowPass) {
        if (std::fabs(r.target - r.current) < 1e-6f) r.current = r.target;
        r.step = (r.target - r.current) * 0.125f;
    }
}

void ShifterEngine::lowPassTargets(float octaves) {
    float n = (octaves - lfo.filterLast) * filterLfoSmooth + lfo.filterLast;
    if (std::fabs(n - octaves) >= 1e-6f) octaves = n;
    lfo.filterLast = octaves;
    // A fast 2 to the power of octaves.
    float x = octaves * 0.1732868f;
    float t = x * 4.2706947f / (6.0399003f - x);
    t = (t * t + x + 0.99973845f) * 1.0002617f;
    t = t * t;
    t = t * t;
    lowPass[0].target = 1.0f - std::exp(-kTwoPi * std::min(t * lpBase / 3.0f, 0.5f));
    float right = lfo.sign < 0.0f ? 1.0f / t : t;
    lowPass[1].target = 1.0f - std::exp(-kTwoPi * std::min(right * lpBase / 3.0f, 0.5f));
}

// Each oscillator's cosine and sine for the 8 samples of the frame: three sines and
// cosines to start, then complex rotation.
void ShifterEngine::oscillatorTables() {
    const float start[2] = {oscillatorPhase[0], oscillatorPhase[1]};
    for (int c = 0; c < 2; ++c) {
        float p = start[c];
        float i = increment[c];
        oscillatorPhase[c] = wrapCycles(p + i * 8.0f);
        if (c == 1 && p == start[0] && i == increment[0]) {
            // Both oscillators in step, as they mostly are: the same tables.
            for (int n = 0; n < kFrameSize; ++n) {
                oscillatorCos[n][1] = oscillatorCos[n][3] = oscillatorCos[n][0];
                oscillatorSin[n][1] = oscillatorSin[n][3] = oscillatorSin[n][0];
            }
            continue;
        }
        // The rotation per sample changes only with the frequency.
        if (i != stepIncrement[c]) {
            float w = i * kTwoPi;
            float h = std::sin(w * 0.5f) * 1.4142135f;
            stepIncrement[c] = i;
            stepSin[c] = std::sin(w);
            stepSquare[c] = h * h;
        }
        const float q = stepSin[c];
        const float k = stepSquare[c];
        float angle = p * kTwoPi;
        float co = std::cos(angle);
        float si = std::sin(angle);
        for (int n = 0; n < kFrameSize; ++n) {
            oscillatorCos[n][c] = oscillatorCos[n][c + 2] = co;
            oscillatorSin[n][c] = oscillatorSin[n][c + 2] = si;
            float nextCos = (co - k * co) - q * si;
            float nextSin = (q * co + si) - k * si;
            co = nextCos;
            si = nextSin;
        }
    }
}

// With no feedback at all the loop is open, and its samples need not wait on each other.
template <bool kFeedback>
void ShifterEngine::runSamples(const FrameControls& in, bool first, float& peak) {
    const EngineTables& tables = engineTables();
    const float* inL = in.inputs[0];
    const float* inR = in.inputs[1];
    float* outL = in.outputs[0];
    float* outR = in.outputs[1];

    float sidebandNow = sideband.current;
    float feedbackNow = feedbackGain.current;
    float inputNow = inputGain.current;
    float wetNow = wetGain.current;
    float dryNow = dryGain.current;
    float smearNow = smearCoefficient.current;
    float lowPassNow[2] = {lowPass[0].current, lowPass[1].current};
    float fbL = feedback[0];
    float fbR = feedback[1];
    float lowState[2] = {lpState[0], lpState[1]};
    float lowOut[2] = {lpOut[0], lpOut[1]};
    float lowSum[2] = {lpSum[0], lpSum[1]};
    float highState[2] = {hpState[0], hpState[1]};
    const float highCoefficient = highPass;
    float top = peak;
    int noise = noiseIndex;
    uint32_t write = smearWrite;
    const bool cross = in.crossChannels;

    // The delays of the frame ahead, so that the frame's reads can be made in one pass.
    float delays[2][kFrameSize];
    for (int c = 0; c < 2; ++c) {
        float d = delay[c];
        for (int n = 0; n < kFrameSize; ++n) {
            d = std::max(d + delaySlope[c], 1e-7f);
            delays[c][n] = d;
        }
    }
    if (first) line_.restart();
    float early[2][kFrameSize];
    bool ahead[2] = {false, false};
    if (!first) line_.readStereoFrame(delays, delaySlope, early, ahead);

    // The stages of one sample, in the order of the loop.
    // Head: soft-clipped feedback plus input, the value the peak is tracked on.
    auto head = [&](int n, float& xl, float& xr) {
        feedbackNow += feedbackGain.step;
        inputNow += inputGain.step;
        xl = inputNow * inL[n];
        xr = inputNow * inR[n];
        if constexpr (kFeedback) {
            float yl = clampFloat(fbL, -1.0f, 1.0f);
            float yr = clampFloat(fbR, -1.0f, 1.0f);
            yl = yl - yl * 0.33333334f * yl * yl;
            yr = yr - yr * 0.33333334f * yr * yr;
            xl = yl * feedbackNow + xl;
            xr = yr * feedbackNow + xr;
        }
        top = std::max({top, std::fabs(xl), std::fabs(xr)});
    };
    // From the delay's output to the shifter's input: noise, smear, low-pass and high-pass.
    auto addNoise = [&](float& l, float& r) __attribute__((always_inline)) {
        // Anti-denormal noise, opposite on the two sides.
        l += tables.noise[noise];
        r -= tables.noise[noise];
        noise = (noise + 1) & (EngineTables::kNoiseSize - 1);
    };
    // Low-pass at three times the rate, with zero stuffing and a box filter, then high-pass.
    auto lowAndHighOne = [&](int c, float x) __attribute__((always_inline)) {
        lowPassNow[c] += lowPass[c].step;
        float a = lowPassNow[c];
        float p = lowState[c] - lowState[c] * a;
        float q = (x - p) * a + p;
        float s = q - q * a;
        lowState[c] = s;
        float e = p + q + s;
        lowOut[c] = ((e + lowSum[c]) * 0.5f - lowOut[c]) * 1.99f + lowOut[c];
        lowSum[c] = e;
        highState[c] += (lowOut[c] - highState[c]) * highCoefficient;
        return lowOut[c] - highState[c];
    };
    auto lowAndHigh = [&](float& l, float& r) __attribute__((always_inline)) {
        l = lowAndHighOne(0, l);
        r = lowAndHighOne(1, r);
    };
    auto filter = [&](float& l, float& r) __attribute__((always_inline)) {
        addNoise(l, r);
        if (smearOn) {
            smearNow += smearCoefficient.step;
            for (DiffuserUnit& unit : units_) unit.step(l, r, write, smearMask, smearNow, lengthSmooth, first);
            first = false;
            if (++write > 0xffff) write = 0x8000;
            top = std::max({top, std::fabs(l), std::fabs(r)});
        }
        lowAndHigh(l, r);
    };
    // The same over a frame that is not the first after a restart, stage by stage: a
    // smear unit waits only on the one before it at the same sample, so each unit takes
    // the whole frame at once, and its samples overlap. Inline, so that the filters'
    // states stay in registers: through memory, each step would wait on a store.
    auto filterFrame = [&](float* l, float* r) __attribute__((always_inline)) {
        for (int n = 0; n < kFrameSize; ++n) addNoise(l[n], r[n]);
        if (smearOn) {
            float g[kFrameSize];
            uint32_t at[kFrameSize];
            for (int n = 0; n < kFrameSize; ++n) {
                smearNow += smearCoefficient.step;
                g[n] = smearNow;
                at[n] = write;
                if (++write > 0xffff) write = 0x8000;
            }
            for (DiffuserUnit& unit : units_) unit.stepFrame(l, r, at, smearMask, g, lengthSmooth);
            for (int n = 0; n < kFrameSize; ++n) top = std::max({top, std::fabs(l[n]), std::fabs(r[n])});
        }
        for (int n = 0; n < kFrameSize; ++n) lowAndHigh(l[n], r[n]);
    };
    // Shifter: quadrature pair, rotation, oscillators with the sideband mix, and the second
    // pair against reflections below 0 Hz.
    const __m128 rotationCos = _mm_set1_ps(rotCos);
    const __m128 rotationSin = _mm_setr_ps(rotSin, rotSin, -rotSin, -rotSin);
    const __m128 negateQ = _mm_setr_ps(-0.0f, -0.0f, 0.0f, 0.0f);
    const __m128 half = _mm_set1_ps(0.5f);
    auto shifter = [&](int n, float l, float r, float& wetL, float& wetR) {
        sidebandNow += sideband.step;
        __m128 ab = firstPair.step(ringMask, _mm_setr_ps(l, r, l, r));
        if (rotate) {
            __m128 swapped = _mm_shuffle_ps(ab, ab, _MM_SHUFFLE(1, 0, 3, 2));
            ab = _mm_add_ps(_mm_mul_ps(rotationCos, ab), _mm_mul_ps(rotationSin, swapped));
        }
        __m128 swapped = _mm_shuffle_ps(ab, ab, _MM_SHUFFLE(1, 0, 3, 2));
        __m128 t1 = _mm_mul_ps(_mm_mul_ps(_mm_set1_ps(sidebandNow), swapped), _mm_load_ps(oscillatorSin[n]));
        __m128 t2 = _mm_mul_ps(_mm_load_ps(oscillatorCos[n]), ab);
        __m128 wet = _mm_add_ps(t1, _mm_xor_ps(t2, negateQ));
        if (secondPairOn) {
            __m128 pair = secondPair.step(ringMask, wet);
            wet = _mm_mul_ps(_mm_add_ps(pair, _mm_movehl_ps(pair, pair)), half);
        }
        wetL = _mm_cvtss_f32(wet);
        wetR = _mm_cvtss_f32(_mm_shuffle_ps(wet, wet, _MM_SHUFFLE(1, 1, 1, 1)));
    };
    // Cross, the feedback of the next sample, and the wet and dry mix.
    auto mix = [&](int n, float wetL, float wetR) {
        wetNow += wetGain.step;
        dryNow += dryGain.step;
        if (cross) std::swap(wetL, wetR);
        fbL = wetL;
        fbR = wetR;
        outL[n] = inL[n] * dryNow + wetL * wetNow;
        outR[n] = inR[n] * dryNow + wetR * wetNow;
    };

    if (ahead[0] && ahead[1]) {
        // The frame's reads wait on none of its writes: the rest of the loop runs stage by
        // stage over the whole frame, so that its samples overlap.
        float wet[2][kFrameSize];
        filterFrame(early[0], early[1]);
        for (int n = 0; n < kFrameSize; ++n) shifter(n, early[0][n], early[1][n], wet[0][n], wet[1][n]);
        for (int n = 0; n < kFrameSize; ++n) {
            float xl, xr;
            head(n, xl, xr);
            line_.write(xl, xr);
            line_.advance();
            mix(n, wet[0][n], wet[1][n]);
        }
    } else {
        for (int n = 0; n < kFrameSize; ++n) {
            float xl, xr;
            head(n, xl, xr);
            line_.write(xl, xr);
            float l = ahead[0] ? early[0][n] : line_.read(0, delays[0][n], delaySlope[0]);
            float r = ahead[1] ? early[1][n] : line_.read(1, delays[1][n], delaySlope[1]);
            line_.advance();
            filter(l, r);
            float wetL, wetR;
            shifter(n, l, r, wetL, wetR);
            mix(n, wetL, wetR);
        }
    }

    sideband.current = sidebandNow;
    feedbackGain.current = feedbackNow;
    inputGain.current = inputNow;
    wetGain.current = wetNow;
    dryGain.current = dryNow;
    smearCoefficient.current = smearNow;
    lowPass[0].current = lowPassNow[0];
    lowPass[1].current = lowPassNow[1];
    delay[0] = delays[0][kFrameSize - 1];
    delay[1] = delays[1][kFrameSize - 1];
    feedback[0] = fbL;
    feedback[1] = fbR;
    for (int c = 0; c < 2; ++c) {
        lpState[c] = lowState[c];
        lpOut[c] = lowOut[c];
        lpSum[c] = lowSum[c];
        hpState[c] = highState[c];
    }
    noiseIndex = noise;
    smearWrite = write;
    peak = top;
}

}  // namespace tw
