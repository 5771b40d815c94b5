#include "lv2/Lv2Ui.h"

#include <cmath>

namespace tw::lv2 {

Lv2Ui::Lv2Ui(Lv2Plugin& plugin, const EditorFactory& editor, const Host& host, std::uintptr_t parent)
    : plugin_(plugin),
      host_(host),
      editor_(plugin.instance(), editor, "LV2"),
      shown_(static_cast<std::size_t>(plugin.instance().parameterCount()), NAN) {
    if (host_.scale) editor_.setHostScale(*host_.scale);
    // ui:resize answers 0 when the host took the size.
    if (host_.resize)
        editor_.setResizeRequest([this](std::int32_t width, std::int32_t height) {
            return host_.resize->ui_resize(host_.resize->handle, width, height) == 0;
        });
    editor_.open(parent);
    if (host_.resize) host_.resize->ui_resize(host_.resize->handle, editor_.size().width, editor_.size().height);
    plugin_.attachUi(this);
}

Lv2Ui::~Lv2Ui() {
    plugin_.attachUi(nullptr);
    editor_.close();
}

void Lv2Ui::portEvent(std::uint32_t port, float value) {
    if (port >= firstControl && port - firstControl < shown_.size()) shown_[port - firstControl] = value;
}

void Lv2Ui::idle() {
    editor_.idle();
    if (portsChanged_) syncPorts();
}

void Lv2Ui::touch(std::uint32_t port, bool grabbed) {
    if (host_.touch) host_.touch->touch(host_.touch->handle, port, grabbed);
}

void Lv2Ui::write(std::uint32_t port, float value) {
    portEvent(port, value);
    host_.write(host_.controller, port, sizeof value, 0, &value);
}

void Lv2Ui::syncPorts() {
    portsChanged_ = false;
    Instance& instance = plugin_.instance();
    const ModelDescriptor& d = instance.descriptor();
    for (std::size_t i = 0; i < shown_.size(); ++i) {
        const int id = instance.parameterId(static_cast<int>(i));
        const float value = toPort(d.parameters[static_cast<std::size_t>(id)], instance.parameterValue(id));
        if (value != shown_[i]) write(firstControl + static_cast<std::uint32_t>(i), value);
    }
}

}  // namespace tw::lv2
