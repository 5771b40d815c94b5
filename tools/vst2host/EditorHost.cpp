#include "tools/vst2host/EditorHost.h"

#include <X11/Xutil.h>
#include <poll.h>
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

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

EditorHost::EditorHost(HostedPlugin& plugin, const Settings& settings) : plugin_(plugin), settings_(settings) {
    if (!(plugin_.effect().flags & vst2::effFlagsHasEditor)) throw std::runtime_error("the plug-in has no editor");
    // A busy server now and then refuses a connection outright; a few tries get through.
    for (int attempt = 0; attempt < 5 && !display_; ++attempt) {
        if (attempt > 0) poll(nullptr, 0, 20);
        display_ = XOpenDisplay(nullptr);
    }
    if (!display_) throw std::runtime_error("cannot open the X display (is DISPLAY set?)");
    if (settings_.scale > 0)
        plugin_.dispatch(vst2::effVendorSpecific, vst2::fourCC("PreS"), vst2::fourCC("AeCs"), nullptr,
                         static_cast<float>(settings_.scale));
    vst2::ERect* rect = nullptr;
    plugin_.dispatch(vst2::effEditGetRect, 0, 0, &rect);
    width_ = rect ? rect->right - rect->left : 0;
    height_ = rect ? rect->bottom - rect->top : 0;
    if (width_ <= 0 || height_ <= 0) width_ = 640, height_ = 480;  // some editors tell only once open
    const int screen = DefaultScreen(display_);
    XSetWindowAttributes a{};
    a.background_pixel = parentBackground;
    a.event_mask = StructureNotifyMask | SubstructureNotifyMask | PropertyChangeMask;
    parent_ = XCreateWindow(display_, RootWindow(display_, screen), 40, 40, unsigned(width_), unsigned(height_), 0,
                            CopyFromParent, InputOutput, CopyFromParent, CWBackPixel | CWEventMask, &a);
    const std::string title = "vst2host: " + plugin_.effectName();
    XStoreName(display_, parent_, title.c_str());
    deleteWindow_ = XInternAtom(display_, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(display_, parent_, &deleteWindow_, 1);
    XMapWindow(display_, parent_);
    XSync(display_, False);
    plugin_.sizeWindow = [this](int width, int height) {
        if (settings_.refuseResize || width <= 0 || height <= 0) return false;
        width_ = width, height_ = height;
        XResizeWindow(display_, parent_, unsigned(width), unsigned(height));
        XSync(display_, False);
        return true;
    };
    openedAt_ = nowMs();
    // Ardour passes its own display in `value`; others pass 0.
    plugin_.dispatch(vst2::effEditOpen, 0, settings_.ardour ? reinterpret_cast<vst2::intptr>(display_) : 0,
                     reinterpret_cast<void*>(parent_));
    rect = nullptr;
    plugin_.dispatch(vst2::effEditGetRect, 0, 0, &rect);
    if (rect && rect->right - rect->left > 0 && (rect->right - rect->left != width_ || rect->bottom - rect->top != height_)) {
        width_ = rect->right - rect->left;
        height_ = rect->bottom - rect->top;
        XResizeWindow(display_, parent_, unsigned(width_), unsigned(height_));
    }
    if (settings_.ardour) {
        // As Ardour does: the editor's window is the parent's child, and its procedure is
        // one 32-bit item of the property, used as an address.
        XSync(display_, False);
        ::Window rootOut = 0, up = 0, *children = nullptr;
        unsigned count = 0;
        if (XQueryTree(display_, parent_, &rootOut, &up, &children, &count) && count > 0) {
            Atom atom = XInternAtom(display_, "_XEventProc", False), type = None;
            int format = 0;
            unsigned long items = 0, remaining = 0;
            unsigned char* data = nullptr;
            if (XGetWindowProperty(display_, children[0], atom, 0, 1, False, AnyPropertyType, &type, &format, &items,
                                   &remaining, &data) == Success && data) {
                if (items == 1 && format == 32) eventProc_ = reinterpret_cast<void (*)(XEvent*)>(*reinterpret_cast<long*>(data));
                XFree(data);
            }
        }
        if (children) XFree(children);
    }
}

EditorHost::~EditorHost() {
    watching_.store(false);
    if (watcher_.joinable()) watcher_.join();
    if (editorOpen_) plugin_.dispatch(vst2::effEditClose);
    plugin_.sizeWindow = nullptr;
    XDestroyWindow(display_, parent_);
    XCloseDisplay(display_);
}

void EditorHost::pass() {
    const int idleEvery = settings_.ardour ? 50 : 1;
    while (XPending(display_) > 0) {
        XEvent event;
        XNextEvent(display_, &event);
        if (event.type == ClientMessage && Atom(event.xclient.data.l[0]) == deleteWindow_) closed_ = true;
        if (event.type == DestroyNotify && event.xdestroywindow.window == parent_) closed_ = true;
        if (eventProc_) {
            callStarted_.store(nowMs());
            inEditorCall_.store(true);
            eventProc_(&event);
            inEditorCall_.store(false);
        }
    }
    if (++passes_ % std::uint64_t(idleEvery) == 0 && editorOpen_) {
        callStarted_.store(nowMs());
        inEditorCall_.store(true);
        plugin_.dispatch(vst2::effEditIdle);
        inEditorCall_.store(false);
    }
    const int sleepMs = settings_.ardour ? 1 : 1000 / (settings_.idleRate > 0 ? settings_.idleRate : 30);
    pollfd p{ConnectionNumber(display_), POLLIN, 0};
    // Ardour sleeps whatever arrives; a plain host wakes for its own events.
    if (settings_.ardour)
        poll(nullptr, 0, sleepMs);
    else
        poll(&p, 1, sleepMs);
}

void EditorHost::setShown(bool shown) {
    if (shown)
        XMapWindow(display_, parent_);
    else
        XUnmapWindow(display_, parent_);
    XSync(display_, False);
}

void EditorHost::closeEditor() {
    if (!editorOpen_) return;
    plugin_.dispatch(vst2::effEditClose);
    editorOpen_ = false;
    eventProc_ = nullptr;
}

void EditorHost::run(double seconds) {
    const double end = nowMs() + seconds * 1e3;
    while (!closed() && (seconds <= 0 || nowMs() < end)) pass();
}

void EditorHost::endBy(double seconds) {
    if (watcher_.joinable()) return;
    const double end = seconds > 0 ? nowMs() + seconds * 1e3 : 0;
    watching_.store(true);
    watcher_ = std::thread([this, end] { watch(end); });
}

void EditorHost::watch(double end) {
    const std::atomic<bool>& running = watching_;
    const auto due = [&] { return (end > 0 && nowMs() >= end) || (settings_.stop != nullptr && *settings_.stop != 0); };
    // A call that is merely under way when the time comes is left to end by itself.
    const auto held = [&] { return inEditorCall_.load() && nowMs() - callStarted_.load() > 200; };
    while (running.load() && !(due() && held())) poll(nullptr, 0, 20);
    if (!running.load()) return;
    // The editor holds our loop past its end: hiding its window ends a menu or the like.
    Display* d = XOpenDisplay(nullptr);
    if (d) {
        XUnmapWindow(d, parent_);
        XFlush(d);
    }
    const double giveUp = nowMs() + 5000;
    while (running.load() && held() && nowMs() < giveUp) poll(nullptr, 0, 20);
    if (running.load() && held()) {
        std::fprintf(stderr, "vst2host: the editor does not let go of the host's loop; ending\n");
        std::_Exit(3);
    }
    if (d) XCloseDisplay(d);
}

bool EditorHost::showsBackgroundOnly() {
    // Five points spread over the window: an editor that paints shows on at least one.
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

double EditorHost::waitForFirstFrame(double seconds) {
    const double end = openedAt_ + seconds * 1e3;
    while (!closed_ && nowMs() < end) {
        if (!showsBackgroundOnly()) return nowMs() - openedAt_;
        pass();
    }
    return -1;
}

Raster32 EditorHost::capture() {
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
