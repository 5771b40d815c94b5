// The command-line host's side of a plug-in's editor, as a DAW on Linux provides it: a
// top-level window of our own that parents the editor, the editor calls, the idle call at
// a host's rate (or Ardour's way: events handed to the editor's _XEventProc every
// millisecond and the idle call some 20 times a second), and reading the window back.
#pragma once

#include <X11/Xlib.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <string>
#include <thread>

#include "graphics/Raster.h"
#include "tools/vst2host/HostedPlugin.h"

namespace tw {

class EditorHost {
public:
    struct Settings {
        int idleRate = 30;    // effEditIdle calls per second
        bool ardour = false;  // Ardour's event dispatch and idle rate instead
        // The scale told to the plug-in before it is asked its size (0: none), as Windows
        // hosts tell it (effVendorSpecific 'PreS', 'AeCs', opt); and a host that keeps its
        // window's size when the plug-in asks for another.
        double scale = 0;
        bool refuseResize = false;
        // A signal handler's flag: the loop ends as if the window were closed once it
        // turns non-zero.
        const volatile std::sig_atomic_t* stop = nullptr;
    };

    // Opens a display, makes the parent window at the size the editor asks for, shows it
    // and opens the editor in it. Throws std::runtime_error when any of that fails.
    EditorHost(HostedPlugin& plugin, const Settings& settings);
    // Closes the editor, then the parent window.
    ~EditorHost();
    EditorHost(const EditorHost&) = delete;
    EditorHost& operator=(const EditorHost&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    // Runs the host's loop for `seconds`, or until the window is closed when 0.
    void run(double seconds);
    // From now on, an editor that holds the loop inside one of its calls (a menu left
    // open) past `seconds` from now (never when 0), or once the stop flag has turned, is
    // made to let go as a desktop would: the window is hidden. One that still holds on
    // after that ends the process.
    void endBy(double seconds);
    // Hides or shows the window that holds the editor, the editor staying open: what
    // Ardour does when the user closes a plug-in's window.
    void setShown(bool shown);
    // Closes the editor; the host's loop and its window go on without it.
    void closeEditor();
    // Whether the user closed the host's window, or the stop flag turned.
    bool closed() const { return closed_ || (settings_.stop != nullptr && *settings_.stop != 0); }
    // Runs the loop until a pixel of the window differs from the parent's own background,
    // at most `seconds`; answers the milliseconds from the editor's opening, or -1.
    double waitForFirstFrame(double seconds);
    // The window's pixels as the X server shows them, opaque.
    Raster32 capture();

private:
    void pass();
    // On a thread of its own, with a connection of its own, from endBy() until the end.
    void watch(double end);
    bool showsBackgroundOnly();

    HostedPlugin& plugin_;
    Settings settings_;
    Display* display_ = nullptr;
    ::Window parent_ = 0;
    Atom deleteWindow_ = 0;
    int width_ = 0, height_ = 0;
    bool closed_ = false;
    bool editorOpen_ = true;
    std::uint64_t passes_ = 0;
    double openedAt_ = 0;
    void (*eventProc_)(XEvent*) = nullptr;
    std::atomic<bool> inEditorCall_{false};
    std::atomic<double> callStarted_{0};  // nowMs() when the editor call under way began
    std::atomic<bool> watching_{false};
    std::thread watcher_;
};

}  // namespace tw
