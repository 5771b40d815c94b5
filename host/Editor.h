// The plug-in's editor as the host drives it: the size it reports, the window it opens in
// the host's parent window, the host's idle calls, and the close, which may come while a
// menu or dialog of ours is still open. One per instance; the instance answers the host's
// editor calls through it. A careless host may close from another thread while the
// editor's thread is inside one of our calls: the close waits for that call to end (a
// modal loop under way ends at once) and happens on the editor's thread where it can.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/Vst2.h"
#include "model/ModelController.h"
#include "model/ModelServices.h"
#include "platform/EditorWindow.h"

namespace tw {

class Editor {
public:
    explicit Editor(ModelServices& services);
    ~Editor();
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    // effEditGetRect, effEditOpen, effEditIdle and effEditClose; other codes answer 0.
    vst2::intptr dispatch(vst2::int32 opcode, vst2::intptr value, void* ptr);

    bool isOpen() const { return window_ != nullptr; }
    EditorWindow* window() { return window_.get(); }
    ModelController* controller() { return controller_.get(); }

private:
    bool open(void* parent);
    void close();
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
    vst2::ERect rect_{};
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
