// What a host's call into the plug-in raised, said once on stderr. Every format's entry
// points catch everything (nothing may unwind into a host) and hand it here from inside
// their catch block, so that a fault is never swallowed silently, and never repeated
// every audio block either: each kind (the entry and the message) is said once per process.
#pragma once

#include <string_view>

namespace tw {

// Call only from inside a catch block. Any thread.
void reportEntryFault(std::string_view plugin, std::string_view entry);

}  // namespace tw
