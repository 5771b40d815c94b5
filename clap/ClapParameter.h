// How a parameter shows to a CLAP host, shared by the plug-in and its tests. Switches are
// stepped 0 or 1 and selectors stepped over their steps' numbers (0 to steps - 1), so that
// a host's knob or list lands on real choices; every other row is its position from 0 to
// 1, whose words (`value_to_text`) the product says, since its curve and sometimes its
// meaning (a synced time, a range's amount) depend on more than the number.
#pragma once

#include <clap/ext/params.h>

#include "patch/ParameterSpec.h"

namespace tw::clap {

struct PlainRange {
    bool stepped;
    double minimum, maximum;
};

PlainRange plainRange(const ParameterSpec& row);
clap_param_info_flags flagsOf(const ParameterSpec& row);
// The host's plain value for a parameter value from 0 to 1, and back. Back is held to the
// row's range, a stepped value rounds to its step, and not-a-number gives the default.
double toPlain(const ParameterSpec& row, float value);
float fromPlain(const ParameterSpec& row, double plain);

}  // namespace tw::clap
