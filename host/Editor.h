// The plug-in's editor as the host drives it: the size it reports, the window it opens in
// the host's parent window, the host's idle calls, and the close, which may come while a
// menu or dialog of ours is still open. One per instance; the instance answers the host's
// editor calls through it.
#pragma once

#include <memory>
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
};

}  // namespace tw
