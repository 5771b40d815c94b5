// The LV2 plug-in's ports and how a control port's value stands for a parameter. Shared by
// the plug-in, its UI and the generator of its description, so that the three agree.
//
// A control port carries what an LV2 host can show for the parameter: switches as 0 or 1,
// selectors as the step's index (with scale points), the linear rows in their own unit
// (degrees, percent). The rows whose curve LV2 cannot describe, or whose meaning depends on
// another parameter (the shift amount by range, the delay time and LFO rate by sync, the
// filters', feedback's and smear's curves), carry their position from 0 to 1; the editor
// shows their values in words.
#pragma once

#include <cstdint>

#include "patch/ParameterSpec.h"

namespace tw::lv2 {

enum Port : std::uint32_t { inputLeft = 0, inputRight, outputLeft, outputRight, events, latency, firstControl };

enum class PortKind { toggle, selector, linear, position };

struct PortRange {
    PortKind kind;
    float minimum, maximum;
};

PortRange portRange(const ParameterSpec& row);
// The port's value for a parameter value (0 to 1), and back. Back is held to the row's
// range, and a value that is not a number gives the row's default.
float toPort(const ParameterSpec& row, float value);
float fromPort(const ParameterSpec& row, float port);
// A port value that reads back as exactly `value`, for the presets and the defaults the
// description states.
float exactPort(const ParameterSpec& row, float value);

}  // namespace tw::lv2
