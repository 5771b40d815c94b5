#include "editor/BrowserDirectories.h"

#include "platform/Exception.h"
#include "platform/SharedStore.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"

namespace tw {

namespace {

constexpr const char* entryKey = "BrowserDirectories";

Path pathOf(const std::string& raw) {
    try {
        return Path::parse(unquote(raw));
    } catch (const Exception&) {
        return Path();
    }
}

}  // namespace

BrowserFolders loadBrowserDirectories(const std::string& name, const Path& storeFile) {
    try {
        SharedStore store(storeFile);
        std::optional<std::string> entry = store.get(entryKey);
        if (!entry) return {};
        SpecList folders = parseList(lookup(parseMap(*entry), name));
        folders.resize(2);
        return {pathOf(folders[0]), pathOf(folders[1])};
    } catch (const Exception&) {
        return {};
    }
}

void saveBrowserDirectories(const std::string& name, const Path& openFolder, const Path& saveFolder,
                            const Path& storeFile) {
    SharedStore store(storeFile);
    SpecMap entries;
    if (std::optional<std::string> entry = store.get(entryKey)) entries = parseMap(*entry);
    entries.insert_or_assign(name, "{ " + quote(openFolder.toString()) + ", " + quote(saveFolder.toString()) + " }");
    store.set(entryKey, formatMap(entries));
    store.commit();
}

}  // namespace tw
