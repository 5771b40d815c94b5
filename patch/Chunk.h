// The chunk that a host stores with its project: a bank of all programs or the current
// program alone, as patch texts behind a five-word header and a zlib stream. The same
// reader takes the factory bank out of its FXB container.
#pragma once

#include "patch/ModelDescriptor.h"
#include "patch/ModelServices.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tw {

namespace chunk {

constexpr std::uint32_t bankMagic = 0x714D7939;     // "9yMq"
constexpr std::uint32_t programMagic = 0x8293048A;
constexpr std::uint32_t platformTag = 0x4C783634;   // "46xL"; written, never read
constexpr std::uint32_t minInflatedLength = 4;
constexpr std::uint32_t maxInflatedLength = 0x1400000;
constexpr std::size_t headerSize = 20;
// The licence gate's record behind a bank's texts: zeros here, as this build has none.
constexpr std::size_t licenceRecordSize = 28;

}  // namespace chunk

// The chunk of every program (a bank) or of the current one (`isPreset`).
std::string saveChunk(ModelServices& model, bool isPreset);

// Reads a chunk and publishes its programs one by one; programs published before a
// failure stay. Raises FormatException for a wrong magic, identifier or length,
// QvxZLib::Exception for a damaged stream, EOFException "End of file error" for a
// payload that ends early, and the patch text's own exceptions.
void loadChunk(ModelServices& model, std::string_view data, bool isPreset);

// The payload inside a chunk, after the header checks, inflated to its stated length.
std::string chunkPayload(const ModelDescriptor& descriptor, std::string_view data, bool isPreset);

// Header and deflated payload.
std::string chunkOf(const ModelDescriptor& descriptor, std::string_view payload, bool isPreset);

}  // namespace tw
