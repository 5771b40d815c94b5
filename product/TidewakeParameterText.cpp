#include "product/TidewakeParameterText.h"

#include "engine/NoteRatios.h"
#include "patch/NoteText.h"
#include "patch/ParameterText.h"
#include "product/TidewakeDescriptor.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tw {

namespace {

// Logarithms of the curves' bases, taken once.
const double ln2 = std::log(2.0);
const double ln100 = std::log(100.0);
const double ln101 = std::log(101.0);
const double ln400 = std::log(400.0);
const double ln1001 = std::log(1001.0);
const double ln10001 = std::log(10001.0);

// The delay text works with this rate, a hair above the engine's 44100.
constexpr double delayRate = 44100.000809233476;
const double lnDelayRate = std::log(delayRate);
constexpr double shortestDelay = 2.2675736545352265e-05;  // seconds, one sample

// The notes of the "Wide" range count from "C3"; shifts below "C-1" show no note.
constexpr double middleC = 261.6255653005986;
constexpr double perMiddleC = 0.00382225643297143;
constexpr double lowestNoteShown = 16.351597831287414;

const ParameterSpec& row(int id) {
    return tidewakeDescriptor().parameters[static_cast<std::size_t>(id)];
}

// The step of a discrete row of the patch, kept to its labels.
int stepOf(const Patch& patch, int id) {
    const int steps = static_cast<int>(row(id).labels.size());
    return std::clamp(discreteStep(row(id), patch.getParameter(id)), 0, steps - 1);
}

ShiftRange shiftRange(const Patch& patch) {
    return static_cast<ShiftRange>(stepOf(patch, Param::freqShiftRange));
}

LfoTarget lfoTarget(const Patch& patch) {
    return static_cast<LfoTarget>(stepOf(patch, Param::lfoTarget));
}

bool isOn(const Patch& patch, int id) {
    return tw::isOn(patch.getParameter(id));
}

double sign(double x) {
    return x > 0 ? 1.0 : x < 0 ? -1.0 : 0.0;
}

std::string withSuffix(double x, bool precise, const char* suffix) {
    return formatFixed(x, precise ? 7 : 2) + suffix;
}

// A shift in hertz of the "Fine" (scale 2) or "Wide" (scale 200) range.
double shiftHertz(double v, double scale) {
    const double x = (v - 0.5) * 2;
    return x >= 0 ? std::exp(x * ln101) * scale - scale : scale - std::exp(-x * ln101) * scale;
}

double shiftValue(double hertz, double scale) {
    hertz = std::clamp(hertz, -100 * scale, 100 * scale);
    const double k = 1 / scale;
    return hertz >= 0 ? (std::log(hertz * k + 1) / ln101 + 1) * 0.5 : 0.5 - std::log(1 - hertz * k) / ln101 * 0.5;
}

std::string wideShiftText(double v, bool precise) {
    const double h = shiftHertz(v, 200);
    if (precise) return formatFixed(h, 7) + " Hz";
    if (std::fabs(h) < lowestNoteShown) return formatFixed(h, 2) + " Hz";
    const auto cents = static_cast<long long>(std::floor(std::log(std::fabs(h) * perMiddleC) / ln2 * 1200 + 0.5));
    const long long n = cents + 49;
    const long long octave = n >= 0 ? n / 1200 : -((-n + 1199) / 1200);
    const long long note = (n - octave * 1200) / 100;
    const long long detune = (n % 100 + 100) % 100 - 49;
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, " Hz (%s%s%lld %+2.2lld)", h < 0 ? "-" : "", noteNames[note],
                  octave + 3, detune);
    return formatFixed(h, 2) + buffer;
}

// The offset from the held note, shown as the note it would give from note 60.
std::string midiShiftText(double v, bool precise) {
    const double o = v * 8 - 4 + 0.041666666666666664;  // half a semitone up
    const double w = std::floor(o);
    const double semitones = (o - w) * 12;
    const int s = std::min(static_cast<int>(std::floor(semitones)), 11);
    const double c = (semitones - s) * 100 - 50;
    char buffer[64];
    if (precise) {
        std::snprintf(buffer, sizeof buffer, "%s%d ", noteNames[s], static_cast<int>(w) + 3);
        return buffer + std::string(std::signbit(c) ? "-" : "+") + formatFixed(std::fabs(c), 7);
    }
    std::snprintf(buffer, sizeof buffer, "%s%d %+2.2d", noteNames[s], static_cast<int>(w) + 3,
                  static_cast<int>(std::floor(c + 0.5)));
    return buffer;
}

