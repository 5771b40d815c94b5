// The product family's own vendor-specific protocol with hosts that know it: the codes
// that effVendorSpecific carries as its index, and the record in which sS2V and sV2S
// exchange a parameter value and its text. The plug-in answers it; the command-line host
// speaks it.
#pragma once

#include "vst2/Vst2.h"

namespace tw::vendor {

constexpr vst2::int32 probeCode = vst2::fourCC("sHi!");          // answers 1
constexpr vst2::int32 inputSilenceCode = vst2::fourCC("sI00");   // value: the coming input is silent
constexpr vst2::int32 outputSilenceCode = vst2::fourCC("sO00");  // answers: the last output was silent
constexpr vst2::int32 textToValueCode = vst2::fourCC("sS2V");    // value: host index; ptr: ParameterText
constexpr vst2::int32 valueToTextCode = vst2::fourCC("sV2S");    // value: host index; ptr: ParameterText

// sS2V reads `text` and, when it reads, writes `value` and answers 1; otherwise it
// answers 0 and leaves the record alone. sV2S writes the display text of `value`.
struct ParameterText {
    float value;
    char text[256];  // NUL-terminated
};

}  // namespace tw::vendor
