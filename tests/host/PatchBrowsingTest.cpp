// Patch files through the editor's controller over a real plug-in instance: opening a
// file, stepping through its folder, the patch menu, the open dialog's audition, saving
// and reading back, and the folders the dialogs remember. The dialogs and the menu run in
// a window double, driven by injected keys and clicks.
#include <gtest/gtest.h>

#include <filesystem>

#include "product/TidewakeEditorFactory.h"
#include "editor/FileDialog.h"
#include "cushy/MessageBox.h"
#include "cushy/PopupMenu.h"
#include "cushy/StringTable.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/ResourceManager.h"
#include "editor/BrowserDirectories.h"
#include "editor/ModelController.h"
#include "patch/ModelFactory.h"
#include "editor/PatchBrowser.h"
#include "product/TidewakeDescriptor.h"
#include "platform/Exception.h"
#include "platform/TempFolder.h"
#include "tests/host/ProductResources.h"
#include "tests/host/TestHost.h"

namespace {

using namespace tw;
using tw::test::TempFolder;
using tw::test::TestHost;
using tw::test::resources;
using tw::test::strings;

// The instance's services, with every change of the edit patch written down: what the
// user hears while a dialog auditions files.
class AuditionServices : public ModelServices {
public:
    explicit AuditionServices(ModelServices& inner) : inner_(inner) {}
    std::vector<std::string> heard;  // the edit patch's name, "-" for none

    ModelFactory& getFactory() override { return inner_.getFactory(); }
    int getCurrentProgram() override { return inner_.getCurrentProgram(); }
    void setCurrentProgram(int program) override { inner_.setCurrentProgram(program); }
    std::uint32_t getPatchStamp(int program) override { return inner_.getPatchStamp(program); }
    std::unique_ptr<Patch> clonePatch(int program) override { return inner_.clonePatch(program); }
    void setPatch(int program, const Patch& patch) override { inner_.setPatch(program, patch); }
    PatchHandle acquirePatch(int program) override { return inner_.acquirePatch(program); }
    void getPatchName(int program, std::size_t maxLength, char* buffer) override {
        inner_.getPatchName(program, maxLength, buffer);
    }
    bool setPatchName(int program, std::string_view text) override { return inner_.setPatchName(program, text); }
    void beginEnd(int parameter, bool beginning) override { inner_.beginEnd(parameter, beginning); }
    float getParameter(int program, int parameter) override { return inner_.getParameter(program, parameter); }
    void editParameter(int program, int parameter, float value) override {
        inner_.editParameter(program, parameter, value);
    }
    FeedbackSink::Snapshot getFeedback() override { return inner_.getFeedback(); }
    bool isEnabled() override { return inner_.isEnabled(); }
    double getTempo() override { return inner_.getTempo(); }
    void setEditPatch(const Patch* patch) override {
        heard.push_back(patch != nullptr ? patch->getName() : "-");
        inner_.setEditPatch(patch);
    }
    void updateDisplay() override { inner_.updateDisplay(); }

private:
    ModelServices& inner_;
};

class PatchBrowsing : public ::testing::Test {
protected:
    void SetUp() override {
        controller = tidewakeEditor().createController(services, resources(), strings());
        window = std::make_unique<WindowDouble>(controller->client(), 525, 475);
        controller->open(window.get());
        saveBrowserDirectories("TidewakePatches", Path(), Path());
    }
    void TearDown() override { controller->close(); }

    Instance& instance() { return host.instance(); }
    ModelFactory& factory() { return instance().getFactory(); }
    CushyView& view() { return controller->rootView(); }
    Path file(const std::string& relative) { return Path::parse(temp.str() + relative); }
    // A patch file whose wet mix tells it apart.
    void writePatch(const std::string& relative, float wetMix, bool headerless = true) {
        std::unique_ptr<Patch> patch = factory().createInitPatch();
        patch->setName("A label in the text");
        patch->storeParameter(Param::wetMix, wetMix);
        temp.write(relative, factory().patchToText(*patch, headerless));
    }
    float wetMix() { return instance().getParameter(instance().getCurrentProgram(), Param::wetMix); }
    std::string patchName() { return controller->getVariable(view(), "patch.name"); }
    bool enabled(const std::string& action, const std::string& params = "") {
        return controller->isEnabled(view(), action, params);
    }
    void perform(const std::string& action, const std::string& params = "") {
        controller->perform(view(), action, params);
    }
    // Runs `steps` on the helper window on top, one a turn of the modal loop.
    void drive(std::vector<std::function<void(WindowDouble&)>> steps) {
        auto turn = std::make_shared<std::size_t>(0);
        window->user = [this, steps, turn](WindowDouble&) {
            if (*turn < steps.size()) {
                WindowDouble* helper = window->topHelper();
                ASSERT_NE(helper, nullptr);
                steps[(*turn)++](*helper);
            }
        };
    }
    static FileDialog& dialogOf(WindowDouble& helper) { return dynamic_cast<FileDialog&>(helper.client()); }

