#include "product/TidewakeParameterText.h"

#include "patch/NoteText.h"
#include "product/TidewakeDescriptor.h"
#include "product/TidewakeFactory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>

using namespace tw;

namespace {

// A patch at its defaults with some switches set: the context of row-dependent text.
class Context {
public:
    Context() : patch_(TidewakeFactory().createInitPatch()) {}

    Context& set(int id, float value) {
        patch_->storeParameter(id, value);
        return *this;
    }
    Context& range(ShiftRange r) { return set(Param::freqShiftRange, static_cast<float>(r) / 3); }
    Context& target(LfoTarget t) { return set(Param::lfoTarget, static_cast<float>(t) / 3); }

    std::string show(int id, float value) const { return tidewakeValueToText(*patch_, id, value, false); }
    std::string full(int id, float value) const { return tidewakeValueToText(*patch_, id, value, true); }

    // The value a text reads as, or -1 when it does not read.
    float read(int id, const std::string& text) const {
        float value = -1;
        return tidewakeTextToValue(*patch_, id, text, value) ? value : -1;
    }

    const Patch& patch() const { return *patch_; }

private:
    std::unique_ptr<Patch> patch_;
};

// The hertz a "Wide" shift value stands for, read back from its full form.
double wideHertz(const Context& c, float value) {
    return std::strtod(c.full(Param::freqShiftAmount, value).c_str(), nullptr);
}

}  // namespace

TEST(NoteText, LettersAccidentalsOctavesAndCents) {
    NoteText n{};
    const char* text = "c#4 -12.5 rest";
    EXPECT_STREQ(scanNoteText(text, n), " rest");
    EXPECT_EQ(n.note, 1);
    EXPECT_EQ(n.octave, 4);
    EXPECT_EQ(n.cents, -12.5);
    text = "Bb -1";
    EXPECT_STREQ(scanNoteText(text, n), "");
    EXPECT_EQ(n.note, 10);
    EXPECT_EQ(n.octave, -1);
    EXPECT_EQ(n.cents, 0);
    text = "b\t3";
    EXPECT_STREQ(scanNoteText(text, n), "");
    EXPECT_EQ(n.note, 11);
    // The octave must be there; a digit or another letter is no note.
    for (const char* none : {"A", "A#", "A x", "H3", "3A", " A3", "#3"}) {
        EXPECT_EQ(scanNoteText(none, n), none) << none;
    }
}

TEST(ShiftText, FineRange) {
    Context c;
    c.range(ShiftRange::fine);
    EXPECT_EQ(c.show(Param::freqShiftAmount, 1.0f), "200.00 Hz");
    EXPECT_EQ(c.full(Param::freqShiftAmount, 1.0f), "200.0000000 Hz");
    EXPECT_EQ(c.show(Param::freqShiftAmount, 0.5f), "0.00 Hz");
    EXPECT_EQ(c.show(Param::freqShiftAmount, 0.0f), "-200.00 Hz");
    EXPECT_EQ(c.read(Param::freqShiftAmount, "0 Hz"), 0.5f);
    EXPECT_EQ(c.read(Param::freqShiftAmount, "500"), 1.0f);
    EXPECT_EQ(c.read(Param::freqShiftAmount, "-500"), 0.0f);
    EXPECT_EQ(c.read(Param::freqShiftAmount, "A3"), -1) << "notes are read in the wide range only";
}

TEST(ShiftText, WideRangeShowsNotesFromItsThreshold) {
    Context c;
    c.range(ShiftRange::wide);
    // The first value whose shift reaches the threshold, and the one before it.
    float below = c.read(Param::freqShiftAmount, "16.3");
    float atThreshold = below;
    while (wideHertz(c, atThreshold) < 16.351597831287414) {
        below = atThreshold;
        atThreshold = std::nextafter(atThreshold, 1.0f);
    }
    EXPECT_EQ(c.show(Param::freqShiftAmount, atThreshold), "16.35 Hz (C-1 +00)");
    EXPECT_EQ(c.show(Param::freqShiftAmount, below), "16.35 Hz");
    EXPECT_EQ(c.full(Param::freqShiftAmount, 0.0f), "-20000.0000000 Hz");
    EXPECT_EQ(c.show(Param::freqShiftAmount, 0.5f), "0.00 Hz");
}

