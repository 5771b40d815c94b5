#include <gtest/gtest.h>

#include <cmath>

#include "vector/SvgPath.h"
#include "vector/KetchException.h"
#include "tests/Failure.h"

using namespace tw;

namespace {

std::string message(std::string_view text) {
    return test::failure<Ketch::SyntaxException>([&] { parseSvgPath(text, 1); });
}

void expectPoint(const PathInstruction& in, std::int32_t type, double x, double y) {
    EXPECT_EQ(in.type, type);
    EXPECT_NEAR(in.x, x, 1e-9);
    EXPECT_NEAR(in.y, y, 1e-9);
}

}  // namespace

TEST(SvgPath, LinesAbsoluteAndRelative) {
    const VectorPath p = parseSvgPath("M10,20 30 40 l5 5 h10 v-10 H0 V0 z m1 1", 1);
    ASSERT_EQ(p.instructions.size(), 9u);
    expectPoint(p.instructions[0], PathInstruction::move, 10, 20);
    expectPoint(p.instructions[1], PathInstruction::line, 30, 40);
    expectPoint(p.instructions[2], PathInstruction::line, 35, 45);
    expectPoint(p.instructions[3], PathInstruction::line, 45, 45);
    expectPoint(p.instructions[4], PathInstruction::line, 45, 35);
    expectPoint(p.instructions[5], PathInstruction::line, 0, 35);
    expectPoint(p.instructions[6], PathInstruction::line, 0, 0);
    expectPoint(p.instructions[7], PathInstruction::close, 10, 20);
    expectPoint(p.instructions[8], PathInstruction::move, 11, 21);  // from the closed subpath's start
}

TEST(SvgPath, NumberForms) {
    const VectorPath p = parseSvgPath("M1e1-2.5L.5.5 -.5,+1E-1\tL\n3.,4", 1);
    expectPoint(p.instructions[0], PathInstruction::move, 10, -2.5);
    expectPoint(p.instructions[1], PathInstruction::line, 0.5, 0.5);
    expectPoint(p.instructions[2], PathInstruction::line, -0.5, 0.1);
    expectPoint(p.instructions[3], PathInstruction::line, 3, 4);
    // A group that stops short ends the command; the next letter goes on.
    const VectorPath q = parseSvgPath("M0 0 L 10 10 20 Z", 1);
    ASSERT_EQ(q.instructions.size(), 3u);
    EXPECT_EQ(q.instructions[2].type, PathInstruction::close);
}

TEST(SvgPath, SmoothCurvesReflectTheLastControlPoint) {
    const VectorPath c = parseSvgPath("M0 0 C0 10 10 10 10 0 S20 -10 20 0", 1);
    const VectorPath explicitForm = parseSvgPath("M0 0 C0 10 10 10 10 0 C10 -10 20 -10 20 0", 1);
    ASSERT_EQ(c.instructions.size(), explicitForm.instructions.size());
    for (std::size_t i = 0; i < c.instructions.size(); ++i) {
        EXPECT_NEAR(c.instructions[i].x, explicitForm.instructions[i].x, 1e-9);
        EXPECT_NEAR(c.instructions[i].y, explicitForm.instructions[i].y, 1e-9);
    }
    const VectorPath t = parseSvgPath("M0 0 Q5 10 10 0 T20 0", 1);
    const VectorPath q = parseSvgPath("M0 0 Q5 10 10 0 Q15 -10 20 0", 1);
    ASSERT_EQ(t.instructions.size(), q.instructions.size());
    EXPECT_NEAR(t.instructions[t.instructions.size() / 2 + 2].y, q.instructions[q.instructions.size() / 2 + 2].y, 1e-9);
    // Another command in between forgets the control point: S then starts at the current point.
    const VectorPath s = parseSvgPath("M0 0 C0 10 10 10 10 0 L10 0 S20 -10 20 0", 1);
    const VectorPath plain = parseSvgPath("M0 0 C0 10 10 10 10 0 L10 0 C10 0 20 -10 20 0", 1);
    EXPECT_NEAR(s.instructions[s.instructions.size() - 3].y, plain.instructions[plain.instructions.size() - 3].y, 1e-9);
}

TEST(SvgPath, Arcs) {
    // A half circle of radius 10 from (0, 0) to (20, 0), through (10, -10) or (10, 10).
    for (int sweep = 0; sweep < 2; ++sweep) {
        const VectorPath p = parseSvgPath(sweep ? "M0 0 A10 10 0 0 1 20 0" : "M0 0 A10 10 0 0 0 20 0", 1);
        double extreme = 0;
        for (const PathInstruction& in : p.instructions) {
            EXPECT_NEAR(std::hypot(in.x - 10, in.y), 10, 1e-3);
            extreme = std::fabs(in.y) > std::fabs(extreme) ? in.y : extreme;
        }
        EXPECT_NEAR(extreme, sweep ? -10 : 10, 0.5);
        expectPoint(p.instructions.back(), PathInstruction::line, 20, 0);
    }
    // A chord longer than the diameter: the centre is the chord's middle.
    const VectorPath big = parseSvgPath("M0 0 a1 1 0 0 1 40 0", 1);
    for (const PathInstruction& in : big.instructions) EXPECT_NEAR(std::hypot(in.x - 20, in.y), 20, 0.01);
    // Rotated ellipse: the ends are still exact.
    const VectorPath turned = parseSvgPath("M0 0 A20 10 30 1 0 15 5", 1);
    expectPoint(turned.instructions.back(), PathInstruction::line, 15, 5);
    EXPECT_GT(turned.instructions.size(), 6u);
    // Radius zero: a straight line.
    EXPECT_EQ(parseSvgPath("M0 0 A0 5 0 0 0 9 9", 1).instructions.size(), 2u);
}

TEST(SvgPath, Messages) {
    EXPECT_EQ(message("M"), "Invalid M syntax in svg path data");
    EXPECT_EQ(message("M 10"), "Invalid M syntax in svg path data");
    EXPECT_EQ(message("M0 0 L"), "Invalid L syntax in svg path data");
    EXPECT_EQ(message("M0 0 X 1 2"), "Invalid command in svg path data");
    EXPECT_EQ(message("M0 0 Z 5 5"), "Invalid command in svg path data");
    EXPECT_EQ(message("M . 5"), "Invalid M syntax in svg path data");
    EXPECT_EQ(message("M0 0 L 5,,5"), "Invalid L syntax in svg path data");
    EXPECT_EQ(message("M0 0 L1 1-"), "Invalid command in svg path data");  // a lone sign is no number
    EXPECT_EQ(message(" \t\r\n"), "");
}
