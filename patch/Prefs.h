// The preference record of one product: a small map in the shared store under
// "<modelName>Prefs", as spec text. A Prefs lives for one operation only and writes back
// when something changed, so that instances running side by side never overwrite each
// other's keys with long-held copies. The version check keeps its state here.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

#include "patch/ModelDescriptor.h"
#include "platform/Folders.h"
#include "platform/Path.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class Prefs {
public:
    // Reads the record; a store that can't be read leaves the map empty and dirty, so
    // that the record is written afresh when it can be.
    explicit Prefs(const ModelDescriptor& descriptor, Path storeFile = sharedStoreFile());
    // Writes back when dirty; a failure to write is dropped, as preferences are a nicety.
    ~Prefs();
    Prefs(const Prefs&) = delete;
    Prefs& operator=(const Prefs&) = delete;

    // The raw spec value of a key, or nothing.
    std::optional<std::string> get(std::string_view key) const;
    void set(std::string_view key, std::string rawValue);
    void remove(std::string_view key);
    bool isDirty() const { return dirty_; }
    // Writes the record now when dirty; raises what the store raises.
    void save();

private:
    std::string key_;
    Path storeFile_;
    SpecMap entries_;
    bool dirty_ = false;
};

// The version check's keys: `vcon` (enabled, absent counts as on), `lavc` (the time of
// the last check, "0x" and hexadecimal seconds since the epoch) and `nxvc` (dropped when
// the check is turned on or off).
bool isCheckEnabled(const Prefs& prefs);
// Off: never. No usable `lavc`: now. Else when 3 or more whole days lie between `now`
// and `lavc`, in either direction, so that a clock set back also starts a check.
bool isCheckDue(const Prefs& prefs, std::time_t now);
void markChecked(Prefs& prefs, std::time_t now);
// Flips `vcon`, drops `nxvc`, and answers the new state.
bool toggleCheck(Prefs& prefs);

}  // namespace tw
