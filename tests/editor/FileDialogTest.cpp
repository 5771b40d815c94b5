// The editor's own file dialog over a scratch folder: what it lists and in which order,
// the keys, the clicks and the type-ahead, the jump buttons of the product's script, the
// name a save is made under, and the whole dialog run modally over a window double.
#include "editor/FileDialog.h"

#include "cushy/Editor.h"
#include "graphics/SavePicture.h"
#include "platform/Exception.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;
using tw::test::TempFolder;

namespace {

const std::string presetScript = "AddPushButton(11223, \"Factory Presets\");\nAddPushButton(11224, \"User Presets\");\n";

struct Scratch {
    TempFolder temp;
    Scratch() {
        temp.write("zeta/keep.tidewake", "x");
        temp.write("Alpha/inner.tidewake", "x");
        temp.write("beta.tidewake", "x");
        temp.write("Charlie.TIDEWAKE", "x");
        temp.write("alpha one.tidewake", "x");
        temp.write("notes.txt", "x");
        temp.write(".hidden.tidewake", "x");
    }
    Path folder(const std::string& relative = "") const { return Path::parse(temp.str() + relative); }
};

FileDialogSetup setupFor(const Scratch& scratch, bool saving = false) {
    FileDialogSetup setup;
    setup.title = saving ? "Save Tidewake Patch" : "Open Tidewake Patch";
    setup.saving = saving;
    setup.typeLabel = "Tidewake Patch";
    setup.extension = "tidewake";
    setup.allFilesLabel = "All Files";
    setup.script = presetScript;
    setup.labels = {{11223, "Go to Factory Patches"}, {11224, "Go to User Patches"}};
    setup.jumps = {{11223, scratch.folder("zeta/")}, {11224, scratch.folder("missing/")}};
    setup.startFolder = scratch.folder();
    setup.okLabel = saving ? "Save" : "Open";
    return setup;
}

std::vector<std::string> names(const FileDialog& dialog) {
    std::vector<std::string> out;
    for (const Path& p : dialog.entries()) out.push_back(p.fileName());
    return out;
}

HelperFonts fonts(Editor& editor) { return HelperFonts::load(editor.host, *editor.root); }

void click(FileDialog& dialog, const IntRect& r, std::uint32_t time = 0) {
    MouseEvent e;
    e.x = r.left + r.width / 2, e.y = r.top + r.height / 2, e.time = time;
    dialog.mouseDown(e);
    dialog.mouseUp(e);
}

KeyEvent typed(char32_t c, std::uint32_t time) {
    KeyEvent e{Key::character, c};
    e.time = time;
    return e;
}

}  // namespace

TEST(FileDialog, FoldersFirstThenPatchFilesEachInThePathsOrder) {
    Editor editor;
    Scratch scratch;
    FileDialog dialog(fonts(editor), setupFor(scratch));
    EXPECT_TRUE(dialog.folder().equals(scratch.folder()));
    EXPECT_EQ(names(dialog), (std::vector<std::string>{"Alpha", "zeta", "alpha one.tidewake", "beta.tidewake",
                                                       "Charlie.TIDEWAKE"}));
    EXPECT_EQ(dialog.selected(), -1);
    click(dialog, dialog.filterRect());
    EXPECT_EQ(dialog.filter(), 1);
    EXPECT_EQ(names(dialog), (std::vector<std::string>{"Alpha", "zeta", "alpha one.tidewake", "beta.tidewake",
                                                       "Charlie.TIDEWAKE", "notes.txt"}));
    EXPECT_FALSE(dialog.setFolder(scratch.folder("beta.tidewake")));
    EXPECT_FALSE(dialog.setFolder(scratch.folder("missing/")));
    EXPECT_TRUE(dialog.folder().equals(scratch.folder())) << "no folder leads nowhere";
}

