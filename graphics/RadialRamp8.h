// The closeness to the centre of an axis-aligned ellipse as a byte: 255 at the centre,
// 0 on the rim and outside. The input of a radial gradient's table.
#pragma once

#include "graphics/Renderer.h"

namespace tw {

class RadialRamp8 : public Renderer8 {
public:
    RadialRamp8(double cx, double cy, double rx, double ry);

    IntRect calcBounds() const override { return bounds_; }
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer8& out) override;

private:
    double cx_, cy_, rx_, ry_;
    double invRx_, invRy_;  // 2^30 / r^2: the squared normalised radius comes out in 2.30
    IntRect bounds_;
};

}  // namespace tw
