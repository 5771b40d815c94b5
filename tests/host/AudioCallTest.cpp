#include <gtest/gtest.h>

#include <vector>

#include "vst2/VendorProtocol.h"
#include "tests/host/TestHost.h"

using namespace tw;
using namespace tw::test;

namespace {

constexpr int latency = 8;

// Input and output buffers of one block, two channels.
struct Block {
    std::vector<float> in[2], out[2];
    float* inputs[2];
    float* outputs[2];
    explicit Block(int n) {
        for (int c = 0; c < 2; ++c) {
            in[c].assign(static_cast<std::size_t>(n), 0.0f);
            out[c].assign(static_cast<std::size_t>(n), -1.0f);
            inputs[c] = in[c].data();
            outputs[c] = out[c].data();
        }
    }
};

void sendNote(TestHost& host, int offset, int note) {
    vst2::VstMidiEvent e{};
    e.type = vst2::kVstMidiType;
    e.byteSize = sizeof e;
    e.deltaFrames = offset;
    e.midiData[0] = static_cast<char>(0x90);
    e.midiData[1] = static_cast<char>(note);
    e.midiData[2] = 100;
    vst2::VstEvents list{};
    list.numEvents = 1;
    list.events[0] = reinterpret_cast<vst2::VstEvent*>(&e);
    host.dispatch(vst2::effProcessEvents, 0, 0, &list);
}

}  // namespace

// Every block size from 1 to 4096: the output is the input exactly 8 samples later, with
// no sample lost or repeated, in the replacing and the accumulating form.
TEST(AudioCall, EveryBlockSizeDelaysByOneFrame) {
    for (int size = 1; size <= 4096; ++size) {
        TestHost host;
        host.dispatch(vst2::effMainsChanged, 0, 1);
        const int blocks = size < 64 ? 64 / size + 2 : 3;
        long position = 0;
        for (int b = 0; b < blocks; ++b) {
            Block block(size);
            for (int k = 0; k < size; ++k) {
                block.in[0][static_cast<std::size_t>(k)] = float(position + k + 1);
                block.in[1][static_cast<std::size_t>(k)] = -float(position + k + 1);
            }
            host.process(block.inputs, block.outputs, size);
            for (int k = 0; k < size; ++k) {
                long source = position + k - latency;
                float expected = source < 0 ? 0.0f : float(source + 1);
                ASSERT_EQ(block.out[0][static_cast<std::size_t>(k)], expected) << "block size " << size << " at " << position + k;
                ASSERT_EQ(block.out[1][static_cast<std::size_t>(k)], -expected);
            }
            position += size;
        }
        // Frame f holds samples 8f to 8f+7 and runs when sample 8f+8 arrives.
        ASSERT_EQ(host.recording.frames, (position - 1) / 8) << "block size " << size;
    }
}

TEST(AudioCall, AccumulatingFormAddsIntoTheOutput) {
    TestHost host;
    host.dispatch(vst2::effMainsChanged, 0, 1);
    Block block(24);
    for (int k = 0; k < 24; ++k) block.in[0][static_cast<std::size_t>(k)] = float(k + 1);
    for (auto& o : block.out) std::fill(o.begin(), o.end(), 1000.0f);
    host.effect->process(host.effect, block.inputs, block.outputs, 24);
    for (int k = 0; k < 24; ++k) EXPECT_EQ(block.out[0][static_cast<std::size_t>(k)], 1000.0f + (k < 8 ? 0.0f : float(k - 7)));
}

// An event is delivered with the frame that holds its sample, its offset counted from
// that frame, also when blocks do not line up with frames.
TEST(AudioCall, EventsLandInTheFrameOfTheirSample) {
    for (int size : {1, 3, 5, 8, 13, 64, 100}) {
        TestHost host;
        host.dispatch(vst2::effMainsChanged, 0, 1);
        long position = 0;
        std::vector<long> sent;
        for (int b = 0; b < 12; ++b) {
            int offset = (b * 7) % size;
            sendNote(host, offset, b);
            sent.push_back(position + offset);
            Block block(size);
            host.process(block.inputs, block.outputs, size);
            position += size;
        }
        // Frame f (counted from 0) holds samples 8f .. 8f+7 and runs when it is full.
        std::vector<long> delivered;
        for (std::size_t f = 0; f < host.recording.records.size(); ++f)
            for (const MidiEventRecord& e : host.recording.records[f].events) {
                EXPECT_GE(e.offset, 0);
                EXPECT_LT(e.offset, 8);
                delivered.push_back(long(f) * 8 + e.offset);
                EXPECT_EQ(e.status, 0x90);
                EXPECT_EQ(long(e.data1), long(delivered.size()) - 1) << "events keep their order";
            }
        std::size_t due = 0;
        while (due < sent.size() && sent[due] < long(host.recording.records.size()) * 8) ++due;
        ASSERT_EQ(delivered.size(), due) << "block size " << size;
        for (std::size_t i = 0; i < due; ++i) EXPECT_EQ(delivered[i], sent[i]) << "block size " << size;
    }
}

