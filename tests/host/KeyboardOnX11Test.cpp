// The editor from the keyboard in a real X window: Tab over every control in reading
// order, each kind of key on a knob, a switch and a selector with the host's gestures and
// the undo steps they make, the value entry, the patch name, Escape giving the keyboard
// back to the host's window, a key the editor does not use reaching the host, and the
// same keys through the VST 2.4 key calls. A picture of the ring on a knob is kept.
#include <gtest/gtest.h>

#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "cushy/CushyView.h"
#include "editor/ModelController.h"
#include "graphics/PNGWriter.h"
#include "platform/X11Window.h"
#include "product/TidewakeDescriptor.h"
#include "product/TidewakeEditorFactory.h"
#include "tests/XServer.h"
#include "tests/host/ProductResources.h"
#include "tests/host/TestHost.h"

using namespace tw;

namespace {

// Window coordinates of the controls the tests press.
constexpr int phaseX = 32, phaseY = 188;
constexpr int feedbackX = 392, feedbackY = 116;
constexpr int delayTimeX = 312, delayTimeY = 116;
constexpr int antiReflectionX = 153, antiReflectionY = 152;
constexpr int wideX = 86, wideY = 84;

// Tab's stops with an unsaved patch (no patch file to step to, so no arrows), in order.
const std::vector<std::string> tabOrder = {
    "Patch", "Tour", "Menu", "Shift Range", "Shift Amount", "Anti-reflection", "Phase", "Sideband", "Delay Time",
    "Feedback", "Smear", "Delay Sync", "Cross Channels", "Low-pass", "High-pass", "LFO Shape", "LFO Rate",
    "LFO Amount", "LFO Sync", "LFO Stereo", "LFO Target", "Wet Mix",
};

class KeyboardOnX11 : public ::testing::Test {
protected:
    void SetUp() override {
        if (!test::haveDisplay()) GTEST_SKIP() << test::noDisplayMessage;
        display = test::openDisplay();
        ASSERT_NE(display, nullptr);
        // The host's top-level window, listening for keys as a toolkit's window does.
        XSetWindowAttributes a{};
        a.event_mask = KeyPressMask | KeyReleaseMask;
        parent = XCreateWindow(display, DefaultRootWindow(display), 0, 0, 525, 475, 0, CopyFromParent, InputOutput,
                               CopyFromParent, CWEventMask, &a);
        XMapWindow(display, parent);
        XSync(display, False);
        controller = tidewakeEditor().createController(host.instance(), test::resources(), test::strings());
        window = EditorWindow::open(controller->client(), parent, 525, 475);
        controller->open(window.get());
        editorId = ::Window(window->nativeId());
        pump();
    }

    void TearDown() override {
        if (controller) controller->close();
        controller.reset();
        window.reset();
        if (display != nullptr) {
            XDestroyWindow(display, parent);
            XCloseDisplay(display);
        }
    }

    // Lets the editor read what the server has for it, a few passes.
    void pump() {
        XSync(display, False);
        for (int i = 0; i < 3; ++i) {
            window->idle();
            XSync(display, False);
        }
    }

    void sendKeyEvent(int type, KeySym sym, unsigned state) {
        XEvent e{};
        e.xkey.type = type;
        e.xkey.window = editorId;
        e.xkey.root = DefaultRootWindow(display);
        e.xkey.keycode = XKeysymToKeycode(display, sym);
        e.xkey.state = state;
        e.xkey.same_screen = True;
        XSendEvent(display, editorId, False, NoEventMask, &e);
    }

    // A key pressed, held for `repeats` more presses, and released.
    void key(KeySym sym, unsigned state = 0, int repeats = 0) {
        for (int i = 0; i <= repeats; ++i) sendKeyEvent(KeyPress, sym, state);
        sendKeyEvent(KeyRelease, sym, state);
        pump();
    }

