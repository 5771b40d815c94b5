// What a Keel picture costs against the same shapes drawn straight through the raster core
// in C++: the price of reading the picture from text each time it is painted. The picture
// is a knob face at 100 by 100, as the vector view repaints it: a shadow and a body with
// gradients, a stroked track and value arc, a star for the cap, an indicator and 21 ticks.
#include "graphics/CanvasTarget.h"
#include "graphics/CoverageChain.h"
#include "graphics/GradientPaint.h"
#include "graphics/PolygonMask.h"
#include "graphics/SolidPaint.h"
#include "vector/SvgPath.h"
#include "vector/KeelPainter.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchVariables.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <numbers>
#include <sstream>

namespace {

using namespace tw;

constexpr const char* kKnob = R"(format keel-1
fill gradient:[radial 50,53,48 stops:[0 #80000000 0.75 #40000000 1 none]]
ellipse 50,53,48
fill gradient:[linear 0,12,0,88 from:#f4f4f4 to:#606060]
pen #202020 width:1.5
ellipse 50,50,38
fill none
pen rgb(0.2,0.2,0.2) width:5 caps:round
path svg:[M 21.7 78.3 A 40 40 0 1 1 78.3 78.3]
pen hsv(0.55,0.8,1) width:5 caps:round
path svg:[M 21.7 78.3 A 40 40 0 1 1 84.6 30]
pen none
fill gradient:[radial 50,50,14 from:#ffffff to:#909090]
star 50,50,16,14,11 rotation:11.25
fill #203040
context [
    rotate 60,50,50
    rect 48,14,4,16 rounded:2
]
fill #606060
for i from:0 to:20 [
    context [
        rotate {$i * 13.5 - 135},50,50
        rect 49.6,0.5,0.8,3
    ]
]
)";

constexpr std::int32_t kSize = 100;

struct Canvas {
    Raster32 raster{IntRect{0, 0, kSize, kSize}};
    CanvasTarget target{raster};

    void clear() { std::memset(raster.at(0, 0), 0, sizeof(std::uint32_t) * kSize * kSize); }
};

void keelKnob(benchmark::State& state) {
    Canvas canvas;
    std::ostringstream traces;
    for (auto _ : state) {
        canvas.clear();
        KeelPainter painter(canvas.target, Matrix{}, traces);
        Ketch::VariableMap variables;
        Ketch::Frame frame(painter, variables, 1000000, 100);
        Ketch::run(frame, kKnob);
        benchmark::DoNotOptimize(canvas.raster.at(50, 50));
    }
}

// The painter's steps for one shape, written out: fill, then stroke in user space.
void drawShape(PaintTarget& target, const Matrix& m, VectorPath path, const PaintStyle* fill, const PaintStyle* pen,
               double width, StrokeCaps caps) {
    const RealRect box = path.bounds();
    if (fill) {
        VectorPath outline = path;
        outline.closeAll();
        outline.transform(m);
        PolygonMask coverage(outline, target.getBounds(), FillRule::nonZero());
        CoverageChain chain(coverage, nullptr, nullptr);
        fill->paint->draw(*fill, m, target, box, chain.coverage());
    }
    if (pen) {
        path.stroke(width, caps, StrokeJoints::miter, 2, m.scaleFactor());
        path.transform(m);
        PolygonMask coverage(path, target.getBounds(), FillRule::nonZero());
        CoverageChain chain(coverage, nullptr, nullptr);
        pen->paint->draw(*pen, m, target, box, chain.coverage());
    }
}

PaintStyle styleOf(std::shared_ptr<const Paint> paint) {
    PaintStyle style;
    style.paint = std::move(paint);
    return style;
}

Matrix rotationAround(double degrees, double x, double y) {
    const Matrix turn = Matrix::rotate(degrees * std::numbers::pi / 180);
    return compose(Matrix::translate(x, y), compose(turn, Matrix::translate(-x, -y)));
}

void directKnob(benchmark::State& state) {
    Canvas canvas;
    PaintTarget& t = canvas.target;
    const Matrix id;
    for (auto _ : state) {
        canvas.clear();
        VectorPath p;
        const GradientStop shadowStops[] = {{0, 0x80000000}, {0.75, 0x40000000}, {1, 0}};
        const PaintStyle shadow = styleOf(std::make_shared<RadialColourPaint>(Point{50, 53}, 48, 48, shadowStops));
        p.addCircle(50, 53, 48, 1);
        drawShape(t, id, std::move(p), &shadow, nullptr, 0, StrokeCaps::butt);

        const GradientStop bodyStops[] = {{0, 0xFFF4F4F4}, {1, 0xFF606060}};
        const PaintStyle body = styleOf(std::make_shared<LinearColourPaint>(Point{0, 12}, Point{0, 88}, bodyStops));
        const PaintStyle rim = styleOf(std::make_shared<SolidColourPaint>(0xFF202020));
        p = VectorPath();
        p.addCircle(50, 50, 38, 1);
        drawShape(t, id, std::move(p), &body, &rim, 1.5, StrokeCaps::butt);

        const PaintStyle track = styleOf(std::make_shared<SolidColourPaint>(0xFF333333));
        drawShape(t, id, parseSvgPath("M 21.7 78.3 A 40 40 0 1 1 78.3 78.3", 1), nullptr, &track, 5, StrokeCaps::round);
        const PaintStyle value = styleOf(std::make_shared<SolidColourPaint>(0xFF33C2FF));
        drawShape(t, id, parseSvgPath("M 21.7 78.3 A 40 40 0 1 1 84.6 30", 1), nullptr, &value, 5, StrokeCaps::round);

        const GradientStop capStops[] = {{0, 0xFFFFFFFF}, {1, 0xFF909090}};
        const PaintStyle cap = styleOf(std::make_shared<RadialColourPaint>(Point{50, 50}, 14, 14, capStops));
        p = VectorPath();
        p.addStar(50, 50, 16, 14, 11, 11.25 * std::numbers::pi / 180);
        drawShape(t, id, std::move(p), &cap, nullptr, 0, StrokeCaps::butt);

        const PaintStyle indicator = styleOf(std::make_shared<SolidColourPaint>(0xFF203040));
        const Matrix turned = rotationAround(60, 50, 50);
        p = VectorPath();
        p.addRoundedRect(48, 14, 4, 16, 2, 2, turned.scaleFactor());
        drawShape(t, turned, std::move(p), &indicator, nullptr, 0, StrokeCaps::butt);

        const PaintStyle tick = styleOf(std::make_shared<SolidColourPaint>(0xFF606060));
        for (int i = 0; i <= 20; ++i) {
            p = VectorPath();
            p.addRect(49.6, 0.5, 0.8, 3);
            drawShape(t, rotationAround(i * 13.5 - 135, 50, 50), std::move(p), &tick, nullptr, 0, StrokeCaps::butt);
        }
        benchmark::DoNotOptimize(canvas.raster.at(50, 50));
    }
}

}  // namespace

BENCHMARK(directKnob)->Unit(benchmark::kMicrosecond);
BENCHMARK(keelKnob)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
