// The plug-in's editor as a host drives it, whatever the format: the size it reports, the
// window it opens in the host's parent window, the host's idle calls, and the close, which
// may come while a menu or dialog of ours is still open. One per instance; every method is
// for the host's main (GUI) thread, except that a careless host may close from another
// thread while the editor's thread is inside one of our calls: the close then waits for
// that call to end (a modal loop under way ends at once) and happens on the editor's
// thread where it can.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "editor/EditorFactory.h"
#include "cushy/LayoutZoom.h"
#include "editor/ModelController.h"
#include "graphics/IntRect.h"
#include "patch/ModelServices.h"
#include "platform/EditorWindow.h"

namespace tw {

class Editor {
public:
    // `format`: the plug-in format the host loaded, as the about box names it ("VST 2.4").
    Editor(ModelServices& services, const EditorFactory& factory, std::string format);
    ~Editor();
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    // The editor's size in pixels, at its origin, at the zoom it opens (or is open) at.
    IntRect size();
    // The scale the host draws its own windows at (1 is 100 %), when it says one: it comes
    // before the user's choice and the desktop's. An open editor takes it at once.
    void setHostScale(double scale);
    // How the editor asks the host for a new size when the user picks another zoom:
    // answers whether the host took it. Without one, the zoom can't change while open.
    void setResizeRequest(std::function<bool(std::int32_t width, std::int32_t height)> request) {
        resizeRequest_ = std::move(request);
    }
    const Zoom& zoom();
    // Opens the editor as a child of the host's X window `parent`, closing one already open.
    bool open(std::uintptr_t parent);
    // Runs what is due: timers, the window's events, windows closed while busy, and a
    // close that another thread asked for or that the loss of our X server forces.
    void idle();
    // Keeps the user's changes for the next start, then ends the windows (later, when a
    // call of ours is still under way). False when it came from another thread and the
    // editor's thread did not let go in time: then nothing changed.
    bool close();

    // A key the host hands the open editor (hosts that keep the keyboard themselves):
    // answers whether the editor used it, so that the host keeps the rest.
    bool keyDown(const KeyEvent& event);
    bool keyUp(const KeyEvent& event);

    bool isOpen() const { return window_ != nullptr; }
    // The open editor's X window id; 0 when closed.
    std::uintptr_t windowId() const { return window_ ? window_->nativeId() : 0; }
    EditorWindow* window() { return window_.get(); }
    ModelController* controller() { return controller_.get(); }

private:
    void closeNow();
    // The zoom an editor opens at now: the host's scale, the user's choice, the desktop's.
    Zoom openingZoom() const;
    // Redraws the open editor at `zoom` in the same parent, when the host takes the size;
    // else the zoom stays and the status line says why.
    void rezoom(const Zoom& zoom);
    // Takes the editor's lock, asking a modal loop on another thread to end first.
    // False when that thread does not let go in time: the caller then leaves all alone.
    bool lockForClose(std::unique_lock<std::recursive_mutex>& lock);
    // Destroys the windows that were closed while busy, once they no longer are.
    void reap();

    struct Open {
        std::unique_ptr<ModelController> controller;
        std::unique_ptr<EditorWindow> window;
        // Detaches the controller, then destroys the window before the controller it shows.
        void end();
    };

    ModelServices& services_;
    const EditorFactory& factory_;
    IntRect baseSize_;
    std::string format_;
    std::optional<Zoom> zoom_;
    std::optional<double> hostScale_;
    std::function<bool(std::int32_t, std::int32_t)> resizeRequest_;
    std::uintptr_t parent_ = 0;
    // The user picked a zoom in the menu; carried out at the next idle call.
    bool zoomPicked_ = false;
    std::unique_ptr<ModelController> controller_;
    std::unique_ptr<EditorWindow> window_;
    // Closed by the host from inside one of their own calls; destroyed when it returns.
    std::vector<Open> closing_;
    // Held through every editor call, so that no two threads are in the window at once.
    std::recursive_mutex lock_;
    // A close asked for from another thread while a call of ours was under way.
    std::atomic<bool> closeWanted_{false};
    // The open window, for another thread to ask its loop to stop; cleared under the
    // lock before the window goes.
    std::mutex stoppableLock_;
    EditorWindow* stoppable_ = nullptr;
};

}  // namespace tw