TEST(ShiftText, WideRangeReadsNotes) {
    Context c;
    c.range(ShiftRange::wide);
    const float a3 = c.read(Param::freqShiftAmount, "A3");
    EXPECT_NEAR(wideHertz(c, a3), 440.0, 1e-3);
    EXPECT_EQ(c.show(Param::freqShiftAmount, a3), "440.00 Hz (A3 +00)");
    EXPECT_EQ(c.read(Param::freqShiftAmount, " a3"), a3);
    EXPECT_EQ(c.read(Param::freqShiftAmount, "G## 3"), -1);
    const float down = c.read(Param::freqShiftAmount, "-A3");
    EXPECT_NEAR(wideHertz(c, down), -440.0, 1e-3);
    EXPECT_EQ(c.show(Param::freqShiftAmount, down), "-440.00 Hz (-A3 +00)");
    EXPECT_EQ(c.read(Param::freqShiftAmount, "-a3"), down);
    // The letter alone is tried as a number, and is none.
    EXPECT_EQ(c.read(Param::freqShiftAmount, "A"), -1);
    EXPECT_NEAR(wideHertz(c, c.read(Param::freqShiftAmount, "A4 +1200")), 1760.0, 1e-2);
    EXPECT_NEAR(wideHertz(c, c.read(Param::freqShiftAmount, "Cb4")), 493.883, 1e-2);
    // Display text reads back by its leading number.
    EXPECT_EQ(c.read(Param::freqShiftAmount, "440.00 Hz (A3 +00)"), c.read(Param::freqShiftAmount, "440"));
    EXPECT_EQ(c.read(Param::freqShiftAmount, "1e9"), 1.0f);
}

TEST(ShiftText, WideRangeDetune) {
    Context c;
    c.range(ShiftRange::wide);
    EXPECT_EQ(c.show(Param::freqShiftAmount, c.read(Param::freqShiftAmount, "A3 +30")), "447.69 Hz (A3 +30)");
    EXPECT_EQ(c.show(Param::freqShiftAmount, c.read(Param::freqShiftAmount, "A3 -30")), "432.44 Hz (A3 -30)");
    EXPECT_EQ(c.show(Param::freqShiftAmount, c.read(Param::freqShiftAmount, "A3 +50")), "452.89 Hz (A3 +50)")
        << "the detune runs from -49 to +50";
}

TEST(ShiftText, MidiRangeShowsTheNoteFromMiddleC) {
    Context c;
    c.range(ShiftRange::midi);
    EXPECT_EQ(c.read(Param::freqShiftAmount, "C3"), 0.5f);
    EXPECT_EQ(c.read(Param::freqShiftAmount, "c3"), 0.5f);
    EXPECT_EQ(c.show(Param::freqShiftAmount, 0.5f), "C3 +00");
    EXPECT_EQ(c.full(Param::freqShiftAmount, 0.5f), "C3 +0.0000000");
    EXPECT_EQ(c.show(Param::freqShiftAmount, 0.0f), "C-1 +00");
    EXPECT_EQ(c.show(Param::freqShiftAmount, 1.0f), "C7 +00");
    EXPECT_EQ(c.read(Param::freqShiftAmount, "C-1"), 0.0f);
    EXPECT_EQ(c.read(Param::freqShiftAmount, "G3 -20"), c.read(Param::freqShiftAmount, "F#3 +80"));
    EXPECT_EQ(c.read(Param::freqShiftAmount, "C9"), 1.0f);
    EXPECT_EQ(c.read(Param::freqShiftAmount, "60"), -1);
}

TEST(ShiftText, SyncRangeUsesTheNoteLengths) {
    Context c;
    c.range(ShiftRange::sync);
    EXPECT_EQ(c.show(Param::freqShiftAmount, 0.0f), "8/1");
    EXPECT_EQ(c.full(Param::freqShiftAmount, 1.0f), "1/16");
    EXPECT_EQ(c.read(Param::freqShiftAmount, "1/16"), 1.0f);
    EXPECT_EQ(c.read(Param::freqShiftAmount, "1/128"), -1);
    EXPECT_EQ(tidewakeConstrainValue(c.patch(), Param::freqShiftAmount, 0.52f), 0.5f);
}

TEST(DelayText, MillisecondsAndSyncLabelsAtBothEnds) {
    Context c;
    EXPECT_EQ(c.show(Param::delayTime, 1.0f), "1000.00 ms");
    EXPECT_EQ(c.full(Param::delayTime, 1.0f), "1000.0000000 ms");
    EXPECT_EQ(c.full(Param::delayTime, 0.0f), "0.0226757 ms");
    EXPECT_EQ(c.read(Param::delayTime, "1000 ms"), 1.0f);
    EXPECT_EQ(c.read(Param::delayTime, "5000"), 1.0f);
    EXPECT_EQ(c.read(Param::delayTime, "0"), 0.0f);
    EXPECT_EQ(c.read(Param::delayTime, "ms"), -1);
    EXPECT_EQ(tidewakeConstrainValue(c.patch(), Param::delayTime, 0.52f), 0.52f);
    c.set(Param::delaySync, 1);
    EXPECT_EQ(c.show(Param::delayTime, 0.0f), "1/128");
    EXPECT_EQ(c.show(Param::delayTime, 1.0f), "1/2");
    EXPECT_EQ(c.full(Param::delayTime, 1.0f), "1/2");
    EXPECT_EQ(c.read(Param::delayTime, "1/2"), 1.0f);
    EXPECT_EQ(c.read(Param::delayTime, "1/128"), 0.0f);
    EXPECT_EQ(c.read(Param::delayTime, "1/1"), -1);
    EXPECT_EQ(c.read(Param::delayTime, "250"), -1);
    EXPECT_EQ(tidewakeConstrainValue(c.patch(), Param::delayTime, 0.52f), 7.0f / 14);
}

