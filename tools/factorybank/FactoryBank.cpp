// Build-time tool: the factory bank. Reads the factory patch texts, names each program
// after its file, and writes the FXB resource that the library loads at start-up and
// the patch files that are installed beside the library. The first text is the init
// patch, which has no file.
//
//   factory-bank <FactoryBank.fxb> <patch folder> <init patch> <patch> ...
#include "patch/Bytes.h"
#include "patch/Chunk.h"
#include "patch/FxbBank.h"
#include "product/TidewakeFactory.h"
#include "platform/FileObject.h"
#include "platform/Folders.h"
#include "platform/SafeFileWriter.h"

#include <cstdio>

namespace {

void writeFile(const tw::Path& path, const std::string& bytes) {
    tw::SafeFileWriter writer(path);
    writer.write(0, bytes.data(), bytes.size());
    writer.commit();
}

std::string withCrLf(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\n') out += '\r';
        out += c;
    }
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fprintf(stderr, "usage: factory-bank <FactoryBank.fxb> <patch folder> <init patch> <patch> ...\n");
        return 2;
    }
    try {
        tw::TidewakeFactory factory;
        const tw::ModelDescriptor& descriptor = factory.getDescriptor();
        int count = argc - 3;
        if (count != descriptor.programCount) {
            std::fprintf(stderr, "factory-bank: %d programs given, the bank holds %d\n", count, descriptor.programCount);
            return 2;
        }
        tw::Path patchFolder = tw::Path::parse(std::string(argv[2]) + "/");
        patchFolder.createFolder();

        std::string payload;
        tw::appendLittleEndian(payload, static_cast<std::uint32_t>(count));
        for (int i = 0; i < count; ++i) {
            tw::Path source = tw::Path::parse(argv[3 + i]);
            std::unique_ptr<tw::Patch> patch = factory.patchFromText(tw::readWholeFile(source));
            std::string fileName = source.stem() + "." + descriptor.identifier;
            if (i == 0) {
                patch->setName(source.stem());
            } else {
                // Stored relative to the factory folder, wherever this tool runs.
                patch->setPath(tw::factoryPatchesFolder(descriptor.publicName).join(fileName));
                writeFile(patchFolder.join(fileName), withCrLf(factory.patchToText(*patch, true)));
            }
            patch->markClean();
            tw::appendLengthAndBytes(payload, factory.patchToText(*patch, false));
        }
        payload.append(tw::chunk::licenceRecordSize, '\0');

        std::string chunk = tw::chunkOf(descriptor, payload, false);
        writeFile(tw::Path::parse(argv[1]), tw::fxbOfBankChunk(descriptor, chunk, count));
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "factory-bank: %s\n", e.what());
        return 1;
    }
}
