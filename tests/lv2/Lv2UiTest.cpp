// The plug-in's UI in a real X window, as an LV2 host embeds it: a drag on a knob is heard
// as the host's touch around port writes, and the host's values come back.
#include <gtest/gtest.h>

#include <lv2/atom/atom.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/options/options.h>

// The LV2 headers before X11's, whose macros (None, Bool) would break them.
#include "tests/lv2/Lv2Host.h"
#include "tests/XServer.h"

namespace tw::test {
namespace {

struct UiHost {
    struct Write {
        std::uint32_t port;
        float value;
    };
    std::vector<Write> writes;
    std::vector<std::pair<std::uint32_t, bool>> touches;
    int width = 0, height = 0;

    static void write(LV2UI_Controller c, std::uint32_t port, std::uint32_t size, std::uint32_t format, const void* buffer) {
        if (format == 0 && size == sizeof(float))
            static_cast<UiHost*>(c)->writes.push_back({port, *static_cast<const float*>(buffer)});
    }
    static void touch(LV2UI_Feature_Handle h, std::uint32_t port, bool grabbed) {
        static_cast<UiHost*>(h)->touches.emplace_back(port, grabbed);
    }
    static int resize(LV2UI_Feature_Handle h, int w, int hgt) {
        static_cast<UiHost*>(h)->width = w;
        static_cast<UiHost*>(h)->height = hgt;
        return 0;
    }
};

void sendButton(Display* d, ::Window w, int type, int x, int y) {
    XEvent e{};
    e.type = type;
    if (type == MotionNotify) {
        e.xmotion = {MotionNotify, 0, True, d, w, DefaultRootWindow(d), None, CurrentTime, x, y, x, y, Button1Mask, 0, True};
    } else {
        e.xbutton = {type, 0, True, d, w, DefaultRootWindow(d), None, CurrentTime, x, y, x, y, 0, Button1, True};
        if (type == ButtonRelease) e.xbutton.state = Button1Mask;
    }
    XSendEvent(d, w, False, NoEventMask, &e);
    XFlush(d);
}

TEST(Lv2Ui, ADragOnAKnobIsHeardAsTouchAroundPortWrites) {
    if (!haveDisplay()) GTEST_SKIP() << noDisplayMessage;
    Display* display = openDisplay();
    ASSERT_TRUE(display);
    const ::Window parent = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 600, 500, 0, 0, 0);
    XMapWindow(display, parent);
    XSync(display, False);

    UridMap map;
    Lv2Host plugin(map);
    UiHost host;
    LV2UI_Touch touch{&host, UiHost::touch};
    LV2UI_Resize resize{&host, UiHost::resize};
    const LV2_Feature parentFeature{LV2_UI__parent, reinterpret_cast<void*>(parent)};
    const LV2_Feature accessFeature{LV2_INSTANCE_ACCESS_URI, plugin.handle};
    const LV2_Feature touchFeature{LV2_UI__touch, &touch};
    const LV2_Feature resizeFeature{LV2_UI__resize, &resize};
    const LV2_Feature* features[] = {map.feature(), &parentFeature, &accessFeature, &touchFeature, &resizeFeature, nullptr};

    const LV2UI_Descriptor* ui = lv2::uiDescriptor(tidewakeLv2());
    LV2UI_Widget widget = nullptr;
    LV2UI_Handle handle = ui->instantiate(ui, "urn:marlinworks:tidewake", "/nonexistent/", UiHost::write, &host,
                                          &widget, features);
    ASSERT_TRUE(handle);
    ASSERT_TRUE(widget);
    EXPECT_EQ(host.width, 525);
    EXPECT_EQ(host.height, 475);
    const auto* idle = static_cast<const LV2UI_Idle_Interface*>(ui->extension_data(LV2_UI__idleInterface));
    ASSERT_TRUE(idle);
    auto pump = [&](int passes) {
        for (int i = 0; i < passes; ++i) {
            EXPECT_EQ(idle->idle(handle), 0);
            usleep(2000);
        }
    };
    pump(50);
    host.writes.clear();  // the first sync tells the host what every port shows

