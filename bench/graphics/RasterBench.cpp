// The raster core against cairo's image backend on the same work, in the same run: each
// case fills or strokes into a 525 by 475 premultiplied 32-bit buffer with anti-aliasing,
// path construction included. The ratios (our time over cairo's) are printed at the end.
#include <benchmark/benchmark.h>
#include <cairo.h>

#include <cmath>
#include <iostream>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "graphics/CanvasTarget.h"
#include "graphics/GradientPaint.h"
#include "graphics/PolygonMask.h"
#include "graphics/SolidPaint.h"

using namespace tw;

namespace {

constexpr int kWidth = 525, kHeight = 475;

// One window-sized buffer shared by both sides, so that memory traffic is the same.
struct Canvas {
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(std::size_t(kWidth) * kHeight, 0xFF808080u);
    Raster32 raster{pixels.data(), kWidth, IntRect{0, 0, kWidth, kHeight}, true};
    cairo_surface_t* surface = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                                                   CAIRO_FORMAT_ARGB32, kWidth, kHeight, kWidth * 4);
    ~Canvas() { cairo_surface_destroy(surface); }
};

struct StarPoint {
    double x, y;
};

std::vector<StarPoint> starPoints() {
    std::vector<StarPoint> v;
    for (int i = 0; i < 10; ++i) {
        const double a = 2 * std::numbers::pi * i / 10, r = i % 2 ? 80 : 200;
        v.push_back({262.5 + std::sin(a) * r, 237.5 - std::cos(a) * r});
    }
    return v;
}

std::vector<StarPoint> spiralPoints() {
    std::vector<StarPoint> v;
    for (int i = 0; i < 600; ++i) {
        const double a = i * 0.06, r = 5 + i * 0.36;
        v.push_back({262.5 + r * std::cos(a), 237.5 + r * std::sin(a)});
    }
    return v;
}

void fillOurs(VectorPath path, Raster32& canvas, const Paint& paint) {
    const RealRect shape = path.bounds();
    path.closeAll();
    PolygonMask coverage(path, canvas.bounds(), FillRule::nonZero());
    CanvasTarget target(canvas);
    PaintStyle style;
    paint.draw(style, Matrix{}, target, shape, coverage);
}

const SolidColourPaint kBlue(0xFF2040C0u);

void Circle_Ours(benchmark::State& state) {
    Canvas c;
    for (auto _ : state) {
        VectorPath p;
        p.addCircle(262.5, 237.5, 100, 1);
        fillOurs(std::move(p), c.raster, kBlue);
    }
}

void Circle_Cairo(benchmark::State& state) {
    Canvas c;
    cairo_t* cr = cairo_create(c.surface);
    for (auto _ : state) {
        cairo_new_path(cr);
        cairo_arc(cr, 262.5, 237.5, 100, 0, 2 * std::numbers::pi);
        cairo_set_source_rgba(cr, 0xC0 / 255.0, 0x40 / 255.0, 0x20 / 255.0, 1);
        cairo_fill(cr);
        cairo_surface_flush(c.surface);
    }
    cairo_destroy(cr);
}

void Star_Ours(benchmark::State& state) {
    Canvas c;
    for (auto _ : state) {
        VectorPath p;
        p.addStar(262.5, 237.5, 10, 200, 80, 0);
        fillOurs(std::move(p), c.raster, kBlue);
    }
}

void Star_Cairo(benchmark::State& state) {
    Canvas c;
    cairo_t* cr = cairo_create(c.surface);
    const std::vector<StarPoint> points = starPoints();
    for (auto _ : state) {
        cairo_new_path(cr);
        for (const StarPoint& p : points) cairo_line_to(cr, p.x, p.y);
        cairo_close_path(cr);
        cairo_set_source_rgba(cr, 0xC0 / 255.0, 0x40 / 255.0, 0x20 / 255.0, 1);
        cairo_fill(cr);
        cairo_surface_flush(c.surface);
    }
    cairo_destroy(cr);
}

void DashedSpiral_Ours(benchmark::State& state) {
    Canvas c;
    const std::vector<StarPoint> points = spiralPoints();
    for (auto _ : state) {
        VectorPath p;
        p.moveTo(points[0].x, points[0].y);
        for (const StarPoint& q : points) p.lineTo(q.x, q.y);
        p.dash(12, 6, 0);
        p.stroke(4, StrokeCaps::butt, StrokeJoints::curve, 10, 1);
        PolygonMask coverage(p, c.raster.bounds(), FillRule::nonZero());
        CanvasTarget target(c.raster);
        PaintStyle style;
        kBlue.draw(style, Matrix{}, target, RealRect{}, coverage);
    }
}

void DashedSpiral_Cairo(benchmark::State& state) {
    Canvas c;
    cairo_t* cr = cairo_create(c.surface);
    const std::vector<StarPoint> points = spiralPoints();
    const double dashes[] = {12, 6};
    cairo_set_dash(cr, dashes, 2, 0);
    cairo_set_line_width(cr, 4);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_BUTT);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    for (auto _ : state) {
        cairo_new_path(cr);
        for (const StarPoint& q : points) cairo_line_to(cr, q.x, q.y);
        cairo_set_source_rgba(cr, 0xC0 / 255.0, 0x40 / 255.0, 0x20 / 255.0, 1);
        cairo_stroke(cr);
        cairo_surface_flush(c.surface);
    }
    cairo_destroy(cr);
}

void Gradient_Ours(benchmark::State& state) {
    Canvas c;
    const GradientStop stops[] = {{0, 0xFF102040u}, {1, 0xFFF0E0A0u}};
    const LinearColourPaint paint(Point{0, 0}, Point{kWidth, kHeight}, stops);
    for (auto _ : state) {
        VectorPath p;
        p.addRect(0, 0, kWidth, kHeight);
        fillOurs(std::move(p), c.raster, paint);
    }
}

