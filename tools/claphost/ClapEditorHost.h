// The command-line host's side of a CLAP plug-in's editor, as a DAW on Linux provides it:
// a top-level window of our own that parents the editor (the GUI extension's create,
// set_parent and show), the plug-in's timers run when due (timer-support, the only way a
// CLAP editor is run), the flushes it asks for, and reading the window back.
#pragma once

#include <X11/Xlib.h>

#include <csignal>
#include <cstdint>
#include <functional>

#include "graphics/Raster.h"
#include "tools/claphost/HostedClap.h"

namespace tw {

class ClapEditorHost {
public:
    // Opens a display, makes the parent window at the editor's size, shows it and opens the
    // editor in it. Throws std::runtime_error when any of that fails. `stop`, a signal
    // handler's flag, ends the loop as if the window were closed once it turns non-zero.
    // `scale`: told to the editor before its size is asked (0: none), as set_scale.
    ClapEditorHost(HostedClap& plugin, const volatile std::sig_atomic_t* stop, double scale = 0);
    // Destroys the editor, then the parent window.
    ~ClapEditorHost();
    ClapEditorHost(const ClapEditorHost&) = delete;
    ClapEditorHost& operator=(const ClapEditorHost&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    // Runs the host's loop for `seconds`, or until the window is closed when 0; `between`
    // runs after every pass.
    void run(double seconds, const std::function<void()>& between = {});
    bool closed() const { return closed_ || (stop_ != nullptr && *stop_ != 0); }
    // Runs the loop until a pixel of the window differs from the parent's own background,
    // at most `seconds`; answers the milliseconds from set_parent, or -1.
    double waitForFirstFrame(double seconds);
    Raster32 capture();

private:
    void pass(int maxWaitMs);
    bool showsBackgroundOnly();

    HostedClap& plugin_;
    const volatile std::sig_atomic_t* stop_;
    Display* display_ = nullptr;
    ::Window parent_ = 0;
    Atom deleteWindow_ = 0;
    int width_ = 0, height_ = 0;
    bool closed_ = false;
    bool created_ = false;
    double openedAt_ = 0;
};

}  // namespace tw