// Turning the sync off keeps the delay where it was in seconds, less the smear's delay.
TEST(TurnOffDelaySync, KeepsTheDelayInSeconds) {
    Context synced;
    synced.set(Param::delaySync, 1);
    const Context free;
    auto after = [&synced](const char* length, double tempo) {
        synced.set(Param::delayTime, synced.read(Param::delayTime, length));
        return turnOffDelaySyncValue(synced.patch(), tempo);
    };
    EXPECT_EQ(after("1/4", 120), free.read(Param::delayTime, "500 ms"));
    EXPECT_EQ(after("1/16T", 100), free.read(Param::delayTime, "100 ms"));
    EXPECT_EQ(after("1/2", 120), 1.0f);
    // Longer than a second: halved until it fits.
    EXPECT_EQ(after("1/2", 50), free.read(Param::delayTime, "600 ms"));
    EXPECT_EQ(after("1/2", 30), 1.0f);
    EXPECT_EQ(after("1/128", 1e9), 0.0f);
    synced.set(Param::smearAmount, 1);
    EXPECT_FLOAT_EQ(after("1/4", 120), free.read(Param::delayTime, "378.5968 ms"));
}

TEST(FeedbackText, DecibelsAndMinusInfinity) {
    Context c;
    EXPECT_EQ(c.show(Param::feedbackAmount, 0.0f), "-inf");
    EXPECT_EQ(c.full(Param::feedbackAmount, 0.0f), "-inf");
    EXPECT_EQ(c.show(Param::feedbackAmount, 1.0f), "0.04");
    EXPECT_EQ(c.full(Param::feedbackAmount, 1.0f), "0.04332119391866");
    EXPECT_EQ(c.full(Param::feedbackAmount, 0.5f), "-2.45545353824734");
    EXPECT_EQ(c.read(Param::feedbackAmount, "-inf"), 0.0f);
    EXPECT_EQ(c.read(Param::feedbackAmount, " -INF"), 0.0f);
    EXPECT_EQ(c.read(Param::feedbackAmount, "0.04332119391866"), 1.0f);
    EXPECT_EQ(c.read(Param::feedbackAmount, "12"), 1.0f);
    EXPECT_EQ(c.read(Param::feedbackAmount, "-400"), 0.0f);
    EXPECT_EQ(c.read(Param::feedbackAmount, "inf"), 1.0f);
    EXPECT_EQ(c.read(Param::feedbackAmount, "dB"), -1);
}

TEST(FilterAndSmearText, DisplayAndFullForms) {
    Context c;
    EXPECT_EQ(c.show(Param::highPassFreq, 0.0f), "20.00");
    EXPECT_EQ(c.full(Param::highPassFreq, 1.0f), "2000.0000000");
    EXPECT_EQ(c.read(Param::highPassFreq, "10"), 0.0f);
    EXPECT_EQ(c.read(Param::highPassFreq, "200 Hz"), 0.5f);
    EXPECT_EQ(c.full(Param::lowPassFreq, 1.0f), "40000.0000000");
    EXPECT_EQ(c.show(Param::lowPassFreq, 0.5f), "2000.00");
    EXPECT_EQ(c.read(Param::lowPassFreq, "2000"), 0.5f);
    EXPECT_EQ(c.show(Param::smearAmount, 0.5f), "30.351");
    EXPECT_EQ(c.full(Param::smearAmount, 0.5f), "30.350800604");
    EXPECT_EQ(c.read(Param::smearAmount, "30.350800604"), 0.5f);
    EXPECT_EQ(c.read(Param::smearAmount, "-5"), 0.0f);
    EXPECT_EQ(c.read(Param::smearAmount, "500"), 1.0f);
}

