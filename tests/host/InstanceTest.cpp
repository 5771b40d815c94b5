#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "product/TidewakeEditorFactory.h"
#include "core/ProcessServices.h"
#include "product/TidewakeDescriptor.h"
#include "tests/host/TestHost.h"

using namespace tw;
using namespace tw::test;

namespace {

std::string text(TestHost& host, vst2::int32 opcode, vst2::int32 index = 0) {
    char buffer[256];
    std::memset(buffer, 'x', sizeof buffer);
    host.dispatch(opcode, index, 0, buffer);
    return buffer;
}

vst2::intptr refusingHost(vst2::AEffect*, vst2::int32, vst2::int32, vst2::intptr, void*, float) { return 0; }

}  // namespace

TEST(Instance, EntryRefusesAHostThatDoesNotAnswer) {
    EXPECT_EQ(VSTPluginMain(&refusingHost), nullptr);
    EXPECT_THROW(createEffect(&refusingHost, std::make_unique<TidewakeFactory>(), &tidewakeEditor()), std::runtime_error);
    try {
        createEffect(&refusingHost, std::make_unique<TidewakeFactory>(), &tidewakeEditor());
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "audioMaster returned 0");
    }
}

TEST(Instance, WhatTheHostIsTold) {
    TestHost host;
    vst2::AEffect& e = *host.effect;
    EXPECT_EQ(e.magic, vst2::fourCC("VstP"));
    EXPECT_EQ(e.uniqueID, vst2::fourCC("QvTW"));
    EXPECT_EQ(e.numInputs, 2);
    EXPECT_EQ(e.numOutputs, 2);
    EXPECT_EQ(e.numParams, 19);
    EXPECT_EQ(e.numPrograms, 16);
    EXPECT_EQ(e.initialDelay, 8);
    EXPECT_EQ(e.flags, vst2::effFlagsHasEditor | vst2::effFlagsCanMono | vst2::effFlagsCanReplacing |
                           vst2::effFlagsProgramChunks);
    vst2::ERect* rect = nullptr;
    EXPECT_EQ(host.dispatch(vst2::effEditGetRect, 0, 0, &rect), 1);
    ASSERT_NE(rect, nullptr);
    EXPECT_EQ(rect->right - rect->left, 525);
    EXPECT_EQ(rect->bottom - rect->top, 475);
    EXPECT_EQ(e.processDoubleReplacing, nullptr);
    EXPECT_EQ(text(host, vst2::effGetEffectName), "Tidewake");
    EXPECT_EQ(text(host, vst2::effGetProductString), "Tidewake");
    EXPECT_EQ(text(host, vst2::effGetVendorString), "Marlin Works");
    EXPECT_EQ(host.dispatch(vst2::effGetVendorVersion), 65536);
    EXPECT_EQ(host.dispatch(vst2::effGetVstVersion), 2400);
    EXPECT_EQ(host.dispatch(vst2::effGetPlugCategory), 1);
    EXPECT_EQ(host.dispatch(vst2::effGetTailSize), 2400);
    EXPECT_EQ(host.dispatch(vst2::effCanBeAutomated, 3), 1);
    EXPECT_EQ(host.dispatch(999), 0) << "unknown opcodes answer 0";
}

TEST(Instance, CanDoAnswers) {
    TestHost host;
    auto ask = [&](const char* q) { return host.dispatch(vst2::effCanDo, 0, 0, const_cast<char*>(q)); };
    EXPECT_EQ(ask("conformsToWindowRules"), 1);
    EXPECT_EQ(ask("receiveVstTimeInfo"), 1);
    EXPECT_EQ(ask("bypass"), 1);
    EXPECT_EQ(ask("receiveVstEvents"), 1);
    EXPECT_EQ(ask("receiveVstMidiEvent"), 1);
    EXPECT_EQ(ask("sendVstEvents"), 0);
    EXPECT_EQ(ask("sendVstMidiEvent"), 0);
    EXPECT_EQ(ask("receiveVstEventsX"), 0) << "the whole string is compared";
    EXPECT_EQ(ask("somethingUnknown"), 0) << "never -1";
    EXPECT_EQ(host.dispatch(vst2::effCanDo, 0, 0, nullptr), 0);
}