    TestHost host;
    AuditionServices services{host.instance()};
    std::unique_ptr<ModelController> controller;
    std::unique_ptr<WindowDouble> window;
    TempFolder temp;
};

TEST_F(PatchBrowsing, TheDialogsSetupsNameTheirFoldersAndTexts) {
    const FileBrowserSetup& open = controller->browserSetup();
    EXPECT_EQ(open.name, "TidewakePatches");
    EXPECT_EQ(open.factoryFolder.fileName(), "Tidewake Patches");
    EXPECT_TRUE(open.factoryFolder.isFolder());
    EXPECT_TRUE(open.userFolder.toString().ends_with("/Documents/Marlin Works/Tidewake User Patches/"));
    EXPECT_EQ(open.userFolder.kind(), Path::Kind::folder) << "made when missing";
    ASSERT_EQ(open.fileTypes.size(), 1u);
    EXPECT_EQ(open.fileTypes[0].description, "Tidewake Patch");
    EXPECT_EQ(open.fileTypes[0].extension, "tidewake");
    EXPECT_EQ(open.fileTypes[0].code, fourCharCode("TwKe"));
    EXPECT_EQ(open.title, "Open Tidewake Patch");
    EXPECT_EQ(open.factoryLabel, "Go to Factory Patches");
    EXPECT_EQ(open.allFilesLabel, "All Files");
    EXPECT_EQ(controller->saveSetup().title, "Save Tidewake Patch");
    EXPECT_TRUE(controller->saveSetup().factoryFolder.equals(open.factoryFolder));
    EXPECT_TRUE(enabled("openPatch") && enabled("savePatch") && enabled("choosePatch"));
    EXPECT_FALSE(enabled("toggleVersionCheck")) << "the product names no server to ask";
}

TEST_F(PatchBrowsing, AFileNamesThePatchItOpensAndOpeningIsUndoable) {
    writePatch("Deep & Dark.tidewake", 0.125f, false);
    controller->openPatchFile(file("Deep & Dark.tidewake"));
    EXPECT_EQ(patchName(), "Deep & Dark") << "the file's name wins over the name in its text";
    EXPECT_FLOAT_EQ(wetMix(), 0.125f);
    EXPECT_EQ(controller->getVariable(view(), "patch.modified"), "false");
    EXPECT_EQ(controller->getVariable(view(), "undo.description"), "Open Patch");
    perform("undo");
    EXPECT_NE(patchName(), "Deep & Dark");

    temp.write("Broken.tidewake", "no patch at all");
    const std::size_t undo = controller->undoSize();
    EXPECT_THROW(controller->openPatchFile(file("Broken.tidewake")), Exception);
    EXPECT_THROW(controller->openPatchFile(file("Missing.tidewake")), Exception);
    EXPECT_EQ(controller->undoSize(), undo) << "a file that fails changes nothing";
}

TEST_F(PatchBrowsing, SwitchPatchStepsThroughTheFolderAndWrapsOnlyWhenAsked) {
    writePatch("a.tidewake", 0.1f);
    writePatch("B.tidewake", 0.2f);
    writePatch("c.tidewake", 0.3f);
    temp.write("notes.txt", "not a patch");
    controller->openPatchFile(file("B.tidewake"));
    EXPECT_FALSE(enabled("switchPatch", "{ step: 2 }"));
    EXPECT_FALSE(enabled("switchPatch", "{ step: 0 }"));
    EXPECT_TRUE(enabled("switchPatch", "{ step: -1 }"));
    perform("switchPatch", "{ step: 1 }");
    EXPECT_EQ(patchName(), "c");
    EXPECT_FLOAT_EQ(wetMix(), 0.3f);
    EXPECT_FALSE(enabled("switchPatch", "{ step: 1 }")) << "the last file, without wrap";
    perform("switchPatch", "{ step: 1 }");
    EXPECT_EQ(patchName(), "c");
    EXPECT_TRUE(enabled("switchPatch", "{ step: 1, wrap: true }"));
    perform("switchPatch", "{ step: 1, wrap: true }");
    EXPECT_EQ(patchName(), "a");
    EXPECT_FALSE(enabled("switchPatch", "{ step: -1 }"));
    perform("switchPatch", "{ step: -1, wrap: true }");
    EXPECT_EQ(patchName(), "c");

    TempFolder lonely;
    lonely.write("Only.tidewake", temp.read("a.tidewake"));
    controller->openPatchFile(Path::parse(lonely.str() + "Only.tidewake"));
    EXPECT_FALSE(enabled("switchPatch", "{ step: 1, wrap: true }")) << "one file has no neighbour";
    EXPECT_FALSE(enabled("switchPatch", "{ step: -1, wrap: true }"));
}

TEST_F(PatchBrowsing, SwitchPatchRightAfterTheNextFileWasDeletedTakesTheOneAfter) {
    writePatch("a.tidewake", 0.1f);
    writePatch("b.tidewake", 0.2f);
    writePatch("c.tidewake", 0.3f);
    controller->openPatchFile(file("a.tidewake"));
    ASSERT_TRUE(enabled("switchPatch", "{ step: 1 }"));
    std::filesystem::remove(temp.path / "b.tidewake");
    EXPECT_TRUE(controller->nextPatchFile(true, false, true).equals(file("b.tidewake"))) << "the cache is stale";
    perform("switchPatch", "{ step: 1 }");
    EXPECT_EQ(patchName(), "c");
    EXPECT_FLOAT_EQ(wetMix(), 0.3f);
}

TEST_F(PatchBrowsing, TheMenuShowsOneAmpersandAndChecksTheCurrentFile) {
    const std::vector<Path> files{file("Dub & Dust.tidewake"), file("Echo.tidewake")};
    PatchBrowser::Menu menu = PatchBrowser::patchMenu(files, file("echo.tidewake"), "Browse Patches...", "None");
    ASSERT_EQ(menu.items.size(), 4u);
    EXPECT_EQ(menu.ids, (std::vector<int>{100, 0, 1000, 1001}));
    EXPECT_TRUE(menu.items[1].separator);
    EXPECT_EQ(menu.items[2].caption, "Dub && Dust");
    std::int32_t access;
    EXPECT_EQ(PopupMenu::plainCaption(menu.items[2].caption, access), "Dub & Dust");
    EXPECT_EQ(access, -1);
    EXPECT_FALSE(menu.items[2].checked);
    EXPECT_TRUE(menu.items[3].checked);

    PatchBrowser::Menu empty = PatchBrowser::patchMenu({}, Path(), "Browse Patches...", "No patches found");
    ASSERT_EQ(empty.items.size(), 3u);
    EXPECT_EQ(empty.items[2].caption, "No patches found");
    EXPECT_FALSE(empty.items[2].enabled);
}

TEST_F(PatchBrowsing, TheMenuOfAnUnsavedPatchListsTheRememberedFolder) {
    writePatch("One.tidewake", 0.4f);
    writePatch("Two.tidewake", 0.6f);
    saveBrowserDirectories("TidewakePatches", Path::parse(temp.str()), Path());
    drive({[&](WindowDouble& helper) {
        auto& menu = dynamic_cast<PopupMenu&>(helper.client());
        // Browse, the separator, then the files: the second file is the fourth item.
        const IntRect two = menu.itemRect(3);
        EXPECT_EQ(menu.itemAt(two.left + 5, std::int32_t(two.bottom()) - 1), 3);
        EXPECT_EQ(menu.itemAt(two.left + 5, std::int32_t(two.bottom()) + 1), -1) << "nothing below the last file";
        helper.mouseMove(two.left + 5, two.top + 5);
        helper.mouseDown(two.left + 5, two.top + 5);
        helper.mouseUp(two.left + 5, two.top + 5);
    }});
    perform("choosePatch");
    EXPECT_EQ(patchName(), "Two");
    EXPECT_FLOAT_EQ(wetMix(), 0.6f);
}

TEST_F(PatchBrowsing, TheOpenDialogAuditionsEachSelectedFileAndCancelKeepsEverything) {
    writePatch("One.tidewake", 0.4f);
    writePatch("Two.tidewake", 0.6f);
    saveBrowserDirectories("TidewakePatches", Path::parse(temp.str()), Path());
    const std::string before = patchName();
    drive({[](WindowDouble& helper) {
               EXPECT_EQ(helper.title(), "Open Tidewake Patch");
               helper.key(Key::down);
               helper.key(Key::down);
               helper.key(Key::up);
           },
           [](WindowDouble& helper) { helper.key(Key::escape); }});
    perform("openPatch");
    EXPECT_EQ(services.heard, (std::vector<std::string>{"One", "Two", "One", "-"}));
    EXPECT_EQ(patchName(), before) << "an audition leaves the program alone";
    EXPECT_TRUE(loadBrowserDirectories("TidewakePatches").open.equals(Path::parse(temp.str())));

    services.heard.clear();
    temp.write("Inner/Three.tidewake", temp.read("Two.tidewake"));
    drive({[](WindowDouble& helper) {
               helper.key(Key::enter);  // nothing selected: nothing happens
               helper.key(Key::down);
               helper.key(Key::enter);
           },
           [](WindowDouble& helper) {
               EXPECT_EQ(dialogOf(helper).entries().size(), 1u);
               helper.key(Key::down);
               const IntRect ok = dialogOf(helper).okRect();
               helper.mouseDown(ok.left + 3, ok.top + 3);
               helper.mouseUp(ok.left + 3, ok.top + 3);
           }});
    perform("openPatch");
    EXPECT_EQ(services.heard, (std::vector<std::string>{"Three", "-"}));
    EXPECT_EQ(patchName(), "Three");
    EXPECT_FLOAT_EQ(wetMix(), 0.6f);
    EXPECT_TRUE(loadBrowserDirectories("TidewakePatches").open.equals(Path::parse(temp.str() + "Inner/")));
}

TEST_F(PatchBrowsing, ALostWindowEndsTheDialogAndItsAudition) {
    writePatch("One.tidewake", 0.4f);
    saveBrowserDirectories("TidewakePatches", Path::parse(temp.str()), Path());
    drive({[this](WindowDouble& helper) {
        helper.key(Key::down);
        window->lose();
    }});
    EXPECT_THROW(perform("openPatch"), LostWindowException);
    EXPECT_EQ(services.heard, (std::vector<std::string>{"One", "-"}));
}

TEST_F(PatchBrowsing, TheSaveSuggestionFollowsARenameAndKeepsALongStemWhole) {
    EXPECT_EQ(PatchBrowser::saveSuggestion(Path(), "Dub", "Untitled"), "Dub");
    EXPECT_EQ(PatchBrowser::saveSuggestion(Path(), "", "Untitled"), "Untitled");
    EXPECT_EQ(PatchBrowser::saveSuggestion(file("Old.tidewake"), "New", "Untitled"), "New");
    EXPECT_EQ(PatchBrowser::saveSuggestion(file("Old.tidewake"), "Old", "Untitled"), "Old");
    const std::string longStem(300, 'x');
    EXPECT_EQ(PatchBrowser::saveSuggestion(file(longStem + ".tidewake"), std::string(255, 'x'), "Untitled"), longStem);

    writePatch("Old.tidewake", 0.5f);
    controller->openPatchFile(file("Old.tidewake"));
    controller->setVariable(view(), "patch.name", "Renamed", true);
    std::string suggested;
    drive({[&](WindowDouble& helper) {
        EXPECT_EQ(helper.title(), "Save Tidewake Patch");
        suggested = dialogOf(helper).fileName();
        helper.key(Key::escape);
    }});
    perform("savePatch");
    EXPECT_EQ(suggested, "Renamed");
    EXPECT_EQ(patchName(), "Renamed") << "a cancelled save changes nothing";
}

TEST_F(PatchBrowsing, SavingWritesHeaderlessCrLfTextThatOpensAgain) {
    perform("initPatch");
    controller->setVariable(view(), "params.wetMix", "0.375", false);
    controller->setVariable(view(), "patch.name", "Night Drive", true);
    saveBrowserDirectories("TidewakePatches", Path(), Path::parse(temp.str()));
    drive({[](WindowDouble& helper) {
        EXPECT_EQ(dialogOf(helper).fileName(), "Night Drive");
        for (int i = 0; i < 5; ++i) helper.key(Key::backspace);
        helper.type(U"Ride");
        helper.key(Key::enter);
    }});
    const std::size_t undo = controller->undoSize();
    perform("savePatch");
    const std::string text = temp.read("Night Ride.tidewake");
    ASSERT_FALSE(text.empty());
    EXPECT_NE(text.find("\r\n"), std::string::npos);
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1))
        EXPECT_EQ(text[at - 1], '\r');
    for (const char* label : {"name", "path", "modified"})
        EXPECT_EQ(text.find(std::string(label) + ":"), std::string::npos) << label;
    EXPECT_EQ(patchName(), "Night Ride") << "the file names the patch";
    EXPECT_EQ(controller->getVariable(view(), "patch.modified"), "false");
    EXPECT_EQ(controller->undoSize(), undo) << "saving is no undoable step";
    EXPECT_TRUE(loadBrowserDirectories("TidewakePatches").save.equals(Path::parse(temp.str())));

    // Saving over the file asks first; No goes back to the dialog, Yes replaces it.
    controller->setVariable(view(), "params.wetMix", "0.75", false);
    std::vector<std::string> asked;
    auto answer = [&](AlertButton button) {
        return [&asked, button](WindowDouble& helper) {
            auto& box = dynamic_cast<MessageBox&>(helper.client());
            asked.push_back(box.lines().front());
            const IntRect r = box.buttonRect(button);
            helper.mouseDown(r.left + 3, r.top + 3);
            helper.mouseUp(r.left + 3, r.top + 3);
        };
    };
    drive({[](WindowDouble& helper) { helper.key(Key::enter); }, answer(AlertButton::no),
           [](WindowDouble& helper) { helper.key(Key::escape); }});
    perform("savePatch");
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].rfind("Night Ride.tidewake already exists.", 0), 0u) << asked[0];
    EXPECT_EQ(temp.read("Night Ride.tidewake"), text);
    drive({[](WindowDouble& helper) { helper.key(Key::enter); }, answer(AlertButton::yes)});
    perform("savePatch");
    EXPECT_EQ(asked.size(), 2u);
    EXPECT_NE(temp.read("Night Ride.tidewake"), text);

    perform("initPatch");
    controller->openPatchFile(file("Night Ride.tidewake"));
    EXPECT_FLOAT_EQ(wetMix(), 0.75f);
    EXPECT_EQ(patchName(), "Night Ride");
    EXPECT_FALSE(enabled("switchPatch", "{ step: 1, wrap: true }")) << "the only file of its folder";
}

