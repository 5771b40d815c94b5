// The startup bank: the plug-in's memory, between sessions, of the programs the user
// changed. It stands in the shared store under "<modelName>StartupBank" as patch texts
// behind a magic word and a zlib stream; an unchanged program has an empty text and
// keeps what the factory bank gave it.
#pragma once

#include "patch/ModelFactory.h"
#include "patch/ModelServices.h"
#include "platform/Folders.h"
#include "platform/SharedStore.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tw {

namespace startupBank {

constexpr std::uint32_t magic = 0xA5B65191;

}  // namespace startupBank

std::string startupBankKey(const ModelDescriptor& descriptor);

// The texts and the current program of the stored startup bank. False when the store
// has none, or one of another magic or format; an insane length or a damaged stream
// raise as in a chunk.
bool readStartupBank(const ModelDescriptor& info, const SharedStore& store, std::vector<std::string>& texts,
                     int& currentProgram);

// The same for the stored blob itself.
bool parseStartupBank(const ModelDescriptor& info, std::string_view blob, std::vector<std::string>& texts,
                      int& currentProgram);

// Publishes every stored program that parses over the one the factory bank gave, and
// sets `currentProgram` to the stored one. False when there is no startup bank.
bool loadStartupPatches(ModelServices& model, int& currentProgram, const Path& storeFile = sharedStoreFile());

// Replaces the stored texts of the changed programs and the current program, keeping
// the texts of all others.
void writeStartupBank(const ModelFactory& model, int currentProgram,
                      const std::vector<std::pair<int, const Patch*>>& changes,
                      const Path& storeFile = sharedStoreFile());

}  // namespace tw
