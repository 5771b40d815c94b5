// The places the product finds on disk: the folder of its own binary, beside which
// its resource folder and factory patches stand.
#pragma once

#include <string>

namespace tw {

// Folder of the file that holds this code (Tidewake.so, or a tool or test executable
// when they link the code statically), ending in '/'.
std::string binaryDir();

}  // namespace tw
