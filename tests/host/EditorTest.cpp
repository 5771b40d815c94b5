// The plug-in's editor through the host's editor calls, against a real X server: the
// main layout reaches the host's window, several instances keep editors open at once,
// the host may destroy its window first, opening and closing leaves nothing behind, and
// closing keeps the session's changes in the startup bank; hidden by the host, it rests.
#include <gtest/gtest.h>

#include <X11/Xutil.h>
#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "patch/StartupBank.h"
#include "product/TidewakeDescriptor.h"
#include "platform/Folders.h"
#include "platform/SharedStore.h"
#include "platform/X11Window.h"
#include "tests/XServer.h"
#include "tests/host/TestHost.h"

using namespace tw;
using namespace tw::test;

namespace {

// The host's window for the editor, on the host's own connection.
struct ParentWindow {
    Display* display = openDisplay();
    ::Window id = 0;

    explicit ParentWindow(int x = 0) {
        XSetWindowAttributes a{};
        a.background_pixel = 0xFF00FF;
        a.override_redirect = True;
        id = XCreateWindow(display, DefaultRootWindow(display), x, 0, 525, 475, 0, CopyFromParent, InputOutput,
                           CopyFromParent, CWBackPixel | CWOverrideRedirect, &a);
        XMapWindow(display, id);
        XSync(display, False);
    }
    ~ParentWindow() {
        if (id) XDestroyWindow(display, id);
        XCloseDisplay(display);
    }
    void* handle() const { return reinterpret_cast<void*>(id); }
    unsigned children() {
        ::Window root = 0, up = 0, *list = nullptr;
        unsigned count = 0;
        XQueryTree(display, id, &root, &up, &list, &count);
        if (list) XFree(list);
        return count;
    }
    std::uint32_t pixel(int x, int y) {
        XSync(display, False);
        XImage* image = XGetImage(display, id, x, y, 1, 1, AllPlanes, ZPixmap);
        const auto p = std::uint32_t(XGetPixel(image, 0, 0) & 0xFFFFFF);
        XDestroyImage(image);
        return p;
    }
};

// Idle calls, as a host makes them, until the editor has painted the host's window.
bool idleUntilPainted(TestHost& host, ParentWindow& parent) {
    for (int i = 0; i < 500; ++i) {
        host.dispatch(vst2::effEditIdle);
        if (parent.pixel(262, 237) != 0xFF00FF) return true;
        usleep(2000);
    }
    return false;
}

int openFiles() {
    int n = 0;
    DIR* d = opendir("/proc/self/fd");
    while (readdir(d)) ++n;
    closedir(d);
    return n;
}

// Shared-memory segments mapped into the process.
int sharedSegments() {
    std::ifstream maps("/proc/self/maps");
    int n = 0;
    for (std::string line; std::getline(maps, line);) n += line.find("SYSV") != std::string::npos;
    return n;
}

class Editor : public ::testing::Test {
protected:
    void SetUp() override {
        if (!haveDisplay()) GTEST_SKIP() << noDisplayMessage;
    }
};

TEST_F(Editor, TheMainLayoutReachesTheHostsWindow) {
    TestHost host;
    ParentWindow parent;
    ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, parent.handle()), 1);
    EXPECT_EQ(parent.children(), 1u);
    ASSERT_TRUE(idleUntilPainted(host, parent));
    EXPECT_EQ(parent.pixel(2, 2), 0x132F48u) << "the header bar of the backdrop, not the page of a layout error";
    EXPECT_EQ(parent.pixel(2, 66), 0x0F2232u) << "the ground of the backdrop, beside the panels";
    host.dispatch(vst2::effEditClose);
    EXPECT_EQ(parent.children(), 0u);
}

TEST_F(Editor, SeveralInstancesKeepEditorsOpenAtOnce) {
    TestHost first, second;
    ParentWindow one(0), two(600);
    ASSERT_EQ(first.dispatch(vst2::effEditOpen, 0, 0, one.handle()), 1);
    ASSERT_EQ(second.dispatch(vst2::effEditOpen, 0, 0, two.handle()), 1);
    EXPECT_TRUE(idleUntilPainted(first, one));
    EXPECT_TRUE(idleUntilPainted(second, two));
    first.dispatch(vst2::effEditClose);
    EXPECT_EQ(one.children(), 0u);
    EXPECT_EQ(two.children(), 1u);
    second.dispatch(vst2::effEditIdle);
    second.dispatch(vst2::effEditClose);
}

// The window's pixels as the server shows them.
std::vector<std::uint32_t> windowPixels(ParentWindow& parent) {
    XSync(parent.display, False);
    XImage* image = XGetImage(parent.display, parent.id, 0, 0, 525, 475, AllPlanes, ZPixmap);
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < 475; ++y)
        for (int x = 0; x < 525; ++x) pixels.push_back(std::uint32_t(XGetPixel(image, x, y) & 0xFFFFFF));
    XDestroyImage(image);
    return pixels;
}

