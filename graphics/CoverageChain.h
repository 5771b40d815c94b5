// The coverage of a shape as a paint receives it: the polygon mask, through the gamma
// table when there is one, times the painter's mask when there is one. Gamma applies to
// the shape's own coverage only; the mask is never gamma-corrected.
#pragma once

#include <optional>

#include "graphics/GammaFilter8.h"
#include "graphics/GammaTable.h"
#include "graphics/Multiplier.h"

namespace tw {

class CoverageChain {
public:
    CoverageChain(Renderer8& shape, const GammaTable* gamma, Renderer8* mask) : result_(&shape) {
        if (gamma) result_ = &gamma_.emplace(*result_, gamma->table);
        if (mask) result_ = &masked_.emplace(*result_, *mask);
    }
    CoverageChain(const CoverageChain&) = delete;
    CoverageChain& operator=(const CoverageChain&) = delete;

    Renderer8& coverage() { return *result_; }

private:
    std::optional<GammaFilter8> gamma_;
    std::optional<Multiplier8x8> masked_;
    Renderer8* result_;
};

}  // namespace tw
