// A container that draws its children through an affine transform with an opacity: the
// view type "transformed" and the frame of a layout in transition. The children paint into
// an off-screen picture of the view's size, which is then drawn through the matrix; mouse
// points reach the children through the inverse. The identity at full opacity paints as a
// plain container.
#pragma once

#include "cushy/ContainerView.h"
#include "graphics/Matrix.h"
#include "graphics/Raster.h"

namespace tw {

class TransformView : public ContainerView {
public:
    void paint(Raster32& canvas, const IntRect& clip) override;
    bool mouseDown(const MouseEvent& event) override;
    bool rightMouseDown(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    bool mouseWheel(const MouseEvent& event) override;
    View* hitTest(ViewPoint point) override;
    // A child's area, carried through the transform.
    void invalidate(const IntRect& rect) override;

    // The matrix maps the children's coordinates to this view's; `opacity` is 0 to 1.
    // A change repaints the whole view.
    void setTransform(const Matrix& matrix, double opacity);
    const Matrix& matrix() const { return matrix_; }
    double opacity() const { return opacity_; }

    // Scale, rotation (radians) and offset, taken round the view's centre, in that order.
    static Matrix aroundCentre(const IntRect& size, double scale, double rotation, double offsetX, double offsetY);

private:
    bool plain() const { return identity_ && opacity_ >= 1; }
    MouseEvent inward(const MouseEvent& event) const;

    Matrix matrix_;
    Matrix inverse_;
    bool identity_ = true;
    bool invertible_ = true;
    double opacity_ = 1;
    Raster32 scratch_;
};

}  // namespace tw
