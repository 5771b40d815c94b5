// The window system's side of the editor in one file, longer than most: the editor window,
// its helper windows, the modal loop, the grabs and the rest while unseen all work on the
// same connection and the same few fields, and split apart they would each reach into
// the others.
#include "platform/X11Window.h"

#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/cursorfont.h>
#include <X11/keysym.h>
#include <poll.h>
#include <unistd.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <mutex>

#include "platform/Qvd.h"
#include "platform/X11Clipboard.h"

namespace tw {

namespace {

// The largest piece of a rectangle handed to the client at once: it bounds the work of
// one paint call and keeps what it touches in the cache.
constexpr std::int32_t tileWidth = 256, tileHeight = 128;

constexpr long eventMask = ExposureMask | ButtonPressMask | ButtonReleaseMask | PointerMotionMask | EnterWindowMask |
                           LeaveWindowMask | KeyPressMask | KeyReleaseMask | StructureNotifyMask | FocusChangeMask |
                           VisibilityChangeMask;
constexpr unsigned modifierMask = ShiftMask | ControlMask | Mod1Mask;

// Every editor window in the process, for the host's event procedure, which does not
// say whose event it brings.
std::mutex editorsLock;
std::vector<X11Window*> editors;

struct Busy {
    X11Session& session;
    explicit Busy(X11Session& s) : session(s) { ++session.depth; }
    ~Busy() { --session.depth; }
};

unsigned cursorShape(Cursor cursor) {
    switch (cursor) {
        case Cursor::arrow: return XC_left_ptr;
        case Cursor::iBeam: return XC_xterm;
        case Cursor::wait: return XC_watch;
        case Cursor::cross: return XC_crosshair;
        case Cursor::upArrow: return XC_sb_up_arrow;
        case Cursor::sizeAll: return XC_fleur;
        case Cursor::sizeNWSE: return XC_bottom_right_corner;
        case Cursor::sizeNESW: return XC_bottom_left_corner;
        case Cursor::sizeWE: return XC_sb_h_double_arrow;
        case Cursor::sizeNS: return XC_sb_v_double_arrow;
        case Cursor::no: return XC_X_cursor;
        case Cursor::hand: return XC_hand2;
        case Cursor::appStarting: return XC_watch;
        case Cursor::help: return XC_question_arrow;
    }
    return XC_left_ptr;
}

// The address hosts read from _XEventProc. Readers take one 32-bit item of the property
// and use it as a pointer, so the function must be reachable through 32 bits: a jump to
// the real one is placed in the low 2 GB. Without such memory the property is left out
// and the host's idle calls alone drive the editor.
unsigned long eventProcAddress() {
    static const unsigned long address = [] {
        void* page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_32BIT, -1, 0);
        if (page == MAP_FAILED) return 0ul;
        unsigned char code[12] = {0x48, 0xB8};  // movabs rax, target; jmp rax
        const auto target = reinterpret_cast<std::uint64_t>(&X11Window::hostEventProc);
        std::memcpy(code + 2, &target, 8);
        code[10] = 0xFF;
        code[11] = 0xE0;
        std::memcpy(page, code, sizeof code);
        if (mprotect(page, 4096, PROT_READ | PROT_EXEC) != 0) {
            munmap(page, 4096);
            return 0ul;
        }
        return static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(page));
    }();
    return address;
}

Key keyOf(KeySym sym) {
    switch (sym) {
        case XK_BackSpace: return Key::backspace;
        case XK_Tab: case XK_ISO_Left_Tab: return Key::tab;
        case XK_Return: case XK_KP_Enter: return Key::enter;
        case XK_Escape: return Key::escape;
        case XK_Delete: case XK_KP_Delete: return Key::del;
        case XK_Left: case XK_KP_Left: return Key::left;
        case XK_Right: case XK_KP_Right: return Key::right;
        case XK_Up: case XK_KP_Up: return Key::up;
        case XK_Down: case XK_KP_Down: return Key::down;
        case XK_Home: case XK_KP_Home: return Key::home;
        case XK_End: case XK_KP_End: return Key::end;
        case XK_Page_Up: case XK_KP_Page_Up: return Key::pageUp;
        case XK_Page_Down: case XK_KP_Page_Down: return Key::pageDown;
        case XK_F1: return Key::f1;
        case XK_F2: return Key::f2;
        case XK_Shift_L: case XK_Shift_R: return Key::shift;
        case XK_Control_L: case XK_Control_R: return Key::control;
        case XK_Alt_L: case XK_Alt_R: case XK_Meta_L: case XK_Meta_R: return Key::alt;
        default: return Key::other;
    }
}

// The code point a key sym types, or 0.
char32_t characterOf(KeySym sym) {
    if ((sym >= 0x20 && sym <= 0x7E) || (sym >= 0xA0 && sym <= 0xFF)) return char32_t(sym);
    if (sym >= 0x1000100 && sym <= 0x110FFFF) return char32_t(sym - 0x1000000);
    if (sym >= XK_KP_0 && sym <= XK_KP_9) return char32_t('0' + (sym - XK_KP_0));
    if (sym == XK_KP_Decimal) return U'.';
    return 0;
}

