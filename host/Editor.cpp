#include "host/Editor.h"

#include "cushy/StringTable.h"
#include "graphics/ResourceManager.h"
#include "model/ModelFactory.h"
#include "platform/Folders.h"

namespace tw {

namespace {

// The pictures, fonts and translations of the product, shared by every editor of the
// process and kept for its life.
struct SharedResources {
    ResourceManager resources;
    StringTable strings;

    explicit SharedResources(const std::string& modelName) : resources(modelName, binaryDir()) {
        strings.load(resources, modelName);
    }
};

SharedResources& sharedResources(const std::string& modelName) {
    static SharedResources shared(modelName);
    return shared;
}

}  // namespace

Editor::Editor(ModelServices& services) : services_(services) {
    const IntRect bounds = services_.getFactory().getEditorSize();
    rect_.left = static_cast<vst2::int16>(bounds.left);
    rect_.top = static_cast<vst2::int16>(bounds.top);
    rect_.right = static_cast<vst2::int16>(bounds.left + bounds.width);
    rect_.bottom = static_cast<vst2::int16>(bounds.top + bounds.height);
}

Editor::~Editor() {
    // The host ends the instance without closing the editor, or while a call of ours is
    // still under way: the windows go now all the same.
    Open{std::move(controller_), std::move(window_)}.end();
    for (Open& open : closing_) open.end();
    closing_.clear();
}

void Editor::Open::end() {
    if (controller) controller->close();
    window.reset();
    controller.reset();
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
    const ModelFactory& factory = services_.getFactory();
    SharedResources& shared = sharedResources(factory.getDescriptor().modelName);
    const std::int32_t width = rect_.right - rect_.left, height = rect_.bottom - rect_.top;
    auto controller = factory.createController(services_, shared.resources, shared.strings);
    window_ = EditorWindow::open(controller->client(), reinterpret_cast<std::uintptr_t>(parent), width, height);
    controller_ = std::move(controller);
    controller_->open(window_.get());
    return true;
}

void Editor::close() {
    if (!controller_) return;
    try {
        controller_->saveChanges();
    } catch (const std::exception&) {
        // The startup bank is a convenience: a store that can't be written loses the
        // session's changes for the next start, and nothing else.
    }
    Open closed{std::move(controller_), std::move(window_)};
    if (closed.window && closed.window->busy()) {
        closed.window->abandon();
        closing_.push_back(std::move(closed));
    } else {
        closed.end();
    }
    reap();
}

void Editor::reap() {
    for (auto it = closing_.begin(); it != closing_.end();) {
        if (it->window->busy()) {
            ++it;
        } else {
            it->end();
            it = closing_.erase(it);
        }
    }
}

}  // namespace tw
