#include "graphics/VectorPath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tw {

namespace {

constexpr double kFlatness = 0.707;
constexpr double kTwoPi = 2 * std::numbers::pi;
// Protects against absurd coordinates; an ordinary curve takes a few dozen pieces.
constexpr double kMaxCurveSegments = 4096;
// Sweeps of many turns (only absurd input asks for them) stop adding points after this many.
constexpr double kMaxArcSteps = 65536;

std::int32_t segmentCount(double root) {
    const double n = std::trunc(root + 0.5) + 1;
    if (!(n >= 1)) return 1;
    return std::int32_t(std::min(n, kMaxCurveSegments));
}

}  // namespace

Point VectorPath::currentPoint() const {
    if (instructions.empty()) return Point{0, 0};
    return Point{instructions.back().x, instructions.back().y};
}

void VectorPath::moveTo(double x, double y) {
    subpathStart = std::int64_t(instructions.size());
    instructions.push_back({PathInstruction::move, x, y});
}

void VectorPath::lineTo(double x, double y) { instructions.push_back({PathInstruction::line, x, y}); }

void VectorPath::close() {
    Point start{0, 0};
    if (subpathStart >= 0) start = Point{instructions[std::size_t(subpathStart)].x, instructions[std::size_t(subpathStart)].y};
    instructions.push_back({PathInstruction::close, start.x, start.y});
}

void VectorPath::append(const VectorPath& other) {
    const std::int64_t offset = std::int64_t(instructions.size());
    instructions.insert(instructions.end(), other.instructions.begin(), other.instructions.end());
    if (other.subpathStart >= 0) subpathStart = other.subpathStart + offset;
}

void VectorPath::quadTo(double cx, double cy, double ex, double ey, double quality) {
    const Point p0 = currentPoint();
    const double dx = (p0.x - 2 * cx + ex) * 2, dy = (p0.y - 2 * cy + ey) * 2;
    const std::int32_t n = segmentCount(std::sqrt(std::sqrt(dx * dx + dy * dy) * kFlatness * quality));
    const double t = 1.0 / n;
    const double ax = dx * t * t, ay = dy * t * t;
    double vx = (cx - p0.x) * 2 * t + ax * 0.5, vy = (cy - p0.y) * 2 * t + ay * 0.5;
    double px = p0.x, py = p0.y;
    for (std::int32_t i = 0; i < n; ++i) {
        px += vx;
        py += vy;
        vx += ax;
        vy += ay;
        lineTo(px, py);
    }
}

void VectorPath::cubicTo(double c1x, double c1y, double c2x, double c2y, double ex, double ey, double quality) {
    const Point p0 = currentPoint();
    const double ax = (p0.x - 2 * c1x + c2x) * 6, ay = (p0.y - 2 * c1y + c2y) * 6;
    const double bx = (c1x - 2 * c2x + ex) * 6, by = (c1y - 2 * c2y + ey) * 6;
    const double m = std::max(ax * ax + ay * ay, bx * bx + by * by);
    const std::int32_t n = segmentCount(std::sqrt(std::sqrt(m) * kFlatness * quality));
    const double t = 1.0 / n;
    const double thirdX = t * ((c1x - c2x) * 3 + (ex - p0.x)) * 6 * t * t;
    const double thirdY = t * ((c1y - c2y) * 3 + (ey - p0.y)) * 6 * t * t;
    double secondX = t * ax * t + thirdX, secondY = t * ay * t + thirdY;
    double firstX = (t * (c1x - p0.x) * 3 + secondX * 0.5) - thirdX * 0.3333333333333333;
    double firstY = (t * (c1y - p0.y) * 3 + secondY * 0.5) - thirdY * 0.3333333333333333;
    double px = p0.x, py = p0.y;
    for (std::int32_t i = 0; i < n; ++i) {
        px += firstX;
        py += firstY;
        firstX += secondX;
        firstY += secondY;
        secondX += thirdX;
        secondY += thirdY;
        lineTo(px, py);
    }
}

void VectorPath::arcSweep(double cx, double cy, double sweep, double aspect, double quality) {
    const Point p = currentPoint();
    const double vx0 = (p.x - cx) / aspect, vy0 = p.y - cy;
    const double d = std::sqrt(vx0 * vx0 + vy0 * vy0) * std::max(2.0, std::fabs(aspect) * 2);
    double step = kTwoPi;
    if (d >= 1e-8) step = std::clamp(1 / std::sqrt(d * quality), kTwoPi * 0.005, 1.0);
    const double c = std::cos(step), s = std::copysign(std::sin(step), sweep);
    const double limit = std::fabs(sweep) - 1e-8;
    double vx = vx0, vy = vy0;
    const double last = std::min(limit, step * kMaxArcSteps);
    for (double angle = step; angle < last; angle += step) {
        const double nx = vx * c - vy * s;
        vy = vx * s + vy * c;
        vx = nx;
        lineTo(vx * aspect + cx, vy + cy);
    }
    const double ec = std::cos(sweep), es = std::sin(sweep);
    lineTo((vx0 * ec - vy0 * es) * aspect + cx, vx0 * es + vy0 * ec + cy);
}

