// The editor's own open and save dialog, painted in the editor's look in a dialog window
// of the editor's window, so that it matches the menus and message boxes and runs in the
// same modal loop, with the editor's timers (and so its audition) going on. The patch
// browser of the model opens it; the product's script adds the buttons that jump to the
// factory and the user patches.
//
// A self-contained painted dialog rather than a layout served by controller variables:
// the list, its scrolling, the typed name and the type-ahead live here in one place, a
// test drives it with injected keys and clicks in the window double, and the product's
// script reaches it through the file dialog controls it implements.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "cushy/HelperLook.h"
#include "platform/FileDialogScript.h"
#include "platform/Path.h"
#include "platform/Window.h"

namespace tw {

// What one dialog shows; every text already translated.
struct FileDialogSetup {
    std::string title;
    bool saving = false;
    std::string typeLabel;      // the first filter: "<typeLabel> (*.<extension>)"
    std::string extension;      // of the files the first filter shows, without the dot
    std::string allFilesLabel;  // the second filter, every file
    std::string script;         // the controls the product adds, as a file dialog script
    std::map<int, std::string> labels;  // labels shown instead of the script's, by control id
    std::map<int, Path> jumps;          // the folder a push button goes to, by control id
    Path startFolder;
    // Opening: the file shown selected at first, when the start folder holds it, so that
    // the arrows go on from the current patch. It is not heard again.
    Path currentFile;
    std::string fileName;       // saving: the name suggested
    // Saving over a file asks this first, "^F" standing for the file's name; empty asks nothing.
    std::string replacePrompt;
    std::string okLabel = "OK", cancelLabel = "Cancel", upLabel = "Up", fileNameLabel = "File name:";
    // Saving: why a typed name is refused, in words, rather than saved hidden or dropped.
    std::string slashRefusal = "A file name cannot contain \"/\".";
    std::string dotRefusal = "A file name cannot begin with \".\".";
    std::string lengthRefusal = "The file name is too long.";
};

class FileDialog : public WindowClient, public FileDialogControls {
public:
    // Called whenever the selection moves to a file, at once, for an audition.
    using SelectionListener = std::function<void(const Path& file)>;

    static constexpr std::int32_t visibleRows = 14;
    // Two characters typed closer than this in time make one name to jump to.
    static constexpr std::uint32_t typeAheadMs = 1000;
    static constexpr std::uint32_t doubleClickMs = 500;
    // The bytes one name may have on the file systems Linux users keep patches on.
    static constexpr std::size_t maxNameBytes = 255;

    // Runs the setup's script against the dialog first: a bad script raises its error
    // here, before any window opens. Starts in `startFolder` when it is a folder.
    FileDialog(HelperFonts fonts, FileDialogSetup setup, SelectionListener listener = {});

    // Opens the dialog over the window and runs it until it closes: the chosen file, or
    // the empty path. Throws LostWindowException when the editor goes away meanwhile.
    Path run(Window& owner);

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    bool closed() const { return closed_; }
    // The chosen file once closed with OK; else empty.
    const Path& result() const { return result_; }

    // Goes to a folder; answers false, changing nothing, when it is no folder on disk.
    bool setFolder(const Path& folder);
    const Path& folder() const { return folder_; }
    void setFileName(const std::string& name);
    const std::string& fileName() const { return fileName_; }
    // Whether Ctrl+A selected the whole name, which the next key then replaces.
    bool nameSelected() const { return nameSelected_; }
    // Why the last name was refused, as the user was told; empty when none was.
    const std::string& refusal() const { return refusal_; }
    // The folders, then the files of the current filter, each sorted by the paths' order.
    const std::vector<Path>& entries() const { return entries_; }
    // The selected entry, or -1.
    std::int32_t selected() const { return selected_; }
    // The selected entry, or the empty path.
    Path getSelection() const;
    // 0: the product's files, 1: all files.
    int filter() const { return filter_; }
    std::int32_t firstVisible() const { return scroll_; }

    // Where things are, for a user who clicks them; an entry's row only while it shows.
    IntRect rowRect(std::size_t entry) const;
    IntRect upRect() const;
    IntRect filterRect() const;
    IntRect nameRect() const;
    IntRect okRect() const;
    IntRect cancelRect() const;
    // A control the script added, by its id; empty when there is none.
    IntRect controlRect(int id) const;

    void paint(const PixelTile& tile) override;
    void mouseDown(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;
    void mouseWheel(const MouseEvent& event) override;
    bool keyDown(const KeyEvent& event) override;
    void closeRequested() override;

    // The controls a script may add: push buttons, check buttons, texts and separators,
    // in a row under the list. The rest raise "Unsupported method".
    int AddCheckButton(int id, const std::string& label) override;
    int AddComboBox(int id) override;
    int AddControlItem(int id, int item, const std::string& label) override;
    int AddEditBox(int id, const std::string& text) override;
    int AddMenu(int id, const std::string& label) override;
    int AddPushButton(int id, const std::string& label) override;
    int AddRadioButtonList(int id) override;
    int AddSeparator(int id) override;
    int AddText(int id, const std::string& text) override;
    int EnableOpenDropDown(int id) override;
    int EndVisualGroup() override;
    int MakeProminent(int id) override;
    int StartVisualGroup(int id, const std::string& label) override;

private:
    enum class ControlKind { push, check, text, separator };
    struct Control {
        int id;
        ControlKind kind;
        std::string label;
        bool checked = false;
        IntRect rect;
    };
    // The pressable parts of the dialog besides the list and the script's controls.
    enum Part : int { none = -1, upPart = -2, filterPart = -3, okPart = -4, cancelPart = -5 };

    int addControl(int id, ControlKind kind, const std::string& label);
    void layOut();
    void reload();
    void select(std::int32_t index);
    void scrollTo(std::int32_t index);
    void goUp();
    // Enter, a double click or OK: into a selected folder, else choose.
    void activate();
    void choose(const Path& file);
    // Asks, in a message box over the dialog, whether an existing file may be replaced.
    bool confirmReplace(const Path& file);
    // Shows a warning over the dialog; nothing without an owner (a dialog driven directly).
    void tell(const std::string& text);
    void press(int part);
    void typeAhead(char32_t c, std::uint32_t time);
    std::string filterText(int filter) const;
    int partAt(std::int32_t x, std::int32_t y) const;
    IntRect listRect() const;
    void repaint();

    HelperFonts fonts_;
    // The dialog's lengths at its zoom.
    struct Sizes {
        std::int32_t margin, lineHeight, gap, upWidth, buttonWidth, scrollbarWidth, textInset, rowHeight;
    } sizes_;
    FileDialogSetup setup_;
    SelectionListener listener_;
    std::vector<Control> controls_;
    Path folder_;
    std::vector<Path> entries_;
    std::int32_t selected_ = -1;
    std::int32_t scroll_ = 0;
    int filter_ = 0;
    std::string fileName_;
    bool nameSelected_ = false;
    std::string refusal_;
    std::string typed_;
    std::uint32_t lastTyped_ = 0;
    std::int32_t lastClickRow_ = -1;
    std::uint32_t lastClickTime_ = 0;
    int pressed_ = none;
    std::int32_t width_ = 520, height_ = 0;
    std::int32_t controlsTop_ = 0;
    bool closed_ = false;
    Path result_;
    Window* dialog_ = nullptr;
    Window* owner_ = nullptr;
};

}  // namespace tw
