// The user-dirs.dirs reader: any text gives an absolute folder or nothing.
#include "platform/Folders.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    tw::Path folder = tw::documentsFolderFromUserDirs(text, "/home/user/");
    if (!folder.empty() && (!folder.isAbsolute() || !folder.isFolder())) std::abort();
    return 0;
}
