#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "RenderProbe.h"
#include "graphics/PolygonMask.h"
#include "graphics/VectorPath.h"

using namespace tw;

namespace {

constexpr double kPi = std::numbers::pi;

// The area a path fills under the non-zero rule, measured by the polygon rasteriser.
double filledArea(VectorPath p) {
    p.closeAll();
    PolygonMask mask(p, IntRect{-200, -200, 800, 800}, FillRule::nonZero());
    const IntRect b = mask.calcBounds();
    double sum = 0;
    for (std::int32_t y = b.top; y < b.bottom(); ++y) {
        for (std::int32_t x = b.left; x < b.right(); x += 256) {
            for (std::uint8_t v : test::row(mask, x, y, std::int32_t(std::min<std::int64_t>(256, b.right() - x)))) sum += v;
        }
    }
    return sum / 255;
}

std::size_t count(const VectorPath& p, std::int32_t type) {
    std::size_t n = 0;
    for (const PathInstruction& in : p.instructions) n += in.type == type;
    return n;
}

}  // namespace

TEST(VectorPath, InstructionsAndCurrentPoint) {
    VectorPath p;
    EXPECT_EQ(p.currentPoint().x, 0);
    p.close();  // no subpath: carries (0, 0)
    EXPECT_EQ(p.instructions.back().x, 0);
    p.moveTo(3, 4);
    p.lineTo(10, 4);
    p.close();
    EXPECT_EQ(p.instructions.back().type, PathInstruction::close);
    EXPECT_EQ(p.currentPoint().x, 3);
    EXPECT_EQ(p.currentPoint().y, 4);
    VectorPath q;
    q.moveTo(1, 1);
    q.lineTo(2, 2);
    const std::int64_t before = std::int64_t(p.instructions.size());
    p.append(q);
    EXPECT_EQ(p.subpathStart, before);

    VectorPath open;
    open.moveTo(0, 0);
    open.lineTo(10, 0);
    open.moveTo(20, 0);
    open.lineTo(30, 0);
    open.close();
    open.closeAll();
    EXPECT_EQ(open.instructions.size(), 6u);
    EXPECT_EQ(open.instructions[2].type, PathInstruction::close);
    EXPECT_EQ(open.subpathStart, 5);
}

TEST(VectorPath, CurvesFlattenByForwardDifferences) {
    VectorPath straight;
    straight.moveTo(0, 0);
    straight.quadTo(5, 5, 10, 10, 1);  // no curvature: one line
    EXPECT_EQ(straight.instructions.size(), 2u);

    VectorPath quad;
    quad.moveTo(0, 0);
    quad.quadTo(50, 100, 100, 0, 1);
    const std::size_t n = quad.instructions.size() - 1;
    EXPECT_EQ(n, std::size_t(std::trunc(std::sqrt(std::hypot(0 - 100 + 100, 0 - 200 + 0) * 2 * 0.707) + 0.5) + 1));
    for (std::size_t i = 1; i <= n; ++i) {
        const double t = double(i) / n;
        EXPECT_NEAR(quad.instructions[i].x, 2 * t * (1 - t) * 50 + t * t * 100, 1e-9);
        EXPECT_NEAR(quad.instructions[i].y, 2 * t * (1 - t) * 100, 1e-9);
    }
    VectorPath fine;
    fine.moveTo(0, 0);
    fine.quadTo(50, 100, 100, 0, 4);
    EXPECT_NEAR(double(fine.instructions.size() - 1) / n, 2, 0.3);  // quality x4: about twice the pieces

    VectorPath cubic;
    cubic.moveTo(0, 0);
    cubic.cubicTo(0, 100, 100, 100, 100, 0, 1);
    const std::size_t m = cubic.instructions.size() - 1;
    for (std::size_t i = 1; i <= m; ++i) {
        const double t = double(i) / m, u = 1 - t;
        EXPECT_NEAR(cubic.instructions[i].x, 3 * u * t * t * 100 + t * t * t * 100, 1e-9);
        EXPECT_NEAR(cubic.instructions[i].y, 3 * u * u * t * 100 + 3 * u * t * t * 100, 1e-9);
    }
}

