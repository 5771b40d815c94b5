#include "editor/FileBrowserSetup.h"

namespace tw {

FileBrowserSetup makeBrowserSetup(const ModelDescriptor& descriptor, const StandardFolders& folders,
                                  const Translator& translate) {
    FileBrowserSetup setup;
    setup.name = descriptor.modelName + "Patches";
    setup.factoryFolder = folders.patchesDir.join(translate(descriptor.publicName + " Patches") + "/");
    if (!folders.userRoot.empty()) {
        setup.userFolder = folders.userRoot.join(translate(descriptor.publicName + " User Patches") + "/");
        if (!descriptor.identifier.empty()) {
            try {
                setup.userFolder.createFolder();
            } catch (const std::exception&) {
                // The jump button then leads nowhere; saving elsewhere still works.
            }
        }
    }
    setup.fileTypes.push_back(
        FileType{translate(descriptor.publicName + " Patch"), descriptor.identifier, descriptor.modelCode});
    setup.factoryLabel = translate("Go to Factory Patches");
    setup.userLabel = translate("Go to User Patches");
    setup.title = translate("Open " + descriptor.publicName + " Patch");
    setup.allFilesLabel = translate("All Files");
    return setup;
}

FileBrowserSetup makeSaveSetup(const FileBrowserSetup& browserSetup, const ModelDescriptor& descriptor,
                               const Translator& translate) {
    FileBrowserSetup setup = browserSetup;
    setup.title = translate("Save " + descriptor.publicName + " Patch");
    return setup;
}

}  // namespace tw