unsigned modifierOf(Key key) {
    return key == Key::shift ? ShiftMask : key == Key::control ? ControlMask : key == Key::alt ? Mod1Mask : 0;
}

}  // namespace

bool X11Session::gone() {
    if (connection->lost()) lost = true;
    return lost;
}

void X11Session::dispatchEvents(const std::function<bool()>* until) {
    Display* d = connection->display();
    while (!gone() && XPending(d) > 0) {
        XEvent event;
        XNextEvent(d, &event);
        connection->dispatch(event);
        if (until && (*until)()) return;
    }
}

void X11Session::paintAll() {
    const std::vector<X11Window*> open = windows;
    for (X11Window* w : open) w->paintInvalid();
}

void X11Session::passDone() {
    if (gone()) waker.reset();
    if (!waker) return;
    waker->passDone();
    if (XEventsQueued(connection->display(), QueuedAlready) > 0) waker->poke();
}

namespace {

// The top-level window that holds `window` (the one under the root), with the windows on
// the way up, `window` first, in `path` when given.
::Window topLevelOf(X11Connection& c, ::Window window, std::vector<::Window>* path) {
    ::Window top = window;
    for (;;) {
        if (path) path->push_back(top);
        ::Window rootOut = 0, up = 0, *children = nullptr;
        unsigned count = 0;
        if (!XQueryTree(c.display(), top, &rootOut, &up, &children, &count)) break;
        if (children) XFree(children);
        if (up == 0 || up == rootOut) break;
        top = up;
    }
    return top;
}

}  // namespace

std::unique_ptr<EditorWindow> EditorWindow::open(WindowClient& client, std::uintptr_t parent, std::int32_t width,
                                                 std::int32_t height) {
    return std::make_unique<X11Window>(client, ::Window(parent), width, height);
}

X11Window::X11Window(WindowClient& client, ::Window parent, std::int32_t width, std::int32_t height)
    : session_(std::make_shared<X11Session>()), client_(client), kind_(Kind::editor), width_(width), height_(height) {
    session_->connection = std::make_unique<X11Connection>();
    X11Connection& c = *session_->connection;
    // The host may have made its window on another connection just before; our request
    // about it fails cleanly when it does not exist at all.
    XWindowAttributes attributes;
    c.takeError();
    if (parent == 0 || !XGetWindowAttributes(c.display(), parent, &attributes) || c.takeError() != 0)
        throw Qvd::xWindowsError("The host's window for the editor does not exist");
    session_->hostTopLevel = topLevelOf(c, parent, &ancestors_);
    session_->hostWindow = parent;
    create(parent, Kind::editor, 0, 0, "");
    watchAncestors();
    {
        std::lock_guard<std::mutex> guard(editorsLock);
        editors.push_back(this);
    }
    // When the host's window is already shown, the exposure is there once the server has
    // mapped ours: the first frame goes up now, not at the host's next idle call.
    XSync(c.display(), False);
    checkViewable();
    idle();
}

X11Window::X11Window(std::shared_ptr<X11Session> session, Kind kind, WindowClient& client, const std::string& title,
                     std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height)
    : session_(std::move(session)), client_(client), kind_(kind), width_(width), height_(height) {
    placeOnScreen(x, y, width, height);
    create(session_->connection->root(), kind, x, y, title);
}

