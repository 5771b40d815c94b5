// The view tree in real X windows: the demo layout in the editor window under an Xvfb,
// and its menu in a helper window with the modal loop, closed from the keyboard. The
// boundary between the window and the view tree, exercised end to end.
#include <gtest/gtest.h>

#include <X11/Xutil.h>
#include <X11/keysym.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "cushy/CushyView.h"
#include "cushy/CushyWindowClient.h"
#include "cushy/doubles/MapHost.h"
#include "graphics/PNGWriter.h"
#include "graphics/ResourceManager.h"
#include "platform/X11Window.h"
#include "tests/XServer.h"

using namespace tw;

namespace {

std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

// Reads a rectangle of the screen back from the server.
Raster32 screenshot(Display* d, int x, int y, int width, int height) {
    XImage* image = XGetImage(d, DefaultRootWindow(d), x, y, unsigned(width), unsigned(height), AllPlanes, ZPixmap);
    Raster32 out(IntRect{0, 0, width, height}, true);
    for (int row = 0; row < height; ++row)
        for (int col = 0; col < width; ++col) *out.at(col, row) = 0xFF000000u | std::uint32_t(XGetPixel(image, col, row));
    XDestroyImage(image);
    return out;
}

struct Once : TimerHandler {
    std::function<void()> action;
    void timerFired(TimerQueue&, std::uint32_t, std::uint32_t, int) override { action(); }
};

TEST(CushyOnX11, TheDemoLayoutAndItsMenuRunInRealWindows) {
    if (!test::haveDisplay()) GTEST_SKIP() << test::noDisplayMessage;
    Display* display = test::openDisplay();
    XSetWindowAttributes a{};
    a.background_pixel = 0xFF00FF;
    a.override_redirect = True;
    const ::Window parent = XCreateWindow(display, DefaultRootWindow(display), 0, 0, 525, 475, 0, CopyFromParent,
                                          InputOutput, CopyFromParent, CWBackPixel | CWOverrideRedirect, &a);
    XMapWindow(display, parent);
    XSync(display, False);

    ResourceManager resources("Tidewake", std::string(TIDEWAKE_BINARY_DIR) + "/");
    MapHost host(&resources);
    host.strings.load(resources, "Tidewake");
    for (const char* name : {"Demo_main", "Demo_about"})
        host.layouts[name] = readText(std::string(TIDEWAKE_TEST_DATA) + "/cushy/" + name + ".cushy");
    host.variables["patch.name"] = "MW Dr Dub";
    host.reportsErrors = false;
    auto root = std::make_shared<CushyView>(host, IntRect{0, 0, 525, 475});
    host.root = root.get();
    CushyWindowClient client(root);
    {
        auto window = EditorWindow::open(client, parent, 525, 475);
        root->load("Demo_main");
        client.attach(window.get());
        root->refresh();
        for (int i = 0; i < 200 && window->framesShown() < 2; ++i) {
            window->idle();
            usleep(2000);
        }
        const Raster32 editor = screenshot(display, 0, 0, 525, 475);
        std::filesystem::create_directories(std::string(TIDEWAKE_BINARY_DIR) + "/pictures/host");
        writePNG(std::string(TIDEWAKE_BINARY_DIR) + "/pictures/host/cushy-on-x11.png", editor);
        int background = 0;
        for (int y = 0; y < 475; y += 5)
            for (int x = 0; x < 525; x += 5) background += (*editor.at(x, y) & 0xFFFFFF) == 0xFF00FF;
        EXPECT_EQ(background, 0) << "the layout covers the whole window";

        // The menu opens in a helper window and runs the modal loop; a timer of the
        // editor looks at it and presses Escape on it.
        auto& session = *static_cast<X11Window&>(*window).session();
        Once look;
        bool sawMenu = false;
        look.action = [&] {
            ASSERT_EQ(session.windows.size(), 2u);
            X11Window& menu = *session.windows[1];
            XWindowAttributes wa;
            XGetWindowAttributes(display, menu.id(), &wa);
            writePNG(std::string(TIDEWAKE_BINARY_DIR) + "/pictures/host/cushy-menu-on-x11.png",
                     screenshot(display, wa.x, wa.y, wa.width, wa.height));
            sawMenu = wa.map_state == IsViewable;
            XEvent e{};
            e.xkey.type = KeyPress;
            e.xkey.window = menu.id();
            e.xkey.root = DefaultRootWindow(display);
            e.xkey.keycode = XKeysymToKeycode(display, XK_Escape);
            e.xkey.same_screen = True;
            XSendEvent(display, menu.id(), False, NoEventMask, &e);
            XFlush(display);
        };
        window->timers().add(&look, 1, 150);
        root->runAction("popup", R"(position: { 190, 32 }, items: { { "&Undo", undo }, -, { "&About", nop } })");
        EXPECT_TRUE(sawMenu);
        EXPECT_EQ(session.windows.size(), 1u) << "the menu's window went when it closed";
        EXPECT_TRUE(host.errors.empty()) << (host.errors.empty() ? "" : host.errors.front());
        client.attach(nullptr);
    }
    XDestroyWindow(display, parent);
    XCloseDisplay(display);
}

}  // namespace