TEST_F(PatchBrowsing, AMissingFactoryFolderLeavesTheDialogWherePickStartFolderEnds) {
    FileBrowserSetup setup = controller->browserSetup();
    setup.factoryFolder = file("no factory/");
    EXPECT_TRUE(PatchBrowser::pickStartFolder(setup, Path(), Path()).empty());
    EXPECT_TRUE(PatchBrowser::pickStartFolder(setup, Path(), file("gone/")).empty());
    temp.write("here/x.tidewake", "");
    EXPECT_TRUE(PatchBrowser::pickStartFolder(setup, file("here/x.tidewake"), Path()).equals(file("here/")));
    EXPECT_TRUE(PatchBrowser::pickStartFolder(setup, file("gone/x.tidewake"), file("here/")).equals(file("here/")));
    setup.factoryFolder = file("here/");
    EXPECT_TRUE(PatchBrowser::pickStartFolder(setup, Path(), Path()).equals(file("here/")));

    // The test's own factory folder is missing: the dialog opens in none, and its
    // factory button leads nowhere, without an error.
    ASSERT_NE(controller->browserSetup().factoryFolder.kind(), Path::Kind::folder);
    drive({[](WindowDouble& helper) {
               FileDialog& dialog = dialogOf(helper);
               EXPECT_TRUE(dialog.folder().empty());
               const IntRect factory = dialog.controlRect(11223);
               helper.mouseDown(factory.left + 3, factory.top + 3);
               helper.mouseUp(factory.left + 3, factory.top + 3);
               EXPECT_TRUE(dialog.folder().empty());
               const IntRect user = dialog.controlRect(11224);
               helper.mouseDown(user.left + 3, user.top + 3);
               helper.mouseUp(user.left + 3, user.top + 3);
           },
           [this](WindowDouble& helper) {
               EXPECT_TRUE(dialogOf(helper).folder().equals(controller->browserSetup().userFolder));
               helper.key(Key::escape);
           }});
    perform("openPatch");
}

}  // namespace

