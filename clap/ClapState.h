// The plug-in's state as a CLAP host keeps it: the VST build's bank chunk, byte for byte,
// followed by the current program, which a VST host keeps beside the chunk itself and a
// CLAP host has no call for. The record behind the chunk is "Prog" and the program as a
// 32-bit little-endian number; the chunk's reader stops at the end of its compressed
// stream, so the VST build reads this state as its chunk too, and this reader takes a bare
// chunk (the program then stays as it is).
#pragma once

#include <string>
#include <string_view>

#include "core/Instance.h"

namespace tw::clap {

inline constexpr std::string_view programRecordMagic = "Prog";
inline constexpr std::size_t programRecordSize = 8;

// Main thread. Raises when the instance can't save.
std::string saveClapState(Instance& instance);
// Main thread. Loads the bank and the program, or raises and leaves the instance as it
// was: the programs read before a fault are put back.
void loadClapState(Instance& instance, std::string_view bytes);

}  // namespace tw::clap
