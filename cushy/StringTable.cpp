#include "cushy/StringTable.h"

#include "graphics/ResourceManager.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"

namespace tw {

void StringTable::read(const std::string& text) {
    const SpecMap map = parseMap(text);
    Mutex::Guard guard(lock_);
    for (const auto& [key, value] : map) entries_[key] = unquoteWide(value);
}

void StringTable::load(ResourceManager& resources, std::string_view modelName) {
    const std::vector<std::uint8_t> bytes = resources.loadBinary("txt", std::string(modelName) + "_strings");
    read(std::string(bytes.begin(), bytes.end()));
}

std::string StringTable::translate(const std::string& text) const {
    Mutex::Guard guard(lock_);
    const auto found = entries_.find(text);
    return found == entries_.end() ? text : toUtf8(found->second);
}

}  // namespace tw