    void click(int x, int y) {
        for (int type : {ButtonPress, ButtonRelease}) {
            XEvent e{};
            e.xbutton.type = type;
            e.xbutton.window = editorId;
            e.xbutton.root = DefaultRootWindow(display);
            e.xbutton.x = x;
            e.xbutton.y = y;
            e.xbutton.button = Button1;
            e.xbutton.state = type == ButtonRelease ? Button1Mask : 0;
            e.xbutton.same_screen = True;
            XSendEvent(display, editorId, False, NoEventMask, &e);
        }
        pump();
    }

    std::string variable(const std::string& name) { return controller->getVariable(controller->rootView(), name); }
    float param(int id) { return host.instance().parameterValue(id); }
    std::size_t begins() { return host.callsOf(vst2::audioMasterBeginEdit).size(); }
    std::size_t ends() { return host.callsOf(vst2::audioMasterEndEdit).size(); }
    ::Window inputFocus() {
        ::Window focus = 0;
        int revert = 0;
        XGetInputFocus(display, &focus, &revert);
        return focus;
    }

    test::TestHost host;
    Display* display = nullptr;
    ::Window parent = 0, editorId = 0;
    std::unique_ptr<ModelController> controller;
    std::unique_ptr<EditorWindow> window;
};

TEST_F(KeyboardOnX11, TabWalksEveryControlInReadingOrderAndShiftTabWalksBack) {
    std::vector<std::string> seen;
    for (std::size_t i = 0; i < tabOrder.size(); ++i) {
        key(XK_Tab);
        seen.push_back(variable("status.name"));
    }
    EXPECT_EQ(seen, tabOrder) << "the status line names each stop as Tab reaches it";
    key(XK_Tab);
    EXPECT_EQ(variable("status.name"), tabOrder.front()) << "Tab wraps to the first stop";
    key(XK_Tab, ShiftMask);
    EXPECT_EQ(variable("status.name"), tabOrder.back()) << "Shift-Tab goes back past the start";
    key(XK_ISO_Left_Tab, ShiftMask);
    EXPECT_EQ(variable("status.name"), tabOrder[tabOrder.size() - 2]);
    EXPECT_EQ(variable("status.value"), "params.lfoTarget.human") << "and shows the focused control's value";
}

TEST_F(KeyboardOnX11, EachKeyOnAKnobIsOneGestureAndOneUndoStep) {
    click(phaseX, phaseY);
    EXPECT_EQ(variable("status.name"), "Phase");
    EXPECT_EQ(inputFocus(), editorId) << "a click asks for the keyboard";
    const std::size_t undoBefore = controller->undoPosition();
    const std::size_t beginsBefore = begins(), endsBefore = ends();
    float v = param(Param::phaseShift);
    const auto press = [&](KeySym sym, unsigned state, float expected, const char* what) {
        key(sym, state);
        EXPECT_NEAR(param(Param::phaseShift), expected, 1e-5) << what;
        v = param(Param::phaseShift);
    };
    press(XK_Up, 0, v + 0.01f, "Up raises by 1 % of the range");
    press(XK_Right, 0, v + 0.01f, "and so does Right");
    press(XK_Down, ShiftMask, v - 0.001f, "Shift-Down lowers by 0.1 %");
    press(XK_Left, 0, v - 0.01f, "Left lowers by 1 %");
    press(XK_Page_Up, 0, v + 0.1f, "Page Up is ten steps");
    press(XK_Page_Down, 0, v - 0.1f, "Page Down ten steps back");
    press(XK_End, 0, 1.0f, "End goes to the top");
    press(XK_Home, 0, 0.0f, "Home to the bottom");
    press(XK_Delete, 0, 0.5f, "Delete to the default");
    press(XK_End, 0, 1.0f, "");
    press(XK_BackSpace, 0, 0.5f, "Backspace to the default too");
    EXPECT_EQ(begins() - beginsBefore, 11u) << "each press its own gesture";
    EXPECT_EQ(ends() - endsBefore, 11u);
    EXPECT_EQ(controller->undoPosition() - undoBefore, 11u) << "and its own undo step, even on the same knob";

    // A held key's repeats are one run: one gesture, one undo step.
    const float before = param(Param::phaseShift);
    key(XK_Up, 0, 4);
    EXPECT_NEAR(param(Param::phaseShift), before + 0.05f, 1e-5);
    EXPECT_EQ(begins() - beginsBefore, 12u);
    EXPECT_EQ(ends() - endsBefore, 12u);
    EXPECT_EQ(controller->undoPosition() - undoBefore, 12u);
    // Ctrl+Z takes the whole run back, Ctrl+Shift+Z brings it again.
    key(XK_z, ControlMask);
    EXPECT_NEAR(param(Param::phaseShift), before, 1e-6);
    key(XK_Z, ControlMask | ShiftMask);
    EXPECT_NEAR(param(Param::phaseShift), before + 0.05f, 1e-5);
    EXPECT_EQ(host.instance().parameterValue(Param::phaseShift), param(Param::phaseShift));
}

TEST_F(KeyboardOnX11, AKnobOfStepsMovesAStepAPress) {
    controller->setVariable(controller->rootView(), "params.delaySync", "1", false);
    pump();
    click(delayTimeX, delayTimeY);
    key(XK_Home);
    const std::string first = variable("params.delayTime.human");
    key(XK_Up);
    const std::string second = variable("params.delayTime.human");
    EXPECT_NE(first, second) << "a note length is far more than 1 % away, yet one press reaches the next";
    key(XK_Up, ShiftMask);
    EXPECT_NE(second, variable("params.delayTime.human")) << "a fine step too";
    key(XK_Down, ShiftMask);
    EXPECT_EQ(second, variable("params.delayTime.human"));
}

TEST_F(KeyboardOnX11, SpaceAndEnterPressASwitchOnceHowEverLongTheyAreHeld) {
    click(antiReflectionX, antiReflectionY);
    const float start = param(Param::antiReflection);
    const std::size_t beginsBefore = begins(), undoBefore = controller->undoPosition();
    key(XK_space);
    EXPECT_NE(param(Param::antiReflection), start);
    key(XK_Return);
    EXPECT_EQ(param(Param::antiReflection), start);
    key(XK_space, 0, 5);
    EXPECT_NE(param(Param::antiReflection), start) << "held, it toggles once";
    EXPECT_EQ(begins() - beginsBefore, 3u);
    EXPECT_EQ(controller->undoPosition() - undoBefore, 3u);
    key(XK_Up);
    EXPECT_NE(param(Param::antiReflection), start) << "a switch has no arrows";
}

TEST_F(KeyboardOnX11, TheArrowsHomeEndAndSpaceStepASelector) {
    click(wideX, wideY);
    EXPECT_EQ(variable("status.name"), "Shift Range");
    const auto range = [&] { return variable("params.freqShiftRange.human"); };
    EXPECT_EQ(range(), "Wide");
    const std::size_t beginsBefore = begins(), undoBefore = controller->undoPosition();
    key(XK_Right);
    EXPECT_EQ(range(), "Sync");
    key(XK_space);
    EXPECT_EQ(range(), "Midi");
    key(XK_Right);
    EXPECT_EQ(range(), "Midi") << "the arrows stop at the ends";
    key(XK_space);
    EXPECT_EQ(range(), "Fine") << "Space wraps";
    key(XK_Left);
    EXPECT_EQ(range(), "Fine");
    key(XK_End);
    EXPECT_EQ(range(), "Midi");
    key(XK_Up, 0, 3);
    EXPECT_EQ(range(), "Sync") << "a held arrow steps once";
    key(XK_Home);
    EXPECT_EQ(range(), "Fine");
    EXPECT_EQ(begins() - beginsBefore, 6u) << "one gesture for each step taken, none where nothing moved";
    EXPECT_EQ(controller->undoPosition() - undoBefore, 6u);
    key(XK_Tab);
    EXPECT_EQ(variable("status.name"), "Shift Amount") << "the selector is one stop";
}

// Answers the value entry's box once it shows: types a value and Enter.
struct EntryAnswer : TimerHandler {
    Display* display = nullptr;
    X11Session* session = nullptr;
    std::vector<KeySym> keys;
    std::size_t windowsBefore = 0;  // the box is the window opened after these (a hint may be open)
    bool seen = false;
    int tries = 0;
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int id) override {
        const auto& windows = session->windows;
        if ((windows.size() <= windowsBefore || windows.back()->framesShown() < 1) && ++tries < 200) {
            queue.schedule(this, id, due + 10);
            return;
        }
        if (windows.size() <= windowsBefore) return;
        seen = true;
        const ::Window box = windows.back()->id();
        for (KeySym sym : keys) {
            for (int type : {KeyPress, KeyRelease}) {
                XEvent e{};
                e.xkey.type = type;
                e.xkey.window = box;
                e.xkey.root = DefaultRootWindow(display);
                e.xkey.keycode = XKeysymToKeycode(display, sym);
                e.xkey.same_screen = True;
                XSendEvent(display, box, False, NoEventMask, &e);
            }
        }
        XFlush(display);
    }
};

