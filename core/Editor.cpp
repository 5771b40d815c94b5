#include "core/Editor.h"

#include "cushy/StringTable.h"
#include "graphics/ResourceManager.h"
#include "patch/ModelFactory.h"
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

Editor::Editor(ModelServices& services, const EditorFactory& factory)
    : services_(services), factory_(factory), size_(factory.getEditorSize()) {}

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

void Editor::idle() {
    if (window_) window_->idle();
    reap();
}

bool Editor::open(std::uintptr_t parent) {
    close();
    SharedResources& shared = sharedResources(services_.getFactory().getDescriptor().modelName);
    auto controller = factory_.createController(services_, shared.resources, shared.strings);
    window_ = EditorWindow::open(controller->client(), parent, size_.width, size_.height);
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
