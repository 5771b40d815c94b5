// The editor at every zoom: the main layout's rectangles and hit areas at each level, a
// drag that turns a knob as far for the same hand movement, the longest values in their
// captions, where the zoom comes from, the user's choice kept, and a host that takes or
// refuses the new size of an open editor.
#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <regex>

#include "cushy/CaptionView.h"
#include "cushy/CushyView.h"
#include "cushy/KnobView.h"
#include "cushy/LayoutZoom.h"
#include "cushy/PopupMenu.h"
#include "cushy/doubles/WindowDouble.h"
#include "editor/ModelController.h"
#include "editor/ZoomChoice.h"
#include "graphics/Font.h"
#include "graphics/PNGWriter.h"
#include "graphics/ResourceManager.h"
#include "patch/Prefs.h"
#include "platform/DesktopScale.h"
#include "product/TidewakeDescriptor.h"
#include "product/TidewakeEditorFactory.h"
#include "tests/XServer.h"
#include "tests/host/ProductResources.h"
#include "tests/host/TestHost.h"

namespace {

using namespace tw;
using tw::test::TestHost;
using tw::test::resources;
using tw::test::strings;
using namespace tw::test;

// Every view of a tree, depth first, as the walk meets them.
void collect(View& view, std::vector<View*>& out) {
    out.push_back(&view);
    if (auto* container = dynamic_cast<ContainerView*>(&view))
        for (const ViewRef& child : container->children()) collect(*child, out);
}

// The main layout open in a window double at one zoom.
struct ZoomedFace {
    TestHost host;
    std::unique_ptr<ModelController> controller;
    std::unique_ptr<WindowDouble> window;

    explicit ZoomedFace(std::int32_t percent) {
        controller = tidewakeEditor().createController(host.instance(), resources(), strings());
        controller->setZoom(Zoom(percent));
        const IntRect size = controller->size();
        window = std::make_unique<WindowDouble>(controller->client(), size.width, size.height);
        controller->open(window.get());
        window->advance(20);
    }
    ~ZoomedFace() { controller->close(); }

