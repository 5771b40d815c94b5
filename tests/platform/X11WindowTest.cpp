// The editor window against a real X server (the one in DISPLAY, or an Xvfb the test
// starts): what reaches the screen, which rectangles are painted, the events that reach
// the client, the capture, helper windows and the modal loop.
// GoogleTest first: Xlib defines names such as None and Bool as macros.
#include <gtest/gtest.h>

#include "platform/X11Window.h"

#include <X11/Xutil.h>
#include <X11/keysym.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/Qvd.h"
#include "platform/X11Clipboard.h"
#include "tests/Failure.h"
#include "tests/XServer.h"

namespace tw {
namespace {

// The host's side: its own connection and the window it gives the editor, placed at
// (x, y) of the screen.
struct Host {
    Display* display = test::openDisplay();
    ::Window parent = 0;

    explicit Host(int x = 0, int y = 0, int width = 525, int height = 475) {
        XSetWindowAttributes a{};
        a.background_pixel = 0xFF00FF;
        a.override_redirect = True;  // placed exactly where asked, window manager or not
        parent = XCreateWindow(display, DefaultRootWindow(display), x, y, unsigned(width), unsigned(height), 0,
                               CopyFromParent, InputOutput, CopyFromParent, CWBackPixel | CWOverrideRedirect, &a);
        XMapWindow(display, parent);
        XSync(display, False);
    }
    ~Host() {
        XDestroyWindow(display, parent);
        XCloseDisplay(display);
    }
    ::Window child() const {
        ::Window root = 0, up = 0, *children = nullptr;
        unsigned count = 0;
        XQueryTree(display, parent, &root, &up, &children, &count);
        ::Window c = count > 0 ? children[0] : 0;
        if (children) XFree(children);
        return c;
    }
    std::uint32_t pixel(int x, int y) {
        XSync(display, False);
        XImage* image = XGetImage(display, parent, x, y, 1, 1, AllPlanes, ZPixmap);
        const std::uint32_t p = std::uint32_t(XGetPixel(image, 0, 0) & 0xFFFFFF);
        XDestroyImage(image);
        return p;
    }
    // A pointer or key event as the server would send it to `window`.
    void send(::Window window, int type, int x, int y, unsigned state, unsigned detail) {
        XEvent e{};
        e.type = type;
        if (type == KeyPress || type == KeyRelease) {
            e.xkey.window = window;
            e.xkey.root = DefaultRootWindow(display);
            e.xkey.x = x;
            e.xkey.y = y;
            e.xkey.state = state;
            e.xkey.keycode = detail;
            e.xkey.same_screen = True;
        } else if (type == EnterNotify || type == LeaveNotify) {
            e.xcrossing.window = window;
            e.xcrossing.x = x;
            e.xcrossing.y = y;
            e.xcrossing.state = state;
            e.xcrossing.mode = NotifyNormal;
        } else {
            e.xbutton.window = window;
            e.xbutton.root = DefaultRootWindow(display);
            e.xbutton.x = x;
            e.xbutton.y = y;
            e.xbutton.state = state;
            e.xbutton.button = detail;
            e.xbutton.same_screen = True;
        }
        XSendEvent(display, window, False, NoEventMask, &e);
        XFlush(display);
    }
};

// Paints every tile in one colour and writes down what happens to it.
struct Recorder : WindowClient {
    std::uint32_t colour = 0xFF204060;
    std::vector<PixelTile> tiles;
    std::vector<std::string> log;
    Window* window = nullptr;
    bool captureOnDown = false;

