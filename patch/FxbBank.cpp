#include "patch/FxbBank.h"

#include "patch/Bytes.h"

namespace tw {

std::string_view bankChunkOfFxb(const ModelDescriptor& descriptor, std::string_view data) {
    ByteReader in(data, "Unexpected end of file in FXB data");
    auto check = [](bool ok) {
        if (!ok) throw FormatException("Invalid format of FXB data");
    };
    check(in.bigEndian() == fxb::chunkMagic);
    check(std::uint64_t(in.bigEndian()) + 8 <= data.size());
    check(in.bigEndian() == fxb::bankMagic);
    std::uint32_t version = in.bigEndian();
    check(version == 1 || version == 2);
    check(in.bigEndian() == static_cast<std::uint32_t>(descriptor.uniqueId));
    in.take(4 + 4 + 128);  // fxVersion, numPrograms (not to be trusted) and the reserved bytes
    return in.take(in.bigEndian());
}

std::string fxbOfBankChunk(const ModelDescriptor& descriptor, std::string_view bankChunk, int programCount) {
    std::string out;
    appendBigEndian(out, fxb::chunkMagic);
    appendBigEndian(out, static_cast<std::uint32_t>(fxb::headerSize + bankChunk.size() - 8));
    appendBigEndian(out, fxb::bankMagic);
    appendBigEndian(out, 2);
    appendBigEndian(out, static_cast<std::uint32_t>(descriptor.uniqueId));
    appendBigEndian(out, descriptor.version);
    appendBigEndian(out, static_cast<std::uint32_t>(programCount));
    out.append(128, '\0');
    appendBigEndian(out, static_cast<std::uint32_t>(bankChunk.size()));
    out += bankChunk;
    return out;
}

}  // namespace tw
