#include "vector/KetchVariables.h"

namespace tw::Ketch {

bool VariableMap::declare(std::string_view name, std::string_view value) {
    return map_.emplace(std::string(name), std::string(value)).second;
}

bool VariableMap::assign(std::string_view name, std::string_view value) {
    const auto it = map_.find(name);
    if (it == map_.end()) {
        return false;
    }
    it->second.assign(value);
    return true;
}

bool VariableMap::lookup(std::string_view name, std::string& value) {
    const auto it = map_.find(name);
    if (it == map_.end()) {
        return false;
    }
    value = it->second;
    return true;
}

}  // namespace tw::Ketch