    static std::string describe(const char* what, const MouseEvent& e) {
        return std::string(what) + " " + std::to_string(e.x) + "," + std::to_string(e.y) + " b" +
               std::to_string(e.button) + " held" + std::to_string(e.buttons) + (e.shift ? " shift" : "") +
               (e.ctrl ? " ctrl" : "") + (e.alt ? " alt" : "") + (e.wheel ? " wheel" + std::to_string(e.wheel) : "");
    }
    void paint(const PixelTile& t) override {
        tiles.push_back(t);
        for (std::int32_t y = 0; y < t.height; ++y)
            for (std::int32_t x = 0; x < t.width; ++x) t.pixels[y * t.stride + x] = colour;
    }
    void mouseDown(const MouseEvent& e) override {
        log.push_back(describe("down", e));
        if (captureOnDown) window->captureMouse();
    }
    void mouseUp(const MouseEvent& e) override { log.push_back(describe("up", e)); }
    void mouseMove(const MouseEvent& e) override { log.push_back(describe("move", e)); }
    void mouseWheel(const MouseEvent& e) override { log.push_back(describe("wheel", e)); }
    void mouseLeave(std::uint32_t) override { log.push_back("leave"); }
    void captureLost() override { log.push_back("capture lost"); }
    void modifiersChanged(const MouseEvent& e) override { log.push_back(describe("modifiers", e)); }
    bool keyDown(const KeyEvent& e) override {
        log.push_back("key " + std::to_string(int(e.key)) + (e.shift ? " shift" : ""));
        return true;
    }
    void closeRequested() override { log.push_back("close"); }
};

// Runs passes of the window until `done` holds, for at most two seconds.
template <typename Done>
bool pumpUntil(EditorWindow& w, Done done) {
    for (int i = 0; i < 1000 && !done(); ++i) {
        w.idle();
        usleep(2000);
    }
    return done();
}

class X11WindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!test::haveDisplay()) GTEST_SKIP() << test::noDisplayMessage;
    }
};

std::int64_t areaOf(const std::vector<PixelTile>& tiles) {
    std::int64_t sum = 0;
    for (const PixelTile& t : tiles) sum += std::int64_t(t.width) * t.height;
    return sum;
}

TEST_F(X11WindowTest, TheFirstPassPaintsTheWholeWindowOnceAndItReachesTheScreen) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    ASSERT_TRUE(pumpUntil(*window, [&] { return window->framesShown() >= 1; }));
    EXPECT_EQ(areaOf(client.tiles), 525 * 475);
    for (const PixelTile& t : client.tiles) {
        EXPECT_GE(t.left, 0);
        EXPECT_GE(t.top, 0);
        EXPECT_LE(t.left + t.width, 525);
        EXPECT_LE(t.top + t.height, 475);
    }
    EXPECT_EQ(host.pixel(0, 0), 0x204060u);
    EXPECT_EQ(host.pixel(524, 474), 0x204060u);
    EXPECT_EQ(host.child(), static_cast<X11Window&>(*window).id());
}

TEST_F(X11WindowTest, InvalidatedRectanglesMergeAndOnlyTheyArePainted) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    ASSERT_TRUE(pumpUntil(*window, [&] { return window->framesShown() >= 1; }));
    client.tiles.clear();
    client.colour = 0xFFC0A080;
    window->invalidate(10, 10, 40, 40);
    window->invalidate(52, 10, 40, 40);  // a neighbour: one rectangle with the first
    window->invalidate(300, 300, 20, 20);
    window->idle();
    EXPECT_EQ(window->framesShown(), 2u);
    EXPECT_EQ(areaOf(client.tiles), 82 * 40 + 20 * 20);
    for (const PixelTile& t : client.tiles) {
        const bool inFirst = t.left >= 10 && t.top >= 10 && t.left + t.width <= 92 && t.top + t.height <= 50;
        const bool inSecond = t.left >= 300 && t.top >= 300 && t.left + t.width <= 320 && t.top + t.height <= 320;
        EXPECT_TRUE(inFirst || inSecond) << t.left << "," << t.top << " " << t.width << "x" << t.height;
    }
    EXPECT_EQ(host.pixel(51, 20), 0xC0A080u);  // the gap between the two went with them
    EXPECT_EQ(host.pixel(319, 319), 0xC0A080u);
    EXPECT_EQ(host.pixel(200, 200), 0x204060u);
    EXPECT_EQ(host.pixel(92, 20), 0x204060u);
    // Nothing invalid, nothing painted.
    client.tiles.clear();
    window->idle();
    EXPECT_TRUE(client.tiles.empty());
    EXPECT_EQ(window->framesShown(), 2u);
}

TEST_F(X11WindowTest, ARectangleOutsideTheWindowPaintsNothing) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    ASSERT_TRUE(pumpUntil(*window, [&] { return window->framesShown() >= 1; }));
    client.tiles.clear();
    window->invalidate(-60, -60, 50, 50);
    window->invalidate(525, 10, 30, 30);
    window->invalidate(10, 475, 30, 30);
    window->invalidate(10, 10, 0, 30);
    window->idle();
    EXPECT_TRUE(client.tiles.empty());
    EXPECT_EQ(window->framesShown(), 1u);
}