TEST_F(KeyboardOnX11, EnterAndF2OpenTheValueEntryOfTheFocusedKnob) {
    click(feedbackX, feedbackY);
    EntryAnswer answer;
    answer.display = display;
    answer.session = static_cast<X11Window&>(*window).session().get();
    answer.keys = {XK_BackSpace, XK_BackSpace, XK_BackSpace, XK_BackSpace, XK_BackSpace, XK_BackSpace,
                   XK_BackSpace, XK_BackSpace, XK_BackSpace, XK_BackSpace, XK_minus, XK_6, XK_Return};
    answer.windowsBefore = answer.session->windows.size();
    window->timers().add(&answer, 1, 20);
    key(XK_Return);
    ASSERT_TRUE(answer.seen) << "Enter opened a box";
    EXPECT_EQ(variable("params.feedbackAmount.human").rfind("-6", 0), 0u) << variable("params.feedbackAmount.human");
    answer.seen = false;
    answer.tries = 0;
    answer.windowsBefore = answer.session->windows.size();
    answer.keys = {XK_Escape};
    window->timers().add(&answer, 1, 20);
    key(XK_F2);
    EXPECT_TRUE(answer.seen) << "so does F2";
    EXPECT_EQ(variable("params.feedbackAmount.human").rfind("-6", 0), 0u) << "Escape leaves the value";
}

