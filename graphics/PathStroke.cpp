// VectorPath::stroke: the outline of a pen drawn along the path. Each subpath becomes
// one contour (open) or two (closed), built from records of its edges; the outline is
// filled with the non-zero rule, so overlaps at joints need no cleaning.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "graphics/VectorPath.h"

namespace tw {

namespace {

constexpr double kTwoPi = 2 * std::numbers::pi;

// An edge from (x, y) to the next record's point; (dx, dy) is its direction scaled to
// half the pen width, and length its length counted in half widths.
struct StrokeRecord {
    double x, y, dx, dy, length;
};

class Stroker {
public:
    Stroker(VectorPath& out, double width, StrokeCaps caps, StrokeJoints joints, double miterLimit, double quality)
        : out_(out), halfWidth_(width / 2), caps_(caps), joints_(joints) {
        if (joints == StrokeJoints::miter) limit_ = -std::sqrt(std::max(miterLimit * miterLimit - 1, 0.0));
        step_ = 1 / std::sqrt(width * quality);
        if (!(step_ >= kTwoPi * 0.005)) step_ = kTwoPi * 0.005;
        if (step_ > 1) step_ = 1;
        cos_ = std::cos(step_);
        sin_ = std::sin(step_);
        maxFanSteps_ = std::int32_t(kTwoPi / step_) + 2;
    }

    // One subpath: its vertices in order, closed or not.
    void subpath(const std::vector<Point>& points, bool closed) {
        records_.clear();
        Point last = points[0];
        for (std::size_t i = 1; i < points.size(); ++i) {
            const double ex = points[i].x - last.x, ey = points[i].y - last.y;
            const double length2 = ex * ex + ey * ey;
            if (!(length2 >= 1e-8)) continue;
            const double length = std::sqrt(length2);
            records_.push_back({last.x, last.y, ex / length * halfWidth_, ey / length * halfWidth_, length / halfWidth_});
            last = points[i];
        }
        if (records_.empty()) {
            records_.push_back({last.x, last.y, halfWidth_, 0, 1});
            closed = false;
        }
        records_.push_back({last.x, last.y, 0, 0, 0});
        if (closed) {
            closedContours();
        } else {
            openContour();
        }
    }

private:
    Point at(std::size_t i) const { return Point{records_[i].x, records_[i].y}; }
    void line(double x, double y) { out_.lineTo(x, y); }

    void openContour() {
        const std::size_t m = records_.size() - 1;
        if (caps_ == StrokeCaps::square) {
            StrokeRecord& first = records_[0];
            first.x -= first.dx;
            first.y -= first.dy;
            first.length += 1;
            StrokeRecord& lastEdge = records_[m - 1];
            records_[m].x += lastEdge.dx;
            records_[m].y += lastEdge.dy;
            lastEdge.length += 1;
        }
        out_.moveTo(records_[0].x + records_[0].dy, records_[0].y - records_[0].dx);
        for (std::size_t i = 0; i + 1 < m; ++i) joint(at(i), at(i + 1), records_[i], at(i + 1), records_[i + 1], 1);
        cap(at(m), records_[m - 1], 1);
        for (std::size_t i = m - 1; i >= 1; --i) joint(at(i + 1), at(i), records_[i], at(i), records_[i - 1], -1);
        cap(at(0), records_[0], -1);
        out_.close();
    }

    void closedContours() {
        const std::size_t m = records_.size() - 1;
        out_.moveTo(records_[0].x + records_[0].dy, records_[0].y - records_[0].dx);
        for (std::size_t i = 0; i < m; ++i) {
            const std::size_t next = (i + 1) % m;
            joint(at(i), at(next), records_[i], at(next), records_[next], 1);
        }
        out_.close();
        out_.moveTo(records_[0].x - records_[m - 1].dy, records_[0].y + records_[m - 1].dx);
        for (std::size_t i = m; i-- > 0;) {
            const std::size_t previous = (i + m - 1) % m;
            joint(at((i + 1) % m), at(i), records_[i], at(i), records_[previous], -1);
        }
        out_.close();
    }