TEST_F(PatchBrowsing, TheArrowsStepOverAFileThatCannotBeReadAndSayWhichOnce) {
    writePatch("a.tidewake", 0.25f);
    temp.write("b.tidewake", "not a patch at all");
    writePatch("c.tidewake", 0.75f);
    controller->openPatchFile(file("a.tidewake"));
    try {
        perform("switchPatch", "{ step: 1 }");
        ADD_FAILURE() << "the broken file is said";
    } catch (const Exception& e) {
        EXPECT_EQ(e.message(), "Invalid data format\n" + file("b.tidewake").toString());
    }
    EXPECT_FLOAT_EQ(wetMix(), 0.75f) << "stepped over to the next file";
    perform("switchPatch", "{ step: -1 }");
    EXPECT_FLOAT_EQ(wetMix(), 0.25f) << "over it again, without a word this time";

    // Opening it names it, whatever the fault.
    try {
        controller->openPatchFile(file("b.tidewake"));
        ADD_FAILURE();
    } catch (const Exception& e) {
        EXPECT_EQ(e.message(), "Invalid data format\n" + file("b.tidewake").toString());
    }
    try {
        controller->openPatchFile(file("gone.tidewake"));
        ADD_FAILURE();
    } catch (const Exception& e) {
        EXPECT_EQ(e.message(), "Error opening file\n" + file("gone.tidewake").toString());
    }
}

