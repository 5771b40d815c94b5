#include "platform/Resources.h"

#include "platform/Ascii.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <mutex>
#include <set>
#include <sys/stat.h>

namespace tw {

namespace {

bool isRegularFile(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::optional<std::vector<std::uint8_t>> readWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

const EmbeddedResource* findEmbeddedResource(std::string_view type, std::string_view name) {
    for (const EmbeddedResource& r : embeddedResources())
        if (equalNoCase(r.type, type) && equalNoCase(r.name, name)) return &r;
    return nullptr;
}

std::string getResourceFolder(std::string_view productName, const std::string& binaryFolder) {
    std::string pointer = binaryFolder + std::string(productName) + " Resources Path.txt";
    if (isRegularFile(pointer)) {
        if (auto text = readWholeFile(pointer)) {
            std::string folder;
            for (std::uint8_t c : *text)
                if (c != '\n' && c != '\r') folder.push_back(static_cast<char>(c));
            if (!folder.empty() && folder.back() != '/') folder.push_back('/');
            return folder;
        }
    }
    return binaryFolder + std::string(productName) + " Resources/";
}

std::optional<std::string> overridingFile(const std::string& resourceFolder, std::string_view type,
                                          std::string_view name) {
    if (resourceFolder.empty()) return std::nullopt;
    std::string file = resourceFolder + std::string(name) + "." + std::string(type);
    if (!isRegularFile(file)) return std::nullopt;
    return file;
}

void reportOverrideFault(std::string_view productName, const std::string& file, std::string_view fault) {
    static std::mutex lock;
    static std::set<std::string> told;
    std::lock_guard<std::mutex> guard(lock);
    if (!told.insert(file).second) return;
    std::fprintf(stderr, "%.*s: the resource file \"%s\" replaces a built-in one but could not be used: %.*s\n",
                 int(productName.size()), productName.data(), file.c_str(), int(fault.size()), fault.data());
}

std::optional<std::vector<std::uint8_t>> loadResource(const std::string& resourceFolder,
                                                      std::string_view type, std::string_view name) {
    if (auto file = overridingFile(resourceFolder, type, name))
        if (auto bytes = readWholeFile(*file)) return bytes;
    if (const EmbeddedResource* r = findEmbeddedResource(type, name))
        return std::vector<std::uint8_t>(r->data, r->data + r->size);
    return std::nullopt;
}

}  // namespace tw