void X11Window::create(::Window parent, Kind kind, std::int32_t x, std::int32_t y, const std::string& title) {
    X11Connection& c = *session_->connection;
    Display* d = c.display();
    XSetWindowAttributes a{};
    unsigned long mask = CWEventMask | CWBackPixmap | CWBorderPixel | CWColormap;
    a.event_mask = eventMask;
    a.background_pixmap = None;  // nothing is drawn by the server: our pixels cover every exposure
    a.border_pixel = 0;
    // Our own visual and colormap, named outright: the host's window may have a visual
    // that ours could not inherit.
    if (c.visual() == DefaultVisual(d, c.screen())) {
        a.colormap = DefaultColormap(d, c.screen());
    } else {
        colormap_ = XCreateColormap(d, c.root(), c.visual(), AllocNone);
        a.colormap = colormap_;
    }
    if (kind == Kind::popup) {
        a.override_redirect = True;
        a.save_under = True;
        mask |= CWOverrideRedirect | CWSaveUnder;
    }
    window_ = XCreateWindow(d, parent, x, y, unsigned(std::max(width_, 1)), unsigned(std::max(height_, 1)), 0, c.depth(),
                            InputOutput, c.visual(), mask, &a);
    gc_ = XCreateGC(d, window_, 0, nullptr);
    if (kind == Kind::editor) {
        if (const unsigned long proc = eventProcAddress()) {
            const Atom atom = c.atom("_XEventProc");
            XChangeProperty(d, window_, atom, atom, 32, PropModeReplace, reinterpret_cast<const unsigned char*>(&proc), 1);
        }
    } else {
        const Atom type = c.atom("_NET_WM_WINDOW_TYPE");
        const Atom value = c.atom(kind == Kind::popup ? "_NET_WM_WINDOW_TYPE_POPUP_MENU" : "_NET_WM_WINDOW_TYPE_DIALOG");
        XChangeProperty(d, window_, type, XA_ATOM, 32, PropModeReplace, reinterpret_cast<const unsigned char*>(&value), 1);
    }
    if (kind == Kind::dialog) {
        XSetTransientForHint(d, window_, session_->hostTopLevel);
        XStoreName(d, window_, title.c_str());
        XChangeProperty(d, window_, c.atom("_NET_WM_NAME"), c.atom("UTF8_STRING"), 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(title.data()), int(title.size()));
        Atom protocols = c.atom("WM_DELETE_WINDOW");
        XSetWMProtocols(d, window_, &protocols, 1);
        XSizeHints* hints = XAllocSizeHints();
        hints->flags = USPosition | PPosition | PMinSize | PMaxSize;
        hints->x = x;
        hints->y = y;
        hints->min_width = hints->max_width = width_;
        hints->min_height = hints->max_height = height_;
        XSetWMNormalHints(d, window_, hints);
        XFree(hints);
        XWMHints* wm = XAllocWMHints();
        wm->flags = InputHint;
        wm->input = True;
        XSetWMHints(d, window_, wm);
        XFree(wm);
    }
    c.attach(window_, this);
    session_->windows.push_back(this);
    // Nothing is invalid yet: the server's exposure asks for the whole window once it is
    // viewable, so a window that the host has not shown yet costs no paint.
    dirty_.resize(width_, height_);
    XMapRaised(d, window_);
    XFlush(d);
}

X11Window::~X11Window() {
    {
        std::lock_guard<std::mutex> guard(editorsLock);
        editors.erase(std::remove(editors.begin(), editors.end(), this), editors.end());
    }
    if (kind_ == Kind::editor) session_->waker.reset();
    if (window_ && !session_->gone()) {
        if (captured_) XUngrabPointer(session_->connection->display(), CurrentTime);
        if (holdingKeyboard_) XUngrabKeyboard(session_->connection->display(), CurrentTime);
    }
    destroyWindow();
    Display* d = session_->connection->display();
    surface_.reset();
    if (gc_) XFreeGC(d, gc_);
    if (colormap_) XFreeColormap(d, colormap_);
    auto& list = session_->windows;
    list.erase(std::remove(list.begin(), list.end(), this), list.end());
    XFlush(d);
}

void X11Window::destroyWindow() {
    if (!window_) return;
    for (::Window w : ancestors_) session_->connection->detach(w);
    session_->connection->detach(window_);
    XDestroyWindow(session_->connection->display(), window_);
    XFlush(session_->connection->display());
    window_ = 0;
}

void X11Window::abandon() {
    session_->lost = true;
    if (kind_ == Kind::editor) session_->waker.reset();
    captured_ = false;
    destroyWindow();
}

void X11Window::requestStop() { session_->stopWanted.store(true); }

void X11Window::invalidate(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) {
    dirty_.add(left, top, width, height);
}

void X11Window::paintInvalid() {
    if (dirty_.isEmpty() || !window_) return;
    X11Connection& c = *session_->connection;
    if (!surface_ || surface_->width() != width_ || surface_->height() != height_)
        surface_ = std::make_unique<X11Surface>(c, width_, height_);
    const std::vector<DirtyRect> rects = dirty_.take();
    const std::int32_t stride = surface_->stride();
    for (const DirtyRect& r : rects) {
        for (std::int32_t top = r.top; top < r.bottom; top += tileHeight)
            for (std::int32_t left = r.left; left < r.right; left += tileWidth) {
                PixelTile tile;
                tile.left = left;
                tile.top = top;
                tile.width = std::min(tileWidth, r.right - left);
                tile.height = std::min(tileHeight, r.bottom - top);
                tile.stride = stride;
                tile.pixels = surface_->pixels() + std::ptrdiff_t(top) * stride + left;
                client_.paint(tile);
                pixelsPainted_ += std::uint64_t(tile.width) * std::uint64_t(tile.height);
            }
        if (!window_) return;  // the client's paint may have ended the window
        surface_->put(window_, gc_, r.left, r.top, r.right - r.left, r.bottom - r.top);
    }
    surface_->finish();
    ++frames_;
}

void X11Window::setCursor(Cursor cursor) {
    if (!window_) return;
    X11Connection& c = *session_->connection;
    XDefineCursor(c.display(), window_, c.fontCursor(cursorShape(cursor)));
    XFlush(c.display());
}

