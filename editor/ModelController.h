// The model side of one open editor: it answers the layouts' variables and actions from the
// plug-in instance, keeps the undo stack, moves patches through the clipboard, and polls
// the instance so that the screen follows what the host changes. The editor object owns
// one per open window; the product class adds its own actions on top.
//
// One class, its members in a file per job: ModelController.cpp (opening, the ticks, the
// layouts' host), ParameterEdits.cpp (parameters and gestures), PatchHistory.cpp (undo and
// whole-patch operations), PatchFiles.cpp (patch files and dialogs), VersionCheck.cpp.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cushy/CushyHost.h"
#include "cushy/CushyWindowClient.h"
#include "patch/FeedbackSink.h"
#include "editor/FileBrowserSetup.h"
#include "patch/ModelDescriptor.h"
#include "patch/ModelServices.h"
#include "editor/PatchBrowser.h"
#include "platform/Folders.h"
#include "platform/TimerQueue.h"
#include "platform/VersionChecker.h"

namespace tw {

class Patch;
class ResourceManager;
class StringTable;
class Window;

// One step of the undo stack: the state of a program before a change.
struct UndoRecord {
    std::string description;  // already translated
    std::int32_t program;
    std::unique_ptr<Patch> patch;
};

class ModelController : public CushyHost, public TimerHandler {
public:
    static constexpr int slowTimer = 17192;
    static constexpr int fastTimer = 17193;
    static constexpr std::uint32_t slowPeriod = 513;
    static constexpr std::uint32_t fastPeriod = 11;
    static constexpr std::size_t undoLimit = 100;
    static constexpr std::int32_t buildNumber = 61;

    // `bounds`: the main layout's, which the root view and the error page take.
    ModelController(ModelServices& services, ResourceManager& resources, StringTable& translator, IntRect bounds);
    ~ModelController() override;
    ModelController(const ModelController&) = delete;
    ModelController& operator=(const ModelController&) = delete;

    // The window client to open the editor's window with; its root is rootView.
    CushyWindowClient& client() { return *client_; }
    CushyView& rootView() { return *rootView_; }

    // The zoom the layouts are drawn at, and the editor's size at it. A new zoom takes
    // effect at the next open; the editor must be closed (`close`) to change it.
    const Zoom& zoom() const { return zoom_; }
    void setZoom(const Zoom& zoom);
    // The plug-in format the host loaded, for the about box (`PLATFORM.FORMAT`); set before open.
    void setFormat(std::string format) { format_ = std::move(format); }
    IntRect size() const;
    // Told when the user picks a zoom in the menu (the choice is in the preferences then):
    // the owner of the window resizes it once the action is over.
    void onZoomChosen(std::function<void()> listener) { zoomChosen_ = std::move(listener); }
    // A word for the user on the status line, until the pointer names a control.
    void showStatus(const std::string& text);

    // Fills the constants and indices, loads the main layout into the root, attaches it to
    // `window` (none in tests) with the two polling timers, remembers every program's stamp
    // and ticks once. A layout that does not build shows its error and leaves the root empty.
    void open(Window* window);
    // Writes the programs changed since open into the startup bank; nothing when none changed.
    void saveChanges(const Path& storeFile = sharedStoreFile());
    void close();
    void fastTick();
    void slowTick();

    // Whole-patch operations of the editor.
    void pushUndo(const std::string& description, bool merge);
    void undo();
    void redo();
    void initPatch();
    void copyPatch();
    void pasteOrExchange(bool exchange);
    void randomizePatch();

    // Patch files. Opening reads the file and installs it as an undoable step; its file
    // name names the patch. The dialogs and the menu run modally over the editor's window
    // and do nothing without one.
    void openPatchFile(const Path& path);
    void openPatch();
    void savePatch();
    // The patch menu at the last click: the current patch's folder, and "Browse".
    void choosePatch(CushyView& view);
    // The previous (-1) or next (1) patch file of the current patch's folder.
    void switchPatch(const std::string& params);
    Path nextPatchFile(bool forward, bool wrap, bool useCache);
    const FileBrowserSetup& browserSetup() const { return browserSetup_; }
    const FileBrowserSetup& saveSetup() const { return saveSetup_; }

    // The check for a newer build: started by open when due, picked up by the slow tick
    // while the editor's window is in front, turned on and off for good by the action.
    // Tests name a server of their own and a connection probe before open.
    void setVersionCheckServer(std::string url, VersionChecker::ConnectionProbe probe);
    void startVersionCheck();
    void pollVersionCheck();
    void toggleVersionCheck();
    void pickZoom(const std::string& params);
    bool zoomChecked(const std::string& params);
    bool isVersionCheckRunning() const { return checker_ != nullptr; }

    std::size_t undoSize() const { return undoStack_.size(); }
    std::size_t undoPosition() const { return undoPosition_; }

