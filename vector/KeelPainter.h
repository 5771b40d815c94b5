// The Keel painter: the executor that gives Ketch its drawing instructions (shapes, pen
// and fill, transforms, masks, patterns) and draws them on a PaintTarget through the raster
// core. The editor's vector view runs it on its canvas, and keel-render on a picture.
//
//   KeelPainter painter(target, Matrix::scale(s, s), std::cout);
//   Ketch::Frame frame(painter, variables, 1000000, 100);
//   Ketch::run(frame, text);
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "graphics/FillRule.h"
#include "graphics/PaintTarget.h"
#include "vector/KeelPainterState.h"
#include "vector/KetchExecutor.h"

namespace tw {

namespace Ketch {
class ArgumentList;
}

class KeelPainter : public Ketch::Executor {
public:
    // The text of an included file; false when there is none.
    using Loader = std::function<bool(std::string_view name, std::string& text)>;

    // Draws on `target`, from the default state with `matrix` (the view's scale) as its
    // transform. "trace" writes its lines to `traceOut`; "include" asks `loader`, if any.
    KeelPainter(PaintTarget& target, const Matrix& matrix, std::ostream& traceOut, Loader loader = {});
    KeelPainter(const KeelPainter&) = delete;
    // Puts rectangles on the device's pixel grid from now on (see PainterState::pixelGrid).
    void snapToPixels(bool on) { initial_.pixelGrid = state_.pixelGrid = on; }
    KeelPainter& operator=(const KeelPainter&) = delete;

    // Only "keel-1", and nothing required beyond Ketch itself.
    bool format(Ketch::Frame& frame, std::string_view name, const std::vector<std::string>& uses,
                const std::vector<std::string>& required) override;
    bool execute(Ketch::Frame& frame, std::string_view instruction, std::string_view arguments) override;
    bool progress(Ketch::Frame& frame, std::int32_t statementsLeft) override;
    bool load(Ketch::Frame& frame, std::string_view name, std::string& text) override;
    void trace(Ketch::Frame& frame, std::string_view text) override;

    const PainterState& state() const { return state_; }

private:
    // The rectangle `v` (x, y, width, height) and the pen's width moved onto whole device
    // pixels, when the grid is on and the transform keeps axes.
    void snapRect(double v[4], double& penWidth) const;
    // A sub-painter for the body of `context`, `mask` or a pattern.
    KeelPainter(PaintTarget& target, PainterState initial, PainterState current, std::ostream& traceOut,
                Loader loader);

    void rect(Ketch::Frame& frame, std::string_view arguments);
    void ellipse(Ketch::Frame& frame, std::string_view arguments);
    void star(Ketch::Frame& frame, std::string_view arguments);
    void path(Ketch::Frame& frame, std::string_view arguments);
    void pen(Ketch::Frame& frame, std::string_view arguments);
    void fill(Ketch::Frame& frame, std::string_view arguments);
    void context(Ketch::Frame& frame, std::string_view arguments);
    void wipe(Ketch::Frame& frame, std::string_view arguments);
    void options(Ketch::Frame& frame, std::string_view arguments);
    void reset(Ketch::Frame& frame, std::string_view arguments);
    void mask(Ketch::Frame& frame, std::string_view arguments);
    void bounds(Ketch::Frame& frame, std::string_view arguments);

    // The paint spec of `fill`, `pen` and `wipe`. A new paint replaces the whole
    // style; `opacity:`, `relative:` and `transform:` then change the style. Returns
    // whether a paint was given.
    bool readPaint(Ketch::Frame& frame, Ketch::ArgumentList& args, PaintStyle& style);
    // Runs a pattern's body on a sub-painter and returns the paint that tiles its picture.
    std::shared_ptr<const Paint> paintPattern(Ketch::Frame& frame, std::string_view body);

    // Whether the fill or the pen would leave a mark; when neither does, shapes are not built.
    bool drawsShapes() const;
    // The flattening quality of curves built in user space: it follows the current scale.
    double quality() const;
    // Fills and strokes a shape built in user space.
    void draw(VectorPath& path);
    // Paints the coverage of a device-space outline with the style.
    void cover(const VectorPath& outline, const FillRule& rule, const PaintStyle& style, const RealRect& shapeBounds);

    PaintTarget& target_;
    PainterState initial_;
    PainterState state_;
    std::ostream& traceOut_;
    Loader loader_;
};

}  // namespace tw
