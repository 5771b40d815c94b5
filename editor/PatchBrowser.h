// The patch files of one folder as the editor walks them: the sorted listing of the
// current patch's folder with its cache, the neighbour for the previous and next patch,
// the folder a dialog starts in, the name the save dialog suggests and the patch menu's
// items. The controller owns one; all of it runs on the user-interface thread.
#pragma once

#include <string>
#include <vector>

#include "cushy/PopupMenu.h"
#include "editor/FileBrowserSetup.h"
#include "platform/Path.h"

namespace tw {

class PatchBrowser {
public:
    // Lists files with the product's patch extension.
    explicit PatchBrowser(std::string extension) : extension_(std::move(extension)) {}

    // The patch files of the folder, sorted by the paths' order (which ignores case).
    // With `useCache`, a listing of the same folder made before is answered again.
    const std::vector<Path>& listFolder(const Path& folder, bool useCache);
    // The file before or after `current` in its folder; with `wrap` the ends meet, except
    // in a folder of one file. Empty for no path, a file not in the listing, or no such file.
    Path nextPatchFile(const Path& current, bool forward, bool wrap, bool useCache);
    // Forgets the cached listing: its folder changed.
    void forget();

    // The folder of `current` when it exists, else `remembered`, else the factory folder,
    // else nothing.
    static Path pickStartFolder(const FileBrowserSetup& setup, const Path& current, const Path& remembered);
    // The file name the save dialog offers: the file's own stem, unless the patch was
    // renamed since (its name differs from the stem cut to a patch name's length); the
    // name without a file; `untitled` without a name either.
    static std::string saveSuggestion(const Path& path, const std::string& name, const std::string& untitled);

    // The patch menu: "Browse" first and a separator, then each file's stem (its '&'
    // doubled, the current one checked), or one greyed `none` item for an empty folder.
    static constexpr int browseId = 100;
    static constexpr int firstFileId = 1000;
    struct Menu {
        std::vector<MenuItem> items;
        std::vector<int> ids;  // per item; 0 for the separator and the greyed item
    };
    static Menu patchMenu(const std::vector<Path>& files, const Path& current, const std::string& browseLabel,
                          const std::string& noneLabel);

private:
    std::string extension_;
    Path folderPath_;
    std::vector<Path> folderFiles_;
};

}  // namespace tw
