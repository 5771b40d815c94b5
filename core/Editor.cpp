#include "core/Editor.h"

#include <chrono>
#include <thread>

#include "cushy/StringTable.h"
#include "editor/ZoomChoice.h"
#include "graphics/ResourceManager.h"
#include "patch/ModelFactory.h"
#include "patch/Prefs.h"
#include "platform/DesktopScale.h"
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

Editor::Editor(ModelServices& services, const EditorFactory& factory, std::string format)
    : services_(services), factory_(factory), baseSize_(factory.getEditorSize()), format_(std::move(format)) {}

const Zoom& Editor::zoom() {
    if (!zoom_) zoom_ = openingZoom();
    return *zoom_;
}

IntRect Editor::size() {
    const Zoom& z = zoom();
    return IntRect{0, 0, z.length(baseSize_.width), z.length(baseSize_.height)};
}

Zoom Editor::openingZoom() const {
    ZoomSources sources;
    sources.host = hostScale_;
    {
        const Prefs prefs(services_.getFactory().getDescriptor());
        sources.user = userZoom(prefs);
    }
    sources.desktop = desktopScale(readDesktopSettings());
    return chooseZoom(sources);
}

void Editor::setHostScale(double scale) {
    std::lock_guard<std::recursive_mutex> lock(lock_);
    hostScale_ = hostScaleFactor(scale);
    if (controller_) rezoom(openingZoom());
    else zoom_.reset();
}

void Editor::rezoom(const Zoom& zoom) {
    if (!controller_ || zoom == controller_->zoom()) return;
    const Zoom before = *zoom_;
    zoom_ = zoom;
    const IntRect wanted = size();
    if (!resizeRequest_ || !resizeRequest_(wanted.width, wanted.height)) {
        zoom_ = before;
        controller_->showStatus(controller_->translate(controller_->rootView(), "The host keeps the editor at its size."));
        return;
    }
    try {
        controller_->saveChanges();
    } catch (const std::exception&) {
        // As at close: the startup bank is a convenience.
    }
    {
        std::lock_guard<std::mutex> guard(stoppableLock_);
        stoppable_ = nullptr;
    }
    controller_->close();
    window_.reset();
    controller_->setZoom(zoom);
    window_ = EditorWindow::open(controller_->client(), parent_, wanted.width, wanted.height);
    controller_->open(window_.get());
    std::lock_guard<std::mutex> guard(stoppableLock_);
    stoppable_ = window_.get();
}

Editor::~Editor() {
    std::unique_lock<std::recursive_mutex> lock(lock_, std::defer_lock);
    if (!lockForClose(lock)) {
        // The editor's thread is stuck inside a call of ours: what it uses must stay.
        (void)controller_.release();
        (void)window_.release();
        for (Open& open : closing_) {
            (void)open.controller.release();
            (void)open.window.release();
        }
        return;
    }
    {
        std::lock_guard<std::mutex> guard(stoppableLock_);
        stoppable_ = nullptr;
    }
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

bool Editor::lockForClose(std::unique_lock<std::recursive_mutex>& lock) {
    if (lock.try_lock()) return true;
    // Another thread is inside: a modal loop of ours there ends at its next turn, and
    // that thread carries out the close before it lets go.
    closeWanted_.store(true);
    {
        std::lock_guard<std::mutex> guard(stoppableLock_);
        if (stoppable_ != nullptr) stoppable_->requestStop();
    }
    // Polled rather than a timed lock, whose clock-based wait the thread sanitizer cannot
    // follow: a modal loop turns at least every 50 ms.
    for (int waited = 0; waited < 5000; waited += 2) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (lock.try_lock()) return true;
    }
    return false;
}

void Editor::idle() {
    std::lock_guard<std::recursive_mutex> lock(lock_);
    if (window_) {
        try {
            window_->idle();
        } catch (...) {
            // A loop ended by a close from elsewhere unwinds to here.
        }
        // Our server went away: nothing of the editor can be shown any more.
        if (closeWanted_.exchange(false) || (window_ && window_->disconnected())) closeNow();
        // A zoom picked in the menu: the menu and its action are over by now.
        if (zoomPicked_ && window_ && !window_->busy()) {
            zoomPicked_ = false;
            ZoomSources sources;
            {
                const Prefs prefs(services_.getFactory().getDescriptor());
                sources.user = userZoom(prefs);
            }
            if (!sources.user) sources.desktop = desktopScale(readDesktopSettings());
            rezoom(chooseZoom(sources));
        }
    }
    reap();
}

bool Editor::keyDown(const KeyEvent& event) {
    std::lock_guard<std::recursive_mutex> lock(lock_);
    if (!window_ || !controller_ || window_->busy()) return false;
    try {
        return controller_->client().keyDown(event);
    } catch (...) {
        // A loop ended by a close from elsewhere unwinds to here; the key was taken.
        return true;
    }
}

bool Editor::keyUp(const KeyEvent& event) {
    std::lock_guard<std::recursive_mutex> lock(lock_);
    if (!window_ || !controller_ || window_->busy()) return false;
    try {
        return controller_->client().keyUp(event);
    } catch (...) {
        return true;
    }
}

bool Editor::close() {
    std::unique_lock<std::recursive_mutex> lock(lock_, std::defer_lock);
    if (!lockForClose(lock)) return false;
    closeNow();
    return true;
}

bool Editor::open(std::uintptr_t parent) {
    std::lock_guard<std::recursive_mutex> lock(lock_);
    closeNow();
    // A request from another thread that a close of its own has since carried out.
    closeWanted_.store(false);
    SharedResources& shared = sharedResources(services_.getFactory().getDescriptor().modelName);
    auto controller = factory_.createController(services_, shared.resources, shared.strings);
    zoom_ = openingZoom();
    controller->setZoom(*zoom_);
    controller->setFormat(format_);
    controller->onZoomChosen([this] { zoomPicked_ = true; });
    parent_ = parent;
    const IntRect shown = size();
    window_ = EditorWindow::open(controller->client(), parent, shown.width, shown.height);
    controller_ = std::move(controller);
    controller_->open(window_.get());
    std::lock_guard<std::mutex> guard(stoppableLock_);
    stoppable_ = window_.get();
    return true;
}

void Editor::closeNow() {
    if (!controller_) return;
    try {
        controller_->saveChanges();
    } catch (const std::exception&) {
        // The startup bank is a convenience: a store that can't be written loses the
        // session's changes for the next start, and nothing else.
    }
    {
        std::lock_guard<std::mutex> guard(stoppableLock_);
        stoppable_ = nullptr;
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
