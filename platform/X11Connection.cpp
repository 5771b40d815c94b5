#include "platform/X11Connection.h"

#include <X11/XKBlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XShm.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>

#include "platform/Qvd.h"
#include "platform/X11Clipboard.h"

namespace tw {

namespace {

std::mutex registryLock;
std::vector<X11Connection*> connections;
XErrorHandler previousHandler = nullptr;
bool handlerInstalled = false;

// Whether a segment can really be attached: a remote server or one that refuses our
// segments says so only through an error on the attach.
bool shmWorks(X11Connection& c) {
    if (!XShmQueryExtension(c.display())) return false;
    XShmSegmentInfo info{};
    info.shmid = shmget(IPC_PRIVATE, 4096, IPC_CREAT | 0600);
    if (info.shmid < 0) return false;
    info.shmaddr = static_cast<char*>(shmat(info.shmid, nullptr, 0));
    bool ok = false;
    if (info.shmaddr != reinterpret_cast<char*>(-1)) {
        info.readOnly = False;
        c.takeError();
        if (XShmAttach(c.display(), &info) && c.sync() == 0) {
            ok = true;
            XShmDetach(c.display(), &info);
            c.sync();
        }
        shmdt(info.shmaddr);
    }
    shmctl(info.shmid, IPC_RMID, nullptr);
    return ok;
}

}  // namespace

int X11Connection::errorHandler(Display* display, XErrorEvent* event) {
    {
        std::lock_guard<std::mutex> guard(registryLock);
        for (X11Connection* c : connections)
            if (c->display_ == display) {
                if (c->error_ == 0) c->error_ = event->error_code;
                return 0;
            }
    }
    // Not ours: the host's own connection, whose errors are the host's business.
    return previousHandler ? previousHandler(display, event) : 0;
}

void X11Connection::enroll() {
    std::lock_guard<std::mutex> guard(registryLock);
    if (!handlerInstalled) {
        previousHandler = XSetErrorHandler(errorHandler);
        handlerInstalled = true;
    }
    connections.push_back(this);
}

X11Connection::X11Connection(Use use) : use_(use) {
    // A busy server now and then refuses a connection outright (a reset, or a full listen
    // queue); a few tries a moment apart get through.
    for (int attempt = 0; attempt < 5 && !display_; ++attempt) {
        if (attempt > 0) usleep(20000);
        display_ = XOpenDisplay(nullptr);
    }
    if (!display_) throw Qvd::xWindowsError("Cannot open the X display");
    screen_ = DefaultScreen(display_);
    if (use_ == Use::signalling) {
        enroll();
        return;
    }
    XVisualInfo wanted{};
    wanted.screen = screen_;
    wanted.depth = 24;
    wanted.c_class = TrueColor;
    wanted.red_mask = 0xFF0000;
    wanted.green_mask = 0x00FF00;
    wanted.blue_mask = 0x0000FF;
    int count = 0;
    XVisualInfo* found = XGetVisualInfo(
        display_, VisualScreenMask | VisualDepthMask | VisualClassMask | VisualRedMaskMask | VisualGreenMaskMask | VisualBlueMaskMask,
        &wanted, &count);
    if (!found || count == 0) {
        if (found) XFree(found);
        XCloseDisplay(display_);
        throw Qvd::xWindowsError("The X display offers no 24-bit true-colour visual");
    }
    // The screen's own visual when it qualifies, so that a child needs no colormap of its own.
    visual_ = found[0].visual;
    for (int i = 0; i < count; ++i)
        if (found[i].visual == DefaultVisual(display_, screen_)) visual_ = found[i].visual;
    depth_ = 24;
    XFree(found);
    enroll();
    shm_ = shmWorks(*this);
    // A held key then repeats as presses alone, so that a repeat can be told from a press.
    XkbSetDetectableAutoRepeat(display_, True, nullptr);
}

X11Connection::~X11Connection() {
    clipboard_.reset();
    for (auto& [shape, cursor] : cursors_) XFreeCursor(display_, cursor);
    XSync(display_, False);
    {
        std::lock_guard<std::mutex> guard(registryLock);
        connections.erase(std::find(connections.begin(), connections.end(), this));
    }
    XCloseDisplay(display_);
}

std::vector<X11Connection*> X11Connection::all() {
    std::lock_guard<std::mutex> guard(registryLock);
    std::vector<X11Connection*> out;
    for (X11Connection* c : connections)
        if (c->use_ == Use::windows) out.push_back(c);
    return out;
}

Atom X11Connection::atom(const char* name) {
    auto it = atoms_.find(name);
    if (it != atoms_.end()) return it->second;
    Atom a = XInternAtom(display_, name, False);
    atoms_.emplace(name, a);
    return a;
}

::Cursor X11Connection::fontCursor(unsigned shape) {
    auto it = cursors_.find(shape);
    if (it != cursors_.end()) return it->second;
    ::Cursor c = XCreateFontCursor(display_, shape);
    cursors_.emplace(shape, c);
    return c;
}

void X11Connection::attach(::Window window, X11EventTarget* target) { targets_[window] = target; }

void X11Connection::detach(::Window window) { targets_.erase(window); }

void X11Connection::dispatch(XEvent& event) {
    auto it = targets_.find(event.xany.window);
    if (it != targets_.end()) it->second->handleEvent(event);
}

int X11Connection::dispatchPending() {
    int n = 0;
    while (XPending(display_) > 0) {
        XEvent event;
        XNextEvent(display_, &event);
        dispatch(event);
        ++n;
    }
    return n;
}

int X11Connection::sync() {
    XSync(display_, False);
    return takeError();
}

int X11Connection::takeError() {
    int e = error_;
    error_ = 0;
    return e;
}

X11Clipboard& X11Connection::clipboard() {
    if (!clipboard_) clipboard_ = std::make_unique<X11Clipboard>(*this);
    return *clipboard_;
}

}  // namespace tw
