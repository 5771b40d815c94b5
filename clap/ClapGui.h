// The plug-in's editor through CLAP's GUI extension: embedded in the host's X11 window
// (set_parent), run by a timer of the host's (timer-support: CLAP has no idle call), which
// serves the editor's X connection, its own timers and its painting. A host without timer
// support gets no editor, since nothing would run it. Every method is for the main thread.
#pragma once

#include <cstdint>

#include <clap/ext/gui.h>
#include <clap/ext/timer-support.h>
#include <clap/host.h>

#include "core/Editor.h"
#include "core/Instance.h"
#include "editor/EditorFactory.h"

namespace tw::clap {

class ClapGui {
public:
    // The period asked of the host's timer: the editor's animations and meters run at it.
    static constexpr std::uint32_t timerPeriodMs = 20;

    ClapGui(Instance& instance, const EditorFactory& factory, const clap_host_t* host);
    ~ClapGui();
    ClapGui(const ClapGui&) = delete;
    ClapGui& operator=(const ClapGui&) = delete;

    static bool isApiSupported(const char* api, bool isFloating);
    bool create(const char* api, bool isFloating);
    void destroy();
    bool size(std::uint32_t* width, std::uint32_t* height);
    // The host's scale, 1 for 100 %; false for one that is no scale at all.
    bool setScale(double scale);
    bool setParent(const clap_window_t* window);
    bool show();
    bool hide();
    void onTimer(clap_id timer);

    Editor& editor() { return editor_; }

private:
    const clap_host_t* host_;
    const clap_host_timer_support_t* timers_ = nullptr;
    clap_id timer_ = CLAP_INVALID_ID;
    bool created_ = false;
    Editor editor_;
    const clap_host_gui_t* hostGui_ = nullptr;
};

}  // namespace tw::clap
