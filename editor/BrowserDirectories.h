// The folders the open and save dialogs were last used in, per dialog name, shared by
// every product of the family: one entry "BrowserDirectories" in the shared store, a map
// from a dialog's name to a list of two quoted folders, for opening and for saving.
#pragma once

#include <string>
#include <utility>

#include "platform/Folders.h"
#include "platform/Path.h"

namespace tw {

struct BrowserFolders {
    Path open;
    Path save;
};

// Anything missing or unreadable gives empty paths, silently: no memory of folders.
BrowserFolders loadBrowserDirectories(const std::string& name, const Path& storeFile = sharedStoreFile());
// Raises what the store raises.
void saveBrowserDirectories(const std::string& name, const Path& openFolder, const Path& saveFolder,
                            const Path& storeFile = sharedStoreFile());

}  // namespace tw