TEST_F(KeyboardOnX11, ThePatchNameStepsPatchesWithTheArrows) {
    const std::string factory = std::string(TIDEWAKE_BINARY_DIR) + "/Tidewake Patches/";
    ASSERT_TRUE(std::filesystem::exists(factory + "MW Dr Dub.tidewake"));
    controller->openPatchFile(Path::parse(factory + "MW Dr Dub.tidewake"));
    pump();
    key(XK_Tab);
    EXPECT_EQ(variable("status.name"), "Patch");
    key(XK_Right);
    EXPECT_EQ(variable("patch.name"), "MW Educational VHS");
    key(XK_Up);
    key(XK_Up);
    EXPECT_EQ(variable("patch.name"), "MW Dazzle Fo Shazzle");
}

TEST_F(KeyboardOnX11, CopyPasteAndTheTourAreTheEditorsOwnKeys) {
    controller->setVariable(controller->rootView(), "params.phaseShift", "0.25", false);
    key(XK_c, ControlMask);
    controller->setVariable(controller->rootView(), "params.phaseShift", "0.75", false);
    pump();
    key(XK_v, ControlMask);
    EXPECT_FLOAT_EQ(param(Param::phaseShift), 0.25f) << "Ctrl+V pastes what Ctrl+C copied";
    key(XK_F1);
    EXPECT_EQ(variable("modalLayout"), "Tidewake_messages") << "F1 opens the tour";
    key(XK_Tab);
    EXPECT_EQ(View::focusHolder(), nullptr) << "under the tour, Tab reaches none of the controls behind it";
}

