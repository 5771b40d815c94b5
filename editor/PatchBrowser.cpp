#include "editor/PatchBrowser.h"

#include <algorithm>

#include "patch/Patch.h"

namespace tw {

namespace {

bool isFolder(const Path& path) {
    try {
        return !path.empty() && path.kind() == Path::Kind::folder;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

const std::vector<Path>& PatchBrowser::listFolder(const Path& folder, bool useCache) {
    if (useCache && !folderPath_.empty() && folder.equals(folderPath_)) return folderFiles_;
    folderFiles_.clear();
    folderPath_ = folder;
    folderFiles_ = folder.list(extension_);
    std::sort(folderFiles_.begin(), folderFiles_.end(), [](const Path& a, const Path& b) { return a.compare(b) < 0; });
    return folderFiles_;
}

void PatchBrowser::forget() {
    folderPath_ = Path();
    folderFiles_.clear();
}

Path PatchBrowser::nextPatchFile(const Path& current, bool forward, bool wrap, bool useCache) {
    if (current.empty()) return {};
    const std::vector<Path>& files = listFolder(current.parent(), useCache);
    // The same text first: the listing made the path that was opened, and the locale's
    // comparison of every name costs far more than this look-up on each refresh.
    auto found = std::find_if(files.begin(), files.end(), [&](const Path& p) { return p.toString() == current.toString(); });
    if (found == files.end())
        found = std::find_if(files.begin(), files.end(), [&](const Path& p) { return p.equals(current); });
    if (found == files.end()) return {};
    const auto index = std::size_t(found - files.begin());
    const std::size_t count = files.size();
    if (wrap) {
        if (count == 1) return {};
        return files[forward ? (index + 1) % count : (index + count - 1) % count];
    }
    if (forward) return index + 1 < count ? files[index + 1] : Path();
    return index > 0 ? files[index - 1] : Path();
}

Path PatchBrowser::pickStartFolder(const FileBrowserSetup& setup, const Path& current, const Path& remembered) {
    Path folder = current;
    if (!folder.empty() && !folder.isFolder()) folder = folder.parent();
    if (isFolder(folder)) return folder;
    if (isFolder(remembered)) return remembered;
    if (isFolder(setup.factoryFolder)) return setup.factoryFolder;
    return {};
}

std::string PatchBrowser::saveSuggestion(const Path& path, const std::string& name, const std::string& untitled) {
    if (!path.empty()) {
        const std::string stem = path.stem();
        return stem.substr(0, Patch::maxNameLength) == name ? stem : name;
    }
    return name.empty() ? untitled : name;
}

PatchBrowser::Menu PatchBrowser::patchMenu(const std::vector<Path>& files, const Path& current,
                                           const std::string& browseLabel, const std::string& noneLabel) {
    Menu menu;
    menu.items.push_back(MenuItem{browseLabel});
    menu.ids.push_back(browseId);
    menu.items.push_back(MenuItem{{}, true});
    menu.ids.push_back(0);
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::string caption;
        for (char c : files[i].stem()) {
            caption += c;
            if (c == '&') caption += '&';
        }
        menu.items.push_back(MenuItem{caption, false, true, !current.empty() && files[i].equals(current)});
        menu.ids.push_back(firstFileId + int(i));
    }
    if (files.empty()) {
        menu.items.push_back(MenuItem{noneLabel, false, false});
        menu.ids.push_back(0);
    }
    return menu;
}

}  // namespace tw