    // CushyHost.
    std::string title() override;
    bool reportError(CushyView& view, const std::string& message) override;
    void reload(CushyView& view) override;
    void update(CushyView& view) override;
    std::string layoutSource(CushyView& view, const std::string& name) override;
    std::shared_ptr<Image> image(CushyView& view, const std::string& spec) override;
    std::shared_ptr<Font> font(CushyView& view, const std::string& spec) override;
    std::string file(CushyView& view, const std::string& name) override;
    std::string translate(CushyView& view, const std::string& text) override;
    bool isEnabled(CushyView& view, const std::string& action, const std::string& params) override;
    bool isChecked(CushyView& view, const std::string& action, const std::string& params) override;
    void perform(CushyView& view, const std::string& action, const std::string& params) override;
    std::string getVariable(CushyView& view, const std::string& name) override;
    bool isWritable(CushyView& view, const std::string& name) override;
    void beginEnd(CushyView& view, const std::string& name, bool beginning) override;
    void keepNextEditApart(CushyView&) override { keepApart_ = true; }
    void setVariable(CushyView& view, const std::string& name, const std::string& value, bool continuous) override;
    // A parameter's plain value ("params.<name>") as a number; other names as text.
    std::unique_ptr<NumberVariable> numberVariable(CushyView& view, const std::string& name) override;
    // A parameter's plain value as the engine takes it, and a write of one from a control
    // (a gesture's first write is one undo step).
    double paramNumber(int index);
    void writeParamNumber(int index, double value, bool continuous);
    // The value a key step of `by` from `value` reaches: the next step of a stepped
    // parameter, however small `by` is.
    double nudgeParam(int index, double value, double by);

    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;

protected:
    ModelServices& services() { return services_; }
    // The parameter's row number, or -1.
    int parameterNumber(std::string_view name) const;
    // The current program's patch as this refresh sees it, cloned on first use.
    Patch& cachedPatch();
    // The feedback values as this refresh sees them, taken on first use.
    const FeedbackSink::Snapshot& cachedFeedback();
    std::string translate(const std::string& text);
    // Publishes `patch` into the current program and makes it the cached patch.
    void install(std::unique_ptr<Patch> patch);
    // Puts the value into the cached patch and through to the program, automating the host.
    void writeParameter(int index, float value);
    void refresh();

private:
    struct ParamName {
        int index = -1;
        bool human = false;
    };
    ParamName paramName(std::string_view name) const;
    const ParameterSpec& row(int index) const;
    std::string changeDescription(int index);
    void selectProgram(int program);
    void changeParam(const std::string& params);
    bool changeParamState(const std::string& params, bool checked);
    bool clipboardHoldsPatch();
    std::string readParam(int index, bool human);
    void writeParam(int index, bool human, const std::string& value, bool continuous);
    void markEdited(int index, bool human, bool continuous);
    void writePatchName(const std::string& value, bool continuous);
    void fillConstants();
    void showLayoutError(const std::string& message);
    // Calls on the patch dialogs' own window and fonts.
    Path runPatchDialog(const FileBrowserSetup& setup, bool saving, const Path& start, const std::string& suggestion,
                        const Path& current);
    bool switchPatchState(const std::string& params, bool perform);

    ModelServices& services_;
    const ModelFactory& factory_;
    const IntRect bounds_;
    Zoom zoom_;
    std::string format_ = "VST 2.4";
    std::function<void()> zoomChosen_;
    const ModelDescriptor& descriptor_;
    ResourceManager& resources_;
    StringTable& translator_;
    StandardFolders folders_;
    std::map<std::string, int, std::less<>> parameterIndex_;
    std::map<std::string, int, std::less<>> feedbackIndex_;
    std::shared_ptr<CushyView> rootView_;
    std::unique_ptr<CushyWindowClient> client_;
    Window* window_ = nullptr;
    std::map<std::string, std::string, std::less<>> constants_;
    std::map<std::string, std::string, std::less<>> variables_;
    std::int32_t currentProgram_ = 0;
    std::uint32_t shownStamp_ = 0;
    std::unique_ptr<Patch> cachedPatch_;
    std::unique_ptr<FeedbackSink::Snapshot> cachedFeedback_;
    bool enabledFlag_ = false;
    std::deque<UndoRecord> undoStack_;
    std::size_t undoPosition_ = 0;
    std::vector<bool> editedBits_;
    bool keepApart_ = false;
    std::vector<std::uint32_t> rememberedStamps_;
    FileBrowserSetup browserSetup_;
    FileBrowserSetup saveSetup_;
    PatchBrowser browser_;
    // Files the patch arrows stepped over because they could not be read, each said once.
    std::set<std::string> unreadableSaid_;
    std::string versionCheckUrl_;
    VersionChecker::ConnectionProbe connectionProbe_ = hasNetworkConnection;
    bool versionCheckEnabled_ = false;
    std::unique_ptr<VersionChecker> checker_;
};

}  // namespace tw
