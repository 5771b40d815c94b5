// What drawing pictures and text costs next to copying the same pixels, measured in the
// same run: a knob frame (mostly transparent, as film strips are) drawn from a plain and
// from a run-length raster, an in-between frame of an interpolated film, and a line of
// text in the small sans. The reference is a row-by-row memcpy of the frame's area.
#include "graphics/Film.h"
#include "graphics/ImageDecoder.h"
#include "graphics/InterpolatedFilm.h"
#include "graphics/PNGWriter.h"
#include "graphics/ResourceManager.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr int kSide = 64;
constexpr int kFrames = 32;

// A strip of knob frames: a disc of 26 pixels radius with an opaque body and a soft rim,
// transparent around it, its shade changing from frame to frame.
std::vector<std::uint8_t> knobStrip() {
    tw::Raster32 strip(tw::IntRect{0, 0, kSide, kSide * kFrames});
    for (int y = 0; y < kSide * kFrames; ++y)
        for (int x = 0; x < kSide; ++x) {
            const double dx = x + 0.5 - kSide / 2, dy = (y % kSide) + 0.5 - kSide / 2;
            const double d = std::sqrt(dx * dx + dy * dy);
            const double cover = d < 25 ? 1 : d < 26 ? 26 - d : 0;
            const std::uint32_t a = std::uint32_t(cover * 255 + 0.5);
            const std::uint32_t shade = std::uint32_t(80 + (y / kSide) * 4) * a / 255;
            *strip.at(x, y) = a << 24 | shade << 16 | shade << 8 | shade;
        }
    return tw::encodePNG(strip);
}

struct Fixture {
    std::vector<std::uint8_t> png = knobStrip();
    tw::Raster32 canvas{tw::IntRect{0, 0, 256, 128}, true};
    tw::Film plain{decode(false), kFrames};
    tw::Film rle{decode(true), kFrames};
    tw::InterpolatedFilm smooth{decode(true), kFrames};

    Fixture() {
        for (int y = 0; y < 128; ++y)
            for (int x = 0; x < 256; ++x) *canvas.at(x, y) = 0xFF203040;
    }
    std::shared_ptr<tw::Image> decode(bool rle) {
        tw::ImageKey key;
        key.name = "knob";
        key.rle = rle;
        return tw::decodeImage(png.data(), png.size(), key);
    }
};

Fixture& fixture() {
    static Fixture f;
    return f;
}

void copyFrameArea(benchmark::State& state) {
    Fixture& f = fixture();
    tw::Raster32 source(tw::IntRect{0, 0, kSide, kSide});
    for (auto _ : state) {
        for (int y = 0; y < kSide; ++y) std::memcpy(f.canvas.at(40, 20 + y), source.at(0, y), kSide * 4);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(copyFrameArea);

// Draws successive indices of a film, `step` apart, at the same place.
void drawFrames(benchmark::State& state, tw::Film& film, int step) {
    Fixture& f = fixture();
    int index = 0;
    for (auto _ : state) {
        film.drawFrame(f.canvas, index, 40, 20);
        index = (index + step) % film.frameCount();
        benchmark::ClobberMemory();
    }
}

void drawPlainFrame(benchmark::State& state) {
    drawFrames(state, fixture().plain, 1);
}
BENCHMARK(drawPlainFrame);

void drawRLEFrame(benchmark::State& state) {
    drawFrames(state, fixture().rle, 1);
}
BENCHMARK(drawRLEFrame);

// Steps that are not whole frames, so that two frames are always blended.
void drawInterpolatedFrame(benchmark::State& state) {
    drawFrames(state, fixture().smooth, 77);
}
BENCHMARK(drawInterpolatedFrame);

void drawTextLine(benchmark::State& state) {
    Fixture& f = fixture();
    tw::ResourceManager resources("Tidewake", "/nonexistent/");
    const auto font = resources.getFont("{ fnt: Tidewake_sans_11, color: white }");
    const std::u16string_view line = u"Delay 250 ms, feedback 62 %, shift +3.5 Hz";
    for (auto _ : state) {
        font->draw(f.canvas, tw::Point{4, 100}, line);
        benchmark::ClobberMemory();
    }
    state.counters["width"] = font->measure(tw::Point{4, 100}, line, true).width;
}
BENCHMARK(drawTextLine);

}  // namespace

BENCHMARK_MAIN();