void X11Window::captureMouse() {
    if (!window_ || captured_) return;
    Display* d = session_->connection->display();
    captured_ = true;
    const int result = XGrabPointer(d, window_, False,
                                    ButtonPressMask | ButtonReleaseMask | PointerMotionMask | EnterWindowMask | LeaveWindowMask,
                                    GrabModeAsync, GrabModeAsync, None, None, CurrentTime);
    // Another program holds the pointer: the drag would never see its release, so it ends
    // at once, through the next pass of events rather than inside the caller's own call.
    if (result != GrabSuccess) {
        XEvent lost{};
        lost.xcrossing.type = LeaveNotify;
        lost.xcrossing.window = window_;
        lost.xcrossing.mode = NotifyGrab;
        XPutBackEvent(d, &lost);
    }
}

bool X11Window::menuHoldsPointer() const {
    for (const X11Window* w : session_->windows)
        if (w != this && w->holding_ && w->captured_) return true;
    return false;
}

void X11Window::releaseMouse() {
    if (!captured_) return;
    captured_ = false;
    // A menu of ours that took the pointer over keeps it (the press that opened it may
    // end on this window after the menu has taken the pointer).
    if (!window_ || menuHoldsPointer() || session_->gone()) return;
    XUngrabPointer(session_->connection->display(), CurrentTime);
    XFlush(session_->connection->display());
}

void X11Window::lostCapture() {
    captured_ = false;
    // A menu of ours that took the pointer over keeps it.
    if (window_ && !menuHoldsPointer() && !session_->gone()) XUngrabPointer(session_->connection->display(), CurrentTime);
    client_.captureLost();
}

bool X11Window::isActive() const {
    if (!window_) return false;
    X11Connection& c = *session_->connection;
    Display* d = c.display();
    Atom type = None;
    int format = 0;
    unsigned long count = 0, remaining = 0;
    unsigned char* data = nullptr;
    ::Window active = 0;
    bool known = false;
    if (XGetWindowProperty(d, c.root(), c.atom("_NET_ACTIVE_WINDOW"), 0, 1, False, XA_WINDOW, &type, &format, &count,
                           &remaining, &data) == Success &&
        data) {
        if (count == 1 && format == 32) {
            active = ::Window(*reinterpret_cast<unsigned long*>(data));
            known = true;
        }
        XFree(data);
    }
    if (!known) {
        // No window manager says which window is active: the keyboard focus does.
        int revert = 0;
        XGetInputFocus(d, &active, &revert);
        if (active == PointerRoot) return true;
    }
    if (active == session_->hostTopLevel) return true;
    for (const X11Window* w : session_->windows)
        if (w->window_ == active) return true;
    return false;
}

void X11Window::toScreen(std::int32_t& x, std::int32_t& y) const {
    if (!window_) return;
    X11Connection& c = *session_->connection;
    int sx = 0, sy = 0;
    ::Window child = 0;
    XTranslateCoordinates(c.display(), window_, c.root(), x, y, &sx, &sy, &child);
    x = sx;
    y = sy;
}

void X11Window::takeKeyboardFocus() {
    if (kind_ != Kind::editor || !window_ || session_->gone()) return;
    X11Connection& c = *session_->connection;
    c.takeError();
    XSetInputFocus(c.display(), window_, RevertToParent, CurrentTime);
    XFlush(c.display());
}

bool X11Window::returnKeyboardFocus() {
    if (kind_ != Kind::editor || !window_ || session_->gone()) return false;
    X11Connection& c = *session_->connection;
    Display* d = c.display();
    ::Window focus = 0;
    int revert = 0;
    XGetInputFocus(d, &focus, &revert);
    if (focus != window_) return false;
    // The host's top-level window is the one its toolkit takes keys in; its window for us
    // may be an unmanaged child that does not. An unviewable target fails quietly.
    const ::Window target = hostKeyWindow();
    c.takeError();
    // By way of no window: from ours, an inferior of the host's, the host's toolkit would
    // take the focus's return as a move inside its window and not see that it has it again.
    XSetInputFocus(d, None, RevertToNone, CurrentTime);
    XSetInputFocus(d, target, RevertToParent, CurrentTime);
    c.sync();
    if (c.takeError() != 0) XSetInputFocus(d, PointerRoot, RevertToPointerRoot, CurrentTime);
    XFlush(d);
    return true;
}

::Window X11Window::hostKeyWindow() const {
    // Asked afresh: the host's toolkit may have moved its window for us into another since
    // we opened (a plug into its socket), and the top-level is the one it is in now.
    X11Connection& c = *session_->connection;
    c.takeError();
    const ::Window top = topLevelOf(c, session_->hostWindow, nullptr);
    if (c.takeError() == 0 && top != 0) return top;
    return session_->hostTopLevel != 0 ? session_->hostTopLevel : session_->hostWindow;
}