void VectorPath::addRect(double x, double y, double w, double h) {
    moveTo(x, y);
    lineTo(x + w, y);
    lineTo(x + w, y + h);
    lineTo(x, y + h);
    close();
}

void VectorPath::addEllipse(double x, double y, double rx, double ry, double quality) {
    if (std::fabs(rx) < 1e-8) {
        moveTo(x, y - ry);
        lineTo(x, y + ry);
    } else if (std::fabs(ry) < 1e-8) {
        moveTo(x - rx, y);
        lineTo(x + rx, y);
    } else {
        moveTo(x + rx, y);
        arcSweep(x, y, kTwoPi, rx / ry, quality);
        close();
    }
}

void VectorPath::addCircle(double x, double y, double r, double quality) {
    moveTo(x + r, y);
    arcSweep(x, y, kTwoPi, 1, quality);
    close();
}

void VectorPath::addRoundedRect(double x, double y, double w, double h, double rx, double ry, double quality) {
    if (rx < 1e-8 || ry < 1e-8) {
        addRect(x, y, w, h);
        return;
    }
    const double quarter = std::numbers::pi / 2, aspect = rx / ry;
    moveTo(x + rx, y);
    lineTo(x + w - rx, y);
    arcSweep(x + w - rx, y + ry, quarter, aspect, quality);
    lineTo(x + w, y + h - ry);
    arcSweep(x + w - rx, y + h - ry, quarter, aspect, quality);
    lineTo(x + rx, y + h);
    arcSweep(x + rx, y + h - ry, quarter, aspect, quality);
    lineTo(x, y + ry);
    arcSweep(x + rx, y + ry, quarter, aspect, quality);
    close();
}

void VectorPath::addStar(double x, double y, std::int32_t points, double r1, double r2, double rotation) {
    if (points < 1) return;
    const double step = kTwoPi / points;
    moveTo(std::sin(rotation) * r1 + x, -std::cos(rotation) * r1 + y);
    bool outer = true;
    for (double angle = step; angle < kTwoPi - 1e-8; angle += step) {
        outer = !outer;
        const double r = outer ? r1 : r2;
        lineTo(std::sin(rotation + angle) * r + x, -std::cos(rotation + angle) * r + y);
    }
    close();
}

void VectorPath::closeAll() {
    std::vector<PathInstruction> result;
    result.reserve(instructions.size() + instructions.size() / 2 + 1);
    Point start{0, 0};
    bool open = false;
    for (const PathInstruction& in : instructions) {
        if (in.type == PathInstruction::move) {
            if (open) result.push_back({PathInstruction::close, start.x, start.y});
            start = Point{in.x, in.y};
        }
        result.push_back(in);
        open = in.type != PathInstruction::close;
    }
    if (open) result.push_back({PathInstruction::close, start.x, start.y});
    instructions.swap(result);
    subpathStart = std::int64_t(instructions.size()) - 1;
}

void VectorPath::transform(const Matrix& matrix) {
    if (matrix.isIdentity()) return;
    for (PathInstruction& in : instructions) {
        const Point p = matrix.apply(in.x, in.y);
        in.x = p.x;
        in.y = p.y;
    }
}

RealRect VectorPath::bounds() const {
    if (instructions.empty()) return RealRect{};
    double x0 = instructions[0].x, y0 = instructions[0].y, x1 = x0, y1 = y0;
    for (const PathInstruction& in : instructions) {
        x0 = std::min(x0, in.x);
        y0 = std::min(y0, in.y);
        x1 = std::max(x1, in.x);
        y1 = std::max(y1, in.y);
    }
    return RealRect{x0, y0, x1 - x0, y1 - y0};
}

IntRect VectorPath::intBounds() const {
    const RealRect r = bounds();
    const auto clampToInt = [](double v) {
        return v > -1073741824.0 ? (v < 1073741823.0 ? std::int32_t(v) : 1073741823) : -1073741824;
    };
    const std::int32_t left = clampToInt(std::floor(r.x)), top = clampToInt(std::floor(r.y));
    const std::int32_t right = clampToInt(std::ceil(r.x + r.width)), bottom = clampToInt(std::ceil(r.y + r.height));
    return IntRect{left, top, right - left, bottom - top};
}

}  // namespace tw
