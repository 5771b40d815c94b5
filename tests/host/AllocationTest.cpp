#include <gtest/gtest.h>

#include <vector>

#include "tests/host/AllocationCounter.h"
#include "tests/host/TestHost.h"

using namespace tw;
using namespace tw::test;

// The audio call allocates nothing: a counting operator new around it.
TEST(AudioCall, AllocatesNothing) {
    TestHost host(true);
    host.recording.keep = false;
    host.time.tempo = 128.0;
    host.time.flags = vst2::kVstPpqPosValid | vst2::kVstTempoValid;
    host.dispatch(vst2::effMainsChanged, 0, 1);
    std::vector<float> in(333), out(333);
    float* inputs[2] = {in.data(), in.data()};
    float* outputs[2] = {out.data(), out.data()};
    vst2::VstMidiEvent note{};
    note.type = vst2::kVstMidiType;
    note.midiData[0] = static_cast<char>(0x90);
    note.midiData[1] = 60;
    vst2::VstEvents list{};
    list.numEvents = 1;
    list.events[0] = reinterpret_cast<vst2::VstEvent*>(&note);
    for (int round = 0; round < 50; ++round) {
        note.deltaFrames = round % 300;
        countAllocations(true);
        host.dispatch(vst2::effProcessEvents, 0, 0, &list);
        host.process(inputs, outputs, 333);
        countAllocations(false);
    }
    EXPECT_EQ(allocationCount(), 0);
    EXPECT_EQ(host.recording.eventsSeen, 50);
}
