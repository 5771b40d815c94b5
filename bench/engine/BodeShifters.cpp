#include "bench/engine/BodeShifters.h"

#include <dlfcn.h>

#include <algorithm>

namespace tw::bench {

namespace {

// The LADSPA 1.1 descriptor, field for field as the C interface lays it out.
struct LadspaRangeHint {
    int hints;
    float lower;
    float upper;
};

struct LadspaDescriptor {
    unsigned long uniqueId;
    const char* label;
    int properties;
    const char* name;
    const char* maker;
    const char* copyright;
    unsigned long portCount;
    const int* portDescriptors;
    const char* const* portNames;
    const LadspaRangeHint* portRangeHints;
    void* implementationData;
    void* (*instantiate)(const LadspaDescriptor*, unsigned long sampleRate);
    void (*connectPort)(void* instance, unsigned long port, float* data);
    void (*activate)(void* instance);
    void (*run)(void* instance, unsigned long sampleCount);
    void (*runAdding)(void* instance, unsigned long sampleCount);
    void (*setRunAddingGain)(void* instance, float gain);
    void (*deactivate)(void* instance);
    void (*cleanup)(void* instance);
};

constexpr int kPortInput = 1, kPortOutput = 2, kPortControl = 4, kPortAudio = 8;
constexpr const char* kLibrary = "/usr/lib/ladspa/bode_shifter_1431.so";

}  // namespace

BodeShifters::BodeShifters(float sampleRate) {
    library_ = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
    if (!library_) return;
    auto entry = reinterpret_cast<const LadspaDescriptor* (*)(unsigned long)>(dlsym(library_, "ladspa_descriptor"));
    const LadspaDescriptor* d = entry ? entry(0) : nullptr;
    if (!d) return;
    descriptor_ = d;
    for (int c = 0; c < 2; ++c) {
        void* h = d->instantiate(d, static_cast<unsigned long>(sampleRate));
        if (!h) return;
        // Audio in and the two sidebands out by their direction, the shift and the
        // reported latency by theirs.
        int audioOut = 0;
        for (unsigned long p = 0; p < d->portCount; ++p) {
            int kind = d->portDescriptors[p];
            if ((kind & kPortControl) && (kind & kPortInput))
                d->connectPort(h, p, &shift_);
            else if (kind & kPortControl)
                d->connectPort(h, p, &latency_);
            else if ((kind & kPortAudio) && (kind & kPortInput)) {
                inputPort_ = p;
                d->connectPort(h, p, in_[c]);
            } else if (kind & kPortOutput) {
                if (audioOut++ == 1) upPort_ = p;
                d->connectPort(h, p, audioOut == 1 ? down_[c] : up_[c]);
            }
        }
        if (d->activate) d->activate(h);
        handles_[c] = h;
    }
}

BodeShifters::~BodeShifters() {
    auto d = static_cast<const LadspaDescriptor*>(descriptor_);
    for (void* h : handles_) {
        if (!h) continue;
        if (d->deactivate) d->deactivate(h);
        d->cleanup(h);
    }
    if (library_) dlclose(library_);
}

void BodeShifters::run(const float* left, const float* right, float* outLeft, float* outRight, std::size_t n) {
    // Connected to the caller's buffers, as a host does per block: no copies on our side.
    auto d = static_cast<const LadspaDescriptor*>(descriptor_);
    const float* in[2] = {left, right};
    float* out[2] = {outLeft, outRight};
    for (int c = 0; c < 2; ++c) {
        d->connectPort(handles_[c], inputPort_, const_cast<float*>(in[c]));
        d->connectPort(handles_[c], upPort_, out[c]);
        d->run(handles_[c], n);
    }
}

}  // namespace tw::bench
