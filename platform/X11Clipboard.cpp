#include "platform/X11Clipboard.h"

#include <X11/Xatom.h>
#include <poll.h>

#include "platform/Qvd.h"
#include "platform/TimerQueue.h"

namespace tw {

namespace {

// STRING is Latin-1; everything inside the program is UTF-8.
std::string latin1ToUtf8(std::string_view in) {
    std::string out;
    for (unsigned char c : in) {
        if (c < 0x80) {
            out += char(c);
        } else {
            out += char(0xC0 | (c >> 6));
            out += char(0x80 | (c & 0x3F));
        }
    }
    return out;
}

// Characters beyond Latin-1 become '?', as a Latin-1 reader could not show them anyway.
std::string utf8ToLatin1(std::string_view in) {
    std::string out;
    for (std::size_t i = 0; i < in.size();) {
        unsigned char c = static_cast<unsigned char>(in[i]);
        if (c < 0x80) {
            out += char(c);
            ++i;
            continue;
        }
        std::size_t length = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC0 ? 2 : 1;
        std::uint32_t code = length == 2 && i + 1 < in.size() ? ((c & 0x1Fu) << 6) | (static_cast<unsigned char>(in[i + 1]) & 0x3Fu) : 0x100;
        out += code < 0x100 ? char(code) : '?';
        i += length;
    }
    return out;
}

}  // namespace

X11Clipboard::X11Clipboard(X11Connection& connection) : connection_(connection) {
    Display* d = connection_.display();
    XSetWindowAttributes attributes{};
    attributes.event_mask = PropertyChangeMask;
    window_ = XCreateWindow(d, connection_.root(), -10, -10, 1, 1, 0, 0, InputOnly, CopyFromParent, CWEventMask, &attributes);
    connection_.attach(window_, this);
}

X11Clipboard::~X11Clipboard() {
    connection_.detach(window_);
    XDestroyWindow(connection_.display(), window_);
}

void X11Clipboard::write(std::string_view text) {
    Display* d = connection_.display();
    const Atom clipboard = connection_.atom("CLIPBOARD");
    text_.assign(text);
    XSetSelectionOwner(d, clipboard, window_, CurrentTime);
    owned_ = XGetSelectionOwner(d, clipboard) == window_;
    if (!owned_) throw Qvd::xWindowsError("The X server did not give us the clipboard");
}

std::string X11Clipboard::read(int timeLimitMs) {
    Display* d = connection_.display();
    const Atom clipboard = connection_.atom("CLIPBOARD");
    const ::Window owner = XGetSelectionOwner(d, clipboard);
    if (owner == window_) return text_;
    // Someone else took it, whether or not their SelectionClear has reached us yet.
    owned_ = false;
    text_.clear();
    if (owner == None) return {};
    std::string text;
    if (convert(connection_.atom("UTF8_STRING"), timeLimitMs, text)) return text;
    if (convert(XA_STRING, timeLimitMs, text)) return latin1ToUtf8(text);
    return {};
}

bool X11Clipboard::convert(Atom target, int timeLimitMs, std::string& out) {
    Display* d = connection_.display();
    const Atom clipboard = connection_.atom("CLIPBOARD");
    const Atom property = connection_.atom("TIDEWAKE_CLIPBOARD");
    XDeleteProperty(d, window_, property);
    XConvertSelection(d, clipboard, target, property, window_, CurrentTime);
    XFlush(d);
    const std::uint32_t start = millisecondTick();
    XEvent event;
    for (;;) {
        if (XCheckTypedWindowEvent(d, window_, SelectionNotify, &event)) break;
        answerSelectionRequests(&connection_);
        const std::int32_t left = timeLimitMs - std::int32_t(millisecondTick() - start);
        if (left <= 0) throw Qvd::xWindowsError("The program that holds the clipboard did not answer");
        // Short sleeps: another connection of ours may hold the selection, and it can only
        // answer when this loop does it for it.
        pollfd p{connection_.fd(), POLLIN, 0};
        poll(&p, 1, left < 5 ? left : 5);
    }
    if (event.xselection.property == None) return false;
    Atom type = None;
    int format = 0;
    unsigned long count = 0, remaining = 0;
    unsigned char* data = nullptr;
    const int status = XGetWindowProperty(d, window_, property, 0, 0x1000000, True, AnyPropertyType, &type, &format,
                                          &count, &remaining, &data);
    if (status != Success) throw Qvd::xWindowsError("The clipboard's text could not be read");
    bool ok = false;
    if (type == connection_.atom("INCR")) {
        if (data) XFree(data);
        throw Qvd::xWindowsError("The clipboard's text is too large");
    }
    if (format == 8 && data) {
        out.assign(reinterpret_cast<const char*>(data), count);
        ok = true;
    }
    if (data) XFree(data);
    return ok;
}

void X11Clipboard::answer(const XSelectionRequestEvent& request) {
    Display* d = connection_.display();
    const Atom utf8 = connection_.atom("UTF8_STRING"), targets = connection_.atom("TARGETS"),
               textAtom = connection_.atom("TEXT");
    // Old clients name no property: the target itself is the property then.
    const Atom property = request.property != None ? request.property : request.target;
    Atom answered = None;
    if (owned_ && request.selection == connection_.atom("CLIPBOARD")) {
        const long limit = XMaxRequestSize(d) * 4 - 256;
        if (request.target == targets) {
            const Atom list[] = {targets, utf8, XA_STRING, textAtom};
            XChangeProperty(d, request.requestor, property, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(list), 4);
            answered = property;
        } else if ((request.target == utf8 || request.target == textAtom) && long(text_.size()) < limit) {
            XChangeProperty(d, request.requestor, property, utf8, 8, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(text_.data()), int(text_.size()));
            answered = property;
        } else if (request.target == XA_STRING && long(text_.size()) < limit) {
            const std::string latin1 = utf8ToLatin1(text_);
            XChangeProperty(d, request.requestor, property, XA_STRING, 8, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(latin1.data()), int(latin1.size()));
            answered = property;
        }
    }
    XEvent reply{};
    reply.xselection.type = SelectionNotify;
    reply.xselection.display = d;
    reply.xselection.requestor = request.requestor;
    reply.xselection.selection = request.selection;
    reply.xselection.target = request.target;
    reply.xselection.property = answered;
    reply.xselection.time = request.time;
    XSendEvent(d, request.requestor, False, NoEventMask, &reply);
    XFlush(d);
}

void X11Clipboard::handleEvent(XEvent& event) {
    if (event.type == SelectionRequest) {
        answer(event.xselectionrequest);
    } else if (event.type == SelectionClear) {
        owned_ = false;
        text_.clear();
    }
}

void answerSelectionRequests(const X11Connection* except) {
    for (X11Connection* c : X11Connection::all()) {
        if (c == except) continue;
        XEvent event;
        while (XCheckTypedEvent(c->display(), SelectionRequest, &event) ||
               XCheckTypedEvent(c->display(), SelectionClear, &event))
            c->dispatch(event);
    }
}

}  // namespace tw
