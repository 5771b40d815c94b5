// Where a frame keeps its variables. All values are text. The interpreter gives each call
// level a VariableMap; a host may give the global frame a source of its own (the vector
// view serves GUI variables this way).
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace tw::Ketch {

class Variables {
public:
    // False if the name exists already.
    virtual bool declare(std::string_view name, std::string_view value) = 0;
    // False if the name is absent.
    virtual bool assign(std::string_view name, std::string_view value) = 0;
    // False if the name is absent; value is then untouched.
    virtual bool lookup(std::string_view name, std::string& value) = 0;
    virtual ~Variables() = default;
};

// The plain implementation: a sorted map from name to value.
class VariableMap final : public Variables {
public:
    bool declare(std::string_view name, std::string_view value) override;
    bool assign(std::string_view name, std::string_view value) override;
    bool lookup(std::string_view name, std::string& value) override;

private:
    std::map<std::string, std::string, std::less<>> map_;
};

}  // namespace tw::Ketch
