// The FXB container of an opaque-chunk bank, in which the factory bank is compiled into
// the library: a big-endian header of 160 bytes, then a bank chunk.
#pragma once

#include "patch/ModelDescriptor.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tw {

namespace fxb {

constexpr std::uint32_t chunkMagic = 0x43636E4B;  // "CcnK"
constexpr std::uint32_t bankMagic = 0x46424368;   // "FBCh"
constexpr std::size_t headerSize = 160;

}  // namespace fxb

// The bank chunk inside an FXB, after the checks of its header: FormatException
// "Invalid format of FXB data" for a wrong magic, size, version or identifier,
// EOFException "Unexpected end of file in FXB data" for one that ends early.
std::string_view bankChunkOfFxb(const ModelDescriptor& descriptor, std::string_view data);

// An FXB around a bank chunk, as a host writes one; our build writes the factory bank so.
std::string fxbOfBankChunk(const ModelDescriptor& descriptor, std::string_view bankChunk, int programCount);

}  // namespace tw