TEST_F(PatchBrowsing, ASaveStartsInTheUserFolderWhenItsFolderTakesNoFilesAndAFailedSaveNamesTheFile) {
    // A folder in which no file can be made, root or not, as a system-wide factory folder.
    const Path closed = Path::parse("/proc/self/fdinfo/");
    ASSERT_FALSE(closed.canCreateIn());
    EXPECT_TRUE(file("").canCreateIn());
    saveBrowserDirectories("TidewakePatches", Path(), closed);
    Path started;
    drive({[&](WindowDouble& helper) {
        started = dialogOf(helper).folder();
        helper.key(Key::escape);
    }});
    perform("savePatch");
    EXPECT_TRUE(started.equals(controller->saveSetup().userFolder)) << started.toString();

    // The folder goes away while the dialog shows it: the save fails and says where.
    temp.write("gone/x.tidewake", "");
    drive({[&](WindowDouble& helper) {
        FileDialog& dialog = dialogOf(helper);
        ASSERT_TRUE(dialog.setFolder(file("gone/")));
        std::filesystem::remove_all(file("gone/").toString());
        dialog.setFileName("Night");
        helper.key(Key::enter);
    }});
    try {
        perform("savePatch");
        ADD_FAILURE() << "the save fails";
    } catch (const Exception& e) {
        EXPECT_EQ(e.message(), "Error creating temporary file\n" + file("gone/Night.tidewake").toString());
    }
}

TEST_F(PatchBrowsing, ASaveDialogSaysWhyItRefusesAName) {
    std::vector<std::string> told;
    drive({[](WindowDouble& helper) {
               dialogOf(helper).setFileName("..");
               helper.key(Key::enter);
           },
           [&](WindowDouble& helper) {
               told = dynamic_cast<MessageBox&>(helper.client()).lines();
               helper.key(Key::enter);
           },
           [](WindowDouble& helper) {
               ASSERT_FALSE(dialogOf(helper).closed()) << "still open for another name";
               helper.key(Key::escape);
           }});
    perform("savePatch");
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told[0], "A file name cannot begin with \".\".");
}
