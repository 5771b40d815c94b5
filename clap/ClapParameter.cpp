#include "clap/ClapParameter.h"

#include <cmath>

namespace tw::clap {

PlainRange plainRange(const ParameterSpec& row) {
    switch (row.kind) {
        case ParameterKind::boolean:
            return {true, 0.0, 1.0};
        case ParameterKind::discrete:
            return {true, 0.0, static_cast<double>(row.displayMax)};
        default:
            return {false, 0.0, 1.0};
    }
}

clap_param_info_flags flagsOf(const ParameterSpec& row) {
    clap_param_info_flags flags = CLAP_PARAM_IS_AUTOMATABLE;
    if (plainRange(row).stepped) flags |= CLAP_PARAM_IS_STEPPED;
    return flags;
}

double toPlain(const ParameterSpec& row, float value) {
    switch (row.kind) {
        case ParameterKind::boolean:
            return isOn(value) ? 1.0 : 0.0;
        case ParameterKind::discrete:
            return static_cast<double>(discreteStep(row, value));
        default:
            return static_cast<double>(value);
    }
}

float fromPlain(const ParameterSpec& row, double plain) {
    if (plain != plain) return row.defaultValue;
    const PlainRange r = plainRange(row);
    if (!r.stepped) return safeParameterValue(row, static_cast<float>(plain));
    const double step = std::floor(std::fmin(std::fmax(plain, r.minimum), r.maximum) + 0.5);
    if (row.kind == ParameterKind::boolean) return step >= 1.0 ? 1.0f : 0.0f;
    return r.maximum > 0.0 ? safeParameterValue(row, static_cast<float>(step) / static_cast<float>(r.maximum)) : 0.0f;
}

}  // namespace tw::clap