TEST(FileDialog, KeysMoveTheSelectionAndEachFileIsHeardAtOnce) {
    Editor editor;
    Scratch scratch;
    std::vector<std::string> heard;
    FileDialog dialog(fonts(editor), setupFor(scratch), [&](const Path& p) { heard.push_back(p.fileName()); });
    dialog.keyDown(KeyEvent{Key::down});
    dialog.keyDown(KeyEvent{Key::down});
    EXPECT_TRUE(heard.empty()) << "folders are not heard";
    dialog.keyDown(KeyEvent{Key::down});
    dialog.keyDown(KeyEvent{Key::end});
    dialog.keyDown(KeyEvent{Key::down});
    dialog.keyDown(KeyEvent{Key::up});
    EXPECT_EQ(heard, (std::vector<std::string>{"alpha one.tidewake", "Charlie.TIDEWAKE", "beta.tidewake"}));

    FileDialogSetup fromCurrent = setupFor(scratch);
    fromCurrent.currentFile = scratch.folder("beta.tidewake");
    FileDialog second(fonts(editor), fromCurrent, [&](const Path& p) { heard.push_back(p.fileName()); });
    EXPECT_EQ(second.selected(), 3) << "the current patch shows selected";
    EXPECT_EQ(heard.size(), 3u) << "and is not heard again";
    second.keyDown(KeyEvent{Key::down});
    EXPECT_EQ(heard.back(), "Charlie.TIDEWAKE") << "the arrows go on from it";

    // Typing jumps to the first name that starts with what was typed within a second.
    dialog.keyDown(typed('z', 5000));
    EXPECT_EQ(dialog.getSelection().fileName(), "zeta");
    dialog.keyDown(typed('a', 7000));
    dialog.keyDown(typed('L', 7100));
    dialog.keyDown(typed('p', 7200));
    dialog.keyDown(typed('h', 7300));
    dialog.keyDown(typed('a', 7400));
    dialog.keyDown(typed(' ', 7500));
    EXPECT_EQ(dialog.getSelection().fileName(), "alpha one.tidewake");

    // Enter goes into a folder, Backspace back out with that folder selected.
    dialog.keyDown(KeyEvent{Key::home});
    dialog.keyDown(KeyEvent{Key::enter});
    EXPECT_TRUE(dialog.folder().equals(scratch.folder("Alpha/")));
    EXPECT_EQ(names(dialog), std::vector<std::string>{"inner.tidewake"});
    dialog.keyDown(KeyEvent{Key::backspace});
    EXPECT_TRUE(dialog.folder().equals(scratch.folder()));
    EXPECT_EQ(dialog.getSelection().fileName(), "Alpha");
    EXPECT_FALSE(dialog.closed());
    dialog.keyDown(KeyEvent{Key::escape});
    EXPECT_TRUE(dialog.closed());
    EXPECT_TRUE(dialog.result().empty()) << "Escape cancels";
}

TEST(FileDialog, ClicksSelectADoubleClickChoosesAndTheJumpButtonsGoToTheirFolders) {
    Editor editor;
    Scratch scratch;
    std::vector<std::string> heard;
    FileDialog dialog(fonts(editor), setupFor(scratch), [&](const Path& p) { heard.push_back(p.fileName()); });
    EXPECT_FALSE(dialog.controlRect(11223).isEmpty());
    EXPECT_FALSE(dialog.controlRect(11224).isEmpty());
    EXPECT_TRUE(dialog.controlRect(1).isEmpty());

    click(dialog, dialog.controlRect(11224));
    EXPECT_TRUE(dialog.folder().equals(scratch.folder())) << "a missing folder leads nowhere, silently";
    click(dialog, dialog.controlRect(11223));
    EXPECT_TRUE(dialog.folder().equals(scratch.folder("zeta/")));
    click(dialog, dialog.upRect());
    EXPECT_TRUE(dialog.folder().equals(scratch.folder()));

    click(dialog, dialog.rowRect(3), 1000);
    EXPECT_EQ(heard, std::vector<std::string>{"beta.tidewake"});
    click(dialog, dialog.rowRect(4), 1100);
    click(dialog, dialog.rowRect(3), 1200);
    EXPECT_FALSE(dialog.closed()) << "two clicks on different rows are no double click";
    click(dialog, dialog.rowRect(3), 1400);
    EXPECT_TRUE(dialog.closed());
    EXPECT_TRUE(dialog.result().equals(scratch.folder("beta.tidewake")));
}

