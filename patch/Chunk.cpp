#include "patch/Chunk.h"

#include "patch/Bytes.h"
#include "patch/ModelFactory.h"
#include "patch/ZLib.h"

#include <algorithm>

namespace tw {

namespace {

const char* const endOfData = "End of file error";

}  // namespace

std::string chunkOf(const ModelDescriptor& descriptor, std::string_view payload, bool isPreset) {
    std::string out;
    appendLittleEndian(out, isPreset ? chunk::programMagic : chunk::bankMagic);
    appendLittleEndian(out, chunk::platformTag);
    appendLittleEndian(out, static_cast<std::uint32_t>(descriptor.uniqueId));
    appendLittleEndian(out, descriptor.version);
    appendLittleEndian(out, static_cast<std::uint32_t>(payload.size()));
    deflateInto(out, payload);
    return out;
}

std::string saveChunk(ModelServices& model, bool isPreset) {
    const ModelFactory& factory = model.getFactory();
    std::string payload;
    if (isPreset) {
        PatchHandle patch = model.acquirePatch(model.getCurrentProgram());
        appendLengthAndBytes(payload, factory.patchToText(**patch, false));
    } else {
        int count = factory.getDescriptor().programCount;
        appendLittleEndian(payload, static_cast<std::uint32_t>(count));
        for (int program = 0; program < count; ++program) {
            PatchHandle patch = model.acquirePatch(program);
            appendLengthAndBytes(payload, factory.patchToText(**patch, false));
        }
        payload.append(chunk::licenceRecordSize, '\0');
    }
    return chunkOf(factory.getDescriptor(), payload, isPreset);
}

std::string chunkPayload(const ModelDescriptor& descriptor, std::string_view data, bool isPreset) {
    ByteReader in(data, endOfData);
    if (in.littleEndian() != (isPreset ? chunk::programMagic : chunk::bankMagic))
        throw FormatException("Invalid data format (unsupported version?)");
    in.take(4);  // the platform tag of the build that wrote it
    if (in.littleEndian() != static_cast<std::uint32_t>(descriptor.uniqueId))
        throw FormatException("Invalid data format (invalid four char id)");
    in.take(4);  // the version of the writer
    std::uint32_t length = in.littleEndian();
    if (length < chunk::minInflatedLength || length > chunk::maxInflatedLength)
        throw FormatException("Invalid data format (insane inflated length)");
    return inflateExactly(in.rest(), length);
}

void loadChunk(ModelServices& model, std::string_view data, bool isPreset) {
    const ModelFactory& factory = model.getFactory();
    const ModelDescriptor& descriptor = factory.getDescriptor();
    std::string payload = chunkPayload(descriptor, data, isPreset);
    ByteReader in(payload, endOfData);
    if (isPreset) {
        model.setPatch(model.getCurrentProgram(), *factory.patchFromText(in.lengthAndBytes()));
        return;
    }
    std::int32_t count = static_cast<std::int32_t>(in.littleEndian());
    for (std::int32_t program = 0; program < std::min(count, descriptor.programCount); ++program)
        model.setPatch(program, *factory.patchFromText(in.lengthAndBytes()));
    // What follows belongs to the licence gate, which this build does not have.
}

}  // namespace tw
