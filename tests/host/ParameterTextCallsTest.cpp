#include <gtest/gtest.h>

#include <limits>

#include <cstring>
#include <string>

#include "vst2/VendorProtocol.h"
#include "product/TidewakeDescriptor.h"
#include "tests/host/TestHost.h"

using namespace tw;
using namespace tw::test;

namespace {

// Host indices: 1 is freqShiftAmount, 5 delayTime, 6 delaySync, 7 feedbackAmount.
constexpr int shiftIndex = 1, delayIndex = 5, syncIndex = 6, feedbackIndex = 7;

std::string display(TestHost& host, int index) {
    char buffer[64];
    std::memset(buffer, 'x', sizeof buffer);
    host.dispatch(vst2::effGetParamDisplay, index, 0, buffer);
    return buffer;
}

// sS2V: the value the text reads as, or -1 (the record's own value) when it is refused.
float textToValue(TestHost& host, int index, const char* text) {
    vendor::ParameterText record{-1, {}};
    std::strncpy(record.text, text, sizeof record.text - 1);
    const auto answer = host.dispatch(vst2::effVendorSpecific, vendor::textToValueCode, index, &record);
    EXPECT_EQ(answer, record.value == -1 ? 0 : 1) << text;
    return record.value;
}

std::string valueToText(TestHost& host, int index, float value) {
    vendor::ParameterText record{value, {}};
    std::memset(record.text, 'x', sizeof record.text);
    EXPECT_EQ(host.dispatch(vst2::effVendorSpecific, vendor::valueToTextCode, index, &record), 1);
    return record.text;
}

}  // namespace

TEST(ParameterTextCalls, DisplayFollowsTheRowsOwnText) {
    TestHost host;
    EXPECT_EQ(display(host, feedbackIndex), "-inf");
    EXPECT_EQ(display(host, delayIndex), "0.02 ms");
    host.effect->setParameter(host.effect, syncIndex, 1.0f);
    EXPECT_EQ(display(host, delayIndex), "1/128");
    host.effect->setParameter(host.effect, shiftIndex, 0.0f);
    EXPECT_EQ(display(host, shiftIndex), "-20000.00 Hz (-D#9 +08)");
    host.effect->setParameter(host.effect, 18, 1.0f / 3);   // lfoTarget: Phase Shift
    host.effect->setParameter(host.effect, 16, 0.0f);       // lfoAmount
    EXPECT_EQ(display(host, 16), "-360.00 degrees");
}

TEST(ParameterTextCalls, TextToValueReadsOrLeavesAlone) {
    TestHost host;
    EXPECT_EQ(textToValue(host, delayIndex, "1000 ms"), 1.0f);
    EXPECT_EQ(textToValue(host, feedbackIndex, "-inf"), 0.0f);
    EXPECT_EQ(textToValue(host, shiftIndex, "A3"), textToValue(host, shiftIndex, "440"));
    EXPECT_EQ(textToValue(host, syncIndex, "on"), 1.0f);
    EXPECT_EQ(textToValue(host, 0, "Midi"), 1.0f);
    EXPECT_EQ(textToValue(host, delayIndex, "soon"), -1);
    EXPECT_EQ(textToValue(host, syncIndex, "maybe"), -1);
    EXPECT_EQ(textToValue(host, 19, "1"), -1) << "no such parameter";
    EXPECT_EQ(host.dispatch(vst2::effVendorSpecific, vendor::textToValueCode, delayIndex, nullptr), 0);
    // Converting sets nothing: the host sets the value it got, as with any other.
    EXPECT_EQ(host.effect->getParameter(host.effect, delayIndex), 0.0f);
}

TEST(ParameterTextCalls, ValueToTextGivesTheDisplayForm) {
    TestHost host;
    EXPECT_EQ(valueToText(host, delayIndex, 1.0f), "1000.00 ms");
    EXPECT_EQ(valueToText(host, 12, 0.5f), "50.00");
    host.effect->setParameter(host.effect, 0, 1.0f);  // freqShiftRange: Midi
    EXPECT_EQ(valueToText(host, shiftIndex, 0.5f), "C3 +00");
    EXPECT_EQ(host.dispatch(vst2::effVendorSpecific, vendor::valueToTextCode, -1, nullptr), 0);
    // A value from the host is made safe before it is shown, as when it is set.
    EXPECT_EQ(valueToText(host, 0, -8.4e10f), valueToText(host, 0, 0.0f));
    EXPECT_EQ(valueToText(host, 0, std::numeric_limits<float>::quiet_NaN()), "Wide") << "the default";
    EXPECT_EQ(valueToText(host, 0, 3e38f), "Midi");
}
