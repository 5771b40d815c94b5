// The stored form of a patch's path. A path inside the factory patch folder is stored
// relative to it and read back against the factory folder of the machine that reads it,
// so that a factory program knows its file, and its neighbours, wherever it is installed.
// Any other path is stored as it stands.
#pragma once

#include "patch/ModelDescriptor.h"
#include "platform/Path.h"

#include <string>

namespace tw {

std::string storedPatchPath(const ModelDescriptor& descriptor, const Path& path);
// Raises "Error interpreting path : " for text that cannot be a path.
Path interpretPatchPath(const ModelDescriptor& descriptor, const std::string& stored);

}  // namespace tw
