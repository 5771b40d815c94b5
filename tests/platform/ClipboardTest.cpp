// The clipboard: through the X server between two connections, the free functions that
// the model uses, and the copy kept in the process when no display is open.
// GoogleTest first: Xlib defines names such as None and Bool as macros.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/Clipboard.h"

#include <X11/Xatom.h>

#include <thread>

#include "platform/Qvd.h"
#include "platform/X11Clipboard.h"
#include "tests/Failure.h"
#include "tests/XServer.h"

namespace tw {
namespace {

TEST(Clipboard, WithoutADisplayTheTextStaysInTheProcess) {
    ASSERT_TRUE(X11Connection::all().empty());
    EXPECT_EQ(readClipboardText(), "");
    writeClipboardText("name=\"MW Dr Dub\"\ndelayTime=250 ms\n", true);
    EXPECT_EQ(readClipboardText(), "name=\"MW Dr Dub\"\ndelayTime=250 ms\n");
}

class X11ClipboardTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!test::haveDisplay()) GTEST_SKIP() << test::noDisplayMessage;
    }
};

TEST_F(X11ClipboardTest, TextRoundTripsThroughTheServerBetweenTwoConnections) {
    X11Connection a, b;
    const std::string text = "Tidewake \xC3\xA9t\xC3\xA9 \xE2\x82\xAC\r\nsecond line";
    a.clipboard().write(text);
    EXPECT_TRUE(a.clipboard().owns());
    // b asks the server; a answers from inside b's wait, on the same thread.
    EXPECT_EQ(b.clipboard().read(2000), text);
    // Now b copies; a learns that it lost the selection and reads b's text.
    b.clipboard().write("from b");
    EXPECT_EQ(a.clipboard().read(2000), "from b");
    EXPECT_FALSE(a.clipboard().owns());
}

TEST_F(X11ClipboardTest, TheFreeFunctionsUseTheNewestConnection) {
    X11Connection older, newer;
    writeClipboardText("patch text", true);
    EXPECT_TRUE(newer.clipboard().owns());
    EXPECT_EQ(older.clipboard().read(2000), "patch text");
    EXPECT_EQ(readClipboardText(), "patch text");
}

TEST_F(X11ClipboardTest, AnOtherProgramsLatin1TextIsReadAsUtf8) {
    X11Connection ours;
    // A plain Xlib program that owns the selection and answers only STRING requests.
    Display* other = test::openDisplay();
    const ::Window owner = XCreateSimpleWindow(other, DefaultRootWindow(other), 0, 0, 1, 1, 0, 0, 0);
    const Atom clipboard = XInternAtom(other, "CLIPBOARD", False);
    XSetSelectionOwner(other, clipboard, owner, CurrentTime);
    XSync(other, False);
    std::thread answering([&] {
        for (int answered = 0; answered < 2;) {
            XEvent e;
            XNextEvent(other, &e);
            if (e.type != SelectionRequest) continue;
            XSelectionEvent reply{};
            reply.type = SelectionNotify;
            reply.requestor = e.xselectionrequest.requestor;
            reply.selection = e.xselectionrequest.selection;
            reply.target = e.xselectionrequest.target;
            reply.property = None;
            if (e.xselectionrequest.target == XA_STRING) {
                const unsigned char latin1[] = {'c', 'a', 'f', 0xE9};
                XChangeProperty(other, reply.requestor, e.xselectionrequest.property, XA_STRING, 8, PropModeReplace,
                                latin1, 4);
                reply.property = e.xselectionrequest.property;
            }
            XSendEvent(other, reply.requestor, False, NoEventMask, reinterpret_cast<XEvent*>(&reply));
            XFlush(other);
            ++answered;
        }
    });
    const std::string text = ours.clipboard().read(2000);
    answering.join();
    EXPECT_EQ(text, "caf\xC3\xA9");
    XCloseDisplay(other);
}

