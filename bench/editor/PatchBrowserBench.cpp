// What stepping through a patch folder costs. The previous and next arrows ask whether
// there is a neighbour on every refresh of the screen, so that answer comes from the
// cached listing; measured against a fresh listing of the same folder of 300 patch files
// in the same run, and a paint of the open dialog's whole window against a plain copy of
// its pixels.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/RatioReporter.h"
#include "cushy/CushyView.h"
#include "editor/FileDialog.h"
#include "cushy/doubles/MapHost.h"
#include "graphics/ResourceManager.h"
#include "editor/PatchBrowser.h"

namespace {

using namespace tw;

// A folder of 300 patch files and a few others, made once and removed at exit.
struct Folder {
    std::filesystem::path path;
    Folder() {
        char pattern[] = "/tmp/tidewake-bench-XXXXXX";
        path = ::mkdtemp(pattern);
        for (int i = 0; i < 300; ++i) std::ofstream(path / ("Patch " + std::to_string(i * 7919 % 1000) + ".tidewake")) << "x";
        for (int i = 0; i < 20; ++i) std::ofstream(path / ("notes " + std::to_string(i) + ".txt")) << "x";
        std::filesystem::create_directory(path / "More");
    }
    ~Folder() { std::filesystem::remove_all(path); }
    Path folder() const { return Path::parse(path.string() + "/"); }
};

Folder& folder() {
    static Folder f;
    return f;
}

void freshListing(benchmark::State& state) {
    PatchBrowser browser("tidewake");
    const Path where = folder().folder();
    for (auto _ : state) benchmark::DoNotOptimize(browser.listFolder(where, false).size());
}
BENCHMARK(freshListing);

void neighbourFromCache(benchmark::State& state) {
    PatchBrowser browser("tidewake");
    const Path where = folder().folder();
    const Path middle = browser.listFolder(where, false)[150];
    for (auto _ : state) benchmark::DoNotOptimize(browser.nextPatchFile(middle, true, false, true));
}
BENCHMARK(neighbourFromCache);

void plainDialogCopy(benchmark::State& state) {
    std::vector<std::uint32_t> from(520 * 398, 0xFF102436), to(from.size());
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size() * 4);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(plainDialogCopy);

void dialogRepaint(benchmark::State& state) {
    ResourceManager resources("Tidewake", "/nonexistent/");
    MapHost host(&resources);
    CushyView root(host, IntRect{0, 0, 100, 100});
    FileDialogSetup setup;
    setup.title = "Open Tidewake Patch";
    setup.typeLabel = "Tidewake Patch";
    setup.extension = "tidewake";
    setup.allFilesLabel = "All Files";
    setup.script = "AddPushButton(11223, \"Factory Presets\");\nAddPushButton(11224, \"User Presets\");\n";
    setup.startFolder = folder().folder();
    FileDialog dialog(HelperFonts::load(host, root), setup);
    dialog.keyDown(KeyEvent{Key::pageDown});
    Raster32 canvas(IntRect{0, 0, dialog.width(), dialog.height()}, true);
    for (auto _ : state) {
        dialog.paint(PixelTile{canvas.at(0, 0), canvas.stride(), 0, 0, dialog.width(), dialog.height()});
        benchmark::ClobberMemory();
    }
}
BENCHMARK(dialogRepaint);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    tw::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (const double fresh = reporter.times["freshListing"]; fresh > 0)
        std::printf("neighbourFromCache %8.4f x freshListing (300 patch files)\n",
                    reporter.times["neighbourFromCache"] / fresh);
    if (const double copy = reporter.times["plainDialogCopy"]; copy > 0)
        std::printf("dialogRepaint %8.2f x plainDialogCopy (the open dialog's whole window)\n",
                    reporter.times["dialogRepaint"] / copy);
    benchmark::Shutdown();
    return 0;
}