TEST_F(KeyboardOnX11, EscapeLetsGoOfTheControlThenGivesTheKeyboardBack) {
    click(feedbackX, feedbackY);
    ASSERT_EQ(inputFocus(), editorId);
    ASSERT_NE(View::focusHolder(), nullptr);
    key(XK_Escape);
    EXPECT_EQ(View::focusHolder(), nullptr) << "the first Escape lets go of the control";
    EXPECT_EQ(inputFocus(), editorId) << "but keeps the keyboard";
    EXPECT_EQ(variable("status.name"), "");
    key(XK_Escape);
    EXPECT_EQ(inputFocus(), parent) << "the second gives it to the host's window";
    click(400, 200);
    EXPECT_EQ(inputFocus(), editorId) << "a click on no control takes the keyboard again";
    EXPECT_EQ(View::focusHolder(), nullptr) << "without focusing anything";
}

TEST_F(KeyboardOnX11, AKeyTheEditorDoesNotUseGoesOnToTheHostsWindow) {
    int major = 0, minor = 0, event = 0, error = 0;
    if (!XTestQueryExtension(display, &event, &error, &major, &minor)) GTEST_SKIP() << "no XTEST on this server";
    click(feedbackX, feedbackY);
    ASSERT_EQ(inputFocus(), editorId);
    // Real key events, as the keyboard makes them, through the focus.
    const auto typeKey = [&](KeySym sym) {
        const KeyCode code = XKeysymToKeycode(display, sym);
        XTestFakeKeyEvent(display, code, True, CurrentTime);
        XTestFakeKeyEvent(display, code, False, CurrentTime);
        pump();
        return code;
    };
    const auto hostSaw = [&](KeyCode code) {
        XEvent e;
        bool found = false;
        // The editor handed it on inside its pass; the server has it for us after a sync.
        for (int attempt = 0; attempt < 50 && !found; ++attempt) {
            XSync(display, False);
            while (XCheckTypedWindowEvent(display, parent, KeyPress, &e))
                if (e.xkey.keycode == code && e.xkey.send_event) found = true;
            if (!found) usleep(2000);
        }
        return found;
    };
    const float before = param(Param::feedbackAmount);
    EXPECT_TRUE(hostSaw(typeKey(XK_q))) << "a letter the editor has no use for";
    EXPECT_TRUE(hostSaw(typeKey(XK_space))) << "the space bar, the transport's key in most hosts, on a knob";
    EXPECT_FALSE(hostSaw(typeKey(XK_Up))) << "a key the knob used stays ours";
    EXPECT_GT(param(Param::feedbackAmount), before);
    EXPECT_FALSE(hostSaw(typeKey(XK_Control_L))) << "a modifier alone waits for its key";

    // A host whose window takes no sent key (a toolkit that reads the keyboard through the
    // input extension): the keyboard itself goes back to it at an unused key.
    XSelectInput(display, parent, NoEventMask);
    XSync(display, False);
    typeKey(XK_Control_L);
    EXPECT_EQ(inputFocus(), editorId) << "not for a modifier, which may begin Ctrl+Z";
    typeKey(XK_q);
    EXPECT_EQ(inputFocus(), parent);
}

TEST_F(KeyboardOnX11, TheRingOnAFocusedKnobIsDrawnAroundIt) {
    const auto shot = [&] {
        pump();
        XImage* image = XGetImage(display, editorId, 0, 0, 525, 475, AllPlanes, ZPixmap);
        Raster32 out(IntRect{0, 0, 525, 475}, true);
        for (int row = 0; row < 475; ++row)
            for (int col = 0; col < 525; ++col) *out.at(col, row) = 0xFF000000u | std::uint32_t(XGetPixel(image, col, row));
        XDestroyImage(image);
        return out;
    };
    const Raster32 plain = shot();
    key(XK_Tab);
    for (int i = 0; i < 4; ++i) key(XK_Tab);
    ASSERT_EQ(variable("status.name"), "Shift Amount");
    const Raster32 ringed = shot();
    const std::filesystem::path folder = std::filesystem::path(TIDEWAKE_BINARY_DIR) / "pictures" / "host";
    std::filesystem::create_directories(folder);
    writePNG((folder / "focus-ring-on-knob.png").string(), ringed);
    // The big knob is 64 units at (16, 100): the ring lies just outside it, all round,
    // and nothing changed far from it but the status line.
    const auto changed = [&](int x, int y) { return *plain.at(x, y) != *ringed.at(x, y); };
    const int cx = 48, cy = 132;
    int around = 0;
    for (int d = 33; d <= 38; ++d) around += changed(cx + d, cy) + changed(cx - d, cy) + changed(cx, cy + d) + changed(cx, cy - d);
    EXPECT_GE(around, 4) << "the ring shows on every side";
    int far = 0;
    for (int y = 0; y < 440; y += 4)
        for (int x = 0; x < 525; x += 4)
            if (x > 100 || y < 88 || y > 176) far += changed(x, y);
    EXPECT_EQ(far, 0) << "nothing else on the face moved";
    // The selector and a switch, to be looked at beside it.
    key(XK_Tab, ShiftMask);
    writePNG((folder / "focus-ring-on-selector.png").string(), shot());
    key(XK_Tab);
    key(XK_Tab);
    writePNG((folder / "focus-ring-on-switch.png").string(), shot());
    key(XK_Escape);
    const Raster32 after = shot();
    int left = 0;
    for (int y = 88; y < 176; ++y)
        for (int x = 0; x < 100; ++x) left += *after.at(x, y) != *plain.at(x, y);
    EXPECT_EQ(left, 0) << "Escape takes the ring away";
}