void X11Window::passKeyOn(const XKeyEvent& key) {
    if (!window_ || session_->gone() || session_->hostWindow == 0) return;
    X11Connection& c = *session_->connection;
    Display* d = c.display();
    // The host's top-level window is where its toolkit looks up its shortcuts; the window
    // it gave us may be a plug or socket of its own that keeps keys to itself.
    const ::Window target = hostKeyWindow();
    XWindowAttributes attributes{};
    c.takeError();
    const bool known = XGetWindowAttributes(d, target, &attributes) != 0 && c.takeError() == 0;
    const long mask = key.type == KeyPress ? KeyPressMask : KeyReleaseMask;
    if (known && (attributes.all_event_masks & mask) == 0) {
        // A toolkit that reads the keyboard through the input extension (GTK 3) never
        // sees a sent core event: the keyboard itself goes back, so that the host has
        // the next key (this one is lost to it).
        if (key.type == KeyPress) returnKeyboardFocus();
        return;
    }
    XEvent copy{};
    copy.xkey = key;
    copy.xkey.window = target;
    copy.xkey.subwindow = 0;
    XSendEvent(d, target, False, mask, &copy);
    XFlush(d);
}

void X11Window::holdInput() {
    if (!window_ || holding_ || session_->gone()) return;
    X11Connection& c = *session_->connection;
    Display* d = c.display();
    // The window was mapped just before; another client's grab (a window manager's
    // shortcut in progress) may hold things for a moment, so a few tries, a few
    // milliseconds apart, well inside a frame.
    bool pointer = false;
    for (int attempt = 0; attempt < 5 && !pointer; ++attempt) {
        if (attempt > 0) usleep(3000);
        pointer = XGrabPointer(d, window_, False, ButtonPressMask | ButtonReleaseMask | PointerMotionMask,
                               GrabModeAsync, GrabModeAsync, None, None, CurrentTime) == GrabSuccess;
    }
    for (int attempt = 0; attempt < 5 && !holdingKeyboard_; ++attempt) {
        if (attempt > 0) usleep(3000);
        holdingKeyboard_ = XGrabKeyboard(d, window_, False, GrabModeAsync, GrabModeAsync, CurrentTime) == GrabSuccess;
    }
    // Without the keyboard grab, the focus brings the keys here; it going elsewhere closes.
    if (!holdingKeyboard_) {
        c.takeError();
        XSetInputFocus(d, window_, RevertToParent, CurrentTime);
        c.sync();
    }
    captured_ = pointer;
    holding_ = true;
    int revert = 0;
    XGetInputFocus(d, &focusSeen_, &revert);
    lastWatch_ = millisecondTick();
    XFlush(d);
}

bool X11Window::belongsToUs(::Window window) const {
    Display* d = session_->connection->display();
    for (int depth = 0; window != 0 && depth < 64; ++depth) {
        if (window == session_->hostTopLevel) return true;
        for (const X11Window* w : session_->windows)
            if (w->window_ == window) return true;
        ::Window rootOut = 0, up = 0, *children = nullptr;
        unsigned count = 0;
        if (!XQueryTree(d, window, &rootOut, &up, &children, &count)) return false;
        if (children) XFree(children);
        if (up == rootOut) return false;
        window = up;
    }
    return false;
}

void X11Window::watchHold() {
    if (!holding_ || !window_ || session_->gone()) return;
    // Two round trips: a few times a frame at most.
    const std::uint32_t now = millisecondTick();
    if (now - lastWatch_ < 30) return;
    lastWatch_ = now;
    X11Connection& c = *session_->connection;
    Display* d = c.display();
    const X11Window* editor = session_->windows.empty() ? nullptr : session_->windows.front();
    bool shown = false;
    if (editor && editor->kind_ == Kind::editor && editor->window_) {
        XWindowAttributes a;
        c.takeError();
        shown = XGetWindowAttributes(d, editor->window_, &a) && c.takeError() == 0 && a.map_state == IsViewable;
    }
    ::Window focus = 0;
    int revert = 0;
    XGetInputFocus(d, &focus, &revert);
    bool focusOk = true;
    if (focus != focusSeen_) {
        focusSeen_ = focus;
        c.takeError();
        focusOk = focus == PointerRoot || belongsToUs(focus);
        c.takeError();
    }
    if (!shown || !focusOk) client_.closeRequested();
}

void X11Window::workArea(std::int32_t& left, std::int32_t& top, std::int32_t& width, std::int32_t& height) const {
    left = top = 0;
    width = height = 1 << 20;
    placeOnScreen(left, top, 0, 0);
    std::int32_t right = 1 << 20, bottom = 1 << 20;
    placeOnScreen(right, bottom, 0, 0);
    width = right - left;
    height = bottom - top;
}

