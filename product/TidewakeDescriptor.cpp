#include "product/TidewakeDescriptor.h"

namespace tw {

const std::array<std::string_view, noteLengthCount> noteLengthLabels = {
    "8/1",  "6/1 (4/1.)", "8/1T", "4/1", "3/1 (2/1.)", "4/1T", "2/1",  "3/2 (1/1.)", "2/1T",
    "1/1",  "3/4 (1/2.)", "1/1T", "1/2", "3/8 (1/4.)", "1/2T", "1/4",  "3/16 (1/8.)", "1/4T",
    "1/8",  "1/8T",       "1/16", "1/16T", "1/32",     "1/32T", "1/64", "1/64T",      "1/128",
};

namespace {

using K = ParameterKind;

std::vector<std::string> noteLabels(int first, int count, bool reversed) {
    std::vector<std::string> out;
    for (int i = 0; i < count; ++i) {
        int index = reversed ? first + count - 1 - i : first + i;
        out.emplace_back(noteLengthLabels[static_cast<std::size_t>(index)]);
    }
    return out;
}

std::vector<ParameterSpec> parameterRows() {
    return {
        {"freqShiftRange", "Frequency Shift Range", "", K::discrete, 0.33333334f, 0, 3, {"Fine", "Wide", "Sync", "Midi"}},
        {"freqShiftAmount", "Frequency Shift Amount", "", K::custom, 0.5f, 0, 1, {}},
        {"antiReflection", "Anti Reflection", "", K::boolean, 1.0f, 0, 1, {}},
        {"phaseShift", "Phase Shift", "degrees", K::continuous, 0.5f, -180, 180, {}},
        {"sidebandMix", "Sideband Mix", "", K::continuous, 1.0f, -100, 100, {}},
        {"delaySync", "Delay Sync", "", K::boolean, 0.0f, 0, 1, {}},
        {"delayTime", "Delay Time", "", K::custom, 0.0f, 0, 1, {}},
        {"feedbackAmount", "Feedback Amount", "dB", K::custom, 0.0f, 0, 1, {}},
        {"crossChannels", "Cross Channels", "", K::boolean, 0.0f, 0, 1, {}},
        {"highPassFreq", "High-pass Frequency", "Hz", K::custom, 0.0f, 0, 1, {}},
        {"lowPassFreq", "Low-pass Frequency", "Hz", K::custom, 1.0f, 0, 1, {}},
        {"smearAmount", "Smear Amount", "ms", K::custom, 0.0f, 0, 1, {}},
        {"wetMix", "Wet Mix", "%", K::continuous, 1.0f, 0, 100, {}},
        {"lfoShape", "LFO Shape", "", K::discrete, 0.0f, 0, 3, {"Sine", "Saw", "Square", "Random"}},
        {"lfoSync", "LFO Sync", "", K::boolean, 0.0f, 0, 1, {}},
        {"lfoRate", "LFO Rate", "", K::custom, 0.5f, 0, 1, {}},
        {"lfoTarget", "LFO Target", "", K::discrete, 0.0f, 0, 3,
         {"Frequency Shift", "Phase Shift", "Low-pass Filter", "Delay Time"}},
        {"lfoStereo", "LFO Stereo", "", K::boolean, 0.0f, 0, 1, {}},
        {"lfoAmount", "LFO Amount", "", K::custom, 0.5f, 0, 1, {}},
    };
}

ModelDescriptor makeDescriptor() {
    ModelDescriptor d{};
    d.uniqueId = fourCharCode("QvTW");
    d.modelName = "Tidewake";
    d.publicName = "Tidewake";
    d.vendorName = "Marlin Works";
    d.version = 0x00010000;
    d.isSynth = false;
    d.receivesMidi = true;
    d.sendsMidi = false;
    d.frameSize = 8;
    d.identifier = "tidewake";
    d.modelCode = fourCharCode("TwKe");
    d.minFormat = 1;
    d.maxFormat = 1;
    d.programCount = 16;
    d.startupBankFormat = 1;
    d.parameters = parameterRows();
    // delayTime before delaySync, lfoRate before lfoSync, lfoAmount first of the last
    // three: hosts list the value before the switch that changes its meaning.
    d.hostOrder = {0, 1, 2, 3, 4, 6, 5, 7, 8, 9, 10, 11, 12, 13, 15, 14, 18, 17, 16};
    d.buses = {{0, "Main Input", true}, {1, "Main Output", true}};
    d.feedbacks = {"lfoOutputLevel", "measuredInputLevel", "lfoNeedlePosition", "midiActivity", "lfoActive"};
    d.factoryBankName = "FactoryBank";
    d.licenceWords = {0, 0, 0, 0};
    return d;
}

}  // namespace

const ParameterSpec& freqShiftSyncRow() {
    static const ParameterSpec row{"freqShiftAmount", "Frequency Shift Amount", "", K::discrete, 0.5f, 0, 20,
                                   noteLabels(0, 21, false)};
    return row;
}

const ParameterSpec& delayTimeSyncRow() {
    // The only synced row that runs from short to long: "1/128" at 0, "1/2" at 1.
    static const ParameterSpec row{"delayTime", "Delay Time", "", K::discrete, 0.0f, 0, 14, noteLabels(12, 15, true)};
    return row;
}

const ParameterSpec& lfoRateSyncRow() {
    static const ParameterSpec row{"lfoRate", "LFO Rate", "", K::discrete, 0.5f, 0, 24, noteLabels(0, 25, false)};
    return row;
}

const ModelDescriptor& tidewakeDescriptor() {
    static const ModelDescriptor descriptor = makeDescriptor();
    return descriptor;
}

}  // namespace tw
