#include "patch/Chunk.h"

#include "patch/Bytes.h"
#include "patch/FxbBank.h"
#include "patch/ZLib.h"
#include "platform/Resources.h"
#include "tests/patch/FakeModel.h"

#include "tests/Failure.h"

#include <gtest/gtest.h>

#include <zlib.h>

using namespace tw;
using tw::test::failure;
using tw::test::FakeModel;

namespace {

std::uint32_t wordAt(const std::string& bytes, std::size_t offset) {
    std::uint32_t w = 0;
    for (int i = 3; i >= 0; --i) w = (w << 8) | static_cast<unsigned char>(bytes[offset + std::size_t(i)]);
    return w;
}

void setWordAt(std::string& bytes, std::size_t offset, std::uint32_t word) {
    for (int i = 0; i < 4; ++i) bytes[offset + std::size_t(i)] = static_cast<char>(word >> (8 * i));
}

// A model whose programs all differ from the init patch, each with its own name.
void fillPrograms(FakeModel& model) {
    for (int p = 0; p < 16; ++p) {
        std::unique_ptr<Patch> patch = model.getFactory().createInitPatch();
        patch->setName("Program " + std::to_string(p));
        patch->storeParameter(12, float(p) / 16.0f);
        model.setPatch(p, *patch);
    }
}

// A bank payload of the given texts and an optional tail, wrapped as a chunk.
std::string bankChunk(const ModelDescriptor& d, const std::vector<std::string>& texts, std::int32_t count,
                      const std::string& tail = std::string(28, '\0')) {
    std::string payload;
    appendLittleEndian(payload, static_cast<std::uint32_t>(count));
    for (const std::string& t : texts) appendLengthAndBytes(payload, t);
    return chunkOf(d, payload + tail, false);
}

std::string namedText(const ModelFactory& factory, const std::string& name) {
    std::unique_ptr<Patch> patch = factory.createInitPatch();
    patch->setName(name);
    return factory.patchToText(*patch, false);
}

}  // namespace

TEST(Chunk, BankHeaderAndRoundTrip) {
    FakeModel source;
    fillPrograms(source);
    std::string bank = saveChunk(source, false);
    const ModelDescriptor& d = source.getFactory().getDescriptor();
    EXPECT_EQ(bank.substr(0, 8), std::string("9yMq46xL"));
    EXPECT_EQ(wordAt(bank, 8), static_cast<std::uint32_t>(d.uniqueId));
    EXPECT_EQ(wordAt(bank, 12), 0x00010000u);
    std::string payload = chunkPayload(d, bank, false);
    EXPECT_EQ(wordAt(bank, 16), payload.size());
    EXPECT_EQ(wordAt(payload, 0), 16u);
    EXPECT_EQ(payload.substr(payload.size() - 28), std::string(28, '\0')) << "the licence record is zeros";

    FakeModel target;
    loadChunk(target, bank, false);
    for (int p = 0; p < 16; ++p) {
        EXPECT_EQ(target.name(p), "Program " + std::to_string(p));
        EXPECT_FLOAT_EQ(target.getParameter(p, 12), float(p) / 16.0f);
    }
    EXPECT_EQ(saveChunk(target, false), bank) << "a second save gives the same bytes";
}

TEST(Chunk, ProgramChunkGoesToTheCurrentProgram) {
    FakeModel source;
    fillPrograms(source);
    source.setCurrentProgram(5);
    std::string program = saveChunk(source, true);
    EXPECT_EQ(wordAt(program, 0), 0x8293048Au);

    FakeModel target;
    target.setCurrentProgram(9);
    loadChunk(target, program, true);
    EXPECT_EQ(target.name(9), "Program 5");
    EXPECT_EQ(target.name(5), "");
    EXPECT_EQ(failure([&] { loadChunk(target, program, false); }), "Invalid data format (unsupported version?)");
    EXPECT_EQ(failure([&] { loadChunk(target, saveChunk(source, false), true); }),
              "Invalid data format (unsupported version?)");
}

TEST(Chunk, HeaderChecksInOrder) {
    FakeModel model;
    std::string bank = saveChunk(model, false);
    std::string wrongId = bank;
    setWordAt(wrongId, 8, 0x51765458);
    EXPECT_EQ(failure([&] { loadChunk(model, wrongId, false); }), "Invalid data format (invalid four char id)");

    std::string otherPlatform = bank, otherVersion = bank;
    setWordAt(otherPlatform, 4, 0x57783634);  // "46xW"
    setWordAt(otherVersion, 12, 0x00020305);
    EXPECT_NO_THROW(loadChunk(model, otherPlatform, false));
    EXPECT_NO_THROW(loadChunk(model, otherVersion, false));

    // 20 bytes stating 3: refused on the length, before any inflation.
    std::string shortLength = bank.substr(0, 20);
    setWordAt(shortLength, 16, 3);
    EXPECT_EQ(failure([&] { loadChunk(model, shortLength, false); }), "Invalid data format (insane inflated length)");
    std::string huge = bank;
    setWordAt(huge, 16, 0x1400001);
    EXPECT_EQ(failure([&] { loadChunk(model, huge, false); }), "Invalid data format (insane inflated length)");

    for (std::size_t cut : {0, 3, 8, 15, 19}) EXPECT_EQ(failure([&] { loadChunk(model, bank.substr(0, cut), false); }), "End of file error") << cut;
}

