// VectorPath::dash: cuts each subpath into open pieces of `dash` length separated by
// `gap`, every subpath starting from the same phase. A closed subpath that starts and
// ends inside a dash has its first and last dashes joined, so no seam shows.
#include <cmath>

#include "graphics/VectorPath.h"

namespace tw {

namespace {

struct DashSubpath {
    std::vector<Point> points;
    bool closed = false;
};

double totalLength(const std::vector<PathInstruction>& instructions) {
    double total = 0;
    Point last{0, 0};
    for (const PathInstruction& in : instructions) {
        if (in.type != PathInstruction::move) total += std::hypot(in.x - last.x, in.y - last.y);
        last = Point{in.x, in.y};
    }
    return total;
}

}  // namespace

void VectorPath::dash(double dash, double gap, double offset) {
    if (!(gap >= 1e-8) || !(dash >= 0)) return;
    const double period = dash + gap;
    if (!(totalLength(instructions) / period <= kMaxDashes)) return;
    const double phase = std::fmod(dash - offset, period);
    const bool startDrawing = phase >= 0;
    const double startLeft = startDrawing ? phase : phase + gap;
    if (!std::isfinite(startLeft)) return;

    VectorPath out;
    const auto walk = [&](const DashSubpath& sub) {
        if (sub.points.empty()) return;
        const std::size_t first = out.instructions.size();
        std::size_t dashes = 0;
        bool drawing = startDrawing;
        double left = startLeft;
        Point p = sub.points[0];
        if (drawing) {
            out.moveTo(p.x, p.y);
            ++dashes;
        }
        for (std::size_t i = 1; i < sub.points.size(); ++i) {
            const Point q = sub.points[i];
            const double length = std::hypot(q.x - p.x, q.y - p.y);
            if (!std::isfinite(length)) return;
            double t = 0;
            while (length - t > left) {
                t += left;
                const double x = p.x + (q.x - p.x) * (t / length), y = p.y + (q.y - p.y) * (t / length);
                if (drawing) {
                    out.lineTo(x, y);
                } else {
                    out.moveTo(x, y);
                    ++dashes;
                }
                drawing = !drawing;
                left = drawing ? dash : gap;
            }
            left -= length - t;
            if (drawing) out.lineTo(q.x, q.y);
            p = q;
        }
        if (sub.closed && startDrawing && drawing && dashes > 1) {
            // The first dash continues the last one: its move becomes a line, and it moves
            // to the end of the subpath.
            std::vector<PathInstruction>& v = out.instructions;
            std::size_t second = first + 1;
            while (v[second].type != PathInstruction::move) ++second;
            std::vector<PathInstruction> head(v.begin() + std::ptrdiff_t(first), v.begin() + std::ptrdiff_t(second));
            head[0].type = PathInstruction::line;
            v.erase(v.begin() + std::ptrdiff_t(first), v.begin() + std::ptrdiff_t(second));
            v.insert(v.end(), head.begin(), head.end());
        }
    };

    DashSubpath sub;
    Point start{0, 0};
    for (const PathInstruction& in : instructions) {
        if (in.type == PathInstruction::move) {
            walk(sub);
            sub = DashSubpath{};
            start = Point{in.x, in.y};
            sub.points.push_back(start);
        } else {
            if (sub.points.empty()) sub.points.push_back(start);
            sub.points.push_back(Point{in.x, in.y});
            if (in.type == PathInstruction::close) {
                sub.closed = true;
                walk(sub);
                sub = DashSubpath{};
            }
        }
    }
    walk(sub);
    instructions.swap(out.instructions);
    subpathStart = -1;
}

}  // namespace tw
