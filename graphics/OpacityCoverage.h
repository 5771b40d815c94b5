// A coverage scaled by a style's opacity, or the coverage itself at full opacity: the
// first step of every gradient and pattern draw.
#pragma once

#include <optional>

#include "graphics/Multiplier.h"
#include "graphics/Solid.h"

namespace tw {

class OpacityCoverage {
public:
    OpacityCoverage(Renderer8& coverage, std::uint8_t opacity) : opacity_(opacity), coverage_(coverage) {
        if (opacity != 255) scaled_.emplace(coverage, opacity_);
    }
    OpacityCoverage(const OpacityCoverage&) = delete;
    OpacityCoverage& operator=(const OpacityCoverage&) = delete;

    Renderer8& get() { return scaled_ ? static_cast<Renderer8&>(*scaled_) : coverage_; }

private:
    Solid8 opacity_;
    Renderer8& coverage_;
    std::optional<Multiplier8x8> scaled_;
};

}  // namespace tw
