#include "cushy/VariableCache.h"

#include "cushy/CushyHost.h"
#include "vector/KetchException.h"

namespace tw {

VariableCache::VariableCache(Ketch::Variables* builtIns, const std::set<std::string, std::less<>>* fixed,
                             CushyHost* host, CushyView* view)
    : builtIns_(builtIns), fixed_(fixed), host_(host), view_(view) {}

bool VariableCache::declare(std::string_view name, std::string_view value) {
    return builtIns_ != nullptr && builtIns_->declare(name, value);
}

bool VariableCache::assign(std::string_view name, std::string_view value) {
    return builtIns_ != nullptr && builtIns_->assign(name, value);
}

bool VariableCache::lookup(std::string_view name, std::string& value) {
    if (builtIns_ != nullptr && builtIns_->lookup(name, value)) return true;
    if (fixed_ != nullptr && fixed_->find(name) == fixed_->end())
        throw Ketch::RunTimeException("Inconsistent variable access");
    if (host_ == nullptr || view_ == nullptr) return false;
    auto found = cache_.find(name);
    if (found == cache_.end())
        found = cache_.emplace(std::string(name), host_->getVariable(*view_, std::string(name))).first;
    value = found->second;
    return true;
}

bool VariableCache::changed() {
    if (host_ == nullptr || view_ == nullptr) return false;
    for (const auto& [name, value] : cache_)
        if (host_->getVariable(*view_, name) != value) return true;
    return false;
}

}  // namespace tw