TEST(VectorPath, ArcsAndShapes) {
    VectorPath circle;
    circle.addCircle(50, 50, 40, 1);
    for (const PathInstruction& in : circle.instructions) EXPECT_NEAR(std::hypot(in.x - 50, in.y - 50), 40, 1e-9);
    EXPECT_NEAR(filledArea(circle), kPi * 40 * 40, kPi * 40 * 40 * 0.01);
    const PathInstruction& end = circle.instructions[circle.instructions.size() - 2];
    EXPECT_NEAR(end.x, 90, 1e-9);
    EXPECT_NEAR(end.y, 50, 1e-9);

    VectorPath ellipse;
    ellipse.addEllipse(100, 100, 60, 20, 1);
    EXPECT_NEAR(filledArea(ellipse), kPi * 60 * 20, kPi * 60 * 20 * 0.02);
    VectorPath flatEllipse;
    flatEllipse.addEllipse(0, 0, 0, 5, 1);
    EXPECT_EQ(flatEllipse.instructions.size(), 2u);

    VectorPath rounded;
    rounded.addRoundedRect(0, 0, 100, 60, 10, 10, 1);
    EXPECT_NEAR(filledArea(rounded), 100 * 60 - (4 - kPi) * 100, 10);
    VectorPath sharp;
    sharp.addRoundedRect(0, 0, 100, 60, 0, 10, 1);
    EXPECT_EQ(sharp.instructions.size(), 5u);

    VectorPath star;
    star.addStar(0, 0, 10, 100, 40, 0);
    EXPECT_EQ(star.instructions.size(), 11u);
    EXPECT_NEAR(star.instructions[0].x, 0, 1e-12);
    EXPECT_NEAR(star.instructions[0].y, -100, 1e-12);
    EXPECT_NEAR(std::hypot(star.instructions[1].x, star.instructions[1].y), 40, 1e-9);

    const RealRect b = star.bounds();
    EXPECT_NEAR(b.y, -100, 1e-9);
    EXPECT_EQ(VectorPath{}.bounds().width, 0);
    VectorPath rect;
    rect.addRect(0.5, 1.5, 10, 10);
    EXPECT_EQ(rect.intBounds(), (IntRect{0, 1, 11, 11}));
}

TEST(VectorPath, TransformSkipsTheIdentity) {
    VectorPath p;
    p.moveTo(1, 2);
    p.transform(Matrix::translate(10, 20));
    EXPECT_EQ(p.instructions[0].x, 11);
    EXPECT_EQ(p.instructions[0].y, 22);
    Matrix inverse;
    ASSERT_TRUE(Matrix::scale(2, 4).invert(inverse));
    EXPECT_EQ(inverse.m[4], 0.25);
    EXPECT_FALSE(Matrix::scale(1e-5, 1e-5).invert(inverse));
    // out = b after a.
    Matrix out;
    Matrix::multiply(Matrix::scale(2, 2), out, Matrix::translate(5, 0));
    EXPECT_EQ(out.apply(1, 1).x, 7);
}

TEST(Stroke, LinesCapsAndDots) {
    VectorPath line;
    line.moveTo(0, 0);
    line.lineTo(100, 0);
    VectorPath butt = line, square = line, round = line;
    butt.stroke(10, StrokeCaps::butt, StrokeJoints::miter, 2, 1);
    square.stroke(10, StrokeCaps::square, StrokeJoints::miter, 2, 1);
    round.stroke(10, StrokeCaps::round, StrokeJoints::miter, 2, 1);
    EXPECT_NEAR(filledArea(butt), 1000, 1);
    EXPECT_NEAR(filledArea(square), 1100, 1);
    EXPECT_NEAR(filledArea(round), 1000 + kPi * 25, 2);
    EXPECT_EQ(butt.subpathStart, -1);

    VectorPath dot;
    dot.moveTo(50, 50);
    dot.lineTo(50.00001, 50);  // closer than 1e-4: one vertex
    VectorPath roundDot = dot, squareDot = dot, buttDot = dot;
    roundDot.stroke(20, StrokeCaps::round, StrokeJoints::miter, 2, 1);
    squareDot.stroke(20, StrokeCaps::square, StrokeJoints::miter, 2, 1);
    buttDot.stroke(20, StrokeCaps::butt, StrokeJoints::miter, 2, 1);
    EXPECT_NEAR(filledArea(roundDot), kPi * 100, 6);
    EXPECT_NEAR(filledArea(squareDot), 400, 1);
    EXPECT_NEAR(filledArea(buttDot), 0, 0.01);
}