TEST(Instance, TwoInstancesShareTheProcessButNotNumbersOrSeeds) {
    int before = ProcessServices::instanceCount();
    auto first = std::make_unique<TestHost>();
    auto second = std::make_unique<TestHost>();
    EXPECT_EQ(ProcessServices::instanceCount(), before + 2);
    EXPECT_EQ(second->instance().instanceNumber(), first->instance().instanceNumber() + 1);
    EXPECT_NE(second->instance().seed(), first->instance().seed());
    second->dispatch(vst2::effMainsChanged, 0, 1);
    EXPECT_EQ(second->recording.resetSeed, second->instance().seed()) << "the engine gets the instance's seed";
    first.reset();
    EXPECT_EQ(ProcessServices::instanceCount(), before + 1);
    second.reset();
    EXPECT_EQ(ProcessServices::instanceCount(), before);
}

TEST(Instance, SampleRateChangesResetOnlyWhenTheRateDiffers) {
    TestHost host;
    host.dispatch(vst2::effMainsChanged, 0, 1);
    EXPECT_EQ(host.recording.resets, 1) << "resume resets at once";
    EXPECT_EQ(host.recording.resetRate, 44100.0f);
    float in[8] = {}, out[8] = {};
    float* ins[2] = {in, in};
    float* outs[2] = {out, out};
    host.dispatch(vst2::effSetSampleRate, 0, 0, nullptr, 44100.0f);
    host.process(ins, outs, 8);
    EXPECT_EQ(host.recording.resets, 1) << "the same rate twice does not reset";
    host.dispatch(vst2::effSetSampleRate, 0, 0, nullptr, 96000.0f);
    EXPECT_EQ(host.recording.resets, 1) << "the reset waits for the next audio call";
    host.process(ins, outs, 8);
    EXPECT_EQ(host.recording.resets, 2);
    EXPECT_EQ(host.recording.resetRate, 96000.0f);
    EXPECT_EQ(host.effect->initialDelay, 8);
}

TEST(Instance, OpenTakesTheHostsRate) {
    TestHost host;
    host.sampleRate = 88200;
    host.dispatch(vst2::effOpen);
    EXPECT_EQ(host.instance().sampleRate(), 88200.0f);
}

TEST(Instance, ResumeWantsMidiAndSuspendStopsTheProcessor) {
    TestHost host;
    EXPECT_FALSE(host.instance().isEnabled());
    host.dispatch(vst2::effMainsChanged, 0, 1);
    EXPECT_EQ(host.callsOf(vst2::audioMasterWantMidi).size(), 1u);
    EXPECT_TRUE(host.instance().isEnabled());
    host.dispatch(vst2::effSetBypass, 0, 1);
    EXPECT_FALSE(host.instance().isEnabled()) << "bypassed";
    host.dispatch(vst2::effSetBypass, 0, 0);
    host.dispatch(vst2::effMainsChanged, 0, 0);
    EXPECT_EQ(host.recording.suspends, 1);
    EXPECT_FALSE(host.instance().isActive());
}

TEST(Instance, BypassReachesTheProcessor) {
    TestHost host;
    host.dispatch(vst2::effMainsChanged, 0, 1);
    EXPECT_EQ(host.dispatch(vst2::effSetBypass, 0, 1), 1);
    float in[16] = {}, out[16] = {};
    float* ins[2] = {in, in};
    float* outs[2] = {out, out};
    host.process(ins, outs, 16);
    ASSERT_EQ(host.recording.records.size(), 1u);
    EXPECT_TRUE(host.recording.records[0].bypassed);
}