TEST(Chunk, DamagedStreams) {
    FakeModel model;
    std::string bank = saveChunk(model, false);
    std::string truncated = bank.substr(0, 20 + (bank.size() - 20) / 2);
    try {
        loadChunk(model, truncated, false);
        FAIL();
    } catch (const QvxZLib::Exception& e) {
        EXPECT_EQ(e.code(), Z_BUF_ERROR);
    }
    std::string garbled = bank;
    garbled[20] = 0x00;  // no zlib header
    EXPECT_THROW(loadChunk(model, garbled, false), QvxZLib::Exception);

    // A stream longer than the stated length: the surplus is not read. One shorter: the
    // rest of the buffer is zeros, behind the texts where nothing reads it.
    std::string longer = bank;
    setWordAt(longer, 16, wordAt(bank, 16) - 28);
    EXPECT_NO_THROW(loadChunk(model, longer, false));
    std::string padded = bank;
    setWordAt(padded, 16, wordAt(bank, 16) + 1000);
    EXPECT_NO_THROW(loadChunk(model, padded, false));
}

TEST(Chunk, AStreamMustRunToItsEndWithItsChecksumBeforeAnyProgramIsTouched) {
    FakeModel model;
    std::string bank = saveChunk(model, false);
    // Cut by a byte or a few (the checksum, or the last deflate bits): refused whole,
    // nothing published.
    for (std::size_t cut : {1, 2, 4, 5, 9}) {
        FakeModel fresh;
        EXPECT_THROW(loadChunk(fresh, bank.substr(0, bank.size() - cut), false), QvxZLib::Exception) << cut;
        EXPECT_EQ(fresh.published, 0);
    }
    // One bit flipped anywhere in the stream is refused, unless it is one of the bits
    // that deflate leaves unused, which can change nothing.
    const std::string payload = chunkPayload(model.getFactory().getDescriptor(), bank, false);
    for (std::size_t at = 20; at < bank.size(); ++at) {
        std::string flipped = bank;
        flipped[at] = static_cast<char>(flipped[at] ^ (1 << (at % 8)));
        try {
            EXPECT_EQ(chunkPayload(model.getFactory().getDescriptor(), flipped, false), payload) << at;
        } catch (const QvxZLib::Exception&) {
        }
    }
    // Bytes after the stream's end are padding that some hosts add: harmless.
    EXPECT_NO_THROW(loadChunk(model, bank + std::string(64, '\x55'), false));
}

TEST(Chunk, BankCountsAndTails) {
    FakeModel model;
    const ModelFactory& f = model.getFactory();
    const ModelDescriptor& d = f.getDescriptor();

    std::vector<std::string> three = {namedText(f, "A"), namedText(f, "B"), namedText(f, "C")};
    loadChunk(model, bankChunk(d, three, 3), false);
    EXPECT_EQ(model.name(0), "A");
    EXPECT_EQ(model.name(2), "C");
    EXPECT_EQ(model.name(3), "") << "programs beyond the count keep what they had";

    std::vector<std::string> twenty;
    for (int i = 0; i < 20; ++i) twenty.push_back(namedText(f, "T" + std::to_string(i)));
    loadChunk(model, bankChunk(d, twenty, 20), false);
    EXPECT_EQ(model.name(15), "T15");

    // A payload that ends inside the fourth text: the first three stay published.
    FakeModel partial;
    std::string payload;
    appendLittleEndian(payload, 16);
    for (const std::string& t : three) appendLengthAndBytes(payload, t);
    appendLittleEndian(payload, 5000);
    payload += "TidewakePatch";
    EXPECT_EQ(failure([&] { loadChunk(partial, chunkOf(d, payload, false), false); }), "End of file error");
    EXPECT_EQ(partial.name(2), "C");
    EXPECT_EQ(partial.published, 3);

    std::string negative;
    appendLittleEndian(negative, 1);
    appendLittleEndian(negative, 0xFFFFFFF0u);
    EXPECT_EQ(failure([&] { loadChunk(model, chunkOf(d, negative, false), false); }), "End of file error");

    // A text that is no patch stops the load there.
    EXPECT_EQ(failure([&] { loadChunk(model, bankChunk(d, {"nonsense"}, 1), false); }), "Invalid data format");
}

TEST(Fxb, ContainerChecks) {
    FakeModel model;
    const ModelDescriptor& d = model.getFactory().getDescriptor();
    std::string chunk = saveChunk(model, false);
    std::string fxb = fxbOfBankChunk(d, chunk, 19);
    EXPECT_EQ(fxb.substr(0, 4), "CcnK");
    EXPECT_EQ(fxb.substr(8, 4), "FBCh");
    EXPECT_EQ(fxb.substr(0xA0, 4), "9yMq");
    EXPECT_EQ(bankChunkOfFxb(d, fxb), chunk);
    EXPECT_EQ(bankChunkOfFxb(d, fxb + "trailing"), chunk);

    auto withByte = [&](std::size_t offset, char value) {
        std::string copy = fxb;
        copy[offset] = value;
        return copy;
    };
    for (std::string bad : {withByte(0, 'X'), withByte(11, 'k'), withByte(15, 3), withByte(15, 0), withByte(19, 'X'),
                            withByte(4, 0x7f)})
        EXPECT_EQ(failure([&] { bankChunkOfFxb(d, bad); }), "Invalid format of FXB data");
    EXPECT_NO_THROW(bankChunkOfFxb(d, withByte(15, 1)));
    EXPECT_NO_THROW(bankChunkOfFxb(d, withByte(27, 99))) << "numPrograms is not trusted";

    // byteSize fits but chunkSize runs past the end.
    std::string longChunk = fxb;
    longChunk[158] = 0x7f;
    EXPECT_EQ(failure([&] { bankChunkOfFxb(d, longChunk); }), "Unexpected end of file in FXB data");
    EXPECT_THROW(bankChunkOfFxb(d, fxb.substr(0, 100)), FormatException) << "byteSize past the end";
}