std::string lfoAmountText(LfoTarget target, double v, bool precise) {
    const double m = v * 2 - 1;
    switch (target) {
    case LfoTarget::frequencyShift:
        return withSuffix(sign(m) * (std::exp(std::fabs(m) * ln10001) * 2 - 2), precise, " Hz");
    case LfoTarget::phaseShift:
        return withSuffix(m * 360, precise, " degrees");
    case LfoTarget::lowPassFilter:
        return withSuffix(m * 8, precise, " octaves");
    case LfoTarget::delayTime:
        break;
    }
    return withSuffix(sign(m) * (std::exp(std::fabs(m) * ln101) - 1), precise, " ms");
}

// The white space of the spec language, in front of a note or a "-inf".
const char* skipBlanks(const char* p) {
    while (*p == ' ' || *p == '\t' || *p == '\v' || *p == '\r' || *p == '\n') ++p;
    return p;
}

double noteHertz(const NoteText& n) {
    return std::pow(2.0, (n.octave - 3) + n.note / 12.0 + n.cents / 1200) * middleC;
}

// A shift in "Wide": a note, with a minus in front for a shift down, or a number.
bool readWideShift(const char* text, double& hertz) {
    const char* p = skipBlanks(text);
    const bool down = *p == '-';
    if (down) ++p;
    NoteText note;
    if (scanNoteText(p, note) != p) {
        hertz = down ? -noteHertz(note) : noteHertz(note);
        return true;
    }
    return scanNumber(text, hertz) != text;
}

bool readMidiShift(const char* text, double& value) {
    const char* p = skipBlanks(text);
    NoteText n;
    if (scanNoteText(p, n) == p) return false;
    value = ((n.octave - 3) + n.note * 0.08333333333333333 + n.cents * 0.0008333333333333334 + 4) * 0.125;
    return true;
}

bool readFeedback(const char* text, double& value) {
    const char* p = skipBlanks(text);
    if (p[0] == '-' && (p[1] | 0x20) == 'i' && (p[2] | 0x20) == 'n' && (p[3] | 0x20) == 'f') {
        value = 0;
        return true;
    }
    double decibels = 0;
    if (scanNumber(text, decibels) == text) return false;
    const double gain = std::clamp(std::exp(decibels * 0.1151292546497022), 0.0, 1.0049999952316284);
    // At the top of the range the product rounds a hair above 1; the root must not see it.
    value = 1 - std::sqrt(std::max(0.0, 1 - gain * 0.9950248803429337));
    return true;
}

bool readLfoAmount(LfoTarget target, const char* text, double& value) {
    double x = 0;
    if (scanNumber(text, x) == text) return false;
    double m;
    switch (target) {
    case LfoTarget::frequencyShift:
        m = sign(x) * std::log(std::min(std::fabs(x), 20000.0) * 0.5 + 1) / ln10001;
        break;
    case LfoTarget::phaseShift:
        m = std::clamp(x, -360.0, 360.0) * 0.002777777777777778;
        break;
    case LfoTarget::lowPassFilter:
        m = std::clamp(x, -8.0, 8.0) * 0.125;
        break;
    case LfoTarget::delayTime:
    default:
        m = sign(x) * std::log(std::min(std::fabs(x), 100.0) + 1) / ln101;
        break;
    }
    value = (m + 1) * 0.5;
    return true;
}

// The value of the custom rows' numbers, or false when the text holds none.
bool readCustom(const Patch& patch, int id, const char* text, double& value) {
    double x = 0;
    switch (id) {
    case Param::freqShiftAmount:
        switch (shiftRange(patch)) {
        case ShiftRange::fine:
            if (scanNumber(text, x) == text) return false;
            value = shiftValue(x, 2);
            return true;
        case ShiftRange::wide:
            if (!readWideShift(text, x)) return false;
            value = shiftValue(x, 200);
            return true;
        default:
            return readMidiShift(text, value);
        }
    case Param::delayTime:
        if (scanNumber(text, x) == text) return false;
        x = std::clamp(x * 0.001, shortestDelay, 1.0);
        value = std::pow(std::log(x * delayRate) / lnDelayRate, 2);
        return true;
    case Param::feedbackAmount:
        return readFeedback(text, value);
    case Param::highPassFreq:
        if (scanNumber(text, x) == text) return false;
        value = std::log(std::clamp(x, 20.0, 2000.0) / 20) / ln100;
        return true;
    case Param::lowPassFreq:
        if (scanNumber(text, x) == text) return false;
        value = std::log(std::clamp(x, 100.0, 40000.0) / 100) / ln400;
        return true;
    case Param::smearAmount:
        if (scanNumber(text, x) == text) return false;
        value = std::sqrt(x * 0.008237015005466274);
        return true;
    case Param::lfoRate:
        if (scanNumber(text, x) == text) return false;
        value = std::log(std::clamp(x, 0.0, 100.0) * 10 + 1) / ln1001;
        return true;
    default:
        return readLfoAmount(lfoTarget(patch), text, value);
    }
}

