// What the editor window costs, each beside its reference from the same run:
// - a full-window paint (the client's copy into the tile, then the image to the server and
//   a wait until the server has it) against a plain memcpy of the same 525 by 475 pixels;
// - the pixels painted per pixel invalidated, for the invalidations of a busy editor
//   (knob values, a meter, a needle with its trail, a status line), as a counter;
// - the rate of an 11 ms timer, as a fraction of its nominal rate, when the host calls
//   the idle entry 20 times a second (the plain way) and when it also hands us its X
//   events every millisecond (Ardour's way, with our wake-up thread).
// Run it under xvfb-run; without a display it says so and stops.
#include <X11/Xlib.h>
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "platform/X11Window.h"

namespace {

constexpr int kWidth = 525, kHeight = 475;

struct Picture : tw::WindowClient {
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(std::size_t(kWidth) * kHeight, 0xFF102436);
    std::int64_t painted = 0;
    void paint(const tw::PixelTile& t) override {
        for (int y = 0; y < t.height; ++y)
            std::memcpy(t.pixels + std::ptrdiff_t(y) * t.stride, &pixels[std::size_t(t.top + y) * kWidth + std::size_t(t.left)],
                        std::size_t(t.width) * 4);
        painted += std::int64_t(t.width) * t.height;
    }
};

// A busy server now and then refuses a connection outright; a few tries get through.
Display* openDisplay() {
    Display* d = nullptr;
    for (int attempt = 0; attempt < 10 && !d; ++attempt) {
        if (attempt > 0) usleep(20000);
        d = XOpenDisplay(nullptr);
    }
    return d;
}

// The host's window, on the host's connection.
struct Host {
    Display* display = openDisplay();
    ::Window parent = 0;
    Host() {
        XSetWindowAttributes a{};
        a.override_redirect = True;
        parent = XCreateWindow(display, DefaultRootWindow(display), 0, 0, kWidth, kHeight, 0, CopyFromParent, InputOutput,
                               CopyFromParent, CWOverrideRedirect, &a);
        XMapWindow(display, parent);
        XSync(display, False);
    }
    ~Host() {
        XDestroyWindow(display, parent);
        XCloseDisplay(display);
    }
};

void plainCopy(benchmark::State& state) {
    std::vector<std::uint32_t> from(std::size_t(kWidth) * kHeight, 0xFF102436), to(from.size());
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size() * 4);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(plainCopy);

void fullWindowPaint(benchmark::State& state) {
    Host host;
    Picture picture;
    tw::X11Window window(picture, host.parent, kWidth, kHeight);
    window.idle();
    for (auto _ : state) {
        window.invalidate(0, 0, kWidth, kHeight);
        window.paintInvalid();
    }
    state.counters["sharedMemory"] = window.session()->connection->hasShm() ? 1 : 0;
}
BENCHMARK(fullWindowPaint);

// One frame of a busy editor: a few knobs whose values change (knob and caption), the
// input meter, the LFO needle with its trail, and the status line under the pointer.
void busyFrame(tw::Window& w, std::mt19937& random) {
    static const int knobs[][2] = {{40, 90}, {120, 90}, {200, 90}, {300, 90}, {380, 90}, {40, 250}, {120, 250}, {300, 330}};
    for (const auto& k : knobs)
        if (random() % 3 == 0) {
            w.invalidate(k[0], k[1], 56, 56);
            w.invalidate(k[0] - 4, k[1] + 58, 64, 14);
        }
    w.invalidate(470, 300, 12, 120);
    const int needle = int(random() % 200);
    for (int trail = 0; trail < 10; ++trail) w.invalidate(200 + (needle + trail * 4) % 200, 330, 6, 40);
    w.invalidate(8, 452, 509, 16);
}

void paintedPerInvalidated(benchmark::State& state) {
    Host host;
    Picture picture;
    tw::X11Window window(picture, host.parent, kWidth, kHeight);
    window.idle();
    std::mt19937 random(7);
    std::int64_t asked = 0;
    const std::int64_t before = picture.painted;
    for (auto _ : state) {
        // The pixels asked for, each counted once however often it was invalidated.
        struct Counting : tw::Window {
            tw::Window& inner;
            std::vector<std::uint8_t> marked = std::vector<std::uint8_t>(std::size_t(kWidth) * kHeight);
            explicit Counting(tw::Window& w) : inner(w) {}
            std::int32_t width() const override { return kWidth; }
            std::int32_t height() const override { return kHeight; }
            void invalidate(std::int32_t l, std::int32_t t, std::int32_t w, std::int32_t h) override {
                inner.invalidate(l, t, w, h);
                for (int y = std::max(t, 0); y < std::min(t + h, kHeight); ++y)
                    for (int x = std::max(l, 0); x < std::min(l + w, kWidth); ++x) marked[std::size_t(y) * kWidth + std::size_t(x)] = 1;
            }
            void setCursor(tw::Cursor) override {}
            void captureMouse() override {}
            void releaseMouse() override {}
            tw::TimerQueue& timers() override { return inner.timers(); }
            bool isActive() const override { return true; }
            void toScreen(std::int32_t&, std::int32_t&) const override {}
            std::unique_ptr<tw::Window> openPopup(tw::WindowClient&, std::int32_t, std::int32_t, std::int32_t, std::int32_t) override { return nullptr; }
            std::unique_ptr<tw::Window> openDialog(tw::WindowClient&, const std::string&, std::int32_t, std::int32_t, std::int32_t,
                                                   std::int32_t) override { return nullptr; }
            void setVisible(bool) override {}
            void setScreenBounds(std::int32_t, std::int32_t, std::int32_t, std::int32_t) override {}
            void runModal(const std::function<bool()>&) override {}
        } counting(window);
        busyFrame(counting, random);
        window.paintInvalid();
        for (std::uint8_t m : counting.marked) asked += m;
    }
    state.counters["paintedPerInvalidated"] = double(picture.painted - before) / double(asked);
}
BENCHMARK(paintedPerInvalidated);

// Re-armed from the tick of its run, so that a late run is one turn, not a burst that
// catches up.
struct Ticker : tw::TimerHandler {
    int count = 0;
    void timerFired(tw::TimerQueue& queue, std::uint32_t, std::uint32_t, int id) override {
        ++count;
        queue.add(this, id, 11);
    }
};

// Two seconds of a host's GUI loop: a pass every millisecond that hands the host's
// events to our procedure when `eventProcedure` is set, and an idle call every 50th pass.
void timerRate(benchmark::State& state, bool eventProcedure) {
    for (auto _ : state) {
        Host host;
        Picture picture;
        tw::X11Window window(picture, host.parent, kWidth, kHeight);
        if (eventProcedure) tw::X11Window::hostEventProc(nullptr);
        Ticker ticker;
        window.timers().add(&ticker, 1, 11);
        const std::uint32_t start = tw::millisecondTick();
        for (int pass = 0; tw::millisecondTick() - start < 2000; ++pass) {
            while (XPending(host.display) > 0) {
                XEvent e;
                XNextEvent(host.display, &e);
                if (eventProcedure) tw::X11Window::hostEventProc(&e);
            }
            if (pass % 50 == 0) window.idle();
            usleep(1000);
        }
        state.counters["ofNominalRate"] = ticker.count * 11.0 / double(tw::millisecondTick() - start);
        window.timers().cancel(&ticker);
    }
}
void timerRateIdleCallsOnly(benchmark::State& state) { timerRate(state, false); }
void timerRateWithEventProcedure(benchmark::State& state) { timerRate(state, true); }
BENCHMARK(timerRateIdleCallsOnly)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(timerRateWithEventProcedure)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    Display* probe = openDisplay();
    if (!probe) {
        std::fprintf(stderr, "bench_window needs an X display: run it under xvfb-run\n");
        return 0;
    }
    XCloseDisplay(probe);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
