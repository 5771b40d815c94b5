#include "lv2/Lv2Ports.h"

#include <cmath>

namespace tw::lv2 {

PortRange portRange(const ParameterSpec& row) {
    switch (row.kind) {
        case ParameterKind::boolean:
            return {PortKind::toggle, 0.0f, 1.0f};
        case ParameterKind::discrete:
            return {PortKind::selector, 0.0f, row.displayMax};
        case ParameterKind::continuous:
            return {PortKind::linear, row.displayMin, row.displayMax};
        default:
            return {PortKind::position, 0.0f, 1.0f};
    }
}

float toPort(const ParameterSpec& row, float value) {
    const PortRange r = portRange(row);
    switch (r.kind) {
        case PortKind::toggle:
            return isOn(value) ? 1.0f : 0.0f;
        case PortKind::selector:
            return static_cast<float>(discreteStep(row, value));
        case PortKind::linear:
            return r.minimum + value * (r.maximum - r.minimum);
        default:
            return value;
    }
}

float fromPort(const ParameterSpec& row, float port) {
    const PortRange r = portRange(row);
    if (port != port) return row.defaultValue;
    switch (r.kind) {
        case PortKind::toggle:
            return port >= 0.5f ? 1.0f : 0.0f;
        case PortKind::selector: {
            const float step = std::floor(port + 0.5f);
            return safeParameterValue(row, r.maximum > 0.0f ? step / r.maximum : 0.0f);
        }
        case PortKind::linear:
            return safeParameterValue(row, (port - r.minimum) / (r.maximum - r.minimum));
        default:
            return safeParameterValue(row, port);
    }
}

float exactPort(const ParameterSpec& row, float value) {
    float port = toPort(row, value);
    if (portRange(row).kind != PortKind::linear) return port;
    // The division back may land one float away: step to a neighbour that reads back
    // exactly, nearest first.
    float below = port, above = port;
    for (int i = 0; i < 64 && fromPort(row, port) != value; ++i) {
        below = std::nextafter(below, -INFINITY);
        above = std::nextafter(above, INFINITY);
        if (fromPort(row, below) == value) return below;
        if (fromPort(row, above) == value) return above;
    }
    return port;
}

}  // namespace tw::lv2
