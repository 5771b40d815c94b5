#include "engine/MidiTracker.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

namespace tw {
namespace {

uint32_t on(int note, int velocity = 100) { return 0x90 << 16 | note << 8 | velocity; }
uint32_t off(int note) { return 0x80 << 16 | note << 8; }
uint32_t sustain(bool down) { return 0xb0 << 16 | 64 << 8 | (down ? 127 : 0); }

MidiTracker::Result play(MidiTracker& t, std::initializer_list<uint32_t> events) {
    std::vector<uint32_t> list(events);
    return t.run(list.data(), static_cast<int>(list.size()));
}

TEST(MidiTracker, TheLastHeldNoteWinsAndAReleaseFallsBackToTheOneStillDown) {
    MidiTracker t;
    EXPECT_EQ(t.note, 60);
    MidiTracker::Result first = play(t, {on(64)});
    EXPECT_TRUE(first.triggered);
    EXPECT_FALSE(play(t, {on(67)}).triggered);
    EXPECT_EQ(t.note, 67);
    play(t, {off(67)});
    EXPECT_EQ(t.note, 64);
    // Releasing all keeps the last note; a release of the earlier note leaves the later.
    play(t, {on(72), off(64)});
    EXPECT_EQ(t.note, 72);
    MidiTracker::Result last = play(t, {off(72)});
    EXPECT_TRUE(last.released);
    EXPECT_FALSE(last.held);
    EXPECT_EQ(t.note, 72);
}

TEST(MidiTracker, ARepeatedNoteMovesToTheEndAndVelocityZeroIsANoteOff) {
    MidiTracker t;
    play(t, {on(60), on(62), on(60, 50)});
    EXPECT_EQ(t.heldCount, 2);
    EXPECT_EQ(t.note, 60);
    EXPECT_NEAR(t.velocity, 50.0f / 127.0f, 1e-6f);
    play(t, {on(60, 0)});
    EXPECT_EQ(t.heldCount, 1);
    EXPECT_EQ(t.note, 62);
}

TEST(MidiTracker, SustainHoldsTheReleaseUntilThePedalGoesUp) {
    MidiTracker t;
    play(t, {sustain(true), on(50)});
    MidiTracker::Result up = play(t, {off(50)});
    EXPECT_FALSE(up.released);
    EXPECT_TRUE(up.held);
    MidiTracker::Result pedal = play(t, {sustain(false)});
    EXPECT_TRUE(pedal.released);
    EXPECT_FALSE(pedal.held);
    EXPECT_EQ(t.note, 50);
}

TEST(MidiTracker, AFullTableDropsTheOldestNote) {
    MidiTracker t;
    std::vector<uint32_t> events;
    for (int n = 0; n < 128; ++n) events.push_back(on(n));
    events.push_back(0xc0 << 16);  // a program change is ignored
    t.run(events.data(), static_cast<int>(events.size()));
    EXPECT_EQ(t.heldCount, 128);
    play(t, {on(127)});
    EXPECT_EQ(t.note, 127);
    // Note 0 fell out: releasing all the others releases everything.
    events.clear();
    for (int n = 1; n < 128; ++n) events.push_back(off(n));
    EXPECT_TRUE(t.run(events.data(), static_cast<int>(events.size())).released);
    EXPECT_EQ(t.heldCount, 0);
}

TEST(MidiTracker, TracksTheWheelAndTheBendOnAnyChannel) {
    MidiTracker t;
    play(t, {0xb3 << 16 | 1 << 8 | 127, 0xe5 << 16 | 0 << 8 | 0});
    EXPECT_FLOAT_EQ(t.modWheel, 1.0f);
    EXPECT_FLOAT_EQ(t.pitchBend, -1.0f);
    play(t, {0xe0 << 16 | 0x7f << 8 | 0x7f});
    EXPECT_FLOAT_EQ(t.pitchBend, 1.0f);
}

}  // namespace
}  // namespace tw
