// The records that describe a product's parameters and audio buses. Everything outside
// the engine sees a parameter as a float from 0 to 1 plus one of these rows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tw {

enum class ParameterKind : std::int32_t { continuous = 0, boolean = 1, discrete = 2, custom = 3 };

struct ParameterSpec {
    std::string name;   // key of GUI variables, actions and patch texts
    std::string label;  // long name shown to the host
    std::string unit;   // shown to the host, may be empty
    ParameterKind kind;
    float defaultValue;  // always in 0..1
    float displayMin;    // value shown at 0
    float displayMax;    // value shown at 1; for discrete rows the number of steps less one
    std::vector<std::string> labels;  // step labels of a discrete row
};

struct BusSpec {
    std::int32_t direction;  // 0 input, 1 output
    std::string name;
    bool stereo;
};

// A value from outside made safe before anything keeps it: not a number gives the row's
// default, everything else is held to 0..1, so that no later step can turn it into a
// wild index or a runaway gain.
inline float safeParameterValue(const ParameterSpec& row, float value) {
    if (value != value) return row.defaultValue;
    return value < 0.0f ? 0.0f : value > 1.0f ? 1.0f : value;
}

// A boolean row is on from the middle up.
inline bool isOn(float value) { return value >= 0.5f; }

// The step of a discrete row: floor(value * max + 0.5).
inline int discreteStep(const ParameterSpec& row, float value) {
    return static_cast<int>(value * row.displayMax + 0.5f);
}

}  // namespace tw