TEST(AudioCall, EventsAreSortedStablyAndTheQueueHolds4096) {
    TestHost host;
    host.dispatch(vst2::effMainsChanged, 0, 1);
    std::vector<vst2::VstMidiEvent> events(5000);
    std::vector<vst2::VstEvent*> pointers;
    for (std::size_t i = 0; i < events.size(); ++i) {
        events[i].type = vst2::kVstMidiType;
        events[i].deltaFrames = i < 2 ? 20 - int(i) * 20 : 5;  // 20, 0, then all at 5
        events[i].midiData[0] = static_cast<char>(0xb0);
        events[i].midiData[1] = static_cast<char>(i & 0x7f);
        pointers.push_back(reinterpret_cast<vst2::VstEvent*>(&events[i]));
    }
    std::vector<unsigned char> storage(sizeof(vst2::VstEvents) + pointers.size() * sizeof(void*));
    auto* list = reinterpret_cast<vst2::VstEvents*>(storage.data());
    list->numEvents = int(pointers.size());
    std::copy(pointers.begin(), pointers.end(), list->events);
    host.dispatch(vst2::effProcessEvents, 0, 0, list);
    Block block(64);
    host.process(block.inputs, block.outputs, 64);
    EXPECT_EQ(host.recording.eventsSeen, 4096) << "the rest are dropped";
    const auto& first = host.recording.records[0].events;
    ASSERT_EQ(first.size(), 4095u);
    EXPECT_EQ(first[0].data1, 1) << "offset 0 first";
    EXPECT_EQ(first[1].data1, 2) << "equal offsets keep their order";
    EXPECT_EQ(first[4094].data1, 4095 & 0x7f);
    EXPECT_EQ(host.recording.records[2].events.size(), 1u) << "offset 20 lands in the third frame";
}

TEST(AudioCall, HostWithoutTimeInformation) {
    TestHost host(false);
    host.dispatch(vst2::effMainsChanged, 0, 1);
    Block block(32);
    host.process(block.inputs, block.outputs, 32);
    ASSERT_FALSE(host.recording.records.empty());
    for (const FrameRecord& r : host.recording.records) {
        EXPECT_EQ(r.tempo, 120.0);
        EXPECT_EQ(r.songPosition, 0.0);
        EXPECT_FALSE(r.playing);
    }
    EXPECT_EQ(host.instance().getTempo(), 120.0);
}

TEST(AudioCall, TimeInformationGivesTempoAndPositionPerFrame) {
    TestHost host(true);
    host.dispatch(vst2::effSetSampleRate, 0, 0, nullptr, 48000.0f);
    host.dispatch(vst2::effMainsChanged, 0, 1);
    host.time.tempo = 90.0;
    host.time.ppqPos = 4.0;
    host.time.flags = vst2::kVstTransportPlaying | vst2::kVstPpqPosValid | vst2::kVstTempoValid;
    Block block(40);
    host.process(block.inputs, block.outputs, 40);
    EXPECT_EQ(host.instance().getTempo(), 90.0);
    ASSERT_EQ(host.recording.records.size(), 4u) << "frames run at 8, 16, 24 and 32";
    for (std::size_t f = 0; f < 4; ++f) {
        EXPECT_TRUE(host.recording.records[f].playing);
        EXPECT_DOUBLE_EQ(host.recording.records[f].songPosition, 4.0 + (f + 1) * 8 * (90.0 / 60.0 / 48000.0));
    }
    // Position without tempo is not enough.
    host.time.flags = vst2::kVstPpqPosValid;
    host.process(block.inputs, block.outputs, 40);
    EXPECT_EQ(host.recording.records.back().tempo, 120.0);
}

TEST(AudioCall, SilenceProtocol) {
    TestHost host;
    host.dispatch(vst2::effMainsChanged, 0, 1);
    const auto silentOut = vendor::outputSilenceCode;
    EXPECT_EQ(host.dispatch(vst2::effVendorSpecific, vendor::probeCode), 1);
    host.recording.answerSilent = 1;
    Block block(64);
    host.process(block.inputs, block.outputs, 64);
    EXPECT_EQ(host.dispatch(vst2::effVendorSpecific, silentOut), 1);
    host.recording.answerSilent = 0;
    host.process(block.inputs, block.outputs, 64);
    EXPECT_EQ(host.dispatch(vst2::effVendorSpecific, silentOut), 0);
    EXPECT_EQ(host.dispatch(vst2::effVendorSpecific, vendor::inputSilenceCode, 1), 1);
}