void Gradient_Cairo(benchmark::State& state) {
    Canvas c;
    cairo_t* cr = cairo_create(c.surface);
    cairo_pattern_t* pattern = cairo_pattern_create_linear(0, 0, kWidth, kHeight);
    cairo_pattern_add_color_stop_rgb(pattern, 0, 0x10 / 255.0, 0x20 / 255.0, 0x40 / 255.0);
    cairo_pattern_add_color_stop_rgb(pattern, 1, 0xF0 / 255.0, 0xE0 / 255.0, 0xA0 / 255.0);
    for (auto _ : state) {
        cairo_new_path(cr);
        cairo_rectangle(cr, 0, 0, kWidth, kHeight);
        cairo_set_source(cr, pattern);
        cairo_fill(cr);
        cairo_surface_flush(c.surface);
    }
    cairo_pattern_destroy(pattern);
    cairo_destroy(cr);
}

// A window-sized picture: opaque, or with every pixel at half alpha.
struct Picture {
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(std::size_t(kWidth) * kHeight);
    explicit Picture(bool opaque) {
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const std::uint32_t v = std::uint32_t(x ^ y) & 0x7F;
                pixels[std::size_t(y) * kWidth + x] = opaque ? 0xFF000000u | v << 16 | v << 8 | v : 0x80000000u | v * 0x010101u;
            }
        }
    }
};

void blendOurs(benchmark::State& state, bool opaque) {
    Canvas c;
    Picture picture(opaque);
    Raster32 image(picture.pixels.data(), kWidth, IntRect{0, 0, kWidth, kHeight}, opaque);
    CanvasTarget target(c.raster);
    for (auto _ : state) target.drawPixels(image);
}

void blendCairo(benchmark::State& state, bool opaque) {
    Canvas c;
    Picture picture(opaque);
    cairo_surface_t* image = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(picture.pixels.data()),
                                                                 opaque ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_ARGB32, kWidth,
                                                                 kHeight, kWidth * 4);
    cairo_t* cr = cairo_create(c.surface);
    for (auto _ : state) {
        cairo_set_source_surface(cr, image, 0, 0);
        cairo_paint(cr);
        cairo_surface_flush(c.surface);
    }
    cairo_destroy(cr);
    cairo_surface_destroy(image);
}

void BlendOpaque_Ours(benchmark::State& state) { blendOurs(state, true); }
void BlendOpaque_Cairo(benchmark::State& state) { blendCairo(state, true); }
void BlendHalf_Ours(benchmark::State& state) { blendOurs(state, false); }
void BlendHalf_Cairo(benchmark::State& state) { blendCairo(state, false); }

struct Case {
    const char* name;
    void (*run)(benchmark::State&);
};

const Case kCases[] = {
    {"Circle_Ours", Circle_Ours},
    {"Circle_Cairo", Circle_Cairo},
    {"Star_Ours", Star_Ours},
    {"Star_Cairo", Star_Cairo},
    {"DashedSpiral_Ours", DashedSpiral_Ours},
    {"DashedSpiral_Cairo", DashedSpiral_Cairo},
    {"Gradient_Ours", Gradient_Ours},
    {"Gradient_Cairo", Gradient_Cairo},
    {"BlendOpaque_Ours", BlendOpaque_Ours},
    {"BlendOpaque_Cairo", BlendOpaque_Cairo},
    {"BlendHalf_Ours", BlendHalf_Ours},
    {"BlendHalf_Cairo", BlendHalf_Cairo},
};

// Prints the usual table, then our time over cairo's for each case.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs) {
            const std::string name = r.benchmark_name();
            const std::size_t cut = name.rfind('_');
            if (cut == std::string::npos || r.iterations == 0 || r.run_type != Run::RT_Iteration) continue;
            // The fastest repetition: the machine is shared, and slowdowns only add.
            double& best = times_[name.substr(0, cut)][name.substr(cut + 1)];
            const double t = r.GetAdjustedCPUTime();
            if (best == 0 || t < best) best = t;
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::cout << "\nOur CPU time over cairo's (target <= 1.0):\n";
        for (const auto& [task, sides] : times_) {
            const auto ours = sides.find("Ours"), cairo = sides.find("Cairo");
            if (ours == sides.end() || cairo == sides.end()) continue;
            std::printf("  %-14s %.2f\n", task.c_str(), ours->second / cairo->second);
        }
    }

private:
    std::map<std::string, std::map<std::string, double>> times_;
};

}  // namespace

int main(int argc, char** argv) {
    // Three repetitions by default; the ratio takes the fastest of each. "--iterations=N"
    // instead runs each case once for exactly N iterations: under callgrind, two counts
    // with different N give the instructions of one iteration without the setup.
    std::vector<char*> args(argv, argv + argc);
    char repetitions[] = "--benchmark_repetitions=3";
    args.insert(args.begin() + 1, repetitions);
    std::int64_t iterations = 0;
    for (auto it = args.begin(); it != args.end();) {
        if (std::string(*it).starts_with("--iterations=")) {
            iterations = std::stoll(*it + 13);
            it = args.erase(it);
        } else {
            ++it;
        }
    }
    for (const Case& c : kCases) {
        benchmark::internal::Benchmark* b = benchmark::RegisterBenchmark(c.name, c.run);
        if (iterations > 0) b->Iterations(iterations)->Repetitions(1);
    }
    int count = int(args.size());
    benchmark::Initialize(&count, args.data());
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
