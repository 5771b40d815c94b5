#include "model/ModelController.h"

#include <png.h>
#include <zlib.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "cushy/CushyView.h"
#include "cushy/FileDialog.h"
#include "cushy/HintWindow.h"
#include "cushy/MessageBox.h"
#include "cushy/StringTable.h"
#include "engine/EngineRandom.h"
#include "graphics/ResourceManager.h"
#include "model/BrowserDirectories.h"
#include "model/ModelFactory.h"
#include "model/Patch.h"
#include "model/Prefs.h"
#include "model/StartupBank.h"
#include "model/VersionAnswer.h"
#include "platform/Clipboard.h"
#include "platform/Exception.h"
#include "platform/FileObject.h"
#include "platform/Launcher.h"
#include "platform/SafeFileWriter.h"
#include "platform/Window.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"

namespace tw {

namespace {

constexpr std::string_view paramsPrefix = "params.";
constexpr std::string_view feedbacksPrefix = "feedbacks.";
constexpr std::string_view humanSuffix = ".human";

std::string formatValue(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", value);
    return text;
}

std::string replaceMark(std::string text, std::string_view mark, const std::string& with) {
    const std::size_t at = text.find(mark);
    if (at != std::string::npos) text.replace(at, mark.size(), with);
    return text;
}

float clamp01(double value) { return static_cast<float>(value < 0.0 ? 0.0 : value > 1.0 ? 1.0 : value); }

std::string compilerName() {
#if defined(__clang__)
    return "Clang " + std::to_string(__clang_major__) + "." + std::to_string(__clang_minor__);
#else
    return "GCC " + std::to_string(__GNUC__) + "." + std::to_string(__GNUC_MINOR__);
#endif
}

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

ModelController::ModelController(ModelServices& services, ResourceManager& resources, StringTable& translator)
    : services_(services),
      factory_(services.getFactory()),
      descriptor_(factory_.getDescriptor()),
      resources_(resources),
      translator_(translator),
      folders_(standardFolders()),
      editedBits_(descriptor_.parameters.size(), false),
      browser_(descriptor_.identifier),
      versionCheckUrl_(descriptor_.versionCheckUrl) {
    const IntRect bounds = factory_.getEditorSize();
    rootView_ = std::make_shared<CushyView>(*this, bounds);
    client_ = std::make_unique<CushyWindowClient>(rootView_);
}

ModelController::~ModelController() { close(); }

void ModelController::fillConstants() {
    const std::string dirs[][2] = {{"DIRS.BINARY", folders_.binaryDir.toString()},
                                   {"DIRS.PATCHES", folders_.patchesDir.toString()},
                                   {"DIRS.DOCUMENTATION", folders_.documentationDir.toString()},
                                   {"DIRS.SUPPORT", folders_.supportDir.toString()}};
    constants_ = {{"MODEL.NAME", descriptor_.publicName},
                  {"MODEL.IDENTIFIER", descriptor_.modelName},
                  {"MODEL.VERSION", std::string(1, static_cast<char>(descriptor_.version & 0xFF))},
                  {"BUILD.TARGET", "Release"},
                  {"BUILD.VERSION", "1.0.0"},
                  {"BUILD.NUMBER", std::to_string(buildNumber)},
                  {"BUILD.DATE", "Apr 13 2015"},
                  {"BUILD.TIME", "15:30:43"},
                  {"BUILD.COMPILER", compilerName()},
                  {"BUILD.LIBS", std::string("zlib ") + ZLIB_VERSION + ", libpng " + PNG_LIBPNG_VER_STRING},
                  {"PLATFORM.OS", "Linux"},
                  {"PLATFORM.CPU", "x86-64"}};
    for (const auto& [name, path] : dirs) constants_[name] = quote(path);
    parameterIndex_.clear();
    for (std::size_t i = 0; i < descriptor_.parameters.size(); ++i)
        parameterIndex_[descriptor_.parameters[i].name] = static_cast<int>(i);
    feedbackIndex_.clear();
    for (std::size_t i = 0; i < descriptor_.feedbacks.size(); ++i)
        feedbackIndex_[descriptor_.feedbacks[i]] = static_cast<int>(i);
}

void ModelController::open(Window* window) {
    fillConstants();
    // The main layout's modal layer reads this variable from the first refresh on, before
    // the layout's own start-up actions can run; unset, it would read as its own name and
    // be taken for a layout to load.
    variables_.emplace("modalLayout", "");
    const Translator translator = [this](const std::string& text) { return translate(text); };
    browserSetup_ = makeBrowserSetup(descriptor_, folders_, translator);
    saveSetup_ = makeSaveSetup(browserSetup_, descriptor_, translator);
    currentProgram_ = services_.getCurrentProgram();
    // The one hint window of the editor, which every view with a hint shares: views take
    // it as they are built, so it must be there before the layout loads.
    if (!rootView_->hintWindow())
        rootView_->setHintWindow(std::make_shared<HintWindow>(HelperFonts::load(*this, *rootView_).regular, 2, 12));
    try {
        rootView_->load(descriptor_.modelName + "_main");
    } catch (const std::exception& e) {
        showLayoutError(e.what());
    }
    window_ = window;
    if (window_ != nullptr) {
        client_->attach(window_);
        window_->timers().add(this, slowTimer, slowPeriod);
        window_->timers().add(this, fastTimer, fastPeriod);
    }
    rememberedStamps_.clear();
    for (int p = 0; p < descriptor_.programCount; ++p) rememberedStamps_.push_back(services_.getPatchStamp(p));
    slowTick();
    // The first tick always shows the patch, whatever the stamps say.
    shownStamp_ = services_.getPatchStamp(currentProgram_) + 1;
    fastTick();
    if (versionCheckUrl_.empty()) return;
    bool due = false;
    {
        Prefs prefs(descriptor_);
        versionCheckEnabled_ = isCheckEnabled(prefs);
        due = isCheckDue(prefs, std::time(nullptr));
    }
    if (due && !checker_) startVersionCheck();
}

// A main layout that does not build leaves a plain page with the error on it: a message box
// here would run a modal loop inside the host's open call.
void ModelController::showLayoutError(const std::string& message) {
    std::string text = replaceMark(translate("Error: ^E"), "^E", translate(message));
    for (char& c : text)
        if (c == '\n') c = ' ';
    variables_["layoutError"] = text;
    rootView_->load("");
    const IntRect bounds = factory_.getEditorSize();
    rootView_->build(parseMap("views: { { type: rectangle, fill: { 240, 240, 240 } } { type: caption, bounds: { 12, 12, " +
                              std::to_string(bounds.width - 24) + ", 24 }, text: \"[var]layoutError[/var]\" } }"));
}

void ModelController::saveChanges(const Path& storeFile) {
    std::vector<std::unique_ptr<Patch>> clones;
    std::vector<std::pair<int, const Patch*>> changes;
    for (int p = 0; p < static_cast<int>(rememberedStamps_.size()); ++p) {
        if (services_.getPatchStamp(p) == rememberedStamps_[static_cast<std::size_t>(p)]) continue;
        clones.push_back(services_.clonePatch(p));
        changes.emplace_back(p, clones.back().get());
    }
    if (changes.empty()) return;
    writeStartupBank(factory_, services_.getCurrentProgram(), changes, storeFile);
    for (int p = 0; p < static_cast<int>(rememberedStamps_.size()); ++p)
        rememberedStamps_[static_cast<std::size_t>(p)] = services_.getPatchStamp(p);
}

void ModelController::close() {
    checker_.reset();
    if (window_ == nullptr) return;
    window_->timers().cancel(this);
    client_->attach(nullptr);
    window_ = nullptr;
}

void ModelController::timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int id) {
    if (id == slowTimer) {
        slowTick();
        queue.schedule(this, id, due + slowPeriod);
    } else if (id == fastTimer) {
        fastTick();
        queue.schedule(this, id, due + fastPeriod);
    }
}

void ModelController::fastTick() {
    bool changed = false;
    const int program = services_.getCurrentProgram();
    if (program != currentProgram_) {
        currentProgram_ = program;
        changed = true;
    }
    if (services_.getPatchStamp(currentProgram_) != shownStamp_) changed = true;
    const bool enabled = services_.isEnabled();
    if (enabled != enabledFlag_) {
        enabledFlag_ = enabled;
        changed = true;
    }
    cachedFeedback_.reset();
    if (changed) refresh();
}

// This build has no licence gate: the version check is all the slow timer consults.
void ModelController::slowTick() { pollVersionCheck(); }

void ModelController::refresh() {
    cachedPatch_ = services_.clonePatch(currentProgram_);
    cachedFeedback_ = std::make_unique<FeedbackSink::Snapshot>(services_.getFeedback());
    shownStamp_ = cachedPatch_->getChangeStamp();
    rootView_->refresh();
}

Patch& ModelController::cachedPatch() {
    if (!cachedPatch_) cachedPatch_ = services_.clonePatch(currentProgram_);
    return *cachedPatch_;
}

const FeedbackSink::Snapshot& ModelController::cachedFeedback() {
    if (!cachedFeedback_) cachedFeedback_ = std::make_unique<FeedbackSink::Snapshot>(services_.getFeedback());
    return *cachedFeedback_;
}

std::string ModelController::translate(const std::string& text) { return translator_.translate(text); }

const ParameterSpec& ModelController::row(int index) const {
    return descriptor_.parameters[static_cast<std::size_t>(index)];
}

int ModelController::parameterNumber(std::string_view name) const {
    const auto found = parameterIndex_.find(name);
    return found == parameterIndex_.end() ? -1 : found->second;
}

ModelController::ParamName ModelController::paramName(std::string_view name) const {
    ParamName result;
    if (!name.starts_with(paramsPrefix)) return result;
    name.remove_prefix(paramsPrefix.size());
    if (name.ends_with(humanSuffix)) {
        name.remove_suffix(humanSuffix.size());
        result.human = true;
    }
    result.index = parameterNumber(name);
    return result;
}

std::string ModelController::changeDescription(int index) {
    return replaceMark(translate("Change ^P"), "^P", row(index).label);
}

// ---- Undo stack and whole-patch operations ----

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

// ---- Parameters ----

void ModelController::writeParameter(int index, float value) {
    if (cachedPatch_) cachedPatch_->setParameter(index, value);
    services_.setParameter(currentProgram_, index, value);
}

std::string ModelController::readParam(int index, bool human) {
    const Patch& patch = cachedPatch();
    const float value = patch.getParameter(index);
    if (!human) return formatValue(value);
    std::string text = factory_.valueToText(patch, index, value, false);
    if (!row(index).unit.empty()) text += " " + row(index).unit;
    return text;
}

void ModelController::writeParam(int index, bool human, const std::string& value, bool continuous) {
    if (continuous && !editedBits_[static_cast<std::size_t>(index)]) {
        pushUndo(changeDescription(index), !human);
        editedBits_[static_cast<std::size_t>(index)] = true;
    }
    if (!human) {
        writeParameter(index, factory_.constrainValue(cachedPatch(), index, static_cast<float>(std::strtod(value.c_str(), nullptr))));
        return;
    }
    std::string_view text = value;
    const std::string& unit = row(index).unit;
    if (!unit.empty() && text.size() > unit.size() && text.ends_with(unit) && text[text.size() - unit.size() - 1] == ' ')
        text.remove_suffix(unit.size() + 1);
    float out = 0.0f;
    if (factory_.textToValue(cachedPatch(), index, text, out)) writeParameter(index, out);
}

void ModelController::writePatchName(const std::string& value, bool continuous) {
    if (continuous) pushUndo("Change Patch Name", false);
    if (cachedPatch_) cachedPatch_->setName(value);
    if (services_.setPatchName(currentProgram_, value)) services_.updateDisplay();
}

// ---- changeParam ----

void ModelController::changeParam(const std::string& params) {
    const SpecMap map = parseMap(params);
    if (map.find("param") == map.end()) throw FormatException("Missing param for changeParam");
    const std::string name = unquote(lookup(map, "param"));
    const int index = parameterNumber(name);
    if (index < 0) throw FormatException("Unknown param for changeParam: " + quote(name));
    const float v = cachedPatch().getParameter(index);
    float value;
    if (map.count("toggle") != 0) {
        value = v < 0.5f ? 1.0f : 0.0f;
    } else if (map.count("to") != 0) {
        value = clamp01(evaluateDouble(lookup(map, "to"), v));
    } else if (map.count("by") != 0) {
        value = clamp01(evaluateDouble(lookup(map, "by"), 0.0) + v);
    } else {
        throw FormatException("Invalid action params for changeParam: " + quote(params));
    }
    pushUndo(changeDescription(index), true);
    value = factory_.constrainValue(cachedPatch(), index, value);
    services_.beginEnd(index, true);
    writeParameter(index, value);
    services_.beginEnd(index, false);
}

bool ModelController::changeParamState(const std::string& params, bool checked) {
    const SpecMap map = parseMap(params);
    const int index = parameterNumber(unquote(lookup(map, "param")));
    if (index < 0) return false;
    const float v = cachedPatch().getParameter(index);
    const bool hasTo = map.count("to") != 0;
    const bool hasWhen = map.count("whenEqual") != 0;
    const std::string when = hasWhen ? unquote(lookup(map, "whenEqual")) : std::string();
    if (!checked) {
        if (hasWhen && when == "disabled" && hasTo) return v != clamp01(evaluateDouble(lookup(map, "to"), v));
        return true;
    }
    if (map.count("toggle") != 0) return v >= 0.5f;
    if (hasTo && (!hasWhen || when == "checked")) return v == clamp01(evaluateDouble(lookup(map, "to"), v));
    return false;
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

// ---- CushyHost ----

std::string ModelController::title() { return translate(descriptor_.publicName); }

bool ModelController::reportError(CushyView& view, const std::string& message) {
    const std::string text = message.empty() ? translate("Unexpected error")
                                             : replaceMark(translate("Error: ^E"), "^E", translate(message));
    showMessageBox(view, title(), text, AlertType::error, AlertButtons::ok, AlertButton::ok);
    return true;
}

void ModelController::reload(CushyView&) {
    translator_.load(resources_, descriptor_.modelName);
    rootView_->load(descriptor_.modelName + "_main");
    refresh();
}

void ModelController::update(CushyView&) { refresh(); }

std::string ModelController::layoutSource(CushyView&, const std::string& name) {
    const std::vector<std::uint8_t> bytes = resources_.loadBinary("cushy", name);
    return std::string(bytes.begin(), bytes.end());
}

std::shared_ptr<Image> ModelController::image(CushyView&, const std::string& spec) {
    return resources_.getImage(resources_.parseImageSpec(spec));
}

std::shared_ptr<Font> ModelController::font(CushyView&, const std::string& spec) { return resources_.getFont(spec); }

std::string ModelController::file(CushyView&, const std::string& name) {
    const std::vector<std::uint8_t> bytes = resources_.loadBinary("txt", name);
    return std::string(bytes.begin(), bytes.end());
}

std::string ModelController::translate(CushyView&, const std::string& text) { return translate(text); }

bool ModelController::isEnabled(CushyView&, const std::string& action, const std::string& params) {
    try {
        if (action == "changeParam") return changeParamState(params, false);
        if (action == "initPatch" || action == "copyPatch" || action == "randomizePatch" ||
            action == "chooseProgram" || action == "switchProgram")
            return true;
        if (action == "pastePatch" || action == "exchangePatch") return clipboardHoldsPatch();
        if (action == "openPatch" || action == "savePatch" || action == "choosePatch")
            return !descriptor_.identifier.empty();
        if (action == "switchPatch") return !descriptor_.identifier.empty() && switchPatchState(params, false);
        if (action == "toggleVersionCheck") return !versionCheckUrl_.empty();
        if (action == "undo") return undoPosition_ != 0;
        if (action == "redo") return undoPosition_ + 1 < undoStack_.size();
        return false;
    } catch (const std::exception&) {
        return false;
    }
}

bool ModelController::isChecked(CushyView&, const std::string& action, const std::string& params) {
    try {
        if (action == "toggleVersionCheck") return versionCheckEnabled_;
        return action == "changeParam" && changeParamState(params, true);
    } catch (const std::exception&) {
        return false;
    }
}

void ModelController::perform(CushyView& view, const std::string& action, const std::string& params) {
    if (action == "changeParam") changeParam(params);
    else if (action == "initPatch") initPatch();
    else if (action == "copyPatch") copyPatch();
    else if (action == "pastePatch") pasteOrExchange(false);
    else if (action == "exchangePatch") pasteOrExchange(true);
    else if (action == "randomizePatch") randomizePatch();
    else if (action == "undo") undo();
    else if (action == "redo") redo();
    else if (action == "openPatch") openPatch();
    else if (action == "savePatch") savePatch();
    else if (action == "choosePatch") choosePatch(view);
    else if (action == "switchPatch") switchPatch(params);
    else if (action == "toggleVersionCheck") toggleVersionCheck();
}

std::string ModelController::getVariable(CushyView&, const std::string& name) {
    if (name == "patch.name") return cachedPatch().getName();
    if (name == "patch.modified") return cachedPatch().isModified() ? "true" : "false";
    if (name == "undo.description")
        return undoPosition_ == 0 ? std::string() : undoStack_[undoPosition_ - 1].description;
    if (name == "redo.description")
        return undoPosition_ < undoStack_.size() ? undoStack_[undoPosition_].description : std::string();
    if (name == "isEnabled") return enabledFlag_ ? "true" : "false";
    if (const ParamName param = paramName(name); param.index >= 0) return readParam(param.index, param.human);
    if (name.starts_with(feedbacksPrefix)) {
        const auto found = feedbackIndex_.find(std::string_view(name).substr(feedbacksPrefix.size()));
        if (found != feedbackIndex_.end())
            return formatValue(cachedFeedback().values[static_cast<std::size_t>(found->second)]);
    }
    if (const auto found = constants_.find(name); found != constants_.end()) return found->second;
    if (const auto found = variables_.find(name); found != variables_.end()) return found->second;
    return name;
}

namespace {

bool isFixedName(std::string_view name) {
    return name == "patch.name" || name == "patch.modified" || name == "undo.description" ||
           name == "redo.description" || name == "isEnabled";
}

}  // namespace

bool ModelController::isWritable(CushyView&, const std::string& name) {
    if (name == "patch.name") return true;
    if (isFixedName(name) || name.starts_with(feedbacksPrefix)) return false;
    return constants_.count(name) == 0;
}

void ModelController::beginEnd(CushyView&, const std::string& name, bool beginning) {
    const ParamName param = paramName(name);
    if (param.index < 0) return;
    editedBits_[static_cast<std::size_t>(param.index)] = false;
    services_.beginEnd(param.index, beginning);
}

void ModelController::setVariable(CushyView&, const std::string& name, const std::string& value, bool continuous) {
    if (name == "patch.name") return writePatchName(value, continuous);
    if (isFixedName(name)) return;
    if (const ParamName param = paramName(name); param.index >= 0)
        return writeParam(param.index, param.human, value, continuous);
    if (constants_.count(name) == 0) variables_[name] = value;
}

// ---- Patch files ----

void ModelController::openPatchFile(const Path& path) {
    std::unique_ptr<Patch> patch = factory_.patchFromText(readWholeFile(path));
    patch->setPath(path);
    patch->markClean();
    pushUndo("Open Patch", false);
    install(std::move(patch));
}

Path ModelController::nextPatchFile(bool forward, bool wrap, bool useCache) {
    return browser_.nextPatchFile(cachedPatch().getPath(), forward, wrap, useCache);
}

// Only steps of one either way are valid; `perform` false asks whether there is a file to
// go to, from the cached listing, at no cost of disk access when it is warm.
bool ModelController::switchPatchState(const std::string& params, bool perform) {
    const SpecMap map = parseMap(params);
    const std::int32_t step = toInt(lookup(map, "step"), 0);
    const bool wrap = toBool(lookup(map, "wrap"), false);
    if (step != 1 && step != -1) return false;
    const bool forward = step >= 1;
    Path next = nextPatchFile(forward, wrap, true);
    if (!perform) return !next.empty();
    // A file removed or replaced by a folder since the listing: the cache is stale.
    if (!next.empty() && next.kind() != Path::Kind::file) next = nextPatchFile(forward, wrap, false);
    if (next.empty()) return false;
    openPatchFile(next);
    return true;
}

void ModelController::switchPatch(const std::string& params) { switchPatchState(params, true); }

Path ModelController::runPatchDialog(const FileBrowserSetup& setup, bool saving, const Path& start,
                                     const std::string& suggestion, const Path& current) {
    FileDialogSetup dialog;
    dialog.title = setup.title;
    dialog.saving = saving;
    dialog.typeLabel = setup.fileTypes.front().description;
    dialog.extension = setup.fileTypes.front().extension;
    dialog.allFilesLabel = setup.allFilesLabel;
    const std::vector<std::uint8_t> script = resources_.loadBinary("cfdlg", "MWPresetLocations");
    dialog.script.assign(script.begin(), script.end());
    dialog.labels = {{factoryButtonId, setup.factoryLabel}, {userButtonId, setup.userLabel}};
    dialog.jumps = {{factoryButtonId, setup.factoryFolder}, {userButtonId, setup.userFolder}};
    dialog.startFolder = start;
    dialog.currentFile = current;
    dialog.fileName = suggestion;
    dialog.replacePrompt = translate("^F already exists. Do you want to replace it?");
    dialog.okLabel = translate(saving ? "Save" : "Open");
    dialog.cancelLabel = translate("Cancel");
    dialog.upLabel = translate("Up");
    dialog.fileNameLabel = translate("File name:");
    // Each file selected while opening is heard at once, through the edit patch, without
    // touching the program; closing the dialog in any way ends the audition.
    struct EndAudition {
        ModelServices* services;
        ~EndAudition() {
            if (services != nullptr) services->setEditPatch(nullptr);
        }
    } endAudition{saving ? nullptr : &services_};
    FileDialog::SelectionListener listener;
    if (!saving) {
        listener = [this](const Path& file) {
            try {
                std::unique_ptr<Patch> patch = factory_.patchFromText(readWholeFile(file));
                patch->setPath(file);
                patch->markClean();
                services_.setEditPatch(patch.get());
            } catch (const std::exception&) {
                // A file that doesn't read is not heard; choosing it reports why.
                services_.setEditPatch(nullptr);
            }
        };
    }
    FileDialog fileDialog(HelperFonts::load(*this, *rootView_), std::move(dialog), std::move(listener));
    return fileDialog.run(*window_);
}

namespace {

// Remembering folders is a convenience: a store that can't be written forgets them.
void rememberFolders(const std::string& name, const Path& openFolder, const Path& saveFolder) {
    try {
        saveBrowserDirectories(name, openFolder, saveFolder);
    } catch (const std::exception&) {
    }
}

}  // namespace

void ModelController::openPatch() {
    if (window_ == nullptr) return;
    const BrowserFolders remembered = loadBrowserDirectories(browserSetup_.name);
    const Path start = PatchBrowser::pickStartFolder(browserSetup_, cachedPatch().getPath(), remembered.open);
    const Path chosen = runPatchDialog(browserSetup_, false, start, std::string(), cachedPatch().getPath());
    if (chosen.empty()) return;
    rememberFolders(browserSetup_.name, chosen.parent(), remembered.save);
    openPatchFile(chosen);
}

void ModelController::savePatch() {
    if (window_ == nullptr) return;
    const Path path = cachedPatch().getPath();
    const std::string suggestion = PatchBrowser::saveSuggestion(path, cachedPatch().getName(),
                                                                translate("Untitled " + descriptor_.publicName + " Patch"));
    const BrowserFolders remembered = loadBrowserDirectories(saveSetup_.name);
    const Path start = PatchBrowser::pickStartFolder(saveSetup_, path, remembered.save);
    const Path chosen = runPatchDialog(saveSetup_, true, start, suggestion, Path());
    if (chosen.empty()) return;
    // The file's name names the patch, which is now clean; neither is an undoable step.
    std::unique_ptr<Patch> patch = services_.clonePatch(currentProgram_);
    patch->setPath(chosen);
    patch->markClean();
    std::string text;
    for (char c : factory_.patchToText(*patch, true)) {
        if (c == '\n') text += '\r';
        text += c;
    }
    SafeFileWriter writer(chosen);
    writer.write(0, text.data(), text.size());
    writer.commit();
    install(std::move(patch));
    rememberFolders(saveSetup_.name, remembered.open, chosen.parent());
    browser_.forget();
    rootView_->refresh();
}

void ModelController::choosePatch(CushyView& view) {
    if (window_ == nullptr) return;
    const Path current = cachedPatch().getPath();
    const Path folder =
        PatchBrowser::pickStartFolder(browserSetup_, current, loadBrowserDirectories(browserSetup_.name).open);
    std::vector<Path> files;
    if (!folder.empty()) files = browser_.listFolder(folder, false);
    PatchBrowser::Menu menu =
        PatchBrowser::patchMenu(files, current, translate("Browse Patches..."), translate("No patches found"));
    PopupMenu popup(HelperFonts::load(*this, view), std::move(menu.items));
    const std::int32_t choice = popup.track(*window_, view.lastClick().x, view.lastClick().y);
    const int id = choice < 0 ? 0 : menu.ids[std::size_t(choice)];
    if (id == PatchBrowser::browseId) openPatch();
    else if (id >= PatchBrowser::firstFileId) openPatchFile(files[std::size_t(id - PatchBrowser::firstFileId)]);
}

// ---- Version check ----

void ModelController::setVersionCheckServer(std::string url, VersionChecker::ConnectionProbe probe) {
    versionCheckUrl_ = std::move(url);
    connectionProbe_ = std::move(probe);
}

void ModelController::startVersionCheck() {
    const std::string productId = versionCheckProductId(descriptor_);
    checker_ = std::make_unique<VersionChecker>(
        VersionChecker::Request{versionCheckUrl_, std::string(), std::string()},
        [productId](const std::string& body) { return readVersionAnswer(body, productId); }, connectionProbe_);
    checker_->start();
}

void ModelController::pollVersionCheck() {
    // The notice waits until the user looks at the editor again.
    if (window_ == nullptr || !window_->isActive()) return;
    if (!checker_ || checker_->isRunning()) return;
    const std::optional<VersionCheckResult> result = checker_->result();
    checker_.reset();
    {
        // A failed check counts too, so that an offline machine asks again only days later.
        Prefs prefs(descriptor_);
        markChecked(prefs, std::time(nullptr));
    }
    if (!result) return;
    AlertType severity = AlertType::info;
    bool show = false;
    std::string text;
    if (result->version > buildNumber) {
        show = true;
        text = result->message;
    }
    if (!result->urgent.empty()) {
        show = true;
        severity = AlertType::warning;
        text = result->urgent;
    }
    if (!show) return;
    if (text.empty()) {
        text = translate("An update of this product is available.");
        if (!result->url.empty()) text += " " + translate("Do you wish to view the information page?");
    }
    const bool offerPage = !result->url.empty();
    const AlertButton pressed = showMessageBox(*rootView_, title(), text, severity,
                                               offerPage ? AlertButtons::yesNo : AlertButtons::ok,
                                               offerPage ? AlertButton::yes : AlertButton::ok);
    if (offerPage && pressed == AlertButton::yes) launchWithSystem(LaunchKind::url, result->url);
}

void ModelController::toggleVersionCheck() {
    if (versionCheckUrl_.empty()) return;
    {
        Prefs prefs(descriptor_);
        versionCheckEnabled_ = toggleCheck(prefs);
    }
    if (versionCheckEnabled_ && !checker_) startVersionCheck();
}

}  // namespace tw
