// A flattened geometric path in doubles: moves, straight lines and closes. Curves are
// flattened as they are added, to a quality the caller passes (it follows the final
// scale, so that flattening happens in user space). Fills go to PolygonMask after
// closeAll; strokes and dashes are path-to-path operations.
#pragma once

#include <cstdint>
#include <vector>

#include "graphics/IntRect.h"
#include "graphics/Matrix.h"

namespace tw {

struct PathInstruction {
    enum : std::int32_t { move = 0, line = 1, close = 2 };
    std::int32_t type;
    double x;
    double y;
};

// Bounds in doubles: the minimum and the extent.
struct RealRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

enum class StrokeCaps { butt = 0, round = 1, square = 2 };
enum class StrokeJoints { bevel = 0, curve = 1, miter = 2 };

class VectorPath {
public:
    std::vector<PathInstruction> instructions;
    // Index of the current subpath's move, -1 when there is none.
    std::int64_t subpathStart = -1;

    // The coordinates of the last instruction, (0, 0) for an empty path.
    Point currentPoint() const;

    void moveTo(double x, double y);
    void lineTo(double x, double y);
    // Carries the subpath start's coordinates, or (0, 0) with no subpath.
    void close();
    void append(const VectorPath& other);

    void quadTo(double cx, double cy, double ex, double ey, double quality);
    void cubicTo(double c1x, double c1y, double c2x, double c2y, double ex, double ey, double quality);
    // An arc around (cx, cy) from the current point through `sweep` radians; `aspect` is
    // the ratio of horizontal to vertical radius.
    void arcSweep(double cx, double cy, double sweep, double aspect, double quality);

    void addRect(double x, double y, double w, double h);
    void addEllipse(double x, double y, double rx, double ry, double quality);
    void addCircle(double x, double y, double r, double quality);
    void addRoundedRect(double x, double y, double w, double h, double rx, double ry, double quality);
    // `points` vertices alternating between radii r1 and r2; rotation in radians.
    void addStar(double x, double y, std::int32_t points, double r1, double r2, double rotation);

    // Closes every open subpath straight back to its start, as a fill wants.
    void closeAll();
    void transform(const Matrix& matrix);
    // Replaces the path by the outline of its stroke, to be filled with the non-zero rule.
    void stroke(double width, StrokeCaps caps, StrokeJoints joints, double miterLimit, double quality);
    // Cuts the path into dashes; nothing happens when gap < 1e-8. A pattern so fine that
    // it would make more than kMaxDashes pieces is also left alone: no picture wants
    // that many, and stroking them would stall the view that draws it.
    void dash(double dash, double gap, double offset);
    static constexpr double kMaxDashes = 1 << 14;

    RealRect bounds() const;
    // Floor of the low sides, ceiling of the high sides.
    IntRect intBounds() const;
};

}  // namespace tw
