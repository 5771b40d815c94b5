#include "clap/ClapGui.h"

#include <cmath>
#include <cstring>

namespace tw::clap {

ClapGui::ClapGui(Instance& instance, const EditorFactory& factory, const clap_host_t* host)
    : host_(host), editor_(instance, factory, "CLAP") {
    if (host_->get_extension)
        timers_ = static_cast<const clap_host_timer_support_t*>(host_->get_extension(host_, CLAP_EXT_TIMER_SUPPORT));
    if (timers_ && (!timers_->register_timer || !timers_->unregister_timer)) timers_ = nullptr;
    if (host_->get_extension)
        hostGui_ = static_cast<const clap_host_gui_t*>(host_->get_extension(host_, CLAP_EXT_GUI));
    // A zoom picked with the editor open asks the host for the new size.
    editor_.setResizeRequest([this](std::int32_t width, std::int32_t height) {
        return hostGui_ != nullptr && hostGui_->request_resize != nullptr &&
               hostGui_->request_resize(host_, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    });
}

ClapGui::~ClapGui() { destroy(); }

bool ClapGui::isApiSupported(const char* api, bool isFloating) {
    return api != nullptr && std::strcmp(api, CLAP_WINDOW_API_X11) == 0 && !isFloating;
}

bool ClapGui::create(const char* api, bool isFloating) {
    if (!isApiSupported(api, isFloating) || timers_ == nullptr) return false;
    if (created_) return true;
    if (!timers_->register_timer(host_, timerPeriodMs, &timer_)) {
        timer_ = CLAP_INVALID_ID;
        return false;
    }
    created_ = true;
    return true;
}

void ClapGui::destroy() {
    if (!created_) return;
    created_ = false;
    if (timer_ != CLAP_INVALID_ID) timers_->unregister_timer(host_, timer_);
    timer_ = CLAP_INVALID_ID;
    editor_.close();
}

bool ClapGui::setScale(double scale) {
    if (!(scale > 0) || !std::isfinite(scale)) return false;
    editor_.setHostScale(scale);
    return true;
}

bool ClapGui::size(std::uint32_t* width, std::uint32_t* height) {
    if (width == nullptr || height == nullptr) return false;
    const IntRect r = editor_.size();
    *width = static_cast<std::uint32_t>(r.width);
    *height = static_cast<std::uint32_t>(r.height);
    return true;
}

bool ClapGui::setParent(const clap_window_t* window) {
    if (!created_ || window == nullptr || window->x11 == 0) return false;
    // The window is made, reparented and synchronised with the server here, so that a
    // host that embeds it at once finds it there.
    return editor_.open(static_cast<std::uintptr_t>(window->x11));
}

bool ClapGui::show() {
    if (EditorWindow* w = editor_.window()) {
        w->setVisible(true);
        return true;
    }
    return false;
}

bool ClapGui::hide() {
    if (EditorWindow* w = editor_.window()) {
        w->setVisible(false);
        return true;
    }
    return false;
}

void ClapGui::onTimer(clap_id timer) {
    if (created_ && timer == timer_) editor_.idle();
}

}  // namespace tw::clap
