// The places the product finds on disk: the folder of its own binary, beside which its
// resource folder and factory patches stand; the user's documents, where the user's own
// patches go; and the per-user configuration folder that holds the shared store.
#pragma once

#include "platform/Path.h"

#include <string>
#include <string_view>

namespace tw {

// Folder of the file that holds this code (Tidewake.so, or a tool or test executable
// when they link the code statically), ending in '/'.
std::string binaryDir();

// The standard folders of a product, computed in this order.
struct StandardFolders {
    Path binaryDir;         // the folder of the library's own file
    Path patchesDir;        // where the factory patch folder stands: beside the library
    Path userRoot;          // "<documents>/Marlin Works/", created; empty when it can't be
    Path documentationDir;  // the same as patchesDir
    Path supportDir;        // the same as patchesDir
};
StandardFolders standardFolders();

// The folder of the factory patch files, "<publicName> Patches/" beside the library.
Path factoryPatchesFolder(std::string_view publicName);

// The user's home folder: $HOME, else the password database's entry, ending in '/'.
std::string homeFolder();

// The documents folder: $XDG_DOCUMENTS_DIR, else the one named in user-dirs.dirs of the
// configuration folder, else "~/Documents/".
Path documentsFolder();

// The XDG_DOCUMENTS_DIR entry of a user-dirs.dirs text, with "$HOME" replaced by `home`
// (which ends in '/'); empty when the text names none.
Path documentsFolderFromUserDirs(std::string_view text, const std::string& home);

// $XDG_CONFIG_HOME, else "~/.config/", ending in '/'.
Path configFolder();

// The file of the shared store: "<config>/Marlin Works/MarlinWorks.store".
Path sharedStoreFile();

}  // namespace tw