    // Up the delay-time knob, 40 pixels in steps.
    const ::Window editor = reinterpret_cast<::Window>(widget);
    sendButton(display, editor, ButtonPress, 312, 116);
    pump(5);
    for (int y = 111; y >= 76; y -= 5) {
        sendButton(display, editor, MotionNotify, 312, y);
        pump(3);
    }
    sendButton(display, editor, ButtonRelease, 312, 76);
    pump(10);

    Instance& instance = plugin.plugin().instance();
    const std::uint32_t port = [&] {
        for (std::uint32_t i = 0; i < 19; ++i)
            if (instance.descriptor().parameters[static_cast<std::size_t>(plugin.plugin().idOf(lv2::firstControl + i))].name ==
                "delayTime")
                return lv2::firstControl + i;
        return 0u;
    }();
    ASSERT_GE(host.touches.size(), 2u);
    EXPECT_EQ(host.touches.front(), std::make_pair(port, true));
    EXPECT_EQ(host.touches.back(), std::make_pair(port, false));
    ASSERT_FALSE(host.writes.empty());
    for (const auto& w : host.writes) EXPECT_EQ(w.port, port);
    EXPECT_GT(host.writes.back().value, 0.0f) << "the knob went up from its minimum";

    // The host echoes the value into the port: the plug-in takes it, and it is the same.
    const float dragged = instance.parameterValue(static_cast<int>(plugin.plugin().idOf(port)));
    plugin.control("delayTime") = host.writes.back().value;
    plugin.run(64);
    EXPECT_EQ(instance.parameterValue(static_cast<int>(plugin.plugin().idOf(port))), dragged);

    // A program change in the instance reaches the host as port writes.
    host.writes.clear();
    instance.setCurrentProgram(4);
    instance.updateDisplay();
    pump(3);
    EXPECT_FALSE(host.writes.empty());

    ui->cleanup(handle);
    XDestroyWindow(display, parent);
    XCloseDisplay(display);
}

// A host that draws its own windows at 150 % says so in ui:scaleFactor: the editor opens
// drawn at 150 % and asks for that size.
TEST(Lv2Ui, TheHostsScaleFactorOpensTheEditorAtItsZoom) {
    if (!haveDisplay()) GTEST_SKIP() << noDisplayMessage;
    Display* display = openDisplay();
    ASSERT_TRUE(display);
    const ::Window parent = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 800, 720, 0, 0, 0);
    XMapWindow(display, parent);
    XSync(display, False);

    UridMap map;
    Lv2Host plugin(map);
    UiHost host;
    LV2UI_Resize resize{&host, UiHost::resize};
    const float scale = 1.5f;
    const LV2_Options_Option options[] = {
        {LV2_OPTIONS_INSTANCE, 0, map.map(LV2_UI__scaleFactor), sizeof scale, map.map(LV2_ATOM__Float), &scale},
        {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}};
    const LV2_Feature parentFeature{LV2_UI__parent, reinterpret_cast<void*>(parent)};
    const LV2_Feature accessFeature{LV2_INSTANCE_ACCESS_URI, plugin.handle};
    const LV2_Feature resizeFeature{LV2_UI__resize, &resize};
    const LV2_Feature optionsFeature{LV2_OPTIONS__options, const_cast<LV2_Options_Option*>(options)};
    const LV2_Feature* features[] = {map.feature(), &parentFeature, &accessFeature, &resizeFeature, &optionsFeature, nullptr};

    const LV2UI_Descriptor* ui = lv2::uiDescriptor(tidewakeLv2());
    LV2UI_Widget widget = nullptr;
    LV2UI_Handle handle = ui->instantiate(ui, "urn:marlinworks:tidewake", "/nonexistent/", UiHost::write, &host,
                                          &widget, features);
    ASSERT_TRUE(handle);
    EXPECT_EQ(host.width, 788);
    EXPECT_EQ(host.height, 713);
    XWindowAttributes attributes{};
    XGetWindowAttributes(display, reinterpret_cast<::Window>(widget), &attributes);
    EXPECT_EQ(attributes.width, 788);
    EXPECT_EQ(attributes.height, 713);

    ui->cleanup(handle);
    XDestroyWindow(display, parent);
    XCloseDisplay(display);
}

}  // namespace
}  // namespace tw::test