void X11Window::placeOnScreen(std::int32_t& x, std::int32_t& y, std::int32_t width, std::int32_t height) const {
    X11Connection& c = *session_->connection;
    Display* d = c.display();
    long area[4] = {0, 0, DisplayWidth(d, c.screen()), DisplayHeight(d, c.screen())};
    Atom type = None;
    int format = 0;
    unsigned long count = 0, remaining = 0;
    unsigned char* data = nullptr;
    // The window manager's work area leaves out panels and docks.
    if (XGetWindowProperty(d, c.root(), c.atom("_NET_WORKAREA"), 0, 4, False, XA_CARDINAL, &type, &format, &count,
                           &remaining, &data) == Success &&
        data) {
        if (format == 32 && count >= 4) std::memcpy(area, data, sizeof area);
        XFree(data);
    }
    x = std::int32_t(std::max<long>(area[0], std::min<long>(x, area[0] + area[2] - width)));
    y = std::int32_t(std::max<long>(area[1], std::min<long>(y, area[1] + area[3] - height)));
}

std::unique_ptr<Window> X11Window::openPopup(WindowClient& client, std::int32_t x, std::int32_t y, std::int32_t width,
                                             std::int32_t height) {
    if (session_->gone() || session_->stopWanted.load()) throw LostWindowException();
    toScreen(x, y);
    return std::make_unique<X11Window>(session_, Kind::popup, client, "", x, y, width, height);
}

std::unique_ptr<Window> X11Window::openDialog(WindowClient& client, const std::string& title, std::int32_t x,
                                              std::int32_t y, std::int32_t width, std::int32_t height) {
    if (session_->gone() || session_->stopWanted.load()) throw LostWindowException();
    toScreen(x, y);
    return std::make_unique<X11Window>(session_, Kind::dialog, client, title, x, y, width, height);
}

void X11Window::setVisible(bool visible) {
    if (!window_) return;
    Display* d = session_->connection->display();
    if (visible) {
        XMapRaised(d, window_);
    } else {
        if (captured_) releaseMouse();
        XUnmapWindow(d, window_);
    }
    XFlush(d);
}

void X11Window::setScreenBounds(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    if (!window_ || width < 1 || height < 1) return;
    Display* d = session_->connection->display();
    if (kind_ == Kind::editor) {
        XResizeWindow(d, window_, unsigned(width), unsigned(height));
    } else {
        placeOnScreen(x, y, width, height);
        XMoveResizeWindow(d, window_, x, y, unsigned(width), unsigned(height));
    }
    XFlush(d);
    resized(width, height);
}

std::string X11Window::clipboardText() {
    // Text entry pastes what it can: an owner that does not answer gives nothing to paste.
    try {
        return session_->connection->clipboard().read(2000);
    } catch (const Qvd::xException&) {
        return {};
    }
}

void X11Window::resized(std::int32_t width, std::int32_t height) {
    if (width == width_ && height == height_) return;
    width_ = width;
    height_ = height;
    dirty_.resize(width, height);
    dirty_.add(0, 0, width, height);
}

void X11Window::runModal(const std::function<bool()>& done) {
    const std::shared_ptr<X11Session> keep = session_;
    X11Session& s = *keep;
    Busy busy(s);
    Display* d = s.connection->display();
    const auto ended = [&s] { return s.gone() || s.stopWanted.load(); };
    for (;;) {
        if (ended()) throw LostWindowException();
        if (done()) return;
        s.dispatchEvents(&done);
        if (ended()) throw LostWindowException();
        if (done()) return;
        s.timers.run();
        if (ended()) throw LostWindowException();
        if (done()) return;
        for (X11Window* w : std::vector<X11Window*>(s.windows)) w->watchHold();
        if (done()) return;
        s.paintAll();
        s.passDone();
        if (XPending(d) > 0) continue;
        std::int64_t wait = s.timers.waitTime(s.timers.now());
        if (wait < 0 || wait > 50) wait = 50;
        pollfd p{s.connection->fd(), POLLIN, 0};
        poll(&p, 1, int(wait));
    }
}

void X11Window::idle() {
    if (busy() || session_->gone()) return;
    const std::shared_ptr<X11Session> keep = session_;
    X11Session& s = *keep;
    Busy busy(s);
    s.dispatchEvents(nullptr);
    if (s.gone()) return;
    if (!s.resting) {
        s.timers.run();
        if (s.gone()) return;
        refreshModifiers();
        s.paintAll();
    }
    s.passDone();
}

void X11Window::watchAncestors() {
    X11Connection& c = *session_->connection;
    // Our own selection on the host's windows, beside the host's: their map and unmap
    // tell us when the editor is hidden with them, which its own events never say.
    for (::Window w : ancestors_) {
        c.takeError();
        XSelectInput(c.display(), w, StructureNotifyMask);
        c.attach(w, this);
    }
}

void X11Window::checkViewable() {
    if (kind_ != Kind::editor || !window_ || session_->gone()) return;
    X11Connection& c = *session_->connection;
    XWindowAttributes a;
    // The answer itself says whether it failed; an error that arrives with it may belong
    // to an earlier request (a selection on a host window that is gone) and is dropped.
    viewable_ = XGetWindowAttributes(c.display(), window_, &a) && a.map_state == IsViewable;
    c.takeError();
    updateRest();
}

