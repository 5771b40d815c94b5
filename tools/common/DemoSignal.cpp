#include "tools/common/DemoSignal.h"

#include <cmath>
#include <cstdint>

namespace tw {

namespace {

constexpr double pi = 3.14159265358979323846;

// A plucked string by the Karplus-Strong loop: a burst of noise averaged round a ring
// whose length sets the pitch.
void pluck(AudioBuffer& out, double start, double frequency, float gain, float pan, std::uint32_t& noise) {
    int rate = out.sampleRate;
    auto ringLength = static_cast<std::size_t>(rate / frequency);
    if (ringLength < 2) return;
    std::vector<float> ring(ringLength);
    for (float& s : ring) {
        noise ^= noise << 13;
        noise ^= noise >> 17;
        noise ^= noise << 5;
        s = static_cast<float>(noise) / 4294967296.0f * 2.0f - 1.0f;
    }
    long first = static_cast<long>(start * rate);
    long length = static_cast<long>(1.5 * rate);
    float left = gain * std::sqrt(1.0f - pan), right = gain * std::sqrt(pan);
    std::size_t index = 0;
    for (long n = 0; n < length && first + n < out.frames(); ++n) {
        std::size_t next = (index + 1) % ringLength;
        float y = ring[index];
        ring[index] = 0.5f * (ring[index] + ring[next]) * 0.996f;
        index = next;
        out.samples[static_cast<std::size_t>((first + n) * 2)] += y * left;
        out.samples[static_cast<std::size_t>((first + n) * 2 + 1)] += y * right;
    }
}

// A soft kick: a sine falling from 110 to 45 Hz under a short decay.
void kick(AudioBuffer& out, double start, float gain) {
    int rate = out.sampleRate;
    long first = static_cast<long>(start * rate);
    long length = static_cast<long>(0.4 * rate);
    double phase = 0;
    for (long n = 0; n < length && first + n < out.frames(); ++n) {
        double t = double(n) / rate;
        double frequency = 45.0 + 65.0 * std::exp(-t * 30.0);
        phase += 2.0 * pi * frequency / rate;
        auto y = static_cast<float>(std::sin(phase) * std::exp(-t * 9.0)) * gain;
        out.samples[static_cast<std::size_t>((first + n) * 2)] += y;
        out.samples[static_cast<std::size_t>((first + n) * 2 + 1)] += y;
    }
}

}  // namespace

AudioBuffer makeDemoSignal(int sampleRate) {
    AudioBuffer out;
    out.sampleRate = sampleRate;
    out.channels = 2;
    out.samples.assign(static_cast<std::size_t>(sampleRate) * 8 * 2, 0.0f);

    const double beat = 0.5;  // 120 beats per minute
    // A minor pentatonic phrase in eighth notes, MIDI note numbers; 0 is a rest.
    const int phrase[] = {57, 60, 64, 67, 69, 0, 67, 64, 62, 64, 0, 60, 57, 0, 55, 57};
    std::uint32_t noise = 0x1234567u;
    for (int i = 0; i < 16; ++i) {
        if (phrase[i] == 0) continue;
        double frequency = 440.0 * std::pow(2.0, (phrase[i] - 69) / 12.0);
        pluck(out, i * beat / 2, frequency, 0.45f, (i % 2) ? 0.7f : 0.3f, noise);
    }
    for (int b = 0; b < 8; b += 2) kick(out, b * beat, 0.5f);
    return out;
}

}  // namespace tw
