// Patch files with the editor in a real X window, as a user meets them: the patch menu
// over the built factory patches, a choice that loads one, stepping to the next file, and
// a save whose file the open dialog reads back, the menu and the dialogs in helper windows
// of their own, answered with keys sent by the editor's own timer.
#include <gtest/gtest.h>

#include <X11/Xutil.h>
#include <X11/keysym.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "product/TidewakeEditorFactory.h"
#include "cushy/StringTable.h"
#include "graphics/PNGWriter.h"
#include "graphics/ResourceManager.h"
#include "editor/BrowserDirectories.h"
#include "editor/ModelController.h"
#include "patch/ModelFactory.h"
#include "product/TidewakeDescriptor.h"
#include "platform/TempFolder.h"
#include "platform/X11Window.h"
#include "tests/XServer.h"
#include "tests/host/TestHost.h"

using namespace tw;

namespace {

Raster32 screenshot(Display* d, ::Window window) {
    XWindowAttributes wa;
    XGetWindowAttributes(d, window, &wa);
    XImage* image = XGetImage(d, window, 0, 0, unsigned(wa.width), unsigned(wa.height), AllPlanes, ZPixmap);
    Raster32 out(IntRect{0, 0, wa.width, wa.height}, true);
    for (int row = 0; row < wa.height; ++row)
        for (int col = 0; col < wa.width; ++col) *out.at(col, row) = 0xFF000000u | std::uint32_t(XGetPixel(image, col, row));
    XDestroyImage(image);
    return out;
}

void sendKey(Display* d, ::Window window, KeySym key) {
    for (int type : {KeyPress, KeyRelease}) {
        XEvent e{};
        e.xkey.type = type;
        e.xkey.window = window;
        e.xkey.root = DefaultRootWindow(d);
        e.xkey.keycode = XKeysymToKeycode(d, key);
        e.xkey.same_screen = True;
        XSendEvent(d, window, False, NoEventMask, &e);
    }
    XFlush(d);
}

// Looks at the helper window once it has painted, saves its picture, and answers it with
// keys; the editor's timer queue runs it inside the modal loop.
struct Answer : TimerHandler {
    Display* display;
    X11Session* session;
    std::string picture;
    std::vector<KeySym> keys;
    bool seen = false;
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int id) override {
        if (session->windows.size() < 2 || session->windows[1]->framesShown() < 1) {
            queue.schedule(this, id, due + 20);
            return;
        }
        const ::Window helper = session->windows[1]->id();
        writePNG(std::string(TIDEWAKE_BINARY_DIR) + "/pictures/host/" + picture, screenshot(display, helper));
        seen = true;
        for (KeySym key : keys) sendKey(display, helper, key);
    }
};

TEST(PatchFilesOnX11, TheMenuListsTheFactoryPatchesAndASavedFileOpensAgain) {
    if (!test::haveDisplay()) GTEST_SKIP() << test::noDisplayMessage;
    const Path factory = Path::parse(std::string(TIDEWAKE_BINARY_DIR) + "/Tidewake Patches/");
    ASSERT_EQ(factory.kind(), Path::Kind::folder) << "the build installs the factory patches beside the library";
    Display* display = test::openDisplay();
    XSetWindowAttributes a{};
    a.override_redirect = True;
    const ::Window parent = XCreateWindow(display, DefaultRootWindow(display), 0, 0, 525, 475, 0, CopyFromParent,
                                          InputOutput, CopyFromParent, CWOverrideRedirect, &a);
    XMapWindow(display, parent);
    XSync(display, False);
    std::filesystem::create_directories(std::string(TIDEWAKE_BINARY_DIR) + "/pictures/host");

    static ResourceManager resources("Tidewake", std::string(TIDEWAKE_BINARY_DIR) + "/");
    StringTable strings;
    strings.load(resources, "Tidewake");
    test::TestHost host;
    Instance& instance = host.instance();
    test::TempFolder temp;
    {
        auto controller = tidewakeEditor().createController(instance, resources, strings);
        auto window = EditorWindow::open(controller->client(), parent, 525, 475);
        controller->open(window.get());
        CushyView& view = controller->rootView();
        auto name = [&] { return controller->getVariable(view, "patch.name"); };
        Answer answer;
        answer.display = display;
        answer.session = static_cast<X11Window&>(*window).session().get();
        auto run = [&](const std::string& action, const std::string& picture, std::vector<KeySym> keys) {
            answer.picture = picture;
            answer.keys = std::move(keys);
            answer.seen = false;
            window->timers().add(&answer, 1, 50);
            controller->perform(view, action, "");
            EXPECT_TRUE(answer.seen) << action;
        };

        // An unsaved patch: the menu shows the folder last opened from, the factory's.
        saveBrowserDirectories("TidewakePatches", factory, Path());
        run("choosePatch", "patch-menu-on-x11.png", {XK_Down, XK_Down, XK_Down, XK_Return});
        EXPECT_EQ(name(), "MW Dazzle Fo Shazzle") << "the second factory file, in the paths' order";
        controller->perform(view, "switchPatch", "{ step: 1 }");
        EXPECT_EQ(name(), "MW Dr Dub");
        controller->perform(view, "switchPatch", "{ step: -1 }");
        controller->perform(view, "switchPatch", "{ step: -1 }");
        EXPECT_EQ(name(), "MW Barberup Phase");

        // Saving starts in the current patch's folder: a copy in a folder of the test's own.
        std::filesystem::copy_file(std::string(TIDEWAKE_BINARY_DIR) + "/Tidewake Patches/MW Dr Dub.tidewake",
                                   temp.path / "Dub.tidewake");
        controller->openPatchFile(Path::parse(temp.str() + "Dub.tidewake"));
        controller->setVariable(view, "params.wetMix", "0.3125", false);
        run("savePatch", "save-dialog-on-x11.png", {XK_2, XK_Return});
        EXPECT_EQ(name(), "Dub2");
        ASSERT_TRUE(std::filesystem::exists(temp.path / "Dub2.tidewake"));

        controller->perform(view, "initPatch", "");
        saveBrowserDirectories("TidewakePatches", Path::parse(temp.str()), Path());
        run("openPatch", "open-dialog-on-x11.png", {XK_Down, XK_Down, XK_Return});
        EXPECT_EQ(name(), "Dub2");
        EXPECT_FLOAT_EQ(instance.getParameter(instance.getCurrentProgram(), Param::wetMix), 0.3125f);
        controller->close();
    }
    XDestroyWindow(display, parent);
    XCloseDisplay(display);
}

}  // namespace
