// The translation table: English texts to the texts shown, read from the text resource
// "<model>_strings" of type txt. One per process, shared by every editor; the host's
// translate looks texts up here and its reload reads the table again.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "platform/Mutex.h"

namespace tw {

class ResourceManager;

class StringTable {
public:
    // Enters every pair of a spec map whose labels are English texts and whose values are
    // quoted translations, replacing earlier entries with the same key.
    void read(const std::string& text);
    // Reads the resource "<modelName>_strings.txt" through the resource manager.
    void load(ResourceManager& resources, std::string_view modelName);

    // The translation as UTF-8, or the text itself when there is none.
    std::string translate(const std::string& text) const;

private:
    mutable Mutex lock_;
    std::map<std::string, std::u16string, std::less<>> entries_;
};

}  // namespace tw