    std::vector<View*> views() {
        std::vector<View*> out;
        collect(controller->rootView(), out);
        return out;
    }
    std::string get(const std::string& name) { return controller->getVariable(controller->rootView(), name); }
};

TEST(Zoom, EveryRectangleOfTheFaceIsTheHundredPercentOneZoomedEdgeByEdge) {
    ZoomedFace base(100);
    const std::vector<View*> plain = base.views();
    for (const std::int32_t percent : {125, 150, 175, 200}) {
        ZoomedFace face(percent);
        const Zoom zoom(percent);
        EXPECT_EQ(face.controller->size().width, zoom.length(525)) << percent;
        EXPECT_EQ(face.controller->size().height, zoom.length(475)) << percent;
        const std::vector<View*> zoomed = face.views();
        ASSERT_EQ(zoomed.size(), plain.size()) << percent;
        for (std::size_t i = 1; i < plain.size(); ++i) {
            const IntRect& a = plain[i]->screenFrame();
            const IntRect& b = zoomed[i]->screenFrame();
            EXPECT_EQ(b.left, zoom.edge(a.left)) << percent << " view " << i;
            EXPECT_EQ(b.top, zoom.edge(a.top)) << percent << " view " << i;
            EXPECT_EQ(b.right(), zoom.edge(a.right())) << percent << " view " << i;
            EXPECT_EQ(b.bottom(), zoom.edge(a.bottom())) << percent << " view " << i;
            // The hit areas follow: what a point over a knob finds at 100 %, the same point
            // zoomed finds too.
            if (dynamic_cast<KnobView*>(plain[i]) != nullptr) {
                const ViewPoint at{a.left + a.width / 3, a.top + a.height / 3};
                const View* hitPlain = base.controller->rootView().hitTest(at);
                const View* hitZoomed = face.controller->rootView().hitTest({zoom.length(at.x), zoom.length(at.y)});
                const auto indexIn = [](const std::vector<View*>& views, const View* v) {
                    return std::find(views.begin(), views.end(), v) - views.begin();
                };
                EXPECT_EQ(indexIn(zoomed, hitZoomed), indexIn(plain, hitPlain)) << percent << " knob " << i;
            }
        }
    }
}

TEST(Zoom, ADragOfNPixelsAtTwoHundredTurnsAKnobAsHalfAsManyDoAtOneHundred) {
    // The Wet knob's value after a drag of `pixels` from its centre, up (negative) or down.
    auto drag = [](std::int32_t percent, std::int32_t pixels) {
        ZoomedFace face(percent);
        const Zoom zoom(percent);
        const std::int32_t x = zoom.length(458), y = zoom.length(292), step = pixels < 0 ? -1 : 1;
        face.window->mouseMove(x, y);
        face.window->mouseDown(x, y);
        for (std::int32_t d = step; d != pixels + step; d += step) face.window->mouseMove(x, y + d, 1u << leftButton);
        face.window->mouseUp(x, y + pixels);
        face.window->advance(20);
        return face.host.instance().getParameter(0, Param::wetMix);
    };
    // Down from full, so that the drag is not held at the top.
    auto down = [&](std::int32_t percent, std::int32_t pixels) { return drag(percent, pixels); };
    auto dragged = [&](std::int32_t percent, std::int32_t pixels) { return drag(percent, -pixels); };
    EXPECT_EQ(down(200, 40), down(100, 20));
    EXPECT_EQ(down(200, 64), down(100, 32));
    EXPECT_LT(down(200, 40), 1.0f);
    EXPECT_EQ(dragged(200, 10), dragged(100, 5)) << "held at the top either way";
}

TEST(Zoom, TheLongestValuesFitTheirCaptionsAtEveryLevel) {
    for (const std::int32_t percent : Zoom::levels) {
        ZoomedFace face(percent);
        Instance& instance = face.host.instance();
        // The texts that run longest: the extremes and a sweep of each parameter in every
        // range, target and sync that changes its unit.
        std::map<std::string, std::string> longest;
        auto note = [&](int id, float value) {
            const std::string text = instance.parameterText(id, value);
            std::string& kept = longest[instance.descriptor().parameters[std::size_t(id)].name];
            if (text.size() > kept.size()) kept = text;
        };
        const ModelDescriptor& d = instance.descriptor();
        for (std::size_t id = 0; id < d.parameters.size(); ++id) {
            for (const float mode : {0.0f, 1.0f / 3, 2.0f / 3, 1.0f}) {
                for (const int setting : {Param::freqShiftRange, Param::lfoTarget}) instance.setParameterFromHost(setting, mode);
                for (const float sync : {0.0f, 1.0f}) {
                    instance.setParameterFromHost(Param::lfoSync, sync);
                    instance.setParameterFromHost(Param::delaySync, sync);
                    for (int step = 0; step <= 200; ++step) note(int(id), float(step) / 200);
                }
            }
        }
        // Each value caption of the layout must hold its parameter's longest text whole.
        const std::vector<std::uint8_t> bytes = resources().loadBinary("cushy", "Tidewake_main");
        const std::string layout(bytes.begin(), bytes.end());
        const std::regex caption(R"~(type: caption, bounds: \{ (\d+), \d+, (\d+), \d+ \}, text: "\[var\]params\.(\w+)\.human\[/var\]")~");
        const Zoom zoom(percent);
        const std::shared_ptr<tw::Font> bold = resources().getFont("{ fnt: " + zoom.resourceName("Tidewake_sans_11_bold") + " }");
        int checked = 0;
        for (auto it = std::sregex_iterator(layout.begin(), layout.end(), caption); it != std::sregex_iterator(); ++it) {
            const std::int32_t left = std::stoi((*it)[1]), width = std::stoi((*it)[2]);
            const std::string text = longest[(*it)[3]];
            const std::u16string wide(text.begin(), text.end());
            EXPECT_LE(bold->measure(Point{0, 0}, wide, false).width, zoom.edge(left + width) - zoom.edge(left))
                << percent << " %: " << (*it)[3] << " \"" << text << "\"";
            ++checked;
        }
        EXPECT_GE(checked, 11) << percent;
    }
}

// The windows the editor opens over itself, and its modal layouts, at 100 and 200 %: each
// twice as large at 200 %, within a pixel or two of rounding. The pictures are kept in the
// build's pictures/zoom to be looked at.
TEST(Zoom, MenusBoxesAndTheModalLayoutsFollowTheZoom) {
    struct Seen {
        std::int32_t menuWidth = 0, menuItem = 0, entryWidth = 0, entryHeight = 0, dialogWidth = 0;
    };
    auto look = [](std::int32_t percent) {
        ZoomedFace face(percent);
        const Zoom zoom(percent);
        const std::filesystem::path folder = std::filesystem::path(TIDEWAKE_BINARY_DIR) / "pictures" / "zoom";
        std::filesystem::create_directories(folder);
        const std::string suffix = "-" + std::to_string(percent) + ".png";
        Seen seen;
        auto click = [&](std::int32_t x, std::int32_t y) {
            face.window->mouseMove(zoom.length(x), zoom.length(y));
            face.window->mouseDown(zoom.length(x), zoom.length(y));
            face.window->mouseUp(zoom.length(x), zoom.length(y));
            face.window->advance(20);
        };
        // The main menu: its width and an item's height, then closed.
        face.window->user = [&](WindowDouble& w) {
            auto& menu = static_cast<PopupMenu&>(w.topHelper()->client());
            seen.menuWidth = menu.width();
            seen.menuItem = menu.itemRect(0).height;
            writePNG((folder / ("menu" + suffix)).string(), w.topHelper()->screenshot());
            w.topHelper()->key(Key::escape);
        };
        click(501, 20);
        // The value entry of the delay time.
        face.window->user = [&](WindowDouble& w) {
            seen.entryWidth = w.topHelper()->width();
            seen.entryHeight = w.topHelper()->height();
            writePNG((folder / ("entry" + suffix)).string(), w.topHelper()->screenshot());
            w.topHelper()->key(Key::escape);
        };
        click(312, 150);
        // The file dialog, from the menu's "Open...".
        face.window->user = [&](WindowDouble& w) {
            WindowDouble* top = w.topHelper();
            if (auto* menu = dynamic_cast<PopupMenu*>(&top->client())) {
                const IntRect r = menu->itemRect(9);
                top->mouseMove(r.left + 10, r.top + r.height / 2);
                top->mouseDown(r.left + 10, r.top + r.height / 2);
                top->mouseUp(r.left + 10, r.top + r.height / 2);
                return;
            }
            seen.dialogWidth = top->width();
            writePNG((folder / ("open" + suffix)).string(), top->screenshot());
            top->key(Key::escape);
        };
        click(501, 20);
        face.window->user = nullptr;
        // The about box and the tour's first page, drawn over the face.
        face.controller->setVariable(face.controller->rootView(), "modalLayout", "Tidewake_about", false);
        face.controller->update(face.controller->rootView());
        face.window->paintAll();
        face.window->advance(600);
        face.window->paintAll();
        writePNG((folder / ("about" + suffix)).string(), face.window->screenshot());
        face.controller->setVariable(face.controller->rootView(), "modalLayout", "", false);
        face.controller->update(face.controller->rootView());
        face.window->advance(600);
        click(465, 20);
        // The page types itself out from its first paint on.
        face.window->paintAll();
        face.window->advance(4000);
        face.window->paintAll();
        writePNG((folder / ("tour" + suffix)).string(), face.window->screenshot());
        return seen;
    };
    const Seen at100 = look(100), at200 = look(200);
    ASSERT_GT(at100.menuWidth, 0);
    ASSERT_GT(at100.entryWidth, 0);
    EXPECT_NEAR(at200.menuWidth, 2 * at100.menuWidth, 8) << "the widest caption sets it, in a font of its own size";
    EXPECT_EQ(at200.menuItem, 2 * at100.menuItem);
    EXPECT_NEAR(at200.entryWidth, 2 * at100.entryWidth, 8);
    EXPECT_EQ(at200.entryHeight, 2 * at100.entryHeight);
    ASSERT_GT(at100.dialogWidth, 0);
    EXPECT_EQ(at200.dialogWidth, 2 * at100.dialogWidth);
}

TEST(Zoom, TheHostComesFirstThenTheUserThenTheDesktop) {
    EXPECT_EQ(chooseZoom({}).percent(), 100);
    EXPECT_EQ(chooseZoom({std::nullopt, std::nullopt, 2.0}).percent(), 200);
    EXPECT_EQ(chooseZoom({std::nullopt, 150, 2.0}).percent(), 150);
    EXPECT_EQ(chooseZoom({1.25, 150, 2.0}).percent(), 125);
    EXPECT_EQ(chooseZoom({1.0, 200, 2.0}).percent(), 100) << "the host's 100 % is a word too";
    EXPECT_EQ(chooseZoom({1.4, std::nullopt, std::nullopt}).percent(), 150) << "the nearest level";
    EXPECT_EQ(chooseZoom({3.0, std::nullopt, std::nullopt}).percent(), 200) << "held to the largest";
    EXPECT_EQ(hostScaleFactor(100), 1.0) << "a host that sends the percentage";
    EXPECT_FALSE(hostScaleFactor(0));
    EXPECT_FALSE(hostScaleFactor(-1));

    EXPECT_EQ(desktopScale({"2", "1.5", "Xft.dpi:\t120\n"}), 2.0);
    EXPECT_EQ(desktopScale({"", "1.5", "Xft.dpi:\t120\n"}), 1.5);
    EXPECT_EQ(desktopScale({"", "", "Xft.antialias:\t1\nXft.dpi:\t144\n"}), 1.5);
    EXPECT_EQ(desktopScale({"0", "nonsense", "Xft.dpi:\t96\n"}), 1.0) << "settings that make no sense are passed over";
    EXPECT_FALSE(desktopScale({"", "", "Xft.hinting:\t1\n"}));
    EXPECT_FALSE(desktopScale({}));
}

TEST(Zoom, TheUsersChoiceIsKeptForEveryNewEditor) {
    ::unsetenv("GDK_SCALE");
    ::unsetenv("QT_SCALE_FACTOR");
    ZoomedFace face(100);
    CushyView& root = face.controller->rootView();
    face.controller->perform(root, "zoom", "{ percent: 150 }");
    EXPECT_TRUE(face.controller->isChecked(root, "zoom", "{ percent: 150 }"));
    EXPECT_FALSE(face.controller->isChecked(root, "zoom", "{ percent: 0 }"));
    {
        const Prefs prefs(tidewakeDescriptor());
        EXPECT_EQ(userZoom(prefs), 150);
    }
    TestHost other;
    vst2::ERect* rect = nullptr;
    other.dispatch(vst2::effEditGetRect, 0, 0, &rect);
    ASSERT_NE(rect, nullptr);
    EXPECT_EQ(rect->right - rect->left, 788) << "a new editor opens at the choice";
    EXPECT_EQ(rect->bottom - rect->top, 713);
    face.controller->perform(root, "zoom", "{ percent: 0 }");
    EXPECT_TRUE(face.controller->isChecked(root, "zoom", "{ percent: 0 }"));
    {
        const Prefs prefs(tidewakeDescriptor());
        EXPECT_FALSE(userZoom(prefs)) << "following the system again";
    }
}

// The editor in a real host window: a pick in the zoom menu resizes it in place when the
// host takes the size, and leaves it with a word on the status line when it does not.
class ZoomOnX11 : public ::testing::Test {
protected:
    void SetUp() override {
        if (!haveDisplay()) GTEST_SKIP() << noDisplayMessage;
        ::unsetenv("GDK_SCALE");
        ::unsetenv("QT_SCALE_FACTOR");
        Prefs(tidewakeDescriptor()).remove("zoom");
    }
};

struct HostWindow {
    Display* display = openDisplay();
    ::Window id = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 525, 475, 0, 0, 0xFF00FF);
    HostWindow() {
        XMapWindow(display, id);
        XSync(display, False);
    }
    ~HostWindow() {
        XDestroyWindow(display, id);
        XCloseDisplay(display);
    }
    // The size of the editor's own window, the parent's only child.
    std::pair<int, int> childSize() {
        XSync(display, False);
        ::Window root = 0, up = 0, *list = nullptr;
        unsigned count = 0;
        XQueryTree(display, id, &root, &up, &list, &count);
        std::pair<int, int> size{0, 0};
        if (count == 1) {
            XWindowAttributes a;
            XGetWindowAttributes(display, list[0], &a);
            size = {a.width, a.height};
        }
        if (list) XFree(list);
        return size;
    }
};

