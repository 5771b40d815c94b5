// cushy-render: runs a layout text in memory and writes what it shows as a PNG, so that a
// layout can be looked at without a plug-in or a host. Variables are set on the command
// line; the layouts beside the file are there by name for modal layouts; the product's
// pictures, fonts and string table come from the embedded resources. A menu can be shown
// open (the "popup" action with the given params) and the pointer placed to show a hint.
// Mouse steps (press, drag, release at points, in the order given) and waits run before
// the picture is taken, so that a pressed button or a turned knob can be seen.
//
//   cushy-render main.cushy out.png [--size 525x475] [--set name=value]... [--mouse x,y]
//                [--popup "items: { ... }"] [--press x,y] [--drag x,y] [--release x,y]
//                [--wait ms] [--scale S]
// With --scale, the layout is drawn at the nearest zoom (1.25 for 125 %): the size, points and
// steps are the layout's own, at 100 %, and the picture is at the zoom.
#include "cushy/CushyView.h"
#include "cushy/CushyWindowClient.h"
#include "cushy/HintWindow.h"
#include "cushy/doubles/MapHost.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/PNGWriter.h"
#include "graphics/ResourceManager.h"
#include "platform/Exception.h"
#include "platform/FileObject.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <optional>

namespace {

// One injected step: a button going down, a move with it held, its release, or time passing.
struct Step {
    enum Kind { press, drag, release, wait } kind;
    std::int32_t x = 0, y = 0;
};

struct Options {
    std::filesystem::path layout;
    std::string output;
    std::int32_t width = 525, height = 475;
    std::vector<std::pair<std::string, std::string>> variables;
    std::optional<std::pair<std::int32_t, std::int32_t>> mouse;
    std::optional<std::string> popup;
    std::vector<Step> steps;
    double scale = 1;
};

bool parseOptions(int argc, char** argv, Options& options) {
    std::vector<std::string> plain;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--size" && hasValue) {
            if (std::sscanf(argv[++i], "%dx%d", &options.width, &options.height) != 2 || options.width <= 0 ||
                options.height <= 0 || options.width > 8192 || options.height > 8192)
                return false;
        } else if (arg == "--set" && hasValue) {
            const std::string setting = argv[++i];
            const std::size_t equals = setting.find('=');
            if (equals == std::string::npos) return false;
            options.variables.emplace_back(setting.substr(0, equals), setting.substr(equals + 1));
        } else if (arg == "--mouse" && hasValue) {
            int x, y;
            if (std::sscanf(argv[++i], "%d,%d", &x, &y) != 2) return false;
            options.mouse.emplace(x, y);
        } else if ((arg == "--press" || arg == "--drag" || arg == "--release") && hasValue) {
            Step step{arg == "--press" ? Step::press : arg == "--drag" ? Step::drag : Step::release};
            if (std::sscanf(argv[++i], "%d,%d", &step.x, &step.y) != 2) return false;
            options.steps.push_back(step);
        } else if (arg == "--wait" && hasValue) {
            Step step{Step::wait};
            if (std::sscanf(argv[++i], "%d", &step.x) != 1 || step.x < 0) return false;
            options.steps.push_back(step);
        } else if (arg == "--popup" && hasValue) {
            options.popup = argv[++i];
        } else if (arg == "--scale" && hasValue) {
            if (std::sscanf(argv[++i], "%lf", &options.scale) != 1 || !(options.scale >= 0.5 && options.scale <= 8)) return false;
        } else if (arg.starts_with("--")) {
            return false;
        } else {
            plain.push_back(arg);
        }
    }
    if (plain.size() != 2) return false;
    options.layout = plain[0];
    options.output = plain[1];
    return true;
}

int render(const Options& options) {
    std::error_code ignored;
    const std::filesystem::path binary = std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
    tw::ResourceManager resources("Tidewake", binary.string() + "/");
    tw::MapHost host(&resources);
    host.strings.load(resources, "Tidewake");
    const std::filesystem::path folder = options.layout.parent_path().empty() ? "." : options.layout.parent_path();
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".cushy") continue;
        host.layouts[entry.path().stem().string()] = tw::readWholeFile(tw::Path::parse(entry.path().string()));
    }
    for (const auto& [name, value] : options.variables) host.variables[name] = value;

    const tw::Zoom zoom(std::int32_t(options.scale * 100 + 0.5));
    const std::int32_t width = zoom.length(options.width), height = zoom.length(options.height);
    auto at = [&](std::int32_t units) { return zoom.length(units); };
    auto root = std::make_shared<tw::CushyView>(host, tw::IntRect{0, 0, width, height});
    root->setZoom(zoom);
    host.root = root.get();
    host.reportsErrors = false;
    const std::string hintFont = "{ color: 0xFFE8F1F5, zoom: " + std::to_string(zoom.percent()) + " }";
    root->setHintWindow(std::make_shared<tw::HintWindow>(resources.getFont(hintFont), zoom));
    tw::CushyWindowClient client(root);
    tw::WindowDouble window(client, width, height);
    root->load(options.layout.stem().string());
    client.attach(&window);
    root->refresh();
    window.advance(0);
    for (const Step& step : options.steps) {
        switch (step.kind) {
            case Step::press:
                window.mouseMove(at(step.x), at(step.y));
                window.mouseDown(at(step.x), at(step.y));
                break;
            case Step::drag: window.mouseMove(at(step.x), at(step.y), 1u << tw::leftButton); break;
            case Step::release: window.mouseUp(at(step.x), at(step.y)); break;
            case Step::wait:
                // Time passes with the window shown: views that start at their first paint start.
                window.paintInvalid();
                window.advance(std::uint32_t(step.x));
                break;
        }
    }
    if (options.mouse) {
        window.mouseMove(at(options.mouse->first), at(options.mouse->second));
        window.advance(tw::HintWindow::showDelay);
    }

    tw::Raster32 picture;
    bool shot = false;
    // Errors go to standard error; a message box would hide the layout.
    window.user = [&](tw::WindowDouble& editor) {
        if (!shot) {
            picture = editor.screenshot();
            shot = true;
        }
        editor.topHelper()->key(tw::Key::escape);
    };
    if (options.popup) root->runAction("popup", *options.popup);
    for (const std::string& error : host.errors) std::cerr << "cushy-render: " << error << "\n";
    if (!host.errors.empty()) return 1;
    if (!shot) picture = window.screenshot();
    tw::writePNG(options.output, picture);
    client.attach(nullptr);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parseOptions(argc, argv, options)) {
        std::cerr << "usage: cushy-render layout.cushy out.png [--size WxH] [--set name=value]... [--mouse x,y] [--scale S]"
                     " [--popup params]"
                     " [--press x,y] [--drag x,y] [--release x,y] [--wait ms]\n";
        return 2;
    }
    try {
        return render(options);
    } catch (const std::exception& e) {
        std::cerr << "cushy-render: " << e.what() << "\n";
        return 1;
    }
}