void X11Window::updateRest() {
    X11Session& s = *session_;
    const bool rest = !window_ || !viewable_ || obscured_;
    if (rest == s.resting) return;
    s.resting = rest;
    if (!rest) {
        // What fell due while unseen runs once now, and the whole window is painted in
        // this same pass: nothing stale stays on the screen.
        s.timers.resume(s.timers.now());
        dirty_.add(0, 0, width_, height_);
    }
    if (s.waker) s.waker->setResting(rest);
}

void X11Window::hostEventProc(XEvent*) {
    std::vector<X11Window*> open;
    {
        std::lock_guard<std::mutex> guard(editorsLock);
        open = editors;
    }
    // Called by the host directly: nothing may leave as an exception.
    for (X11Window* w : open) {
        try {
            X11Session& s = *w->session_;
            // This host hands us its events every millisecond or so: from now on a wake-up
            // through its window gets the editor run as soon as something is due.
            if (!s.waker && !s.lost && w->window_) {
                s.waker = std::make_unique<X11Waker>(s.connection->fd(), s.timers, s.hostWindow);
                s.waker->setResting(s.resting);
            }
            w->idle();
        } catch (...) {
        }
    }
}

MouseEvent X11Window::mouseEvent(std::int32_t x, std::int32_t y, unsigned state) const {
    MouseEvent e;
    e.x = x;
    e.y = y;
    e.shift = (state & ShiftMask) != 0;
    e.ctrl = (state & ControlMask) != 0;
    e.alt = (state & Mod1Mask) != 0;
    e.buttons = ((state & Button1Mask) ? 1u << leftButton : 0u) | ((state & Button3Mask) ? 1u << rightButton : 0u) |
                ((state & Button2Mask) ? 1u << middleButton : 0u);
    e.time = millisecondTick();
    return e;
}

void X11Window::pointerLeft() {
    if (!hovered_) return;
    hovered_ = false;
    client_.mouseLeave(millisecondTick());
}

void X11Window::refreshModifiers() {
    if (!hovered_ || captured_ || !window_) return;
    ::Window rootOut = 0, child = 0;
    int rx = 0, ry = 0, x = 0, y = 0;
    unsigned state = 0;
    if (!XQueryPointer(session_->connection->display(), window_, &rootOut, &child, &rx, &ry, &x, &y, &state)) return;
    // A pointer that is not over the window has no hover here to refresh.
    if (x < 0 || y < 0 || x >= width() || y >= height()) return;
    if ((state & modifierMask) == modifiers_) return;
    modifiers_ = state & modifierMask;
    client_.modifiersChanged(mouseEvent(x, y, state));
}

