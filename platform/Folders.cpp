#include "platform/Folders.h"

#include "platform/FileObject.h"
#include "platform/QvxFiles.h"

#include <climits>
#include <cstdlib>
#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace tw {

namespace {

std::string withSlash(std::string folder) {
    if (folder.empty() || folder.back() != '/') folder.push_back('/');
    return folder;
}

// An absolute folder from the environment, or nothing: relative values are to be
// ignored, as the desktop's own tools do.
const char* absoluteEnvironmentFolder(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? value : nullptr;
}

}  // namespace

std::string binaryDir() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&binaryDir), &info) == 0 || info.dli_fname == nullptr)
        return "./";
    // The loader keeps the name it was given, which may be relative to a former folder.
    char* canonical = ::realpath(info.dli_fname, nullptr);
    std::string file = canonical != nullptr ? canonical : info.dli_fname;
    std::free(canonical);
    std::string::size_type slash = file.rfind('/');
    if (slash == std::string::npos) return "./";
    return file.substr(0, slash + 1);
}

StandardFolders standardFolders() {
    StandardFolders folders;
    folders.binaryDir = Path::parse(binaryDir());
    folders.patchesDir = folders.binaryDir;
    try {
        Path root = documentsFolder().join("Marlin Works/");
        root.createFolder();
        folders.userRoot = root;
    } catch (const QvxFiles::Exception&) {
        // A home without a writable documents folder has no user patches; nothing else
        // depends on it.
    }
    folders.documentationDir = folders.patchesDir;
    folders.supportDir = folders.patchesDir;
    return folders;
}

Path factoryPatchesFolder(std::string_view publicName) {
    return Path::parse(binaryDir()).join(std::string(publicName) + " Patches/");
}

std::string homeFolder() {
    if (const char* home = absoluteEnvironmentFolder("HOME")) return withSlash(home);
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
        found->pw_dir != nullptr && found->pw_dir[0] == '/')
        return withSlash(found->pw_dir);
    return "/";
}

Path documentsFolderFromUserDirs(std::string_view text, const std::string& home) {
    const std::string_view key = "XDG_DOCUMENTS_DIR=\"";
    Path found;
    while (!text.empty()) {
        std::string_view::size_type end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
        if (line.substr(0, key.size()) != key) continue;
        line.remove_prefix(key.size());
        std::string value;
        bool closed = false;
        for (std::size_t i = 0; i < line.size() && !closed; ++i) {
            if (line[i] == '"')
                closed = true;
            else if (line[i] == '\\' && i + 1 < line.size())
                value.push_back(line[++i]);
            else
                value.push_back(line[i]);
        }
        if (!closed) continue;
        if (value.rfind("$HOME", 0) == 0 && (value.size() == 5 || value[5] == '/'))
            value = home + value.substr(value.size() == 5 ? 5 : 6);
        if (value.empty() || value.front() != '/' || value.find('\0') != std::string::npos || value.size() + 1 >= PATH_MAX)
            continue;
        // A documents folder that is the home itself means "no documents folder".
        if (withSlash(value) == home) continue;
        found = Path::parse(withSlash(value));
    }
    return found;
}

Path documentsFolder() {
    std::string home = homeFolder();
    if (const char* documents = absoluteEnvironmentFolder("XDG_DOCUMENTS_DIR"))
        return Path::parse(withSlash(documents));
    try {
        Path named = documentsFolderFromUserDirs(readWholeFile(configFolder().join("user-dirs.dirs")), home);
        if (!named.empty()) return named;
    } catch (const QvxFiles::Exception&) {
        // No user-dirs.dirs: the customary folder.
    }
    return Path::parse(home + "Documents/");
}

Path configFolder() {
    if (const char* config = absoluteEnvironmentFolder("XDG_CONFIG_HOME")) return Path::parse(withSlash(config));
    return Path::parse(homeFolder() + ".config/");
}

Path sharedStoreFile() { return configFolder().join("Marlin Works/MarlinWorks.store"); }

}  // namespace tw
