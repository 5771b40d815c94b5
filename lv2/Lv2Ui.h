// The plug-in's editor as an LV2 X11 UI: embedded in the host's window (ui:parent), run by
// the host's idle calls (ui:idleInterface), on the plug-in's own instance in the same
// process (instance-access). The user's gestures reach the host as port writes inside
// ui:touch, where the host offers it; values the host sets come back as port events.
// Every method runs on the host's UI thread.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <lv2/ui/ui.h>

#include "core/Editor.h"
#include "editor/EditorFactory.h"
#include "lv2/Lv2Plugin.h"

namespace tw::lv2 {

class Lv2Ui final : public UiLink {
public:
    struct Host {
        LV2UI_Write_Function write = nullptr;
        LV2UI_Controller controller = nullptr;
        const LV2UI_Touch* touch = nullptr;    // optional
        const LV2UI_Resize* resize = nullptr;  // optional
        std::optional<double> scale;           // the host's ui:scaleFactor option, if given
    };

    // Opens the editor in `parent`; raises when it can't.
    Lv2Ui(Lv2Plugin& plugin, const EditorFactory& editor, const Host& host, std::uintptr_t parent);
    ~Lv2Ui() override;
    Lv2Ui(const Lv2Ui&) = delete;
    Lv2Ui& operator=(const Lv2Ui&) = delete;

    std::uintptr_t widget() const { return editor_.windowId(); }
    // The host's value of a port: what the host shows, for the next sync.
    void portEvent(std::uint32_t port, float value);
    // Runs the editor's due work, then tells the host of values it no longer shows.
    void idle();

    // UiLink.
    void touch(std::uint32_t port, bool grabbed) override;
    void write(std::uint32_t port, float value) override;
    void portsChanged() override { portsChanged_ = true; }

private:
    void syncPorts();

    Lv2Plugin& plugin_;
    Host host_;
    Editor editor_;
    std::vector<float> shown_;  // by control port, from firstControl
    bool portsChanged_ = true;
};

}  // namespace tw::lv2