// Host index 18 is lfoTarget (id 16): names, displays and values go through the host order.
TEST(Instance, HostOrderMapsIndicesToIds) {
    TestHost host;
    EXPECT_EQ(text(host, vst2::effGetParamName, 18), "LFO Target");
    EXPECT_EQ(text(host, vst2::effGetParamName, 5), "Delay Time");
    EXPECT_EQ(text(host, vst2::effGetParamName, 6), "Delay Sync");
    EXPECT_EQ(text(host, vst2::effGetParamLabel, 7), "dB");
    EXPECT_EQ(text(host, vst2::effGetParamLabel, 0), "");
    EXPECT_EQ(text(host, vst2::effGetParamName, 9), "High-pass Frequency");

    host.effect->setParameter(host.effect, 18, 1.0f);
    EXPECT_EQ(host.instance().getParameter(0, Param::lfoTarget), 1.0f);
    EXPECT_EQ(host.instance().getParameter(0, Param::lfoStereo), 0.0f);
    EXPECT_EQ(text(host, vst2::effGetParamDisplay, 18), "Delay Time");
    host.instance().editParameter(0, Param::lfoAmount, 0.25f);
    EXPECT_EQ(host.effect->getParameter(host.effect, 16), 0.25f);
    EXPECT_EQ(text(host, vst2::effGetParamDisplay, 0), "Wide") << "0.33333334 is step 1";
    EXPECT_EQ(host.effect->getParameter(host.effect, 99), 0.0f) << "out of range reads 0";
}

TEST(Instance, ProgramsAndTheirNames) {
    TestHost host;
    host.dispatch(vst2::effSetProgram, 0, 3);
    EXPECT_EQ(host.dispatch(vst2::effGetProgram), 3);
    host.dispatch(vst2::effSetProgram, 0, 16);
    EXPECT_EQ(host.dispatch(vst2::effGetProgram), 3) << "a program that does not exist is ignored";
    char name[] = "A rather long program name for a host";
    host.dispatch(vst2::effSetProgramName, 0, 0, name);
    EXPECT_EQ(text(host, vst2::effGetProgramName), "A rather long program na") << "cut to 24";
    EXPECT_EQ(text(host, vst2::effGetProgramNameIndexed, 3), "A rather long program na");
    EXPECT_EQ(host.dispatch(vst2::effGetProgramNameIndexed, 3, 0, name), 1);
    EXPECT_EQ(host.dispatch(vst2::effGetProgramNameIndexed, 16, 0, name), 0);
    host.effect->setParameter(host.effect, 12, 0.5f);
    EXPECT_EQ(host.instance().getParameter(3, Param::wetMix), 0.5f) << "writes go to the current program";
    EXPECT_EQ(host.instance().getParameter(0, Param::wetMix), 1.0f);
}

TEST(Instance, GesturesAndAutomation) {
    TestHost host;
    host.instance().editParameter(0, Param::lfoTarget, 1.0f);
    EXPECT_TRUE(host.callsOf(vst2::audioMasterAutomate).empty()) << "outside a gesture the host is not told";
    host.instance().beginEnd(Param::lfoTarget, true);
    host.instance().beginEnd(Param::lfoTarget, true);
    host.instance().editParameter(0, Param::lfoTarget, 0.0f);
    host.instance().editParameter(5, Param::lfoTarget, 1.0f);
    host.instance().beginEnd(Param::lfoTarget, false);
    auto begins = host.callsOf(vst2::audioMasterBeginEdit);
    auto automations = host.callsOf(vst2::audioMasterAutomate);
    auto ends = host.callsOf(vst2::audioMasterEndEdit);
    ASSERT_EQ(begins.size(), 1u) << "a gesture is one flag, not a count";
    EXPECT_EQ(begins[0].index, 18);
    ASSERT_EQ(automations.size(), 1u) << "only the current program automates";
    EXPECT_EQ(automations[0].index, 18);
    EXPECT_EQ(automations[0].opt, 0.0f);
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_EQ(ends[0].index, 18);
}

TEST(Instance, EditPatchOverridesTheProgram) {
    TestHost host;
    host.dispatch(vst2::effMainsChanged, 0, 1);
    auto patch = host.instance().clonePatch(0);
    patch->storeParameter(Param::wetMix, 0.25f);
    host.instance().setEditPatch(patch.get());
    patch->storeParameter(Param::wetMix, 0.75f);
    EXPECT_EQ(host.instance().getParameter(0, Param::wetMix), 1.0f) << "the edit patch is a clone";
    host.instance().setEditPatch(nullptr);
    host.instance().setPatch(2, *patch);
    EXPECT_EQ(host.instance().getParameter(2, Param::wetMix), 0.75f);
    EXPECT_EQ(host.instance().getPatchStamp(2), patch->getChangeStamp()) << "a clone keeps its stamps";
}
