#include "graphics/Paint.h"

namespace tw {

Matrix effectivePaintMatrix(const PaintStyle& style, const Matrix& ctx, const RealRect& shapeBounds) {
    if (!style.relative) return compose(ctx, style.matrix);
    const Matrix box = compose(Matrix::translate(shapeBounds.x, shapeBounds.y), Matrix::scale(shapeBounds.width, shapeBounds.height));
    return compose(compose(ctx, box), style.matrix);
}

}  // namespace tw