// The row that stands for `id` in the patch's present setting: a sync row where a switch
// makes the custom row discrete, else null.
const ParameterSpec* syncRow(const Patch& patch, int id) {
    switch (id) {
    case Param::freqShiftAmount:
        return shiftRange(patch) == ShiftRange::sync ? &freqShiftSyncRow() : nullptr;
    case Param::delayTime:
        return isOn(patch, Param::delaySync) ? &delayTimeSyncRow() : nullptr;
    case Param::lfoRate:
        return isOn(patch, Param::lfoSync) ? &lfoRateSyncRow() : nullptr;
    default:
        return nullptr;
    }
}

}  // namespace

std::string tidewakeValueToText(const Patch& patch, int id, float value, bool precise) {
    const ParameterSpec& spec = row(id);
    if (spec.kind != ParameterKind::custom) return formatGeneric(spec, value, precise);
    if (const ParameterSpec* sync = syncRow(patch, id)) return formatGeneric(*sync, value, false);
    const double v = clampUnit(value);
    switch (id) {
    case Param::freqShiftAmount:
        switch (shiftRange(patch)) {
        case ShiftRange::fine: return withSuffix(shiftHertz(v, 2), precise, " Hz");
        case ShiftRange::wide: return wideShiftText(v, precise);
        default: return midiShiftText(v, precise);
        }
    case Param::delayTime:
        return withSuffix(std::exp(std::sqrt(v) * lnDelayRate) * 0.022675736545352265, precise, " ms");
    case Param::feedbackAmount: {
        // 1.005 as the float the engine holds, which is what the reading divides by.
        const double gain = (1 - (1 - v) * (1 - v)) * static_cast<double>(1.005f);
        return gain < 1e-08 ? "-inf" : formatFixed(std::log(gain) * 8.685889638065037, precise ? 14 : 2);
    }
    case Param::highPassFreq:
        return withSuffix(std::exp(ln100 * v) * 20, precise, "");
    case Param::lowPassFreq:
        return withSuffix(std::exp(ln400 * v) * 100, precise, "");
    case Param::smearAmount:
        return formatFixed(v * v * 121.40320241451263, precise ? 9 : 3);
    case Param::lfoRate:
        return withSuffix(std::exp(ln1001 * v) * 0.1 - 0.1, precise, " Hz");
    default:
        return lfoAmountText(lfoTarget(patch), v, precise);
    }
}

bool tidewakeTextToValue(const Patch& patch, int id, std::string_view text, float& out) {
    const ParameterSpec& spec = row(id);
    if (spec.kind != ParameterKind::custom) return parseGeneric(spec, text, out);
    if (const ParameterSpec* sync = syncRow(patch, id)) return parseGeneric(*sync, text, out);
    const std::string terminated(text);
    double value = 0;
    if (!readCustom(patch, id, terminated.c_str(), value)) return false;
    out = clampUnit(value);
    return true;
}

float tidewakeConstrainValue(const Patch& patch, int id, float value) {
    const ParameterSpec* sync = syncRow(patch, id);
    return quantiseGeneric(sync ? *sync : row(id), value);
}

float turnOffDelaySyncValue(const Patch& patch, double tempo) {
    const double delay = patch.getParameter(Param::delayTime);
    const double smear = patch.getParameter(Param::smearAmount);
    const int steps = static_cast<int>(delayTimeSyncRow().displayMax);
    // Counted from the long end: "1/2" (value 1) is ratio 15, "1/128" (value 0) ratio 29.
    const int i = std::clamp(static_cast<int>(std::floor((1 - delay) * steps + 0.5)), 0, steps) + 15;
    double seconds = kNoteNumerators[i] * 4.0 / kNoteDenominators[i] * (60 / tempo) - smear * smear * 0.1214032;
    while (seconds > 1.0 && std::isfinite(seconds)) seconds *= 0.5;
    seconds = std::clamp(seconds, shortestDelay, 1.0);
    return clampUnit(std::pow(std::log(seconds * delayRate) / lnDelayRate, 2));
}

}  // namespace tw