TEST(FileDialog, SavingNamesTheFileAndAddsTheExtension) {
    Editor editor;
    Scratch scratch;
    FileDialogSetup setup = setupFor(scratch, true);
    setup.fileName = "My Dub";
    FileDialog dialog(fonts(editor), setup);
    EXPECT_EQ(dialog.fileName(), "My Dub");
    dialog.keyDown(KeyEvent{Key::backspace});
    dialog.keyDown(typed(U'\u00e9', 0));
    EXPECT_EQ(dialog.fileName(), "My Du\xC3\xA9");
    dialog.keyDown(KeyEvent{Key::down});
    dialog.keyDown(KeyEvent{Key::down});
    dialog.keyDown(KeyEvent{Key::down});
    EXPECT_EQ(dialog.fileName(), "alpha one") << "a selected file lends its name";
    dialog.setFileName("Dub.TideWake");
    click(dialog, dialog.okRect());
    EXPECT_TRUE(dialog.result().equals(scratch.folder("Dub.TideWake")));

    FileDialog second(fonts(editor), setup);
    second.setFileName("a/b");
    second.keyDown(KeyEvent{Key::enter});
    EXPECT_FALSE(second.closed()) << "a name with a folder in it is not taken";
    second.setFileName("Night");
    second.keyDown(KeyEvent{Key::enter});
    EXPECT_TRUE(second.result().equals(scratch.folder("Night.tidewake")));
}

TEST(FileDialog, NamesTheFileSystemCannotTakeAreRefusedInWordsAndCtrlASelectsTheName) {
    Editor editor;
    Scratch scratch;
    FileDialogSetup setup = setupFor(scratch, true);
    setup.fileName = "My Dub";
    FileDialog dialog(fonts(editor), setup);
    const std::vector<std::pair<std::string, std::string>> refused = {
        {"..", setup.dotRefusal},
        {".hidden", setup.dotRefusal},
        {"a/b", setup.slashRefusal},
        {std::string(FileDialog::maxNameBytes - 8, 'x'), setup.lengthRefusal},  // with ".tidewake", one too many
    };
    for (const auto& [name, why] : refused) {
        dialog.setFileName(name);
        dialog.keyDown(KeyEvent{Key::enter});
        EXPECT_FALSE(dialog.closed()) << name;
        EXPECT_EQ(dialog.refusal(), why) << name;
    }
    dialog.setFileName(std::string(FileDialog::maxNameBytes - 9, 'x'));
    dialog.keyDown(KeyEvent{Key::enter});
    EXPECT_TRUE(dialog.closed()) << "the longest name there is";
    EXPECT_EQ(dialog.refusal(), "");

    // Ctrl+A, then a key replaces the whole name; Ctrl+A, then backspace empties it.
    FileDialog second(fonts(editor), setup);
    KeyEvent all = typed(U'a', 0);
    all.ctrl = true;
    EXPECT_TRUE(second.keyDown(all));
    EXPECT_TRUE(second.nameSelected());
    EXPECT_EQ(second.fileName(), "My Dub") << "Ctrl+A types nothing";
    second.keyDown(typed(U'N', 0));
    EXPECT_EQ(second.fileName(), "N");
    EXPECT_FALSE(second.nameSelected());
    second.keyDown(all);
    second.keyDown(KeyEvent{Key::backspace});
    EXPECT_EQ(second.fileName(), "");
}