TEST(LfoText, RateAndItsSyncLabels) {
    Context c;
    EXPECT_EQ(c.show(Param::lfoRate, 1.0f), "100.00 Hz");
    EXPECT_EQ(c.full(Param::lfoRate, 0.5f), "3.0638584 Hz");
    EXPECT_EQ(c.show(Param::lfoRate, 0.0f), "0.00 Hz");
    EXPECT_EQ(c.read(Param::lfoRate, "100 Hz"), 1.0f);
    EXPECT_EQ(c.read(Param::lfoRate, "-1"), 0.0f);
    c.set(Param::lfoSync, 1);
    EXPECT_EQ(c.show(Param::lfoRate, 0.0f), "8/1");
    EXPECT_EQ(c.show(Param::lfoRate, 1.0f), "1/64");
    EXPECT_EQ(c.read(Param::lfoRate, "1/2"), 0.5f);
    EXPECT_EQ(tidewakeConstrainValue(c.patch(), Param::lfoRate, 0.51f), 0.5f);
}

TEST(LfoText, AmountByTarget) {
    Context c;
    EXPECT_EQ(c.target(LfoTarget::frequencyShift).show(Param::lfoAmount, 1.0f), "20000.00 Hz");
    EXPECT_EQ(c.show(Param::lfoAmount, 0.0f), "-20000.00 Hz");
    EXPECT_EQ(c.show(Param::lfoAmount, 0.5f), "0.00 Hz");
    EXPECT_EQ(c.read(Param::lfoAmount, "-1e6"), 0.0f);
    EXPECT_EQ(c.read(Param::lfoAmount, "0"), 0.5f);
    EXPECT_EQ(c.target(LfoTarget::phaseShift).full(Param::lfoAmount, 0.75f), "180.0000000 degrees");
    EXPECT_EQ(c.read(Param::lfoAmount, "-180 degrees"), 0.25f);
    EXPECT_EQ(c.read(Param::lfoAmount, "720"), 1.0f);
    EXPECT_EQ(c.target(LfoTarget::lowPassFilter).show(Param::lfoAmount, 0.25f), "-4.00 octaves");
    EXPECT_EQ(c.read(Param::lfoAmount, "4"), 0.75f);
    EXPECT_EQ(c.target(LfoTarget::delayTime).show(Param::lfoAmount, 1.0f), "100.00 ms");
    EXPECT_EQ(c.show(Param::lfoAmount, 0.0f), "-100.00 ms");
    EXPECT_EQ(c.read(Param::lfoAmount, "-100 ms"), 0.0f);
}

TEST(GenericRowText, FollowTheirKind) {
    Context c;
    EXPECT_EQ(c.show(Param::wetMix, 0.5f), "50.00");
    EXPECT_EQ(c.full(Param::phaseShift, 0.25f), "-90.0000000");
    EXPECT_EQ(c.show(Param::crossChannels, 1.0f), "On");
    EXPECT_EQ(c.read(Param::crossChannels, "ON"), 1.0f);
    EXPECT_EQ(c.read(Param::crossChannels, "0"), 0.0f);
    EXPECT_EQ(c.show(Param::lfoShape, 1.0f), "Random");
    EXPECT_EQ(c.read(Param::lfoShape, "saw"), 1.0f / 3);
    EXPECT_EQ(c.read(Param::wetMix, "nan"), -1);
    EXPECT_EQ(tidewakeConstrainValue(c.patch(), Param::lfoStereo, 0.5f), 1.0f);
}

// Every stored value is its full text, so the full form must read back to the value, in
// every setting of the switches that change a row's text. Where the text has fewer digits
// than the float (slow LFO rates, the shortest delays), it reads back to the nearest value
// the text can name: near the value, and giving the same text again.
TEST(ParameterText, FullFormsReadBack) {
    struct Setting {
        const char* name;
        int id;
        float value;
    };
    const Setting settings[] = {
        {"fine", Param::freqShiftRange, 0},        {"wide", Param::freqShiftRange, 1.0f / 3},
        {"midi", Param::freqShiftRange, 1},        {"sync", Param::freqShiftRange, 2.0f / 3},
        {"synced", Param::delaySync, 1},           {"lfo synced", Param::lfoSync, 1},
        {"phase", Param::lfoTarget, 1.0f / 3},     {"low-pass", Param::lfoTarget, 2.0f / 3},
        {"delay", Param::lfoTarget, 1},            {"frequency", Param::lfoTarget, 0},
    };
    Context c;
    std::srand(7);
    for (const Setting& setting : settings) {
        c.set(setting.id, setting.value);
        for (int id = 0; id < Param::count; ++id) {
            for (int k = 0; k <= 200; ++k) {
                // Steps of a two-hundredth, then values of no particular form.
                float value = k <= 100 ? k / 100.0f : static_cast<float>(std::rand() / static_cast<double>(RAND_MAX));
                value = tidewakeConstrainValue(c.patch(), id, value);
                const std::string text = c.full(id, value);
                const float back = c.read(id, text);
                if (back == value) continue;
                EXPECT_NEAR(back, value, 1e-6) << setting.name << ": row " << id << " reads \"" << text << "\"";
                EXPECT_EQ(c.full(id, back), text) << setting.name << ": row " << id;
            }
        }
    }
}