void pickZoom(TestHost& host, const char* params) {
    Editor* editor = Vst2Plugin::of(host.effect)->editor();
    ModelController* controller = editor->controller();
    controller->perform(controller->rootView(), "zoom", params);
    for (int i = 0; i < 5; ++i) {
        host.dispatch(vst2::effEditIdle);
        usleep(2000);
    }
}

TEST_F(ZoomOnX11, AHostThatTakesTheSizeGetsTheEditorRedrawnInPlace) {
    TestHost host;
    host.acceptsSize = true;
    HostWindow parent;
    ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, reinterpret_cast<void*>(parent.id)), 1);
    EXPECT_EQ(parent.childSize(), std::make_pair(525, 475));
    pickZoom(host, "{ percent: 200 }");
    const std::vector<tw::test::HostCall> asked = host.callsOf(vst2::audioMasterSizeWindow);
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].index, 1050);
    EXPECT_EQ(asked[0].value, 950);
    EXPECT_EQ(parent.childSize(), std::make_pair(1050, 950));
    vst2::ERect* rect = nullptr;
    host.dispatch(vst2::effEditGetRect, 0, 0, &rect);
    EXPECT_EQ(rect->right - rect->left, 1050);
    EXPECT_EQ(rect->bottom - rect->top, 950);
    host.dispatch(vst2::effEditClose);
    Prefs(tidewakeDescriptor()).remove("zoom");
}