// The keys a VST 2.4 host hands over: 1 for a key the editor used, 0 for the rest.
TEST(KeyboardThroughVst2, TheEditorAnswersOnlyForKeysItUses) {
    if (!test::haveDisplay()) GTEST_SKIP() << test::noDisplayMessage;
    Display* display = test::openDisplay();
    const ::Window parent = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 525, 475, 0, 0, 0);
    XMapWindow(display, parent);
    XSync(display, False);
    {
        test::TestHost host;
        ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, reinterpret_cast<void*>(parent)), 1);
        constexpr int vkTab = 2, vkEscape = 6, vkUp = 12, vkDown = 14, vkF5 = 44, vkShift = 54;
        constexpr float shift = 1, ctrl = 8;
        const auto down = [&](int character, int vk, float modifiers = 0) {
            return host.dispatch(vst2::effEditKeyDown, character, vk, nullptr, modifiers);
        };
        const auto up = [&](int character, int vk, float modifiers = 0) {
            return host.dispatch(vst2::effEditKeyUp, character, vk, nullptr, modifiers);
        };
        EXPECT_EQ(down('q', 0), 0) << "a letter is the host's";
        EXPECT_EQ(down(0, vkF5), 0) << "so is a function key the editor has no use for";
        EXPECT_EQ(down(0, vkShift), 0) << "and a modifier alone";
        EXPECT_EQ(down(' ', 0), 0) << "Space with nothing focused: the host's transport";
        EXPECT_EQ(down(0, vkUp), 0) << "an arrow with nothing focused";
        // Shift-Tab from nothing: the last control, the wet mix knob.
        EXPECT_EQ(down(0, vkTab, shift), 1);
        EXPECT_EQ(up(0, vkTab, shift), 0);
        const float before = host.instance().parameterValue(Param::wetMix);
        EXPECT_EQ(down(0, vkDown), 1);
        EXPECT_EQ(down(0, vkDown), 1);  // a repeat: the same run
        EXPECT_EQ(up(0, vkDown), 1);
        EXPECT_NE(host.instance().parameterValue(Param::wetMix), before);
        EXPECT_EQ(host.callsOf(vst2::audioMasterBeginEdit).size(), 1u);
        EXPECT_EQ(host.callsOf(vst2::audioMasterEndEdit).size(), 1u);
        EXPECT_EQ(down('z', 0, ctrl), 1) << "Ctrl+Z undoes";
        EXPECT_EQ(host.instance().parameterValue(Param::wetMix), before);
        EXPECT_EQ(down(0, vkEscape), 1) << "Escape lets go of the knob";
        EXPECT_EQ(down(0, vkUp), 0);
        EXPECT_EQ(down(0, vkEscape), 0) << "a second Escape is the host's: the keyboard was never ours";
        host.dispatch(vst2::effEditClose);
    }
    XDestroyWindow(display, parent);
    XCloseDisplay(display);
}

}  // namespace