TEST(FileDialog, AScriptThatAsksForWhatTheDialogLacksFailsBeforeAnyWindowOpens) {
    Editor editor;
    Scratch scratch;
    FileDialogSetup setup = setupFor(scratch);
    setup.script = "AddComboBox(5);";
    EXPECT_THROW(
        {
            try {
                FileDialog dialog(fonts(editor), setup);
            } catch (const Exception& e) {
                EXPECT_STREQ(e.what(), "Unsupported method");
                throw;
            }
        },
        Exception);
    setup.script = "AddPushButton(1, \"A\"); AddPushButton(1, \"B\");";
    EXPECT_THROW(FileDialog(fonts(editor), setup), FormatException);
    setup.script = "/* texts too */ AddText(3, \"Presets:\"); AddSeparator(4); AddCheckButton(5, \"Keep\");";
    FileDialog dialog(fonts(editor), setup);
    EXPECT_FALSE(dialog.controlRect(3).isEmpty());
    EXPECT_FALSE(dialog.controlRect(5).isEmpty());
}

TEST(FileDialog, RunsModallyOverTheEditorUntilAFileIsChosen) {
    Editor editor({0, 0, 600, 520});
    Scratch scratch;
    std::vector<std::string> heard;
    FileDialog dialog(fonts(editor), setupFor(scratch), [&](const Path& p) { heard.push_back(p.fileName()); });
    int turn = 0;
    editor.window.user = [&](WindowDouble& window) {
        WindowDouble* helper = window.topHelper();
        ASSERT_NE(helper, nullptr);
        switch (turn++) {
            case 0:
                EXPECT_EQ(helper->title(), "Open Tidewake Patch");
                helper->key(Key::down);
                helper->key(Key::down);
                helper->key(Key::down);
                helper->key(Key::down);
                break;
            case 1: {
                helper->paintAll();
                tw::test::savePicture("cushy-file-dialog.png", window.screenshot());
                const IntRect ok = dialog.okRect();
                helper->mouseDown(ok.left + 4, ok.top + 4);
                helper->mouseUp(ok.left + 4, ok.top + 4);
                break;
            }
            default: break;
        }
    };
    const Path chosen = dialog.run(editor.window);
    EXPECT_TRUE(chosen.equals(scratch.folder("beta.tidewake")));
    EXPECT_EQ(heard, (std::vector<std::string>{"alpha one.tidewake", "beta.tidewake"}));
    EXPECT_TRUE(editor.window.helpers().empty()) << "the dialog's window went with it";
}

TEST(FileDialog, ALongFolderScrollsToKeepTheSelectionInView) {
    Editor editor;
    TempFolder temp;
    for (int i = 10; i < 50; ++i) temp.write("Patch " + std::to_string(i) + ".tidewake", "x");
    FileDialogSetup setup;
    setup.typeLabel = "Tidewake Patch";
    setup.extension = "tidewake";
    setup.allFilesLabel = "All Files";
    setup.startFolder = Path::parse(temp.str());
    FileDialog dialog(fonts(editor), setup);
    ASSERT_EQ(dialog.entries().size(), 40u);
    dialog.keyDown(KeyEvent{Key::pageDown});
    EXPECT_EQ(dialog.selected(), FileDialog::visibleRows - 1);
    EXPECT_EQ(dialog.firstVisible(), 0);
    dialog.keyDown(KeyEvent{Key::down});
    EXPECT_EQ(dialog.firstVisible(), 1);
    EXPECT_TRUE(dialog.rowRect(0).isEmpty()) << "scrolled out of view";
    dialog.keyDown(KeyEvent{Key::end});
    EXPECT_EQ(dialog.firstVisible(), 40 - FileDialog::visibleRows);
    MouseEvent wheel;
    wheel.wheel = 2;
    dialog.mouseWheel(wheel);
    EXPECT_EQ(dialog.firstVisible(), 40 - FileDialog::visibleRows - 6);
    wheel.wheel = -10;
    dialog.mouseWheel(wheel);
    EXPECT_EQ(dialog.firstVisible(), 40 - FileDialog::visibleRows) << "no further than the last row";
    dialog.keyDown(KeyEvent{Key::up});
    Raster32 canvas(IntRect{0, 0, dialog.width(), dialog.height()}, true);
    dialog.paint(PixelTile{canvas.at(0, 0), canvas.stride(), 0, 0, dialog.width(), dialog.height()});
    tw::test::savePicture("cushy-file-dialog-scrolled.png", canvas);
}
