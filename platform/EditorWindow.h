// The editor's window inside the host: a Window that the host's editor calls drive. The
// plug-in's editor object opens it in the host's parent window and passes it the host's
// idle calls; the layers above see only the Window. No window-system header is needed here.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/Window.h"

namespace tw {

class EditorWindow : public Window {
public:
    // A child of the host's window `parent` (the window id the host passes), on a
    // connection of our own, shown at once; the first paint comes with the server's
    // exposure. Qvd::xWindowsError when there is no display or the parent does not exist.
    static std::unique_ptr<EditorWindow> open(WindowClient& client, std::uintptr_t parent, std::int32_t width,
                                              std::int32_t height);

    // One pass on the GUI thread: the events that arrived, the timers that are due, then
    // the paint of what is invalid. The host's idle call, and its event dispatch where it
    // has one for us, come here. Does nothing when called from inside a call of ours.
    virtual void idle() = 0;
    // Whether one of our calls is under way on the stack (an event, a timer, a modal
    // loop): the object must not be destroyed then.
    virtual bool busy() const = 0;
    // The host closed the editor while busy: the window goes at once, a modal loop ends
    // with LostWindowException, and the object waits until it is no longer busy to be
    // destroyed.
    virtual void abandon() = 0;
    // Callable from any thread: a modal loop of ours under way ends soon after with
    // LostWindowException, so that the caller's own thread can carry out a close.
    virtual void requestStop() = 0;
    // Whether the connection to the X server broke: the editor can only be closed now.
    virtual bool disconnected() const = 0;
    // Paint passes that reached the screen, for tests and measurements.
    virtual std::uint64_t framesShown() const = 0;
    // The window system's id of the window, for hosts that embed it themselves (an LV2
    // UI hands it over as its widget).
    virtual std::uintptr_t nativeId() const = 0;
};

}  // namespace tw
