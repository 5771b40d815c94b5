#include "platform/Folders.h"

#include <dlfcn.h>

namespace tw {

std::string binaryDir() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&binaryDir), &info) == 0 || info.dli_fname == nullptr)
        return "./";
    std::string file = info.dli_fname;
    std::string::size_type slash = file.rfind('/');
    if (slash == std::string::npos) return "./";
    return file.substr(0, slash + 1);
}

}  // namespace tw