TEST_F(X11ClipboardTest, NoOwnerGivesEmptyTextAndASilentOwnerFailsInWords) {
    X11Connection ours;
    XSetSelectionOwner(ours.display(), ours.atom("CLIPBOARD"), None, CurrentTime);
    XSync(ours.display(), False);
    EXPECT_EQ(ours.clipboard().read(2000), "");
    Display* other = test::openDisplay();
    const ::Window owner = XCreateSimpleWindow(other, DefaultRootWindow(other), 0, 0, 1, 1, 0, 0, 0);
    XSetSelectionOwner(other, XInternAtom(other, "CLIPBOARD", False), owner, CurrentTime);
    XSync(other, False);
    EXPECT_EQ(test::failure<Qvd::xWindowsError>([&] { ours.clipboard().read(100); }),
              "The program that holds the clipboard did not answer");
    XCloseDisplay(other);
}

// Whether Paste is offered is asked as a menu opens, on the host's thread: an owner that
// never answers, or answers the targets but is slow with the text, leaves the answer
// open instead of holding the caller, and a hung owner is asked once, not at every look.
TEST_F(X11ClipboardTest, LookingForPasteAsksBrieflyAndOnlyOnceOfAHungOwner) {
    X11Connection ours;
    writeClipboardText("name=\"MW Dr Dub\"\n", true);
    std::string text;
    EXPECT_EQ(peekClipboardText(text, 15), ClipboardContent::text);
    EXPECT_EQ(text, "name=\"MW Dr Dub\"\n");

    Display* other = test::openDisplay();
    const ::Window owner = XCreateSimpleWindow(other, DefaultRootWindow(other), 0, 0, 1, 1, 0, 0, 0);
    const Atom clipboard = XInternAtom(other, "CLIPBOARD", False);
    XSetSelectionOwner(other, clipboard, owner, CurrentTime);
    XSync(other, False);
    EXPECT_EQ(peekClipboardText(text, 15), ClipboardContent::unknown);
    EXPECT_EQ(peekClipboardText(text, 15), ClipboardContent::unknown);
    int requests = 0;
    XSync(other, False);
    while (XPending(other) > 0) {
        XEvent e;
        XNextEvent(other, &e);
        requests += e.type == SelectionRequest;
    }
    EXPECT_EQ(requests, 1) << "the hung owner was asked again at once";

    // An owner that lists text among its targets but sends it too slowly.
    const ::Window slow = XCreateSimpleWindow(other, DefaultRootWindow(other), 0, 0, 1, 1, 0, 0, 0);
    XSetSelectionOwner(other, clipboard, slow, CurrentTime);
    XSync(other, False);
    std::atomic<bool> stop{false};
    std::thread answering([&] {
        const Atom targets = XInternAtom(other, "TARGETS", False), utf8 = XInternAtom(other, "UTF8_STRING", False);
        while (!stop.load()) {
            if (XPending(other) == 0) {
                usleep(1000);
                continue;
            }
            XEvent e;
            XNextEvent(other, &e);
            if (e.type != SelectionRequest || e.xselectionrequest.target != targets) continue;
            const Atom list[] = {targets, utf8};
            XChangeProperty(other, e.xselectionrequest.requestor, e.xselectionrequest.property, XA_ATOM, 32,
                            PropModeReplace, reinterpret_cast<const unsigned char*>(list), 2);
            XSelectionEvent reply{};
            reply.type = SelectionNotify;
            reply.requestor = e.xselectionrequest.requestor;
            reply.selection = e.xselectionrequest.selection;
            reply.target = targets;
            reply.property = e.xselectionrequest.property;
            XSendEvent(other, reply.requestor, False, NoEventMask, reinterpret_cast<XEvent*>(&reply));
            XFlush(other);
        }
    });
    EXPECT_EQ(peekClipboardText(text, 15), ClipboardContent::unknown);
    stop.store(true);
    answering.join();

    // No owner at all: nothing to paste.
    XSetSelectionOwner(other, clipboard, None, CurrentTime);
    XSync(other, False);
    EXPECT_EQ(peekClipboardText(text, 15), ClipboardContent::none);
    XCloseDisplay(other);
}

}  // namespace
}  // namespace tw