TEST_F(X11WindowTest, AnExposureRepaintsWhatWasUncovered) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    ASSERT_TRUE(pumpUntil(*window, [&] { return window->framesShown() >= 1; }));
    client.tiles.clear();
    // The host hides and shows its window: the server asks for all of it again.
    XUnmapWindow(host.display, host.parent);
    XMapWindow(host.display, host.parent);
    XSync(host.display, False);
    ASSERT_TRUE(pumpUntil(*window, [&] { return areaOf(client.tiles) >= 525 * 475; }));
    EXPECT_EQ(areaOf(client.tiles), 525 * 475);
}

TEST_F(X11WindowTest, MouseEventsArriveWithTheirModifiersAndCoordinates) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    const ::Window w = host.child();
    host.send(w, ButtonPress, 30, 40, ShiftMask | ControlMask, Button1);
    host.send(w, MotionNotify, 35, 45, Button1Mask | Mod1Mask, 0);
    host.send(w, ButtonRelease, 36, 46, Button1Mask, Button1);
    host.send(w, ButtonPress, 5, 6, 0, Button4);
    host.send(w, ButtonRelease, 5, 6, 0, Button4);
    host.send(w, ButtonPress, 7, 8, ShiftMask, Button5);
    host.send(w, ButtonPress, 100, 200, 0, Button3);
    host.send(w, ButtonRelease, 100, 200, Button3Mask, Button3);
    host.send(w, ButtonPress, 1, 2, Button3Mask, Button2);
    ASSERT_TRUE(pumpUntil(*window, [&] { return client.log.size() >= 8; }));
    EXPECT_EQ(client.log, (std::vector<std::string>{
                              "down 30,40 b0 held1 shift ctrl",
                              "move 35,45 b0 held1 alt",
                              "up 36,46 b0 held0",
                              "wheel 5,6 b0 held0 wheel1",
                              "wheel 7,8 b0 held0 shift wheel-1",
                              "down 100,200 b1 held2",
                              "up 100,200 b1 held0",
                              "down 1,2 b2 held6",
                          }));
}

TEST_F(X11WindowTest, ModifierKeysRefreshTheHoverAtThePointer) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    const ::Window w = host.child();
    const unsigned shift = XKeysymToKeycode(host.display, XK_Shift_L);
    host.send(w, EnterNotify, 50, 60, 0, 0);
    host.send(w, KeyPress, 50, 60, 0, shift);
    host.send(w, KeyRelease, 50, 60, ShiftMask, shift);
    ASSERT_TRUE(pumpUntil(*window, [&] { return client.log.size() >= 4; }));
    ASSERT_GE(client.log.size(), 4u);
    EXPECT_EQ(client.log[0], "move 50,60 b0 held0");
    EXPECT_EQ(client.log[1], "modifiers 50,60 b0 held0 shift");
    EXPECT_EQ(client.log[2], "key " + std::to_string(int(Key::shift)));
    EXPECT_EQ(client.log[3], "modifiers 50,60 b0 held0");
}

TEST_F(X11WindowTest, ACaptureLostMidDragCancelsIt) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    client.window = window.get();
    client.captureOnDown = true;
    ASSERT_TRUE(pumpUntil(*window, [&] { return window->framesShown() >= 1; }));
    host.send(host.child(), ButtonPress, 30, 40, 0, Button1);
    ASSERT_TRUE(pumpUntil(*window, [&] { return !client.log.empty(); }));
    // The host hides its window in the middle of the drag: the grab goes with it.
    XUnmapWindow(host.display, host.parent);
    XSync(host.display, False);
    ASSERT_TRUE(pumpUntil(*window, [&] { return client.log.size() >= 2; }));
    EXPECT_EQ(client.log, (std::vector<std::string>{"down 30,40 b0 held1", "capture lost"}));
}

