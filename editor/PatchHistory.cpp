// The controller's undo history and its whole-patch operations: each gesture, typed
// value, loaded patch or program change is one step, as is initialising, pasting,
// exchanging with the clipboard and randomising.
#include "editor/ModelController.h"

#include <atomic>
#include <chrono>

#include "engine/EngineRandom.h"
#include "patch/ModelFactory.h"
#include "patch/Patch.h"
#include "platform/Clipboard.h"
#include "platform/Exception.h"

namespace tw {

namespace {

// Makes two calls within one tick of the clocks seed differently.
std::atomic<std::uint32_t> randomizeCalls{0};

EngineRandom randomizeGenerator() {
    using namespace std::chrono;
    const std::uint64_t counter =
        static_cast<std::uint64_t>(high_resolution_clock::now().time_since_epoch().count());
    const auto ticks = static_cast<std::uint32_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
    const auto seconds =
        static_cast<std::uint32_t>(duration_cast<std::chrono::seconds>(system_clock::now().time_since_epoch()).count());
    std::uint32_t b = ticks ^ static_cast<std::uint32_t>(counter >> 32);
    std::uint32_t a = seconds ^ static_cast<std::uint32_t>(counter);
    const std::uint32_t c = ++randomizeCalls;
    a = (((c << 16) | (c >> 16)) + a) | 1u;
    EngineRandom random;
    random.seed(a, b);
    return random;
}

// The next word of the generator.
std::uint32_t draw(EngineRandom& random) {
    random.next();
    return random.y;
}

}  // namespace

void ModelController::pushUndo(const std::string& description, bool merge) {
    const std::string text = translate(description);
    if (undoPosition_ == undoStack_.size()) {
        if (merge && !undoStack_.empty() && undoStack_.back().description == text) return;
    } else {
        undoStack_.resize(undoPosition_);
    }
    while (undoStack_.size() > undoLimit) {
        undoStack_.pop_front();
        --undoPosition_;
    }
    cachedPatch_ = services_.clonePatch(currentProgram_);
    undoStack_.push_back({text, currentProgram_, cachedPatch_->clone()});
    ++undoPosition_;
}

void ModelController::install(std::unique_ptr<Patch> patch) {
    services_.setPatch(currentProgram_, *patch);
    cachedPatch_ = std::move(patch);
    services_.updateDisplay();
}

void ModelController::selectProgram(int program) {
    services_.setCurrentProgram(program);
    if (program != currentProgram_) {
        currentProgram_ = program;
        cachedPatch_.reset();
    }
}

void ModelController::undo() {
    if (undoPosition_ == 0) return;
    if (undoPosition_ + 1 >= undoStack_.size()) {
        undoStack_.resize(undoPosition_);
        cachedPatch_ = services_.clonePatch(currentProgram_);
        undoStack_.push_back({std::string(), currentProgram_, cachedPatch_->clone()});
    }
    --undoPosition_;
    const UndoRecord& record = undoStack_[undoPosition_];
    selectProgram(record.program);
    install(record.patch->clone());
}

void ModelController::redo() {
    if (undoPosition_ + 1 >= undoStack_.size()) return;
    ++undoPosition_;
    const UndoRecord& record = undoStack_[undoPosition_];
    selectProgram(record.program);
    install(record.patch->clone());
}

void ModelController::initPatch() {
    std::unique_ptr<Patch> patch = factory_.createInitPatch();
    patch->setName(translate("Init Patch"));
    patch->markClean();
    pushUndo("Initialize Patch", false);
    install(std::move(patch));
}

void ModelController::copyPatch() { writeClipboardText(factory_.patchToText(cachedPatch(), false), true); }

void ModelController::pasteOrExchange(bool exchange) {
    const std::string former = exchange ? factory_.patchToText(cachedPatch(), false) : std::string();
    const std::string text = readClipboardText();
    if (text.empty()) throw Exception("No content on clipboard");
    std::unique_ptr<Patch> patch = factory_.patchFromText(text);
    pushUndo(exchange ? "Exchange Patch" : "Paste Patch", false);
    install(std::move(patch));
    if (exchange) writeClipboardText(former, true);
}

void ModelController::randomizePatch() {
    std::unique_ptr<Patch> patch = cachedPatch().clone();
    EngineRandom random = randomizeGenerator();
    std::uint32_t length;
    while ((length = draw(random) & 31) > 16) {}
    std::string name;
    for (std::uint32_t i = 0; i < length + 6; ++i) {
        std::uint32_t letter;
        while ((letter = draw(random) & 31) > 25) {}
        name.push_back(static_cast<char>('a' + letter));
    }
    patch->setPath(Path());
    patch->setName(name);
    const int count = patch->getParameterCount();
    std::vector<float> values(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const auto u = static_cast<float>(draw(random) * 2.3283064365386963e-10);
        values[static_cast<std::size_t>(i)] = factory_.constrainValue(*patch, i, u);
    }
    patch->setParameters(0, count, values.data());
    pushUndo("Randomize Patch", false);
    install(std::move(patch));
}


bool ModelController::clipboardHoldsPatch() {
    // Asked while a menu opens, on the host's thread: a slow or hung clipboard owner may
    // hold it a frame at most. Paste is offered when the answer is late, and says so
    // itself when it finds no patch.
    constexpr int lookLimitMs = 15;
    std::string text;
    const ClipboardContent content = peekClipboardText(text, lookLimitMs);
    if (content == ClipboardContent::unknown) return true;
    return content == ClipboardContent::text && !text.empty() && factory_.isPatchText(text);
}

}  // namespace tw