TEST_F(Editor, HiddenByItsHostTheEditorRestsAndShowsWhatChangedMeanwhileAtOnce) {
    TestHost host;
    ParentWindow parent;
    ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, parent.handle()), 1);
    ASSERT_TRUE(idleUntilPainted(host, parent));
    for (int i = 0; i < 20; ++i) {  // the first ticks' own repaints, if any
        host.dispatch(vst2::effEditIdle);
        usleep(5000);
    }
    auto& window = static_cast<X11Window&>(*Vst2Plugin::of(host.effect)->editor()->window());
    const std::vector<std::uint32_t> before = windowPixels(parent);

    // Ardour's close: the host hides its window and leaves the editor open.
    XUnmapWindow(parent.display, parent.id);
    XSync(parent.display, False);
    for (int i = 0; i < 500 && !window.resting(); ++i) {
        host.dispatch(vst2::effEditIdle);
        usleep(2000);
    }
    ASSERT_TRUE(window.resting());
    host.dispatch(vst2::effEditIdle);
    Display* ours = window.session()->connection->display();
    const std::uint64_t frames = window.framesShown();
    const unsigned long requests = XNextRequest(ours);
    // Meanwhile the host changes a parameter that the editor shows on a knob.
    host.instance().setParameterFromHost(Param::wetMix, 0.25f);
    for (int i = 0; i < 30; ++i) {  // some thirty fast ticks' worth, at a host's idle rate
        host.dispatch(vst2::effEditIdle);
        usleep(10000);
    }
    EXPECT_EQ(window.framesShown(), frames);
    EXPECT_EQ(XNextRequest(ours), requests);

    XMapWindow(parent.display, parent.id);
    XSync(parent.display, False);
    for (int i = 0; i < 500 && window.resting(); ++i) {
        host.dispatch(vst2::effEditIdle);
        if (window.resting()) usleep(2000);
    }
    ASSERT_FALSE(window.resting());
    // The pass that saw the window again painted it, the new value with it.
    EXPECT_GT(window.framesShown(), frames);
    const std::vector<std::uint32_t> after = windowPixels(parent);
    std::size_t differing = 0;
    for (std::size_t i = 0; i < before.size(); ++i) differing += before[i] != after[i];
    EXPECT_GT(differing, 20u) << "the wet-mix knob shows its new value";
    EXPECT_LT(differing, before.size() / 4) << "the rest of the editor as before";
    host.dispatch(vst2::effEditClose);
}

TEST_F(Editor, TheHostMayDestroyItsWindowBeforeClosing) {
    TestHost host;
    ParentWindow parent;
    ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, parent.handle()), 1);
    ASSERT_TRUE(idleUntilPainted(host, parent));
    XDestroyWindow(parent.display, parent.id);
    XSync(parent.display, False);
    parent.id = 0;
    for (int i = 0; i < 5; ++i) host.dispatch(vst2::effEditIdle);
    EXPECT_EQ(host.dispatch(vst2::effEditClose), 1);
    // And the editor opens again in a new window.
    ParentWindow again;
    ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, again.handle()), 1);
    EXPECT_TRUE(idleUntilPainted(host, again));
}

TEST_F(Editor, OpeningAndClosingAHundredTimesLeavesNothingBehind) {
    TestHost host;
    ParentWindow parent;
    // One round first, so that what lives for the process (fonts, Xlib's own tables)
    // exists before counting.
    host.dispatch(vst2::effEditOpen, 0, 0, parent.handle());
    host.dispatch(vst2::effEditIdle);
    host.dispatch(vst2::effEditClose);
    const int files = openFiles(), segments = sharedSegments();
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, parent.handle()), 1);
        host.dispatch(vst2::effEditIdle);
        host.dispatch(vst2::effEditIdle);
        host.dispatch(vst2::effEditClose);
    }
    EXPECT_EQ(openFiles(), files) << "every connection closed";
    EXPECT_EQ(sharedSegments(), segments) << "every shared image released";
    EXPECT_EQ(parent.children(), 0u) << "every window destroyed";
}

TEST_F(Editor, ClosingWritesTheStartupBankOnlyAfterAChange) {
    const std::string store = sharedStoreFile().toString();
    std::remove(store.c_str());
    TestHost host;
    ParentWindow parent;
    ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, parent.handle()), 1);
    host.dispatch(vst2::effEditIdle);
    host.dispatch(vst2::effEditClose);
    EXPECT_FALSE(std::ifstream(store).good()) << "nothing changed, nothing written";

    ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, parent.handle()), 1);
    host.instance().editParameter(2, Param::wetMix, 0.25f);
    host.dispatch(vst2::effEditIdle);
    host.dispatch(vst2::effEditClose);
    std::vector<std::string> texts;
    int current = -1;
    ASSERT_TRUE(readStartupBank(tidewakeDescriptor(), SharedStore(sharedStoreFile()), texts, current));
    EXPECT_EQ(current, 0);
    EXPECT_TRUE(texts.at(0).empty());
    EXPECT_NE(texts.at(2).find("wetMix"), std::string::npos);
    std::remove(store.c_str());
}

TEST(EditorWithoutDisplay, OpeningAnswersZeroAndClosingStillWorks) {
    const char* old = std::getenv("DISPLAY");
    const std::string saved = old ? old : "";
    setenv("DISPLAY", ":4095", 1);  // no server there
    TestHost host;
    EXPECT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, reinterpret_cast<void*>(std::uintptr_t(0x400001))), 0);
    EXPECT_EQ(host.dispatch(vst2::effEditIdle), 1);
    EXPECT_EQ(host.dispatch(vst2::effEditClose), 1);
    if (old)
        setenv("DISPLAY", saved.c_str(), 1);
    else
        unsetenv("DISPLAY");
}

}  // namespace
