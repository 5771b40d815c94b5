// The GUI variables a vector view's Keel program read in its last run, name to value: the
// program's variable source, and what the view compares at refresh to know that it must
// run again. Within one run a variable keeps one value, however long the run lasts.
#pragma once

#include <map>
#include <set>
#include <string>

#include "vector/KetchVariables.h"

namespace tw {

class CushyHost;
class CushyView;

class VariableCache : public Ketch::Variables {
public:
    // `builtIns`: the vector language's own names, asked first (may be null). `fixed`: the
    // only names a run may read, when the view names them; null lets it read any.
    // `host` null: no layout is attached and other names are unknown.
    VariableCache(Ketch::Variables* builtIns, const std::set<std::string, std::less<>>* fixed, CushyHost* host,
                  CushyView* view);

    bool declare(std::string_view name, std::string_view value) override;
    bool assign(std::string_view name, std::string_view value) override;
    // Throws Ketch::RunTimeException "Inconsistent variable access" for a name outside the
    // fixed set.
    bool lookup(std::string_view name, std::string& value) override;

    // Reads every cached name again; true at the first that changed. The cache keeps the
    // old values: the new run starts with clear() and reads afresh.
    bool changed();
    void clear() { cache_.clear(); }
    const std::map<std::string, std::string, std::less<>>& values() const { return cache_; }

private:
    Ketch::Variables* builtIns_;
    const std::set<std::string, std::less<>>* fixed_;
    CushyHost* host_;
    CushyView* view_;
    std::map<std::string, std::string, std::less<>> cache_;
};

}  // namespace tw
