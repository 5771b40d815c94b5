#include "platform/X11Clipboard.h"

#include <X11/Xatom.h>
#include <poll.h>

#include <algorithm>

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

X11Clipboard::Answer X11Clipboard::fetch(Atom target, std::uint32_t deadline, Atom& type, int& format,
                                         std::vector<unsigned long>& items, std::string& bytes) {
    Display* d = connection_.display();
    const Atom clipboard = connection_.atom("CLIPBOARD");
    const std::string name = "TIDEWAKE_CLIPBOARD_" + std::to_string(requests_++ % 8);
    const Atom property = connection_.atom(name.c_str());
    XDeleteProperty(d, window_, property);
    XConvertSelection(d, clipboard, target, property, window_, CurrentTime);
    XFlush(d);
    XEvent event;
    for (;;) {
        // An answer to an earlier request that came too late is not this one's.
        if (XCheckTypedWindowEvent(d, window_, SelectionNotify, &event)) {
            const XSelectionEvent& e = event.xselection;
            if (e.target == target && (e.property == property || e.property == None)) break;
            continue;
        }
        answerSelectionRequests(&connection_);
        const std::int32_t left = std::int32_t(deadline - millisecondTick());
        if (left <= 0 || connection_.lost()) return Answer::late;
        // Short sleeps: another connection of ours may hold the selection, and it can only
        // answer when this loop does it for it.
        pollfd p{connection_.fd(), POLLIN, 0};
        poll(&p, 1, left < 5 ? left : 5);
    }
    if (event.xselection.property == None) return Answer::refused;
    unsigned long count = 0, remaining = 0;
    unsigned char* data = nullptr;
    type = None;
    format = 0;
    const int status = XGetWindowProperty(d, window_, property, 0, 0x1000000, True, AnyPropertyType, &type, &format,
                                          &count, &remaining, &data);
    if (status != Success) throw Qvd::xWindowsError("The clipboard's text could not be read");
    items.clear();
    bytes.clear();
    if (data && format == 8) bytes.assign(reinterpret_cast<const char*>(data), count);
    // Xlib hands 32-bit items over as longs.
    if (data && format == 32) items.assign(reinterpret_cast<unsigned long*>(data), reinterpret_cast<unsigned long*>(data) + count);
    if (data) XFree(data);
    return Answer::given;
}

bool X11Clipboard::convert(Atom target, int timeLimitMs, std::string& out) {
    Atom type = None;
    int format = 0;
    std::vector<unsigned long> items;
    const Answer answer = fetch(target, millisecondTick() + std::uint32_t(timeLimitMs), type, format, items, out);
    if (answer == Answer::late) throw Qvd::xWindowsError("The program that holds the clipboard did not answer");
    if (answer == Answer::refused) return false;
    if (type == connection_.atom("INCR")) throw Qvd::xWindowsError("The clipboard's text is too large");
    return format == 8;
}

X11Clipboard::Peek X11Clipboard::peek(int timeLimitMs, std::string& text) {
    Display* d = connection_.display();
    text.clear();
    const ::Window owner = XGetSelectionOwner(d, connection_.atom("CLIPBOARD"));
    if (owner == window_) {
        text = text_;
        return Peek::text;
    }
    owned_ = false;
    text_.clear();
    if (owner == None) return Peek::none;
    const std::uint32_t now = millisecondTick();
    if (owner == lateOwner_ && now - lateTick_ < 2000) return Peek::unknown;
    const std::uint32_t deadline = now + std::uint32_t(timeLimitMs);
    const Atom utf8 = connection_.atom("UTF8_STRING");
    Atom type = None;
    int format = 0;
    std::vector<unsigned long> items;
    std::string bytes;
    Answer answer = fetch(connection_.atom("TARGETS"), deadline, type, format, items, bytes);
    Atom wanted = utf8;
    if (answer == Answer::given) {
        const bool hasUtf8 = std::find(items.begin(), items.end(), utf8) != items.end();
        const bool hasLatin1 = std::find(items.begin(), items.end(), XA_STRING) != items.end();
        if (!hasUtf8 && !hasLatin1) return Peek::none;
        wanted = hasUtf8 ? utf8 : XA_STRING;
    }
    // An owner too old to list its targets may still give text.
    if (answer != Answer::late) answer = fetch(wanted, deadline, type, format, items, bytes);
    if (answer == Answer::late) {
        lateOwner_ = owner;
        lateTick_ = now;
        return Peek::unknown;
    }
    // Text too large for one transfer is refused by the reader too.
    if (answer == Answer::refused || format != 8 || type == connection_.atom("INCR")) return Peek::none;
    text = wanted == XA_STRING ? latin1ToUtf8(bytes) : bytes;
    return Peek::text;
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