    // The joint between edge A (aStart to aEnd) and the edge B that starts at bStart, on
    // side s: +1 walking forward, -1 walking back, where each edge's ends are exchanged.
    void joint(Point aStart, Point aEnd, const StrokeRecord& A, Point bStart, const StrokeRecord& B, double s) {
        const double ax = s * A.dx, ay = s * A.dy, bx = s * B.dx, by = s * B.dy;
        // The offset of a direction (u, v) is (v, -u).
        const double a0x = aStart.x + ay, a0y = aStart.y - ax;
        const double a1x = aEnd.x + ay, a1y = aEnd.y - ax;
        const double b0x = bStart.x + by, b0y = bStart.y - bx;
        const double det = bx * ay - by * ax;
        const double dx = a0x - b0x, dy = a0y - b0y;
        if ((a1y - b0y) * by < (b0x - a1x) * bx + 2e-08) {
            switch (joints_) {
            case StrokeJoints::bevel:
                line(a1x, a1y);
                line(b0x, b0y);
                break;
            case StrokeJoints::curve: {
                line(a1x, a1y);
                double wx = ay, wy = -ax;
                for (std::int32_t k = 0; k < maxFanSteps_; ++k) {
                    const double nx = wx * cos_ - wy * sin_;
                    wy = wx * sin_ + wy * cos_;
                    wx = nx;
                    if (wx * bx + wy * by >= 0) break;
                    line(aEnd.x + wx, aEnd.y + wy);
                }
                line(b0x, b0y);
                break;
            }
            case StrokeJoints::miter: {
                const double t = std::fabs(det) < 1e-8 ? 0 : (dx * ay - dy * ax) / det;
                if (limit_ < t) {
                    line(b0x + t * bx, b0y + t * by);
                } else {
                    line(a1x - ax * limit_, a1y - ay * limit_);
                    line(b0x + bx * limit_, b0y + by * limit_);
                }
                break;
            }
            }
            return;
        }
        double t1 = 0, t2 = 0;
        if (std::fabs(det) >= 1e-8) {
            t1 = (dx * by - dy * bx) / det;
            t2 = (dx * ay - dy * ax) / det;
        }
        if (t1 >= 0 && t1 <= A.length && t2 >= 0 && t2 <= B.length) {
            line(a0x + t1 * ax, a0y + t1 * ay);
        } else {
            line(a1x, a1y);
            line(b0x, b0y);
        }
    }

    // The cap at `end`, the end of edge r on side s.
    void cap(Point end, const StrokeRecord& r, double s) {
        const double ox = s * r.dy, oy = -s * r.dx;
        line(end.x + ox, end.y + oy);
        if (caps_ == StrokeCaps::round) {
            double wx = ox, wy = oy;
            for (double angle = step_; angle < std::numbers::pi - 1e-8; angle += step_) {
                const double nx = wx * cos_ - wy * sin_;
                wy = wx * sin_ + wy * cos_;
                wx = nx;
                line(end.x + wx, end.y + wy);
            }
        }
        line(end.x - ox, end.y - oy);
    }

    VectorPath& out_;
    double halfWidth_;
    StrokeCaps caps_;
    StrokeJoints joints_;
    double limit_ = 0;
    double step_, cos_, sin_;
    std::int32_t maxFanSteps_;
    std::vector<StrokeRecord> records_;
};

}  // namespace

void VectorPath::stroke(double width, StrokeCaps caps, StrokeJoints joints, double miterLimit, double quality) {
    if (!(width >= 1e-8)) width = 1e-8;
    VectorPath outline;
    Stroker stroker(outline, width, caps, joints, miterLimit, quality);
    std::vector<Point> points;
    Point start{0, 0};
    const auto flush = [&](bool closed) {
        if (!points.empty()) stroker.subpath(points, closed);
        points.clear();
    };
    for (const PathInstruction& in : instructions) {
        switch (in.type) {
        case PathInstruction::move:
            flush(false);
            start = Point{in.x, in.y};
            points.push_back(start);
            break;
        case PathInstruction::line:
            if (points.empty()) points.push_back(start);
            points.push_back(Point{in.x, in.y});
            break;
        default:
            if (points.empty()) points.push_back(start);
            points.push_back(start);
            flush(true);
            break;
        }
    }
    flush(false);
    instructions.swap(outline.instructions);
    subpathStart = -1;
}

}  // namespace tw