TEST_F(X11WindowTest, HelperWindowsStandOnTheScreenAndPaintThroughTheSamePath) {
    // The editor near the bottom-right corner of a 1280 by 1024 screen.
    Host host(1100, 950, 160, 60);
    Recorder client, popupClient, dialogClient;
    auto window = EditorWindow::open(client, host.parent, 160, 60);
    XSync(host.display, False);
    auto popup = window->openPopup(popupClient, 100, 50, 200, 100);
    auto dialog = window->openDialog(dialogClient, "Text Entry", 0, 0, 100, 40);
    ASSERT_TRUE(pumpUntil(*window, [&] { return areaOf(popupClient.tiles) == 200 * 100 && !dialogClient.tiles.empty(); }));
    XWindowAttributes a;
    XGetWindowAttributes(host.display, static_cast<X11Window&>(*popup).id(), &a);
    EXPECT_EQ(a.x + a.width, 1280);  // moved in from 1200 to stay wholly visible
    EXPECT_EQ(a.y + a.height, 1024);
    EXPECT_TRUE(a.override_redirect);
    ::Window owner = 0;
    XGetTransientForHint(host.display, static_cast<X11Window&>(*dialog).id(), &owner);
    EXPECT_EQ(owner, host.parent);
    // The dialog took the keyboard when it appeared, so it counts as active.
    ::Window focus = 0;
    int revert = 0;
    XGetInputFocus(host.display, &focus, &revert);
    EXPECT_EQ(focus, static_cast<X11Window&>(*dialog).id());
    EXPECT_TRUE(dialog->isActive());
    // Text entry in the dialog pastes what another program copied.
    X11Connection other;
    other.clipboard().write("250 ms");
    EXPECT_EQ(dialog->clipboardText(), "250 ms");
    popup->setScreenBounds(10, 20, 50, 30);
    ASSERT_TRUE(pumpUntil(*window, [&] { return areaOf(popupClient.tiles) == 200 * 100 + 50 * 30; }));
    XGetWindowAttributes(host.display, static_cast<X11Window&>(*popup).id(), &a);
    EXPECT_EQ(a.x, 10);
    EXPECT_EQ(a.width, 50);
}

struct Once : TimerHandler {
    std::function<void()> action;
    void timerFired(TimerQueue&, std::uint32_t, std::uint32_t, int) override { action(); }
};

TEST_F(X11WindowTest, TheModalLoopRunsTimersAndEventsUntilDone) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    Once timer;
    bool fired = false;
    timer.action = [&] { fired = true; };
    window->timers().add(&timer, 1, 20);
    window->runModal([&] { return fired; });
    EXPECT_TRUE(fired);
    EXPECT_GE(window->framesShown(), 1u);  // painting went on inside the loop
}

TEST_F(X11WindowTest, ClosingTheEditorInsideAModalLoopEndsItWithLostWindow) {
    Host host;
    Recorder client, dialogClient;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    auto dialog = window->openDialog(dialogClient, "Message", 10, 10, 200, 100);
    Once timer;
    // The host's close comes in from a call of ours, as it would through a host callback.
    timer.action = [&] {
        EXPECT_TRUE(window->busy());
        window->abandon();
    };
    window->timers().add(&timer, 1, 20);
    EXPECT_EQ(test::failure<LostWindowException>([&] { dialog->runModal([] { return false; }); }), "Lost window");
    EXPECT_FALSE(window->busy());
    EXPECT_EQ(host.child(), 0u) << "the window went at once";
    dialog.reset();
    window.reset();
}

TEST_F(X11WindowTest, TheHostDestroyingItsWindowEndsAModalLoopWithLostWindow) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    Once timer;
    timer.action = [&] {
        XDestroyWindow(host.display, host.parent);
        XFlush(host.display);
        host.parent = 0;
    };
    window->timers().add(&timer, 1, 20);
    EXPECT_EQ(test::failure<LostWindowException>([&] { window->runModal([] { return false; }); }), "Lost window");
    window->idle();  // a window that is gone ignores the host's idle calls
    host.parent = XCreateSimpleWindow(host.display, DefaultRootWindow(host.display), 0, 0, 1, 1, 0, 0, 0);
}

// A timer that keeps an 11 ms rate, as the editor's fast tick does.
struct Ticker : TimerHandler {
    int count = 0;
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int id) override {
        ++count;
        queue.schedule(this, id, due + 11);
    }
};

TEST_F(X11WindowTest, AHostThatHandsUsItsEventsRunsTheEditorWithoutIdleCalls) {
    // As Ardour does: every millisecond it reads its own connection and hands each event
    // to the editor's procedure; here it never makes an idle call at all.
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    auto& x11 = static_cast<X11Window&>(*window);
    X11Window::hostEventProc(nullptr);  // the host's first event: from now on it is woken
    Ticker ticker;
    window->timers().add(&ticker, 1, 11);
    host.send(host.child(), ButtonPress, 30, 40, 0, Button1);
    for (int pass = 0; pass < 3000 && (ticker.count < 10 || client.log.empty() || window->framesShown() < 1); ++pass) {
        while (XPending(host.display) > 0) {
            XEvent e;
            XNextEvent(host.display, &e);
            X11Window::hostEventProc(&e);
        }
        usleep(1000);
    }
    EXPECT_GE(ticker.count, 10);
    EXPECT_EQ(client.log, (std::vector<std::string>{"down 30,40 b0 held1"}));
    EXPECT_GE(window->framesShown(), 1u);
    ASSERT_TRUE(x11.session()->waker);
    EXPECT_GE(x11.session()->waker->wakes(), 10u);
}