TEST_F(ZoomOnX11, AHostThatRefusesKeepsTheSizeAndTheStatusLineSaysSo) {
    TestHost host;
    HostWindow parent;
    ASSERT_EQ(host.dispatch(vst2::effEditOpen, 0, 0, reinterpret_cast<void*>(parent.id)), 1);
    pickZoom(host, "{ percent: 150 }");
    EXPECT_EQ(host.callsOf(vst2::audioMasterSizeWindow).size(), 1u) << "asked once";
    EXPECT_EQ(parent.childSize(), std::make_pair(525, 475));
    vst2::ERect* rect = nullptr;
    host.dispatch(vst2::effEditGetRect, 0, 0, &rect);
    EXPECT_EQ(rect->right - rect->left, 525) << "the host is told the size it has";
    ModelController* controller = Vst2Plugin::of(host.effect)->editor()->controller();
    EXPECT_EQ(controller->getVariable(controller->rootView(), "status.hint"), "The host keeps the editor at its size.");
    EXPECT_EQ(controller->zoom().percent(), 100);
    EXPECT_EQ(controller->getVariable(controller->rootView(), "PLATFORM.FORMAT"), "VST 2.4") << "as the about box says";
    host.dispatch(vst2::effEditClose);
    Prefs(tidewakeDescriptor()).remove("zoom");
}

TEST_F(ZoomOnX11, TheHostsScaleComesBeforeTheUsersChoice) {
    {
        Prefs prefs(tidewakeDescriptor());
        setUserZoom(prefs, 150);
    }
    TestHost host;
    host.dispatch(vst2::effVendorSpecific, vst2::fourCC("PreS"), vst2::fourCC("AeCs"), nullptr, 2.0f);
    vst2::ERect* rect = nullptr;
    host.dispatch(vst2::effEditGetRect, 0, 0, &rect);
    EXPECT_EQ(rect->right - rect->left, 1050);
    TestHost plain;
    plain.dispatch(vst2::effEditGetRect, 0, 0, &rect);
    EXPECT_EQ(rect->right - rect->left, 788) << "without the host's word, the user's choice";
    Prefs(tidewakeDescriptor()).remove("zoom");
}

}  // namespace