TEST(Stroke, JointsOnARightAngleAndAClosedSquare) {
    VectorPath corner;
    corner.moveTo(0, 0);
    corner.lineTo(100, 0);
    corner.lineTo(100, 100);
    double area[3];
    for (int j = 0; j < 3; ++j) {
        VectorPath p = corner;
        p.stroke(10, StrokeCaps::butt, StrokeJoints(j), 2, 1);
        area[j] = filledArea(p);
    }
    // Two 100x10 bands overlap in a 5x5 square; bevel adds half of the outer 5x5
    // corner, miter all of it, and the curve a quarter disc.
    EXPECT_NEAR(area[0], 2000 - 25 + 12.5, 1.5);
    EXPECT_NEAR(area[2], 2000 - 25 + 25, 1.5);
    EXPECT_NEAR(area[1], 2000 - 25 + kPi * 25 / 4, 1.5);

    VectorPath box;
    box.addRect(0, 0, 100, 100);
    box.stroke(10, StrokeCaps::butt, StrokeJoints::miter, 2, 1);
    EXPECT_EQ(count(box, PathInstruction::move), 2u);
    EXPECT_NEAR(filledArea(box), 110 * 110 - 90 * 90, 2);

    // A sharp spike: the miter is cut at the limit rather than bevelled.
    VectorPath spike;
    spike.moveTo(0, 0);
    spike.lineTo(100, 5);
    spike.lineTo(0, 10);
    spike.stroke(4, StrokeCaps::butt, StrokeJoints::miter, 2, 1);
    EXPECT_LT(spike.bounds().x + spike.bounds().width, 100 + 2 * 2 + 1);
    EXPECT_GT(spike.bounds().x + spike.bounds().width, 100);

    // A straight joint gives one point on the outer side.
    VectorPath straight;
    straight.moveTo(0, 0);
    straight.lineTo(50, 0);
    straight.lineTo(100, 0);
    straight.stroke(10, StrokeCaps::butt, StrokeJoints::miter, 2, 1);
    EXPECT_EQ(straight.instructions.size(), 1u + 1 + 2 + 1 + 2 + 1);
}

TEST(Dash, PiecesPhaseAndJoinedEnds) {
    VectorPath line;
    line.moveTo(0, 0);
    line.lineTo(100, 0);
    VectorPath noGap = line;
    noGap.dash(10, 0, 3);
    EXPECT_EQ(noGap.instructions.size(), line.instructions.size());

    VectorPath dashed = line;
    dashed.dash(10, 5, 0);
    EXPECT_EQ(count(dashed, PathInstruction::move), 7u);  // 0, 15, ..., 90
    EXPECT_EQ(dashed.instructions[2].x, 15);
    EXPECT_EQ(dashed.instructions[1].x, 10);

    VectorPath shifted = line;
    shifted.dash(10, 5, 12);  // starts in the gap, 3 left
    EXPECT_EQ(shifted.instructions[0].type, PathInstruction::move);
    EXPECT_NEAR(shifted.instructions[0].x, 3, 1e-12);

    // A closed rectangle of perimeter 410 with dashes of 30 and gaps of 20: the ninth
    // dash runs into the first, so there are 8 pieces, and the first comes last.
    VectorPath box;
    box.addRect(0, 0, 100, 105);
    box.dash(30, 20, 0);
    EXPECT_EQ(count(box, PathInstruction::move), 8u);
    EXPECT_EQ(box.instructions.back().x, 30);
    EXPECT_EQ(box.instructions.back().y, 0);
}
