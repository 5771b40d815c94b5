#include "patch/Prefs.h"

#include "platform/Exception.h"
#include "platform/SharedStore.h"

#include <cstdio>
#include <cstdlib>

namespace tw {

Prefs::Prefs(const ModelDescriptor& descriptor, Path storeFile)
    : key_(descriptor.modelName + "Prefs"), storeFile_(std::move(storeFile)) {
    try {
        SharedStore store(storeFile_);
        if (auto text = store.get(key_)) entries_ = parseMap(*text);
    } catch (const Exception&) {
        dirty_ = true;
    }
}

Prefs::~Prefs() {
    try {
        save();
    } catch (const Exception&) {
    }
}

std::optional<std::string> Prefs::get(std::string_view key) const {
    auto found = entries_.find(key);
    if (found == entries_.end()) return std::nullopt;
    return found->second;
}

void Prefs::set(std::string_view key, std::string rawValue) {
    auto found = entries_.find(key);
    if (found != entries_.end() && found->second == rawValue) return;
    entries_.insert_or_assign(std::string(key), std::move(rawValue));
    dirty_ = true;
}

void Prefs::remove(std::string_view key) {
    auto found = entries_.find(key);
    if (found == entries_.end()) return;
    entries_.erase(found);
    dirty_ = true;
}

void Prefs::save() {
    if (!dirty_) return;
    SharedStore store(storeFile_);
    store.set(key_, formatMap(entries_));
    store.commit();
    dirty_ = false;
}

bool isCheckEnabled(const Prefs& prefs) { return toBool(prefs.get("vcon").value_or(""), true); }

bool isCheckDue(const Prefs& prefs, std::time_t now) {
    if (!isCheckEnabled(prefs)) return false;
    std::optional<std::string> last = prefs.get("lavc");
    if (!last) return true;
    char* end = nullptr;
    long long checked = std::strtoll(last->c_str(), &end, 0);
    if (end == last->c_str() || checked == 0) return true;
    const long long days = (static_cast<long long>(now) - checked) / 86400;
    return days >= 3 || days <= -3;
}

void markChecked(Prefs& prefs, std::time_t now) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(now));
    prefs.set("lavc", text);
}

bool toggleCheck(Prefs& prefs) {
    const bool on = !isCheckEnabled(prefs);
    prefs.set("vcon", on ? "true" : "false");
    prefs.remove("nxvc");
    return on;
}

}  // namespace tw