// The ways a host takes the editor out of sight, and back.
enum class Away { hostHidesItsWindow, hostUnmapsTheEditor, anotherWindowCoversIt };

struct Cover {
    Display* display;
    ::Window window = 0;
    Cover(Display* d, int width, int height) : display(d) {
        XSetWindowAttributes a{};
        a.background_pixel = 0x00FF00;
        a.override_redirect = True;
        window = XCreateWindow(d, DefaultRootWindow(d), 0, 0, unsigned(width + 20), unsigned(height + 20), 0,
                               CopyFromParent, InputOutput, CopyFromParent, CWBackPixel | CWOverrideRedirect, &a);
    }
    ~Cover() { XDestroyWindow(display, window); }
};

void goAway(Host& host, Cover& cover, Away away, bool gone) {
    const ::Window target = away == Away::hostHidesItsWindow ? host.parent
                            : away == Away::hostUnmapsTheEditor ? host.child()
                                                                 : cover.window;
    // The cover hides the editor by being shown; the others by being hidden.
    if (gone == (away == Away::anotherWindowCoversIt))
        XMapRaised(host.display, target);
    else
        XUnmapWindow(host.display, target);
    XSync(host.display, False);
}

// Hidden or covered, the editor runs no timer, paints nothing, even what it was asked
// to, and sends the server no request; seen again, the pass that learns it paints the
// whole window and runs what fell due meanwhile once, not once per period missed.
void checkRest(Away away) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    auto& x11 = static_cast<X11Window&>(*window);
    Cover cover(host.display, 525, 475);
    Ticker ticker;
    window->timers().add(&ticker, 1, 11);
    ASSERT_TRUE(pumpUntil(*window, [&] { return window->framesShown() >= 1 && ticker.count >= 2; }));
    EXPECT_FALSE(x11.resting());

    goAway(host, cover, away, true);
    ASSERT_TRUE(pumpUntil(*window, [&] { return x11.resting(); }));
    window->idle();  // whatever else the change brought
    Display* ours = x11.session()->connection->display();
    const std::uint64_t frames = window->framesShown();
    const int ticks = ticker.count;
    const std::size_t tiles = client.tiles.size();
    const unsigned long requests = XNextRequest(ours);
    window->invalidate(0, 0, 100, 100);
    for (int pass = 0; pass < 40; ++pass) {  // some eight periods of the ticker
        window->idle();
        usleep(2000);
    }
    EXPECT_EQ(window->framesShown(), frames);
    EXPECT_EQ(ticker.count, ticks);
    EXPECT_EQ(client.tiles.size(), tiles);
    EXPECT_EQ(XNextRequest(ours), requests);

    client.tiles.clear();
    goAway(host, cover, away, false);
    bool paintedInThatPass = false;
    for (int pass = 0; pass < 1000 && x11.resting(); ++pass) {
        window->idle();
        paintedInThatPass = !x11.resting() && window->framesShown() > frames;
        if (x11.resting()) usleep(2000);
    }
    ASSERT_FALSE(x11.resting());
    EXPECT_TRUE(paintedInThatPass);
    EXPECT_GE(areaOf(client.tiles), 525 * 475);
    EXPECT_EQ(ticker.count, ticks + 1);
}

TEST_F(X11WindowTest, HiddenWithTheHostsWindowTheEditorRestsAndPaintsAtOnceWhenShown) {
    checkRest(Away::hostHidesItsWindow);
}

TEST_F(X11WindowTest, UnmappedTheEditorRestsAndPaintsAtOnceWhenMappedAgain) { checkRest(Away::hostUnmapsTheEditor); }

TEST_F(X11WindowTest, FullyCoveredTheEditorRestsAndPaintsAtOnceWhenUncovered) {
    checkRest(Away::anotherWindowCoversIt);
}

// Hands the host's pending events to the editor's procedure, as Ardour's loop does.
void ardourPass(Host& host) {
    while (XPending(host.display) > 0) {
        XEvent e;
        XNextEvent(host.display, &e);
        X11Window::hostEventProc(&e);
    }
}

