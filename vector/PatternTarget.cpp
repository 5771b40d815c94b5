#include "vector/PatternTarget.h"

#include <cmath>

#include "graphics/Blender.h"
#include "graphics/Multiplier.h"
#include "graphics/OpacityCoverage.h"
#include "graphics/Rasterize.h"
#include "graphics/Transformer.h"
#include "vector/KetchException.h"

namespace tw {

namespace {

// The matrix that maps raster pixels to the device: the effective paint matrix, or for a
// relative style the declared rectangle fitted to the shape's box, after scale(1 / resolution).
Matrix samplingMatrix(const PaintStyle& style, const Matrix& ctx, const RealRect& shape, const IntRect& raster,
                      std::int32_t resolution) {
    const Matrix unscale = Matrix::scale(1.0 / resolution, 1.0 / resolution);
    if (!style.relative) return compose(effectivePaintMatrix(style, ctx, shape), unscale);
    const double sx = resolution * shape.width / raster.width, sy = resolution * shape.height / raster.height;
    const double ux = sx / resolution, uy = sy / resolution;
    const Matrix fit = compose(Matrix::translate(shape.x - raster.left * ux, shape.y - raster.top * uy), Matrix::scale(sx, sy));
    return compose(compose(compose(ctx, style.matrix), fit), unscale);
}

}  // namespace

std::int32_t PatternTarget::resolutionFor(const Matrix& ctx, double patternResolution) {
    const double r = std::ceil(ctx.scaleFactor() * patternResolution - 0.0001);
    if (!(r >= 1)) return 1;
    return r > 4096 ? 4096 : std::int32_t(r);
}

void PatternTarget::drawPixels(Renderer32& pixels) {
    if (!declared_) throw Ketch::RunTimeException("Undeclared bounds");
    if (!colour_) return;
    blend32(pixels, *colour_, pixels.calcBounds());
}

void PatternTarget::drawMask(Renderer8& mask) {
    if (!declared_) throw Ketch::RunTimeException("Undeclared bounds");
    if (!mask_) return;
    Blender8 sum(mask, *mask_);
    rasterize8(sum, *mask_, mask.calcBounds());
}

void PatternTarget::defineBounds(const IntRect& rect) {
    if (declared_) throw Ketch::RunTimeException("Multiple bounds declarations");
    if (rect.width <= 0 || rect.height <= 0) throw Ketch::RunTimeException("Value out of range");
    const std::int64_t r = resolution_;
    const std::int64_t left = rect.left * r, top = rect.top * r, width = rect.width * r, height = rect.height * r;
    // A tile is a small picture: a square of 1024 pixels, 4 MB in colour, is the most.
    const std::int64_t limit = 1 << 30, pixelLimit = 1 << 20;
    if (left < -limit || top < -limit || width > limit || height > limit || left + width > limit || top + height > limit ||
        width * height > pixelLimit) {
        throw Ketch::RunTimeException("Value out of range");
    }
    const IntRect pixels{std::int32_t(left), std::int32_t(top), std::int32_t(width), std::int32_t(height)};
    if (kind_ == PaintKind::colour) {
        colour_ = std::make_shared<Raster32>(pixels);
    } else {
        mask_ = std::make_shared<Raster8>(pixels);
    }
    declared_ = true;
}

IntRect PatternTarget::getBounds() const {
    if (colour_) return colour_->bounds();
    if (mask_) return mask_->bounds();
    return IntRect{};
}

std::shared_ptr<const Paint> PatternTarget::makePaint() {
    if (kind_ == PaintKind::colour) return std::make_shared<PatternColourPaint>(colour_, resolution_);
    return std::make_shared<PatternMaskPaint>(mask_, resolution_);
}

template <class Pixel>
void PatternPaint<Pixel>::draw(const PaintStyle& style, const Matrix& ctx, PaintTarget& target, const RealRect& shapeBounds,
                               Renderer8& coverage) const {
    const Matrix sampling = samplingMatrix(style, ctx, shapeBounds, raster_->bounds(), resolution_);
    OpacityCoverage scaled(coverage, style.opacity);
    if constexpr (sizeof(Pixel) == 4) {
        Transformer32 texture(*raster_, true, sampling);
        Multiplier32x8 pixels(texture, scaled.get());
        target.drawPixels(pixels);
    } else {
        Transformer8 texture(*raster_, sampling);
        Multiplier8x8 mask(texture, scaled.get());
        target.drawMask(mask);
    }
}

template class PatternPaint<std::uint32_t>;
template class PatternPaint<std::uint8_t>;

}  // namespace tw
