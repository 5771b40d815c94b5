#include "platform/X11Connection.h"

#include <X11/XKBlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XShm.h>
#include <dlfcn.h>
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
XIOErrorHandler previousIoHandler = nullptr;
bool handlerInstalled = false;

// Our error handler is process-wide and may be called through whatever the host installs
// over it, which keeps our address as its "previous" one: once that has happened, the
// library must never leave the process, whatever the host's dlclose says.
void keepLibraryLoaded() {
    static bool kept = false;
    if (kept) return;
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&keepLibraryLoaded), &info) == 0 || info.dli_fname == nullptr) return;
    // A reference that is never released, on a library already loaded: no constructor runs.
    kept = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE) != nullptr;
}

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

int X11Connection::ioErrorHandler(Display* display) {
    {
        std::lock_guard<std::mutex> guard(registryLock);
        for (X11Connection* c : connections)
            if (c->display_ == display) return 0;  // on to our exit handler, which returns
    }
    // The host's connection: its loss is the host's business (Xlib's own handler ends
    // the process, as it always did).
    return previousIoHandler ? previousIoHandler(display) : 0;
}

void X11Connection::ioErrorExit(Display*, void* connection) {
    // The server or the socket is gone. Returning keeps the host's process alive; Xlib
    // then treats the display as dead, and the windows on it notice through `lost()`.
    static_cast<X11Connection*>(connection)->lost_ = true;
}

void X11Connection::enroll() {
    // Losing the server must end our editor, not the host: Xlib's default IO error
    // handler and its default exit handler would each end the process. The handler is
    // the process's, so it passes on what is not ours; the exit handler is the display's.
    XSetIOErrorExitHandler(display_, &X11Connection::ioErrorExit, this);
    std::lock_guard<std::mutex> guard(registryLock);
    if (!handlerInstalled) {
        previousHandler = XSetErrorHandler(errorHandler);
        previousIoHandler = XSetIOErrorHandler(ioErrorHandler);
        handlerInstalled = true;
    }
    connections.push_back(this);
}

void X11Connection::leave() {
    std::lock_guard<std::mutex> guard(registryLock);
    connections.erase(std::find(connections.begin(), connections.end(), this));
    if (!connections.empty() || !handlerInstalled) return;
    // The last of ours: the host's handler goes back in, unless the host has put one of
    // its own over ours since, which may still call ours as its previous.
    const XErrorHandler current = XSetErrorHandler(previousHandler);
    const XIOErrorHandler currentIo = XSetIOErrorHandler(previousIoHandler);
    const bool errorsBack = current == errorHandler, ioBack = currentIo == ioErrorHandler;
    if (!errorsBack) XSetErrorHandler(current);
    if (!ioBack) XSetIOErrorHandler(currentIo);
    if (!errorsBack || !ioBack) {
        keepLibraryLoaded();
        return;
    }
    handlerInstalled = false;
    previousHandler = nullptr;
    previousIoHandler = nullptr;
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
    // Still on the list while it closes: what happens on the way is ours to handle.
    XCloseDisplay(display_);
    leave();
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