TEST_F(X11WindowTest, AtRestAHostThatHandsUsItsEventsIsNotWokenForTimers) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    auto& x11 = static_cast<X11Window&>(*window);
    X11Window::hostEventProc(nullptr);
    ASSERT_TRUE(x11.session()->waker);
    Ticker ticker;
    window->timers().add(&ticker, 1, 11);
    for (int pass = 0; pass < 3000 && ticker.count < 3; ++pass) {
        ardourPass(host);
        usleep(1000);
    }
    ASSERT_GE(ticker.count, 3);
    XUnmapWindow(host.display, host.parent);
    XSync(host.display, False);
    for (int pass = 0; pass < 3000 && !x11.resting(); ++pass) {
        ardourPass(host);
        usleep(1000);
    }
    ASSERT_TRUE(x11.resting());
    for (int pass = 0; pass < 20; ++pass) {  // what the hiding itself brought
        ardourPass(host);
        usleep(1000);
    }
    const std::uint64_t wakes = x11.session()->waker->wakes();
    const int ticks = ticker.count;
    for (int pass = 0; pass < 100; ++pass) {  // some nine periods of the ticker
        ardourPass(host);
        usleep(1000);
    }
    EXPECT_EQ(x11.session()->waker->wakes(), wakes);
    EXPECT_EQ(ticker.count, ticks);
    // Shown again, the showing itself wakes the host and the editor runs at once.
    XMapWindow(host.display, host.parent);
    XSync(host.display, False);
    for (int pass = 0; pass < 3000 && ticker.count == ticks; ++pass) {
        ardourPass(host);
        usleep(1000);
    }
    EXPECT_FALSE(x11.resting());
    EXPECT_GT(ticker.count, ticks);
}

// Records the wake under way when it fires.
struct WakeStamp : TimerHandler {
    const X11Waker* waker = nullptr;
    std::uint64_t wake = 0;
    bool fired = false;
    void timerFired(TimerQueue&, std::uint32_t, std::uint32_t, int) override {
        wake = waker->wakes();
        fired = true;
    }
};

TEST_F(X11WindowTest, TimersAFewMillisecondsApartFireInOneWake) {
    Host host;
    Recorder client;
    auto window = EditorWindow::open(client, host.parent, 525, 475);
    auto& x11 = static_cast<X11Window&>(*window);
    X11Window::hostEventProc(nullptr);
    ASSERT_TRUE(x11.session()->waker);
    for (int pass = 0; pass < 50; ++pass) {  // the first frame and whatever it brought
        ardourPass(host);
        usleep(1000);
    }
    WakeStamp first, second;
    first.waker = second.waker = x11.session()->waker.get();
    const std::uint32_t now = window->timers().now();
    window->timers().schedule(&first, 1, now + 40);
    window->timers().schedule(&second, 1, now + 40 + TimerQueue::coalesceMs - 1);
    for (int pass = 0; pass < 3000 && !(first.fired && second.fired); ++pass) {
        ardourPass(host);
        usleep(1000);
    }
    ASSERT_TRUE(first.fired && second.fired);
    EXPECT_EQ(first.wake, second.wake);
}

TEST_F(X11WindowTest, WithoutSharedMemoryPixelsGoThroughPlainPuts) {
    test::Xvfb plain({"-extension", "MIT-SHM"});
    if (plain.display.empty()) GTEST_SKIP() << "No Xvfb to start without shared memory";
    const std::string saved = std::getenv("DISPLAY");
    setenv("DISPLAY", plain.display.c_str(), 1);
    {
        Host host;
        Recorder client;
        auto window = EditorWindow::open(client, host.parent, 525, 475);
        EXPECT_FALSE(static_cast<X11Window&>(*window).session()->connection->hasShm());
        ASSERT_TRUE(pumpUntil(*window, [&] { return window->framesShown() >= 1; }));
        client.colour = 0xFF3A9F5C;
        window->invalidate(100, 100, 20, 20);
        window->idle();
        EXPECT_EQ(host.pixel(110, 110), 0x3A9F5Cu);
        EXPECT_EQ(host.pixel(99, 110), 0x204060u);
    }
    setenv("DISPLAY", saved.c_str(), 1);
}

TEST_F(X11WindowTest, AParentThatDoesNotExistIsRefusedInWords) {
    Recorder client;
    EXPECT_EQ(test::failure<Qvd::xWindowsError>([&] { EditorWindow::open(client, 0x7FFFFFF, 525, 475); }),
              "The host's window for the editor does not exist");
}

}  // namespace
}  // namespace tw
