#include "tools/claphost/ClapEditorHost.h"

#include <X11/Xutil.h>
#include <poll.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace tw {

namespace {

// A colour no editor paints, so that the first frame shows as a change.
constexpr unsigned long parentBackground = 0xFF00FF;

double nowMs() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return double(ts.tv_sec) * 1e3 + double(ts.tv_nsec) / 1e6;
}

}  // namespace

ClapEditorHost::ClapEditorHost(HostedClap& plugin, const volatile std::sig_atomic_t* stop, double scale)
    : plugin_(plugin), stop_(stop) {
    const clap_plugin_gui_t* gui = plugin_.gui();
    const clap_plugin_t* p = &plugin_.plugin();
    if (gui == nullptr) throw std::runtime_error("the plug-in has no editor");
    if (!gui->is_api_supported(p, CLAP_WINDOW_API_X11, false))
        throw std::runtime_error("the plug-in's editor does not embed in an X11 window");
    for (int attempt = 0; attempt < 5 && !display_; ++attempt) {
        if (attempt > 0) poll(nullptr, 0, 20);
        display_ = XOpenDisplay(nullptr);
    }
    if (!display_) throw std::runtime_error("cannot open the X display (is DISPLAY set?)");
    if (!gui->create(p, CLAP_WINDOW_API_X11, false)) {
        XCloseDisplay(display_);
        throw std::runtime_error("the plug-in refused to create its editor");
    }
    created_ = true;
    if (scale > 0 && !gui->set_scale(p, scale)) std::fprintf(stderr, "the plug-in did not take the scale %g\n", scale);
    std::uint32_t w = 0, h = 0;
    if (!gui->get_size(p, &w, &h) || w == 0 || h == 0) w = 640, h = 480;
    width_ = static_cast<int>(w);
    height_ = static_cast<int>(h);
    const int screen = DefaultScreen(display_);
    XSetWindowAttributes a{};
    a.background_pixel = parentBackground;
    a.event_mask = StructureNotifyMask | SubstructureNotifyMask | PropertyChangeMask;
    parent_ = XCreateWindow(display_, RootWindow(display_, screen), 40, 40, w, h, 0, CopyFromParent, InputOutput,
                            CopyFromParent, CWBackPixel | CWEventMask, &a);
    const std::string title = std::string("claphost: ") + plugin_.descriptor().name;
    XStoreName(display_, parent_, title.c_str());
    deleteWindow_ = XInternAtom(display_, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(display_, parent_, &deleteWindow_, 1);
    XMapWindow(display_, parent_);
    XSync(display_, False);
    plugin_.resizeWindow = [this](std::uint32_t width, std::uint32_t height) {
        if (width == 0 || height == 0) return false;
        width_ = int(width), height_ = int(height);
        XResizeWindow(display_, parent_, width, height);
        XSync(display_, False);
        return true;
    };
    openedAt_ = nowMs();
    clap_window_t window{};
    window.api = CLAP_WINDOW_API_X11;
    window.x11 = parent_;
    if (!gui->set_parent(p, &window) || !gui->show(p)) {
        gui->destroy(p);
        XDestroyWindow(display_, parent_);
        XCloseDisplay(display_);
        throw std::runtime_error("the plug-in's editor did not open in the host's window");
    }
}

ClapEditorHost::~ClapEditorHost() {
    plugin_.gui()->destroy(&plugin_.plugin());
    plugin_.resizeWindow = nullptr;
    XDestroyWindow(display_, parent_);
    XCloseDisplay(display_);
}

void ClapEditorHost::pass(int maxWaitMs) {
    while (XPending(display_) > 0) {
        XEvent event;
        XNextEvent(display_, &event);
        if (event.type == ClientMessage && Atom(event.xclient.data.l[0]) == deleteWindow_) closed_ = true;
        if (event.type == DestroyNotify && event.xdestroywindow.window == parent_) closed_ = true;
    }
    const int untilTimer = plugin_.serviceMainThread();
    const int wait = untilTimer < 0 ? maxWaitMs : std::min(untilTimer, maxWaitMs);
    pollfd fd{ConnectionNumber(display_), POLLIN, 0};
    poll(&fd, 1, std::max(wait, 1));
}

void ClapEditorHost::run(double seconds, const std::function<void()>& between) {
    const double end = nowMs() + seconds * 1e3;
    while (!closed() && (seconds <= 0 || nowMs() < end)) {
        pass(5);
        if (between) between();
    }
}

bool ClapEditorHost::showsBackgroundOnly() {
    const int xs[] = {width_ / 2, 2, width_ - 3, width_ / 4, 3 * width_ / 4};
    const int ys[] = {height_ / 2, 2, height_ - 3, 3 * height_ / 4, height_ / 4};
    for (int i = 0; i < 5; ++i) {
        XImage* image = XGetImage(display_, parent_, xs[i], ys[i], 1, 1, AllPlanes, ZPixmap);
        if (!image) continue;
        const unsigned long pixel = XGetPixel(image, 0, 0) & 0xFFFFFF;
        XDestroyImage(image);
        if (pixel != parentBackground) return false;
    }
    return true;
}

double ClapEditorHost::waitForFirstFrame(double seconds) {
    const double end = openedAt_ + seconds * 1e3;
    while (!closed_ && nowMs() < end) {
        if (!showsBackgroundOnly()) return nowMs() - openedAt_;
        pass(5);
    }
    return -1;
}

Raster32 ClapEditorHost::capture() {
    XSync(display_, False);
    XImage* image = XGetImage(display_, parent_, 0, 0, unsigned(width_), unsigned(height_), AllPlanes, ZPixmap);
    if (!image) throw std::runtime_error("cannot read the window back from the X server");
    Raster32 out(IntRect{0, 0, width_, height_}, true);
    for (int y = 0; y < height_; ++y)
        for (int x = 0; x < width_; ++x) *out.at(x, y) = 0xFF000000u | std::uint32_t(XGetPixel(image, x, y) & 0xFFFFFF);
    XDestroyImage(image);
    return out;
}

}  // namespace tw