void X11Window::handleEvent(XEvent& event) {
    Display* d = session_->connection->display();
    if (event.xany.window != window_) {
        // A host window above the editor was shown or hidden.
        if (event.type == MapNotify || event.type == UnmapNotify) checkViewable();
        return;
    }
    switch (event.type) {
        case Expose:
            dirty_.add(event.xexpose.x, event.xexpose.y, event.xexpose.width, event.xexpose.height);
            break;
        case ConfigureNotify:
            resized(event.xconfigure.width, event.xconfigure.height);
            break;
        case ButtonPress:
        case ButtonRelease: {
            const XButtonEvent& b = event.xbutton;
            pointerX_ = b.x;
            pointerY_ = b.y;
            modifiers_ = b.state & modifierMask;
            const bool outside = b.x < 0 || b.y < 0 || b.x >= width_ || b.y >= height_;
            // A press anywhere else, in the host's windows or on the desktop, ends a menu.
            if (holding_ && outside) {
                if (event.type == ButtonPress && b.button <= Button3) client_.closeRequested();
                break;
            }
            MouseEvent e = mouseEvent(b.x, b.y, b.state);
            if (b.button == Button4 || b.button == Button5) {
                if (event.type == ButtonPress) {
                    e.wheel = b.button == Button4 ? 1 : -1;
                    client_.mouseWheel(e);
                }
                break;
            }
            if (b.button > Button3) break;
            e.button = b.button == Button1 ? leftButton : b.button == Button3 ? rightButton : middleButton;
            if (event.type == ButtonPress) {
                e.buttons |= 1u << e.button;
                client_.mouseDown(e);
            } else {
                e.buttons &= ~(1u << e.button);
                client_.mouseUp(e);
            }
            break;
        }
        case MotionNotify: {
            // Only the newest position counts: a burst of moves is one move.
            while (XCheckTypedWindowEvent(d, window_, MotionNotify, &event)) {
            }
            const XMotionEvent& m = event.xmotion;
            pointerX_ = m.x;
            pointerY_ = m.y;
            modifiers_ = m.state & modifierMask;
            hovered_ = true;
            client_.mouseMove(mouseEvent(m.x, m.y, m.state));
            break;
        }
        case EnterNotify: {
            const XCrossingEvent& c = event.xcrossing;
            if (c.mode != NotifyNormal && c.mode != NotifyUngrab) break;
            hovered_ = true;
            modifiers_ = c.state & modifierMask;
            pointerX_ = c.x;
            pointerY_ = c.y;
            client_.mouseMove(mouseEvent(c.x, c.y, c.state));
            break;
        }
        case LeaveNotify: {
            const XCrossingEvent& c = event.xcrossing;
            if (holding_ && c.mode == NotifyUngrab) {
                // Our hold of the pointer was broken from outside.
                captured_ = false;
                client_.closeRequested();
            } else if (captured_) {
                // While we hold the pointer, a crossing that comes from a grab means that
                // the grab is gone: another program took the pointer, or our window
                // stopped being viewable.
                if (c.mode == NotifyGrab || c.mode == NotifyUngrab) lostCapture();
            } else if (c.mode == NotifyNormal || c.mode == NotifyUngrab) {
                pointerLeft();
            }
            break;
        }
        case KeyPress:
        case KeyRelease: {
            XKeyEvent& k = event.xkey;
            char text[16];
            KeySym sym = NoSymbol;
            XLookupString(&k, text, sizeof text, &sym, nullptr);
            KeyEvent e;
            e.key = keyOf(sym);
            e.character = characterOf(sym);
            if (e.key == Key::other && e.character != 0) e.key = Key::character;
            e.shift = (k.state & ShiftMask) != 0;
            e.ctrl = (k.state & ControlMask) != 0;
            e.alt = (k.state & Mod1Mask) != 0;
            e.time = millisecondTick();
            const bool press = event.type == KeyPress;
            // Held keys repeat as presses alone (the connection asks for detectable repeat).
            const unsigned code = k.keycode & 0xFF;
            e.repeat = press && keysDown_.test(code);
            keysDown_.set(code, press);
            if (const unsigned m = modifierOf(e.key)) {
                const unsigned now = press ? (k.state | m) : (k.state & ~m);
                if ((now & modifierMask) != modifiers_) {
                    modifiers_ = now & modifierMask;
                    if (hovered_) client_.modifiersChanged(mouseEvent(pointerX_, pointerY_, now));
                }
            }
            const bool used = press ? client_.keyDown(e) : client_.keyUp(e);
            // Only a key that reached our editor window through the focus is the host's to
            // have; one that we sent ourselves, or that arrived while a helper holds the
            // keyboard, is not.
            // A modifier alone is no key of the host's yet: what it modifies decides.
            if (!used && kind_ == Kind::editor && !k.send_event && !holding_ && modifierOf(e.key) == 0) passKeyOn(k);
            break;
        }
        case VisibilityNotify:
            // Sent only while viewable: becoming unviewable comes as an unmap instead.
            viewable_ = true;
            obscured_ = event.xvisibility.state == VisibilityFullyObscured;
            updateRest();
            break;
        case MapNotify:
            checkViewable();
            // A dialog is modal: it takes the keyboard when it appears, window manager or not.
            if (kind_ == Kind::dialog && event.xmap.window == window_) {
                session_->connection->takeError();
                XSetInputFocus(d, window_, RevertToParent, CurrentTime);
            }
            break;
        case FocusOut:
            // The keyboard went elsewhere: through our grab's loss, or, without a grab,
            // by another window taking the focus.
            if (holding_ && event.xfocus.window == window_ &&
                (event.xfocus.mode == NotifyUngrab || (!holdingKeyboard_ && event.xfocus.mode == NotifyNormal) ||
                 (!holdingKeyboard_ && event.xfocus.mode == NotifyWhileGrabbed)))
                client_.closeRequested();
            break;
        case ReparentNotify:
            // A host that moves the editor into a window of its own: watch the new way up.
            if (kind_ == Kind::editor && event.xreparent.window == window_) {
                for (::Window w : ancestors_) {
                    session_->connection->detach(w);
                    XSelectInput(d, w, NoEventMask);
                }
                ancestors_.clear();
                session_->connection->takeError();
                topLevelOf(*session_->connection, event.xreparent.parent, &ancestors_);
                watchAncestors();
                checkViewable();
            }
            break;
        case UnmapNotify:
            if (captured_ && event.xunmap.window == window_) lostCapture();
            if (kind_ == Kind::editor) {
                viewable_ = false;
                updateRest();
            }
            break;
        case DestroyNotify:
            if (event.xdestroywindow.window != window_) break;
            // The host destroyed its window and ours with it.
            session_->connection->detach(window_);
            window_ = 0;
            if (captured_) lostCapture();
            if (kind_ == Kind::editor) {
                session_->lost = true;
                session_->waker.reset();
            }
            break;
        case ClientMessage:
            if (Atom(event.xclient.data.l[0]) == session_->connection->atom("WM_DELETE_WINDOW")) client_.closeRequested();
            break;
        default:
            break;
    }
}

}  // namespace tw
