#include "host/Editor.h"

#include "host/TestPicture.h"
#include "platform/Folders.h"

namespace tw {

Editor::Editor(ModelFactory& factory) : factory_(factory) {
    const IntRect bounds = factory_.getEditorSize();
    rect_.left = static_cast<vst2::int16>(bounds.left);
    rect_.top = static_cast<vst2::int16>(bounds.top);
    rect_.right = static_cast<vst2::int16>(bounds.left + bounds.width);
    rect_.bottom = static_cast<vst2::int16>(bounds.top + bounds.height);
}

Editor::~Editor() {
    // The host ends the instance without closing the editor, or while a call of ours is
    // still under way: the windows go now all the same.
    window_.reset();
    closing_.clear();
}

vst2::intptr Editor::dispatch(vst2::int32 opcode, vst2::intptr, void* ptr) {
    switch (opcode) {
        case vst2::effEditGetRect:
            if (ptr) *static_cast<vst2::ERect**>(ptr) = &rect_;
            return 1;
        case vst2::effEditOpen:
            return open(ptr) ? 1 : 0;
        case vst2::effEditIdle:
            if (window_) window_->idle();
            reap();
            return 1;
        case vst2::effEditClose:
            close();
            return 1;
        default:
            return 0;
    }
}

bool Editor::open(void* parent) {
    close();
    const ModelDescriptor& d = factory_.getDescriptor();
    const std::int32_t width = rect_.right - rect_.left, height = rect_.bottom - rect_.top;
    auto picture = std::make_unique<TestPicture>(width, height, d.modelName, d.publicName, binaryDir());
    window_ = EditorWindow::open(*picture, reinterpret_cast<std::uintptr_t>(parent), width, height);
    picture_ = std::move(picture);
    return true;
}

void Editor::close() {
    if (!window_) return;
    if (window_->busy()) {
        window_->abandon();
        closing_.emplace_back(std::move(picture_), std::move(window_));
    } else {
        window_.reset();
        picture_.reset();
    }
    reap();
}

void Editor::reap() {
    for (auto it = closing_.begin(); it != closing_.end();)
        it = it->second->busy() ? it + 1 : closing_.erase(it);
}

}  // namespace tw
