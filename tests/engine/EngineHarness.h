// Test support: runs a ShifterEngine over whole signals in frames of 8 samples, and
// measures what a listener would hear in the result.
#pragma once

#include "engine/EngineTables.h"
#include "engine/FrameControls.h"
#include "engine/ShifterEngine.h"

#include <cmath>
#include <memory>
#include <vector>

namespace tw::test {

struct Stereo {
    std::vector<float> left;
    std::vector<float> right;
    explicit Stereo(size_t n = 0) : left(n), right(n) {}
    size_t size() const { return left.size(); }
};

class EngineHarness {
public:
    FrameControls controls;
    FrameReport report;
    std::vector<FrameReport> reports;  // one per frame, when keepReports is set
    bool keepReports = false;

    explicit EngineHarness(float sampleRate, uint32_t seed = 1234) : engine_(std::make_unique<ShifterEngine>()) {
        buildEngineTables();
        engine_->reset(sampleRate, seed);
        controls.reset = true;
    }

    ShifterEngine& engine() { return *engine_; }

    // Runs the input (its length a multiple of 8) and returns the output.
    Stereo run(const Stereo& input) {
        Stereo output(input.size());
        for (size_t at = 0; at + ShifterEngine::kFrameSize <= input.size(); at += ShifterEngine::kFrameSize) {
            controls.inputs[0] = input.left.data() + at;
            controls.inputs[1] = input.right.data() + at;
            controls.outputs[0] = output.left.data() + at;
            controls.outputs[1] = output.right.data() + at;
            engine_->processFrame(controls, report);
            controls.reset = false;
            controls.eventCount = 0;
            if (keepReports) reports.push_back(report);
        }
        return output;
    }

    Stereo runSilence(size_t samples) { return run(Stereo(samples)); }

private:
    std::unique_ptr<ShifterEngine> engine_;
};

inline Stereo sine(float frequency, float sampleRate, size_t samples, float amplitude = 0.5f) {
    Stereo s(samples);
    for (size_t n = 0; n < samples; ++n) {
        float v = amplitude * static_cast<float>(std::sin(2.0 * M_PI * frequency * static_cast<double>(n) / sampleRate));
        s.left[n] = s.right[n] = v;
    }
    return s;
}

// Level of one frequency in a stretch of the signal, Hann windowed, as amplitude.
inline double toneLevel(const std::vector<float>& x, size_t from, size_t length, double frequency,
                        double sampleRate) {
    double re = 0.0, im = 0.0, weight = 0.0;
    for (size_t n = 0; n < length; ++n) {
        double w = 0.5 - 0.5 * std::cos(2.0 * M_PI * static_cast<double>(n) / static_cast<double>(length));
        double a = 2.0 * M_PI * frequency * static_cast<double>(n) / sampleRate;
        re += w * x[from + n] * std::cos(a);
        im -= w * x[from + n] * std::sin(a);
        weight += w;
    }
    return 2.0 * std::sqrt(re * re + im * im) / weight;
}

// The strongest frequency on a grid of step hertz up to top.
inline double peakFrequency(const std::vector<float>& x, size_t from, size_t length, double sampleRate,
                            double step, double top) {
    double best = 0.0, bestLevel = -1.0;
    for (double f = step; f < top; f += step) {
        double level = toneLevel(x, from, length, f, sampleRate);
        if (level > bestLevel) {
            bestLevel = level;
            best = f;
        }
    }
    return best;
}

inline double decibels(double ratio) { return 20.0 * std::log10(ratio); }

// Amount of "Wide" (or "Fine" with top 2) that shifts by hertz.
inline float shiftAmount(double hertz, double top) {
    double x = std::log(std::fabs(hertz) / top + 1.0) / std::log(101.0) * 0.5;
    return static_cast<float>(hertz >= 0 ? 0.5 + x : 0.5 - x);
}

// delayTime that gives seconds when not synced.
inline float delayAmount(double seconds) {
    double root = std::log(seconds / 2.2675737e-05) / std::log(44100.0);
    return static_cast<float>(root * root);
}

}  // namespace tw::test
