#include "patch/StartupBank.h"

#include "patch/Bytes.h"
#include "patch/ZLib.h"
#include "tests/patch/FakeModel.h"
#include "tests/platform/TempFolder.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::FakeModel;
using tw::test::TempFolder;

namespace {

struct StartupBankTest : ::testing::Test {
    TempFolder dir;
    Path store = Path::parse(dir.str() + "MarlinWorks.store");
    TidewakeFactory factory;

    std::unique_ptr<Patch> named(const std::string& name, float wet) {
        std::unique_ptr<Patch> patch = factory.createInitPatch();
        patch->setName(name);
        patch->storeParameter(12, wet);
        return patch;
    }
    void putBlob(const std::string& blob) {
        SharedStore s(store);
        s.set("TidewakeStartupBank", blob);
        s.commit();
    }
    std::string envelope(const std::string& payload, std::uint32_t magic = startupBank::magic) {
        std::string blob;
        appendLittleEndian(blob, magic);
        appendLittleEndian(blob, static_cast<std::uint32_t>(payload.size()));
        deflateInto(blob, payload);
        return blob;
    }
};

}  // namespace

TEST_F(StartupBankTest, KeepsChangedProgramsBetweenSessions) {
    auto a = named("Edited One", 0.25f), b = named("Edited Nine", 0.75f);
    writeStartupBank(factory, 9, {{1, a.get()}, {9, b.get()}}, store);

    SharedStore s(store);
    std::vector<std::string> texts;
    int current = -1;
    ASSERT_TRUE(readStartupBank(factory.getDescriptor(), s, texts, current));
    EXPECT_EQ(current, 9);
    ASSERT_EQ(texts.size(), 16u);
    EXPECT_TRUE(texts[0].empty()) << "unchanged programs keep an empty text";
    EXPECT_EQ(texts[1], factory.patchToText(*a, false));

    FakeModel model;
    int program = 0;
    EXPECT_TRUE(loadStartupPatches(model, program, store));
    EXPECT_EQ(program, 9);
    EXPECT_EQ(model.name(1), "Edited One");
    EXPECT_EQ(model.name(9), "Edited Nine");
    EXPECT_FLOAT_EQ(model.getParameter(9, 12), 0.75f);
    EXPECT_EQ(model.published, 2);

    // A later session changes another program: the earlier changes stay.
    auto c = named("Edited Two", 0.5f);
    writeStartupBank(factory, 2, {{2, c.get()}}, store);
    FakeModel later;
    EXPECT_TRUE(loadStartupPatches(later, program, store));
    EXPECT_EQ(program, 2);
    EXPECT_EQ(later.name(1), "Edited One");
    EXPECT_EQ(later.name(2), "Edited Two");
}

TEST_F(StartupBankTest, NoneOrForeignIsNoStartupBank) {
    FakeModel model;
    int program = 7;
    EXPECT_FALSE(loadStartupPatches(model, program, store)) << "no store at all";
    putBlob(envelope("whatever", 0x12345678));
    EXPECT_FALSE(loadStartupPatches(model, program, store)) << "another magic";
    std::string payload;
    appendLittleEndian(payload, 2);  // a format this build does not know
    appendLittleEndian(payload, 0);
    appendLittleEndian(payload, 0);
    putBlob(envelope(payload));
    EXPECT_FALSE(loadStartupPatches(model, program, store));
    EXPECT_EQ(program, 7);
    EXPECT_EQ(model.published, 0);
}

TEST_F(StartupBankTest, DamageRaisesLikeAChunk) {
    std::string blob;
    appendLittleEndian(blob, startupBank::magic);
    appendLittleEndian(blob, 3);
    putBlob(blob);
    FakeModel model;
    int program = 0;
    try {
        loadStartupPatches(model, program, store);
        FAIL();
    } catch (const FormatException& e) {
        EXPECT_EQ(e.message(), "Invalid data format (insane inflated length)");
    }

    std::string payload;
    appendLittleEndian(payload, 1);
    appendLittleEndian(payload, 0x7FFFFFFF);  // a count no payload could hold
    appendLittleEndian(payload, 0);
    putBlob(envelope(payload));
    EXPECT_THROW(loadStartupPatches(model, program, store), EOFException);

    // Writing over a damaged bank starts it afresh.
    auto a = named("Fresh", 0.5f);
    writeStartupBank(factory, 0, {{0, a.get()}}, store);
    EXPECT_TRUE(loadStartupPatches(model, program, store));
    EXPECT_EQ(model.name(0), "Fresh");
}

TEST_F(StartupBankTest, BadTextKeepsTheFactoryProgram) {
    std::string payload;
    appendLittleEndian(payload, 1);
    appendLittleEndian(payload, 3);
    appendLittleEndian(payload, 1);
    appendLengthAndBytes(payload, "TidewakePatch: { format: 9 }");
    appendLengthAndBytes(payload, factory.patchToText(*named("Good", 0.1f), false));
    appendLengthAndBytes(payload, "");
    putBlob(envelope(payload));
    FakeModel model;
    int program = 0;
    EXPECT_TRUE(loadStartupPatches(model, program, store));
    EXPECT_EQ(program, 1);
    EXPECT_EQ(model.name(1), "Good");
    EXPECT_EQ(model.published, 1);
}
