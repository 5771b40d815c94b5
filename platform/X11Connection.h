// One connection of our own to the X server. The editor window, its helper windows and
// the clipboard live on it; it reads the events and hands each to the window it belongs
// to. Only the GUI thread uses a connection. Inside namespace tw, X's window id is ::Window.
#pragma once

#include <X11/Xlib.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tw {

class X11Clipboard;

// Something that takes the events of one X window.
class X11EventTarget {
public:
    virtual void handleEvent(XEvent& event) = 0;

protected:
    ~X11EventTarget() = default;
};

class X11Connection {
public:
    // What a connection is for: windows (the editor's, which also holds the clipboard),
    // or only sending messages from a thread of its own, which needs no visual.
    enum class Use { windows, signalling };

    // Opens the display named by $DISPLAY. Qvd::xWindowsError "Cannot open the X display"
    // when there is none, or when a connection for windows finds no 24-bit true-colour
    // visual.
    explicit X11Connection(Use use = Use::windows);
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    Display* display() const { return display_; }
    int fd() const { return ConnectionNumber(display_); }
    int screen() const { return screen_; }
    ::Window root() const { return RootWindow(display_, screen_); }
    Visual* visual() const { return visual_; }
    int depth() const { return depth_; }
    // Whether pictures can go to the server through shared memory (a local server that
    // offers MIT-SHM and lets us attach a segment).
    bool hasShm() const { return shm_; }

    Atom atom(const char* name);
    // A system cursor by its font shape (XC_...), made once and freed with the connection.
    ::Cursor fontCursor(unsigned shape);

    void attach(::Window window, X11EventTarget* target);
    void detach(::Window window);
    // Reads every event that has arrived and hands it on; answers how many there were.
    int dispatchPending();
    // Hands one event to its window; events of windows not attached are dropped.
    void dispatch(XEvent& event);

    // Errors of requests on this connection are collected here instead of ending the
    // process, as Xlib's default handler would. `sync` waits for the server and answers
    // the first error code since the last call (0 for none).
    int sync();
    int takeError();

    X11Clipboard& clipboard();

    // Whether the connection to the server broke (the server went away, the socket
    // failed). Xlib answers nothing more on it then; the windows on it end.
    bool lost() const { return lost_; }

    // Every connection for windows open in the process, oldest first; the clipboard uses
    // the newest.
    static std::vector<X11Connection*> all();

private:
    // Joins the process's list, whose errors our handler collects.
    void enroll();
    // Leaves the process's list; the last one out gives the error handler back.
    void leave();
    static int errorHandler(Display* display, XErrorEvent* event);
    static int ioErrorHandler(Display* display);
    static void ioErrorExit(Display* display, void* data);

    Use use_;
    Display* display_ = nullptr;
    int screen_ = 0;
    Visual* visual_ = nullptr;
    int depth_ = 0;
    bool shm_ = false;
    int error_ = 0;
    bool lost_ = false;
    std::map<std::string, Atom> atoms_;
    std::map<unsigned, ::Cursor> cursors_;
    std::map<::Window, X11EventTarget*> targets_;
    std::unique_ptr<X11Clipboard> clipboard_;
};

}  // namespace tw
