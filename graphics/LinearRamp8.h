// The position along a linear gradient's axis as a byte, for every pixel: the input of a
// gradient's table. The flat ends beyond the axis come out as solid spans.
#pragma once

#include "graphics/Renderer.h"

namespace tw {

class LinearRamp8 : public Renderer8 {
public:
    // The value at pixel (x, y) is (y - y0) * dy + (x - x0) * dx, a 16.16 fraction of the
    // way along the axis.
    LinearRamp8(double x0, double y0, double dx, double dy) : x0_(x0), y0_(y0), dx_(dx), dy_(dy) {}

    IntRect calcBounds() const override { return FullRect; }
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer8& out) override;

private:
    double x0_, y0_, dx_, dy_;
};

}  // namespace tw
