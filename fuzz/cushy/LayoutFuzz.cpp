// Builds a view tree from an arbitrary layout text, as written and zoomed, and lives with it for a while: refresh,
// paint, moves and presses, and a second of timers. Every fault must be one of the
// system's own exceptions; no crash, no hang, no leak. Nothing is launched.
#include "cushy/CushyView.h"
#include "cushy/CushyWindowClient.h"
#include "cushy/HintWindow.h"
#include "cushy/doubles/MapHost.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/ResourceManager.h"
#include "platform/Exception.h"
#include "platform/Launcher.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static tw::ResourceManager resources("Tidewake", "/nonexistent/");
    static const bool quiet = [] {
        tw::setLaunchSeam([](tw::LaunchKind, const std::string&) {});
        return true;
    }();
    (void)quiet;
    tw::MapHost host(&resources);
    host.layouts["fuzz"] = std::string(reinterpret_cast<const char*>(data), size);
    host.layouts["other"] = "views: { { type: rectangle, fill: red } }";
    host.variables["modal"] = "other";
    host.variables["self"] = "fuzz";
    auto root = std::make_shared<tw::CushyView>(host, tw::IntRect{0, 0, 64, 48});
    // Every other input is read zoomed too, so that the zoom's rewriting meets every text.
    root->setZoom(tw::Zoom(size % 2 == 0 ? 100 : 150));
    host.root = root.get();
    root->setHintWindow(std::make_shared<tw::HintWindow>(resources.getFont("{}"), tw::Zoom()));
    tw::CushyWindowClient client(root);
    tw::WindowDouble window(client, 64, 48);
    // A user who closes every menu and box at once.
    window.user = [](tw::WindowDouble& editor) {
        if (tw::WindowDouble* helper = editor.topHelper()) helper->key(tw::Key::escape);
    };
    try {
        root->load("fuzz");
    } catch (const tw::Exception&) {
    }
    client.attach(&window);
    root->refresh();
    window.paintAll();
    window.mouseMove(10, 10);
    window.mouseDown(10, 10);
    window.mouseMove(30, 20, 1);
    window.mouseUp(30, 20);
    window.mouseWheel(10, 10, 2);
    window.key(tw::Key::character, U'x');
    window.advance(1000);
    window.paintInvalid();
    client.attach(nullptr);
    return 0;
}
