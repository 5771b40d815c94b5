#include "cushy/TransformView.h"

#include "graphics/Image.h"
#include "graphics/Transformer.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tw {

Matrix TransformView::aroundCentre(const IntRect& size, double scale, double rotation, double offsetX, double offsetY) {
    const double cx = size.width / 2.0, cy = size.height / 2.0;
    Matrix m = Matrix::translate(-cx, -cy);
    m = compose(Matrix::scale(scale, scale), m);
    m = compose(Matrix::rotate(rotation), m);
    return compose(Matrix::translate(cx + offsetX, cy + offsetY), m);
}

void TransformView::setTransform(const Matrix& matrix, double opacity) {
    opacity = std::clamp(opacity, 0.0, 1.0);
    if (matrix == matrix_ && opacity == opacity_) return;
    // What the view showed and what it will show both lie within its own size.
    ContainerView::invalidate(size_);
    matrix_ = matrix;
    opacity_ = opacity;
    identity_ = matrix.isIdentity();
    invertible_ = matrix.invert(inverse_);
}

void TransformView::paint(Raster32& canvas, const IntRect& clip) {
    if (plain()) {
        ContainerView::paint(canvas, clip);
        return;
    }
    const std::uint8_t alpha = std::uint8_t(std::floor(opacity_ * 255 + 0.5));
    if (alpha == 0 || !invertible_ || size_.isEmpty()) return;
    // The picture is kept between paints: a transition repaints it at each frame.
    if (!(scratch_.bounds() == size_)) scratch_ = Raster32(size_);
    for (std::int32_t y = 0; y < size_.height; ++y) std::memset(scratch_.at(0, y), 0, std::size_t(size_.width) * 4);
    ContainerView::paint(scratch_, size_);
    Transformer<std::uint32_t> through(scratch_, false, matrix_);
    const IntRect area = intersectionOf(intersectionOf(through.calcBounds(), canvas.bounds()), clip);
    if (area.isEmpty()) return;
    compositeOnto(canvas, through, area, area.left, area.top, BlendMode::normal, alpha);
}

MouseEvent TransformView::inward(const MouseEvent& event) const {
    if (identity_) return event;
    MouseEvent moved = event;
    const Point p = inverse_.apply(event.x + 0.5, event.y + 0.5);
    moved.x = std::int32_t(std::floor(p.x));
    moved.y = std::int32_t(std::floor(p.y));
    return moved;
}

bool TransformView::mouseDown(const MouseEvent& event) {
    return invertible_ && ContainerView::mouseDown(inward(event));
}

bool TransformView::rightMouseDown(const MouseEvent& event) {
    return invertible_ && ContainerView::rightMouseDown(inward(event));
}

void TransformView::mouseMove(const MouseEvent& event) { ContainerView::mouseMove(inward(event)); }

bool TransformView::mouseWheel(const MouseEvent& event) {
    return invertible_ && ContainerView::mouseWheel(inward(event));
}

View* TransformView::hitTest(ViewPoint point) {
    if (identity_) return ContainerView::hitTest(point);
    const MouseEvent moved = inward(MouseEvent{point.x, point.y});
    return ContainerView::hitTest({moved.x, moved.y});
}

void TransformView::invalidate(const IntRect& rect) {
    if (identity_ || rect.isEmpty()) {
        ContainerView::invalidate(rect);
        return;
    }
    double left = 1e300, top = 1e300, right = -1e300, bottom = -1e300;
    for (const auto& [x, y] : {std::pair<double, double>{double(rect.left), double(rect.top)},
                               {double(rect.right()), double(rect.top)},
                               {double(rect.left), double(rect.bottom())},
                               {double(rect.right()), double(rect.bottom())}}) {
        const Point p = matrix_.apply(x, y);
        left = std::min(left, p.x), top = std::min(top, p.y);
        right = std::max(right, p.x), bottom = std::max(bottom, p.y);
    }
    const IntRect box{std::int32_t(std::floor(left)) - 1, std::int32_t(std::floor(top)) - 1,
                      std::int32_t(std::ceil(right) - std::floor(left)) + 2,
                      std::int32_t(std::ceil(bottom) - std::floor(top)) + 2};
    ContainerView::invalidate(intersectionOf(box, size_));
}

}  // namespace tw
