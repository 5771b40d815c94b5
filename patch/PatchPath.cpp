#include "patch/PatchPath.h"

#include "platform/Folders.h"

namespace tw {

std::string storedPatchPath(const ModelDescriptor& descriptor, const Path& path) {
    const std::string& text = path.toString();
    std::string factory = factoryPatchesFolder(descriptor.publicName).toString();
    if (text.size() > factory.size() && text.compare(0, factory.size(), factory) == 0)
        return text.substr(factory.size());
    return text;
}

Path interpretPatchPath(const ModelDescriptor& descriptor, const std::string& stored) {
    Path path = Path::parse(stored);
    if (path.empty() || path.isAbsolute()) return path;
    return factoryPatchesFolder(descriptor.publicName).join(stored);
}

}  // namespace tw
