// What the open and save dialogs of a product's patches need to know: the key their
// remembered folders are stored under, the factory and the user patch folders the two
// jump buttons lead to, the patch file type and the dialogs' translated texts. The
// controller builds both when the editor opens.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "patch/ModelDescriptor.h"
#include "platform/Folders.h"
#include "platform/Path.h"

namespace tw {

struct FileType {
    std::string description;  // translated
    std::string extension;    // without the dot
    std::int32_t code;        // four-character type, for platforms with type codes
};

struct FileBrowserSetup {
    std::string name;      // "<modelName>Patches": the key of the remembered folders
    Path factoryFolder;    // "<publicName> Patches/" beside the library
    Path userFolder;       // "<publicName> User Patches/" in the user root; empty without one
    std::vector<FileType> fileTypes;
    std::string factoryLabel;
    std::string userLabel;
    std::string title;
    std::string allFilesLabel;
};

// The controls of the product's dialog script whose labels and folders the setup gives.
constexpr int factoryButtonId = 11223;
constexpr int userButtonId = 11224;

using Translator = std::function<std::string(const std::string&)>;

// The open dialog's setup. Creates the user patch folder when the product has patch
// files; a folder that can't be made is left to the dialog, which then can't go there.
FileBrowserSetup makeBrowserSetup(const ModelDescriptor& descriptor, const StandardFolders& folders,
                                  const Translator& translate);
// The save dialog's: the same with its own title.
FileBrowserSetup makeSaveSetup(const FileBrowserSetup& browserSetup, const ModelDescriptor& descriptor,
                               const Translator& translate);

}  // namespace tw
