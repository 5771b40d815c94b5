#include "patch/Chunk.h"
#include "patch/StartupBank.h"
#include "platform/Folders.h"
#include "tests/host/TestHost.h"
#include "tests/platform/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace tw;
using namespace tw::test;

namespace {

const char* const factoryNames[16] = {
    "Init Patch",         "MW eX Smear Delay",    "MW Upslide Echo",  "MW Infiniverb",
    "MW Talk Mono",       "MW Filter Chops",      "MW Dr Dub",        "MW Radium Factory",
    "MW eX Spring Verb II", "MW Metal Bar Grating", "MW Educational VHS", "MW Going Places",
    "MW Wah Wah",         "MW Squishyness",       "MW Dazzle Fo Shazzle", "MW Barberup Phase"};

std::string programName(TestHost& host, int program) {
    char buffer[64] = {};
    host.dispatch(vst2::effGetProgramNameIndexed, program, 0, buffer);
    return buffer;
}

std::string chunkOf(TestHost& host, bool isPreset) {
    void* data = nullptr;
    vst2::intptr size = host.dispatch(vst2::effGetChunk, isPreset ? 1 : 0, 0, &data);
    return size > 0 ? std::string(static_cast<const char*>(data), static_cast<std::size_t>(size)) : std::string();
}

vst2::intptr setChunk(TestHost& host, std::string bytes, bool isPreset) {
    return host.dispatch(vst2::effSetChunk, isPreset ? 1 : 0, static_cast<vst2::intptr>(bytes.size()), bytes.data());
}

// A store of its own for the test, in the folder every instance of this process reads.
struct StoreFolder {
    TempFolder dir;
    std::string old = std::getenv("XDG_CONFIG_HOME");
    StoreFolder() { ::setenv("XDG_CONFIG_HOME", dir.path.c_str(), 1); }
    ~StoreFolder() { ::setenv("XDG_CONFIG_HOME", old.c_str(), 1); }
};

}  // namespace

TEST(Banks, FactoryBankFillsTheProgramsInOrder) {
    TestHost host;
    for (int p = 0; p < 16; ++p) EXPECT_EQ(programName(host, p), factoryNames[p]) << p;
    EXPECT_EQ(host.dispatch(vst2::effGetProgram), 0);
    PatchHandle dub = host.instance().acquirePatch(6);
    EXPECT_FALSE((*dub)->isModified());
    EXPECT_EQ((*dub)->getPath().toString(), factoryPatchesFolder("Tidewake").toString() + "MW Dr Dub.tidewake");
    PatchHandle init = host.instance().acquirePatch(0);
    EXPECT_TRUE((*init)->getPath().empty());
}

TEST(Banks, ChunksRoundTripThroughTheDispatcher) {
    TestHost first;
    first.dispatch(vst2::effSetProgram, 0, 3);
    first.effect->setParameter(first.effect, 12, 0.25f);
    char name[] = "Renamed Verb";
    first.dispatch(vst2::effSetProgramName, 0, 0, name);
    std::string bank = chunkOf(first, false), program = chunkOf(first, true);
    ASSERT_FALSE(bank.empty());
    ASSERT_FALSE(program.empty());

    TestHost second;
    EXPECT_EQ(setChunk(second, bank, false), static_cast<vst2::intptr>(bank.size()));
    for (int p = 0; p < 16; ++p) {
        EXPECT_EQ(programName(second, p), programName(first, p));
        for (int i = 0; i < 19; ++i)
            EXPECT_EQ(second.instance().getParameter(p, i), first.instance().getParameter(p, i)) << p << " " << i;
    }
    EXPECT_EQ(chunkOf(second, false), bank) << "a second save gives the same bytes";

    TestHost third;
    third.dispatch(vst2::effSetProgram, 0, 9);
    EXPECT_EQ(setChunk(third, program, true), static_cast<vst2::intptr>(program.size()));
    EXPECT_EQ(programName(third, 9), "Renamed Verb");
    EXPECT_EQ(programName(third, 3), "MW Infiniverb");
    EXPECT_FLOAT_EQ(third.effect->getParameter(third.effect, 12), 0.25f);
}

TEST(Banks, RefusedChunksAnswerZeroAndKeepThePrograms) {
    TestHost host;
    std::string bank = chunkOf(host, false);
    std::string wrongMagic = bank, insane = bank;
    wrongMagic[0] = 'X';
    insane[19] = 0x7f;
    for (const std::string& bad : {bank.substr(0, 12), bank.substr(0, bank.size() / 2), wrongMagic, insane,
                                   std::string()}) {
        EXPECT_EQ(setChunk(host, bad, false), 0);
        EXPECT_EQ(setChunk(host, bad, true), 0);
    }
    EXPECT_EQ(host.dispatch(vst2::effSetChunk, 0, 100, nullptr), 0);
    for (int p = 0; p < 16; ++p) EXPECT_EQ(programName(host, p), factoryNames[p]);
    EXPECT_EQ(setChunk(host, bank + "trailing bytes", false), static_cast<vst2::intptr>(bank.size() + 14))
        << "what follows the stream is not read";
}

TEST(Banks, StartupBankReplacesFactoryProgramsAndPicksTheProgram) {
    StoreFolder folder;
    TidewakeFactory factory;
    std::unique_ptr<Patch> edited = factory.createInitPatch();
    edited->setName("My Dub");
    edited->storeParameter(12, 0.5f);
    writeStartupBank(factory, 4, {{4, edited.get()}});

    TestHost host;
    EXPECT_EQ(host.dispatch(vst2::effGetProgram), 4);
    EXPECT_EQ(programName(host, 4), "My Dub");
    EXPECT_FLOAT_EQ(host.effect->getParameter(host.effect, 12), 0.5f);
    EXPECT_EQ(programName(host, 5), "MW Filter Chops") << "unchanged programs stay as the factory left them";

    // A current program the bank can't have is ignored.
    writeStartupBank(factory, 99, {});
    TestHost again;
    EXPECT_EQ(again.dispatch(vst2::effGetProgram), 0);
    EXPECT_EQ(programName(again, 4), "My Dub");
}

TEST(Banks, UnreadableStoreLeavesTheFactoryBank) {
    StoreFolder folder;
    folder.dir.write("Marlin Works/MarlinWorks.store", "not a store at all");
    TestHost host;
    EXPECT_EQ(host.dispatch(vst2::effGetProgram), 0);
    for (int p = 0; p < 16; ++p) EXPECT_EQ(programName(host, p), factoryNames[p]);
}
