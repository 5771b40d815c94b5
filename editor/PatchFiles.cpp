// The controller's patch files: opening, saving and stepping through the patches of a
// folder, the patch menu, and the file dialogs they run.
#include "editor/ModelController.h"

#include "cushy/CushyView.h"
#include "editor/BrowserDirectories.h"
#include "graphics/ResourceManager.h"
#include "editor/FileDialog.h"
#include "cushy/MessageBox.h"
#include "patch/ModelFactory.h"
#include "patch/Patch.h"
#include "platform/Exception.h"
#include "platform/FileObject.h"
#include "platform/SafeFileWriter.h"
#include "speclang/SpecLanguage.h"

namespace tw {

namespace {

// A message that names its file: the message on the first line, as the string table knows
// it, and the file on the next.
[[noreturn]] void rethrowNaming(const Exception& fault, const Path& file) {
    throw Exception(fault.message() + "\n" + file.toString());
}

}  // namespace

void ModelController::openPatchFile(const Path& path) {
    std::unique_ptr<Patch> patch;
    try {
        patch = factory_.patchFromText(readWholeFile(path));
    } catch (const Exception& e) {
        rethrowNaming(e, path);
    }
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
    // A file that cannot be read is stepped over, or the arrow would try it again at every
    // press; the first one met is said, once in the editor's life.
    std::string skipped;
    const std::size_t files = browser_.listFolder(next.parent(), true).size();
    for (std::size_t tries = 0; !next.empty() && tries <= files; ++tries) {
        try {
            openPatchFile(next);
            break;
        } catch (const Exception& e) {
            if (skipped.empty() && unreadableSaid_.insert(next.toString()).second) skipped = e.message();
        }
        next = browser_.nextPatchFile(next, forward, wrap, true);
        if (!next.empty() && next.equals(cachedPatch().getPath())) next = Path();
    }
    if (!skipped.empty()) throw Exception(skipped);
    return !next.empty();
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
    dialog.slashRefusal = translate(dialog.slashRefusal);
    dialog.dotRefusal = translate(dialog.dotRefusal);
    dialog.lengthRefusal = translate(dialog.lengthRefusal);
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
    Path start = PatchBrowser::pickStartFolder(saveSetup_, path, remembered.save);
    // A system-wide install's factory folder takes no files: a save starts where it can land.
    if (start.empty() || !start.canCreateIn()) {
        try {
            saveSetup_.userFolder.createFolder();
            start = saveSetup_.userFolder;
        } catch (const Exception&) {
        }
    }
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
    try {
        SafeFileWriter writer(chosen);
        writer.write(0, text.data(), text.size());
        writer.commit();
    } catch (const Exception& e) {
        rethrowNaming(e, chosen);
    }
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

}  // namespace tw
