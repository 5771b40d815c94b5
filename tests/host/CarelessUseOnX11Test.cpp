// The editor as careless users and hosts meet it on a real X server: menus that must give
// the host back its loop whatever the user does next, with a window manager and without;
// a host that closes from another thread while a menu is open; the X server going away;
// and our library unloaded while the host goes on using X.
#include <gtest/gtest.h>

#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "cushy/CushyView.h"
#include "cushy/HelperLook.h"
#include "cushy/PopupMenu.h"
#include "cushy/doubles/MapHost.h"
#include "graphics/ResourceManager.h"
#include "vst2/Entry.h"
#include "platform/Exception.h"
#include "platform/X11Window.h"
#include "tests/XServer.h"
#include "tests/platform/TempFolder.h"

namespace tw {
namespace {

// A desktop of the test's own: an Xvfb, with openbox managing it or not. DISPLAY names it.
class Desktop {
public:
    explicit Desktop(bool windowManager) {
        if (xvfb_.display.empty()) return;
        setenv("DISPLAY", xvfb_.display.c_str(), 1);
        display = test::openDisplay();
        if (!display) return;
        // A window manager moves windows in and out of view at its own pace: a focus asked
        // for a moment too early fails, and the manager gives the focus itself anyway.
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
        if (windowManager) {
            wm_ = fork();
            if (wm_ == 0) {
                prctl(PR_SET_PDEATHSIG, SIGTERM);
                const int devnull = open("/dev/null", O_WRONLY);
                dup2(devnull, 1);
                dup2(devnull, 2);
                execlp("openbox", "openbox", "--sm-disable", nullptr);
                _exit(127);
            }
            // The window manager says so on the root window once it manages the screen.
            for (int i = 0; i < 500 && !managed(); ++i) usleep(10000);
            if (!managed()) return;
            // It says so a moment before it takes new windows in: one that maps then is
            // never shown. A probe window shows when it does.
            bool probed = false;
            for (int attempt = 0; attempt < 20 && !probed; ++attempt) {
                const ::Window probe = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 10, 10, 0, 0, 0);
                XMapWindow(display, probe);
                XSync(display, False);
                for (int i = 0; i < 20 && !probed; ++i) {
                    usleep(5000);
                    probed = viewable(probe);
                }
                XDestroyWindow(display, probe);
            }
            if (!probed) return;
        }
        ready = true;
    }
    ~Desktop() {
        if (display) XCloseDisplay(display);
        if (wm_ > 0) {
            kill(wm_, SIGTERM);
            waitpid(wm_, nullptr, 0);
        }
    }

    bool managed() {
        Atom type = None;
        int format = 0;
        unsigned long count = 0, remaining = 0;
        unsigned char* data = nullptr;
        const bool found = XGetWindowProperty(display, DefaultRootWindow(display),
                                              XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False), 0, 1, False,
                                              XA_WINDOW, &type, &format, &count, &remaining, &data) == Success &&
                           data && count == 1;
        if (data) XFree(data);
        return found;
    }

    // A top-level window of another program's, managed when there is a manager; shown,
    // and given the focus.
    ::Window topLevel(int x, int y, int width, int height) {
        XSetWindowAttributes a{};
        a.background_pixel = 0x336699;
        a.event_mask = StructureNotifyMask;
        const ::Window w = XCreateWindow(display, DefaultRootWindow(display), x, y, unsigned(width), unsigned(height), 0,
                                         CopyFromParent, InputOutput, CopyFromParent, CWBackPixel | CWEventMask, &a);
        XMapWindow(display, w);
        XSync(display, False);
        for (int i = 0; i < 500 && !viewable(w); ++i) usleep(10000);
        focus(w);
        return w;
    }
    bool viewable(::Window w) {
        XWindowAttributes wa;
        return XGetWindowAttributes(display, w, &wa) && wa.map_state == IsViewable;
    }
    void focus(::Window w) {
        XSetInputFocus(display, w, RevertToParent, CurrentTime);
        XSync(display, False);
    }
    void toScreen(::Window w, int& x, int& y) {
        ::Window child = 0;
        XTranslateCoordinates(display, w, DefaultRootWindow(display), x, y, &x, &y, &child);
    }

    Display* display = nullptr;
    bool ready = false;

private:
    test::Xvfb xvfb_;
    pid_t wm_ = -1;
};

