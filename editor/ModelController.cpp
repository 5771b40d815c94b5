// The controller's life and its side of the layouts: construction, opening and closing,
// the fast and slow ticks that follow the instance, and the Cushy host interface that
// routes variables and actions to the jobs in the other files.
#include "editor/ModelController.h"

#include "editor/ZoomChoice.h"

#include <png.h>
#include <zlib.h>

#include "cushy/CushyView.h"
#include "cushy/HintWindow.h"
#include "cushy/MessageBox.h"
#include "cushy/StringTable.h"
#include "graphics/ResourceManager.h"
#include "patch/ModelFactory.h"
#include "patch/Patch.h"
#include "patch/Prefs.h"
#include "patch/StartupBank.h"
#include "platform/Window.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecNumber.h"
#include "speclang/SpecQuote.h"

namespace tw {

namespace {

constexpr std::string_view paramsPrefix = "params.";
constexpr std::string_view feedbacksPrefix = "feedbacks.";
constexpr std::string_view humanSuffix = ".human";

std::string formatValue(double value) { return formatDouble(value, 7); }

std::string replaceMark(std::string text, std::string_view mark, const std::string& with) {
    const std::size_t at = text.find(mark);
    if (at != std::string::npos) text.replace(at, mark.size(), with);
    return text;
}

std::string compilerName() {
#if defined(__clang__)
    return "Clang " + std::to_string(__clang_major__) + "." + std::to_string(__clang_minor__);
#else
    return "GCC " + std::to_string(__GNUC__) + "." + std::to_string(__GNUC_MINOR__);
#endif
}

}  // namespace

ModelController::ModelController(ModelServices& services, ResourceManager& resources, StringTable& translator,
                                 IntRect bounds)
    : services_(services),
      factory_(services.getFactory()),
      bounds_(bounds),
      descriptor_(factory_.getDescriptor()),
      resources_(resources),
      translator_(translator),
      folders_(standardFolders()),
      editedBits_(descriptor_.parameters.size(), false),
      browser_(descriptor_.identifier),
      versionCheckUrl_(descriptor_.versionCheckUrl) {
    rootView_ = std::make_shared<CushyView>(*this, bounds_);
    client_ = std::make_unique<CushyWindowClient>(rootView_);
}

ModelController::~ModelController() { close(); }

void ModelController::setZoom(const Zoom& zoom) {
    if (zoom == zoom_) return;
    zoom_ = zoom;
    // A fresh tree at the new size; the hint window, made at open, follows the zoom too.
    rootView_->dispose();
    rootView_ = std::make_shared<CushyView>(*this, size());
    rootView_->setZoom(zoom_);
    client_ = std::make_unique<CushyWindowClient>(rootView_);
}

IntRect ModelController::size() const {
    return IntRect{zoom_.edge(bounds_.left), zoom_.edge(bounds_.top), zoom_.length(bounds_.width), zoom_.length(bounds_.height)};
}

void ModelController::showStatus(const std::string& text) {
    variables_["status.name"] = "";
    variables_["status.value"] = "status.none";
    variables_["status.hint"] = text;
}

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
                  {"PLATFORM.CPU", "x86-64"},
                  {"PLATFORM.FORMAT", format_}};
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
        rootView_->setHintWindow(std::make_shared<HintWindow>(HelperFonts::load(*this, *rootView_).regular, rootView_->zoom()));
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
    const IntRect bounds = bounds_;
    rootView_->build(zoom_.zoomLayout(parseMap("views: { { type: rectangle, fill: { 240, 240, 240 } } { type: caption, bounds: { 12, 12, " +
                              std::to_string(bounds.width - 24) + ", 24 }, text: \"[var]layoutError[/var]\" } }")));
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


// ---- CushyHost ----

std::string ModelController::title() { return translate(descriptor_.publicName); }

bool ModelController::reportError(CushyView& view, const std::string& message) {
    // A message's first line is the system's text, translated; lines after it name things.
    const std::size_t lineEnd = message.find('\n');
    const std::string names = lineEnd == std::string::npos ? std::string() : message.substr(lineEnd);
    const std::string text = message.empty() ? translate("Unexpected error")
                                             : replaceMark(translate("Error: ^E"), "^E", translate(message.substr(0, lineEnd))) + names;
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
        if (action == "zoom") return true;
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
        if (action == "zoom") return zoomChecked(params);
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
    else if (action == "zoom") pickZoom(params);
}

// `{ percent: 150 }` picks a level; `{ percent: 0 }` follows the system.
void ModelController::pickZoom(const std::string& params) {
    const std::int32_t percent = toInt(lookup(parseMap(params), "percent"), 0);
    {
        Prefs prefs(descriptor_);
        setUserZoom(prefs, percent > 0 ? std::optional<std::int32_t>(percent) : std::nullopt);
    }
    if (zoomChosen_) zoomChosen_();
}

bool ModelController::zoomChecked(const std::string& params) {
    const std::int32_t percent = toInt(lookup(parseMap(params), "percent"), 0);
    const Prefs prefs(descriptor_);
    const std::optional<std::int32_t> chosen = userZoom(prefs);
    return percent > 0 ? chosen == Zoom(percent).percent() : !chosen;
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

std::string ModelController::changeDescription(int index) {
    return replaceMark(translate("Change ^P"), "^P", row(index).label);
}

}  // namespace tw
