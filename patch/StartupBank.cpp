#include "patch/StartupBank.h"

#include "patch/Bytes.h"
#include "patch/Chunk.h"
#include "patch/ZLib.h"

namespace tw {

namespace {

const char* const endOfData = "End of file error";

}  // namespace

std::string startupBankKey(const ModelDescriptor& descriptor) { return descriptor.modelName + "StartupBank"; }

bool readStartupBank(const ModelDescriptor& info, const SharedStore& store, std::vector<std::string>& texts,
                     int& currentProgram) {
    std::optional<std::string> blob = store.get(startupBankKey(info));
    return blob && parseStartupBank(info, *blob, texts, currentProgram);
}

bool parseStartupBank(const ModelDescriptor& info, std::string_view blob, std::vector<std::string>& texts,
                      int& currentProgram) {
    ByteReader envelope(blob, endOfData);
    if (envelope.littleEndian() != startupBank::magic) return false;
    std::uint32_t length = envelope.littleEndian();
    if (length < chunk::minInflatedLength || length > chunk::maxInflatedLength)
        throw FormatException("Invalid data format (insane inflated length)");
    std::string payload = inflateExactly(envelope.rest(), length);

    ByteReader in(payload, endOfData);
    if (in.littleEndian() != info.startupBankFormat) return false;
    std::int32_t count = static_cast<std::int32_t>(in.littleEndian());
    std::int32_t current = static_cast<std::int32_t>(in.littleEndian());
    // Every text takes at least its length word: a count beyond that cannot be read.
    if (count < 0 || static_cast<std::size_t>(count) > in.rest().size() / 4) throw EOFException(endOfData);
    std::vector<std::string> read(static_cast<std::size_t>(count));
    for (std::string& text : read) text = std::string(in.lengthAndBytes());
    texts = std::move(read);
    currentProgram = current;
    return true;
}

bool loadStartupPatches(ModelServices& model, int& currentProgram, const Path& storeFile) {
    const ModelFactory& factory = model.getFactory();
    const ModelDescriptor& descriptor = factory.getDescriptor();
    SharedStore store(storeFile, SharedStore::startupLockMilliseconds);
    std::vector<std::string> texts;
    if (!readStartupBank(descriptor, store, texts, currentProgram)) return false;
    for (std::size_t program = 0; program < texts.size() && program < std::size_t(descriptor.programCount); ++program) {
        if (texts[program].empty()) continue;
        try {
            model.setPatch(static_cast<int>(program), *factory.patchFromText(texts[program]));
        } catch (const Exception&) {
            // A text that no longer reads leaves the factory program in place.
        }
    }
    return true;
}

void writeStartupBank(const ModelFactory& model, int currentProgram,
                      const std::vector<std::pair<int, const Patch*>>& changes, const Path& storeFile) {
    const ModelDescriptor& descriptor = model.getDescriptor();
    SharedStore store(storeFile);
    std::vector<std::string> texts;
    try {
        int storedCurrent = 0;
        readStartupBank(descriptor, store, texts, storedCurrent);
    } catch (const Exception&) {
        texts.clear();
    }
    if (texts.size() < std::size_t(descriptor.programCount)) texts.resize(std::size_t(descriptor.programCount));
    for (const auto& [program, patch] : changes)
        if (program >= 0 && std::size_t(program) < texts.size()) texts[std::size_t(program)] = model.patchToText(*patch, false);

    std::string payload;
    appendLittleEndian(payload, descriptor.startupBankFormat);
    appendLittleEndian(payload, static_cast<std::uint32_t>(texts.size()));
    appendLittleEndian(payload, static_cast<std::uint32_t>(currentProgram));
    for (const std::string& text : texts) appendLengthAndBytes(payload, text);

    std::string blob;
    appendLittleEndian(blob, startupBank::magic);
    appendLittleEndian(blob, static_cast<std::uint32_t>(payload.size()));
    deflateInto(blob, payload);
    store.set(startupBankKey(descriptor), std::move(blob));
    store.commit();
}

}  // namespace tw