// The pointer and the keyboard as the user works them: real input through the server
// (XTEST), which grabs and focus decide where it goes.
void user(const std::string& actions) {
    const std::string command = "xdotool " + actions + " >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

struct Painter : WindowClient {
    void paint(const PixelTile& t) override {
        for (std::int32_t y = 0; y < t.height; ++y)
            for (std::int32_t x = 0; x < t.width; ++x) t.pixels[y * t.stride + x] = 0xFF204060;
    }
};

struct Once : TimerHandler {
    std::function<void()> action;
    void timerFired(TimerQueue&, std::uint32_t, std::uint32_t, int) override { action(); }
};

enum class Gesture { escapeFarAway, clickOnDesktop, clickInHostWindow, clickInEditor, hostHides, focusElsewhere, chooseItem };

std::string nameOf(Gesture g) {
    switch (g) {
        case Gesture::escapeFarAway: return "EscapeFarAway";
        case Gesture::clickOnDesktop: return "ClickOnDesktop";
        case Gesture::clickInHostWindow: return "ClickInHostWindow";
        case Gesture::clickInEditor: return "ClickInEditor";
        case Gesture::hostHides: return "HostHides";
        case Gesture::focusElsewhere: return "FocusElsewhere";
        case Gesture::chooseItem: return "ChooseItem";
    }
    return "";
}

class MenuEnds : public ::testing::TestWithParam<std::tuple<bool, Gesture>> {};

// The menu opens inside the host's idle call; what the user does next must end it (or
// choose), so that the call returns. A timer well after the gesture presses Escape on the
// menu directly: the loop is bounded, and the test knows when the gesture did nothing.
TEST_P(MenuEnds, WhateverTheUserDoesNext) {
    const bool windowManager = std::get<0>(GetParam());
    const Gesture gesture = std::get<1>(GetParam());
    Desktop desktop(windowManager);
    if (!desktop.ready) GTEST_SKIP() << "No Xvfb" << (windowManager ? " with openbox" : "") << " could be started";
    Display* d = desktop.display;
    const ::Window other = desktop.topLevel(900, 700, 200, 150);
    const ::Window hostWindow = desktop.topLevel(100, 100, 700, 560);

    ResourceManager resources("Tidewake", std::string(TIDEWAKE_BINARY_DIR) + "/");
    MapHost host(&resources);
    host.reportsErrors = false;
    auto root = std::make_shared<CushyView>(host, IntRect{0, 0, 525, 475});
    host.root = root.get();
    PopupMenu menu(HelperFonts::load(host, *root), {{"&First"}, {"&Second"}, {"&Third"}});

    Painter painter;
    auto editor = EditorWindow::open(painter, hostWindow, 525, 475);
    for (int i = 0; i < 500 && editor->framesShown() == 0; ++i) {
        editor->idle();
        usleep(2000);
    }
    auto& session = *static_cast<X11Window&>(*editor).session();

    // The pointer rests on the editor, as after the click that opened the menu.
    int ex = 20, ey = 20;
    desktop.toScreen(hostWindow, ex, ey);
    user("mousemove " + std::to_string(ex) + " " + std::to_string(ey));

    Once act, rescue;
    bool rescued = false;
    act.action = [&] {
        ASSERT_EQ(session.windows.size(), 2u) << "the menu is open";
        const ::Window popup = session.windows[1]->id();
        int x = 0, y = 0;
        switch (gesture) {
            case Gesture::escapeFarAway:
                user("mousemove 1250 1000 key Escape");
                break;
            case Gesture::clickOnDesktop:
                user("mousemove 1250 1000 click 1");
                break;
            case Gesture::clickInHostWindow:
                x = 650, y = 530;
                desktop.toScreen(hostWindow, x, y);
                user("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
                break;
            case Gesture::clickInEditor:
                x = 500, y = 450;
                desktop.toScreen(hostWindow, x, y);
                user("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
                break;
            case Gesture::hostHides:
                XUnmapWindow(d, hostWindow);
                XSync(d, False);
                break;
            case Gesture::focusElsewhere:
                desktop.focus(other);
                break;
            case Gesture::chooseItem: {
                const IntRect r = menu.itemRect(1);
                x = r.left + 10, y = r.top + r.height / 2;
                desktop.toScreen(popup, x, y);
                user("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
                break;
            }
        }
    };
    rescue.action = [&] {
        if (session.windows.size() < 2) return;
        rescued = true;
        XEvent e{};
        e.xkey.type = KeyPress;
        e.xkey.window = session.windows[1]->id();
        e.xkey.root = DefaultRootWindow(d);
        e.xkey.keycode = XKeysymToKeycode(d, XK_Escape);
        e.xkey.same_screen = True;
        XSendEvent(d, e.xkey.window, False, NoEventMask, &e);
        XFlush(d);
    };
    editor->timers().add(&act, 1, 200);
    editor->timers().add(&rescue, 2, 4000);
    const std::int32_t choice = menu.track(*editor, 40, 40);
    EXPECT_FALSE(rescued) << "the menu stayed open after the gesture";
    EXPECT_EQ(choice, gesture == Gesture::chooseItem ? 1 : -1);
    EXPECT_EQ(session.windows.size(), 1u) << "the menu's window went with it";
    editor->timers().cancel(&rescue);
    editor.reset();
    XDestroyWindow(d, hostWindow);
    XDestroyWindow(d, other);
}

INSTANTIATE_TEST_SUITE_P(
    CarelessUse, MenuEnds,
    ::testing::Combine(::testing::Values(false, true),
                       ::testing::Values(Gesture::escapeFarAway, Gesture::clickOnDesktop, Gesture::clickInHostWindow,
                                         Gesture::clickInEditor, Gesture::hostHides, Gesture::focusElsewhere,
                                         Gesture::chooseItem)),
    [](const auto& info) {
        return (std::get<0>(info.param) ? std::string("WithOpenbox_") : std::string("Bare_")) +
               nameOf(std::get<1>(info.param));
    });

// ---- the real plug-in, as a host would load it ----

vst2::intptr quietHost(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

::Window hostParent(Display* d) {
    XSetWindowAttributes a{};
    a.background_pixel = 0xFF00FF;
    a.override_redirect = True;
    const ::Window w = XCreateWindow(d, DefaultRootWindow(d), 0, 0, 525, 475, 0, CopyFromParent, InputOutput,
                                     CopyFromParent, CWBackPixel | CWOverrideRedirect, &a);
    XMapWindow(d, w);
    XSync(d, False);
    return w;
}

vst2::intptr call(vst2::AEffect* e, vst2::int32 opcode, void* ptr = nullptr) {
    return e->dispatcher(e, opcode, 0, 0, ptr, 0.0f);
}

// The menu button of the main layout, in the editor's pixels.
constexpr int menuButtonX = 501, menuButtonY = 20;

// Whether a window of ours that the window manager would manage (a dialog) is shown.
bool dialogShown() {
    Display* d = test::openDisplay();
    ::Window rootOut = 0, up = 0, *children = nullptr;
    unsigned count = 0;
    bool shown = false;
    XQueryTree(d, DefaultRootWindow(d), &rootOut, &up, &children, &count);
    for (unsigned i = 0; i < count; ++i) {
        XWindowAttributes wa;
        if (XGetWindowAttributes(d, children[i], &wa) && wa.map_state == IsViewable && !wa.override_redirect)
            shown = true;
    }
    if (children) XFree(children);
    XCloseDisplay(d);
    return shown;
}

// The user opens the main menu, and for the second case chooses "Open..." from it: the
// host's idle call runs the menu's loop, then the file dialog's. Another thread of the
// host closes the editor and the instance meanwhile.
TEST(CarelessHost, ClosingFromAnotherThreadWhileAMenuOrTheFileDialogIsOpenEndsItFirst) {
    if (!test::haveDisplay()) GTEST_SKIP() << test::noDisplayMessage;
    for (const bool fileDialog : {false, true}) {
        const int code = test::runInChild([fileDialog] {
            ::alarm(60);
            Display* d = test::openDisplay();
            const ::Window parent = hostParent(d);
            vst2::AEffect* effect = VSTPluginMain(&quietHost);
            call(effect, vst2::effEditOpen, reinterpret_cast<void*>(parent));
            for (int i = 0; i < 20; ++i) {
                call(effect, vst2::effEditIdle);
                usleep(5000);
            }
            std::atomic<bool> closing{false}, inIdle{false}, held{false}, dialog{false};
            std::atomic<long> idleSince{0};
            const auto now = [] {
                return long(std::chrono::duration_cast<std::chrono::milliseconds>(
                                std::chrono::steady_clock::now().time_since_epoch())
                                .count());
            };
            std::thread careless([&] {
                // Once an idle call has been held a while, the menu is up.
                for (int i = 0; i < 1000 && !held.load(); ++i) {
                    held.store(inIdle.load() && now() - idleSince.load() > 300);
                    usleep(5000);
                }
                if (held.load() && fileDialog) {
                    std::system("xdotool mousemove 515 199 click 1 >/dev/null 2>&1");
                    for (int i = 0; i < 100 && !dialog.load(); ++i) {
                        usleep(20000);
                        dialog.store(dialogShown());
                    }
                }
                closing.store(true);
                call(effect, vst2::effEditClose);
                call(effect, vst2::effClose);
            });
            std::system(("xdotool mousemove " + std::to_string(menuButtonX) + " " + std::to_string(menuButtonY) +
                         " click 1 >/dev/null 2>&1")
                            .c_str());
            for (int i = 0; i < 2000 && !closing.load(); ++i) {
                idleSince.store(now());
                inIdle.store(true);
                call(effect, vst2::effEditIdle);
                inIdle.store(false);
                usleep(2000);
            }
            careless.join();
            // The editor's window went with the close.
            ::Window rootOut = 0, up = 0, *children = nullptr;
            unsigned count = 0;
            XQueryTree(d, parent, &rootOut, &up, &children, &count);
            if (children) XFree(children);
            XDestroyWindow(d, parent);
            XCloseDisplay(d);
            if (!held.load() || (fileDialog && !dialog.load())) return 5;
            return count == 0 && !dialogShown() ? 0 : 2;
        });
        EXPECT_EQ(code, 0) << (fileDialog ? "file dialog" : "menu")
                           << ": 5: it never opened; 2: a window of the editor stayed; 128 + the signal when it crashed";
    }
}

TEST(CarelessHost, TheXServerGoingAwayEndsTheEditorNotTheHost) {
    // libX11 1.8's path back from an IO error unlocks its display lock once too often,
    // which the thread sanitizer reports however the caller behaves.
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "libX11's IO error return path trips the thread sanitizer";
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
    GTEST_SKIP() << "libX11's IO error return path trips the thread sanitizer";
#endif
#endif
    const int code = test::runInChild([] {
        ::alarm(60);
        auto server = std::make_unique<test::Xvfb>();
        if (server->display.empty()) return 77;
        setenv("DISPLAY", server->display.c_str(), 1);
        Display* d = test::openDisplay();
        const ::Window parent = hostParent(d);
        vst2::AEffect* effect = VSTPluginMain(&quietHost);
        if (call(effect, vst2::effEditOpen, reinterpret_cast<void*>(parent)) != 1) return 3;
        for (int i = 0; i < 20; ++i) {
            call(effect, vst2::effEditIdle);
            usleep(5000);
        }
        server.reset();
        // The host does not notice at once; it goes on calling, then closes.
        for (int i = 0; i < 20; ++i) {
            call(effect, vst2::effEditIdle);
            usleep(5000);
        }
        call(effect, vst2::effEditClose);
        call(effect, vst2::effClose);
        return 0;  // the host's own connection is dead too: it is left alone
    });
    if (code == 77) GTEST_SKIP() << "No Xvfb could be started";
    EXPECT_EQ(code, 0) << "1 when Xlib's handler ended the process";
}

// The host's own error handlers: the one it had before loading us, and one it installs
// over ours later, which hands on what is not its own to the one it found.
int hostErrors = 0, chainedErrors = 0;
XErrorHandler underneath = nullptr;
int hostHandler(Display*, XErrorEvent*) {
    ++hostErrors;
    return 0;
}
int chainingHandler(Display* d, XErrorEvent* e) {
    ++chainedErrors;
    return underneath ? underneath(d, e) : 0;
}

// Opens and closes the editor of a freshly loaded copy of the library, and unloads it;
// `whileOpen` runs while the editor is open.
int openAndUnload(Display* d, ::Window parent, const std::function<void()>& whileOpen) {
    void* library = dlopen(TIDEWAKE_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    if (!library) return 10;
    auto entry = reinterpret_cast<vst2::AEffect* (*)(vst2::HostCallback)>(dlsym(library, "VSTPluginMain"));
    if (!entry) return 11;
    vst2::AEffect* effect = entry(&quietHost);
    if (call(effect, vst2::effEditOpen, reinterpret_cast<void*>(parent)) != 1) return 12;
    call(effect, vst2::effEditIdle);
    XSync(d, False);
    whileOpen();
    call(effect, vst2::effEditClose);
    call(effect, vst2::effClose);
    dlclose(library);
    return 0;
}

// A request that fails on the host's connection.
void provokeError(Display* d) {
    XMapWindow(d, ::Window(0x7FFFFFF0));
    XSync(d, False);
}

TEST(CarelessHost, UnloadingGivesTheHostItsErrorHandlerBack) {
    if (!test::haveDisplay()) GTEST_SKIP() << test::noDisplayMessage;
    const int code = test::runInChild([] {
        ::alarm(60);
        Display* d = test::openDisplay();
        const ::Window parent = hostParent(d);
        XSetErrorHandler(hostHandler);
        if (int failed = openAndUnload(d, parent, [] {})) return failed;
        const XErrorHandler current = XSetErrorHandler(hostHandler);
        if (current != hostHandler) return 2;
        provokeError(d);
        if (hostErrors != 1) return 3;

        // The host puts a handler over ours while the editor is open: ours stays called
        // through it after the unload, and must still be there.
        if (int failed = openAndUnload(d, parent, [] { underneath = XSetErrorHandler(chainingHandler); }))
            return failed;
        provokeError(d);
        if (chainedErrors != 1 || hostErrors != 2) return 4;
        return 0;
    });
    EXPECT_EQ(code, 0) << "2: our handler left behind; 4: the chain lost an error; 128 + the signal when it crashed";
}

}  // namespace
}  // namespace tw
