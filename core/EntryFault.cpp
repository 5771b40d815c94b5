#include "core/EntryFault.h"

#include <cstdio>
#include <exception>
#include <mutex>
#include <set>
#include <string>

namespace tw {

void reportEntryFault(std::string_view plugin, std::string_view entry) {
    std::string message = "unknown exception";
    try {
        throw;
    } catch (const std::exception& e) {
        message = e.what();
    } catch (...) {
    }
    static std::mutex lock;
    static std::set<std::string> said;
    std::string kind = std::string(entry) + '\n' + message;
    {
        std::lock_guard<std::mutex> guard(lock);
        if (!said.insert(kind).second) return;
    }
    std::fprintf(stderr, "%.*s: %.*s failed: %s\n", static_cast<int>(plugin.size()), plugin.data(),
                 static_cast<int>(entry.size()), entry.data(), message.c_str());
}

}  // namespace tw
