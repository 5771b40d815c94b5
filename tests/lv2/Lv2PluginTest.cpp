// The LV2 plug-in through its own descriptor, as a host drives it: ports, transport,
// state saved and restored (also broken), and presets' programs.
#include <gtest/gtest.h>

#include <cmath>

#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>
#include <lv2/time/time.h>

#include "product/TidewakeDescriptor.h"
#include "tests/lv2/Lv2Host.h"

namespace tw::test {
namespace {

std::string bankOf(Lv2Host& host) { return host.plugin().instance().saveState(false); }

TEST(Lv2Plugin, ReportsItsLatencyAndHearsItsControlPorts) {
    UridMap map;
    Lv2Host host(map);
    ASSERT_TRUE(host.handle);
    host.run(0);
    EXPECT_EQ(host.latency, 8.0f) << "written even for an empty block";

    Instance& instance = host.plugin().instance();
    const auto& rows = instance.descriptor().parameters;
    host.control("wetMix") = 25.0f;  // percent
    host.control("lfoShape") = 2.0f;  // "Square"
    host.control("delaySync") = 1.0f;
    host.control("delayTime") = 0.75f;  // its position
    host.run(64);
    auto value = [&](const char* name) {
        for (std::size_t id = 0; id < rows.size(); ++id)
            if (rows[id].name == name) return instance.parameterValue(static_cast<int>(id));
        return -1.0f;
    };
    EXPECT_FLOAT_EQ(value("wetMix"), 0.25f);
    EXPECT_FLOAT_EQ(value("lfoShape"), 2.0f / 3.0f);
    EXPECT_EQ(value("delaySync"), 1.0f);
    EXPECT_EQ(value("delayTime"), 0.75f);

    // A value the editor wrote since is not undone by ports that did not change.
    instance.setParameterFromHost(0, 0.0f);
    const float before = instance.parameterValue(0);
    host.run(64);
    EXPECT_EQ(instance.parameterValue(0), before);
}

TEST(Lv2Plugin, EveryFactoryProgramsPortValuesReadBackExactly) {
    UridMap map;
    Lv2Host host(map);
    Instance& instance = host.plugin().instance();
    const auto& rows = instance.descriptor().parameters;
    for (int program = 0; program < instance.descriptor().programCount; ++program)
        for (std::size_t id = 0; id < rows.size(); ++id) {
            const float value = instance.getParameter(program, static_cast<int>(id));
            const lv2::PortKind kind = lv2::portRange(rows[id]).kind;
            if (kind == lv2::PortKind::toggle || kind == lv2::PortKind::selector) continue;  // stepped
            EXPECT_EQ(lv2::fromPort(rows[id], lv2::exactPort(rows[id], value)), value)
                << rows[id].name << " of program " << program;
        }
    EXPECT_EQ(lv2::fromPort(rows[0], NAN), rows[0].defaultValue);
}

TEST(Lv2Plugin, TheHostsTempoArrivesInQuarterNotes) {
    UridMap map;
    Lv2Host host(map);
    LV2_Atom_Forge& f = host.forge;
    lv2_atom_forge_frame_time(&f, 0);
    LV2_Atom_Forge_Frame object;
    lv2_atom_forge_object(&f, &object, 0, map.map(LV2_TIME__Position));
    lv2_atom_forge_key(&f, map.map(LV2_TIME__beatsPerMinute));
    lv2_atom_forge_float(&f, 90.0f);
    lv2_atom_forge_key(&f, map.map(LV2_TIME__beatUnit));
    lv2_atom_forge_int(&f, 8);
    lv2_atom_forge_key(&f, map.map(LV2_TIME__speed));
    lv2_atom_forge_float(&f, 1.0f);
    lv2_atom_forge_pop(&f, &object);
    host.run(256);
    EXPECT_DOUBLE_EQ(host.plugin().instance().getTempo(), 45.0) << "90 eighths a minute are 45 quarters";
}

TEST(Lv2Plugin, StateRoundTripsIntoAFreshInstanceAndPortsChangedSinceWin) {
    UridMap map;
    StateStore store;
    std::string saved;
    std::vector<float> ports;
    {
        Lv2Host host(map);
        host.control("wetMix") = 40.0f;
        host.control("freqShiftRange") = 3.0f;
        host.run(128);
        host.plugin().instance().setCurrentProgram(5);
        host.plugin().instance().setPatchName(5, "Mine");
        host.showParameters();
        ASSERT_EQ(host.save(store), LV2_STATE_SUCCESS);
        saved = bankOf(host);
        ports = host.controls;
    }
    ASSERT_EQ(store.values.size(), 2u) << "the bank and the current program";
    const StateStore::Value& bank = store.values[map.map("urn:marlinworks:tidewake#state")];
    EXPECT_EQ(bank.type, map.map(LV2_ATOM__Chunk));
    EXPECT_EQ(bank.flags, std::uint32_t(LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE));
    EXPECT_TRUE(bank.bytes == saved) << "the VST build's chunk, byte for byte";
    EXPECT_EQ(store.values[map.map("urn:marlinworks:tidewake#currentProgram")].type, map.map(LV2_ATOM__Int));

    // A host sets the session's port values, then restores the state.
    Lv2Host fresh(map);
    fresh.controls = ports;
    ASSERT_EQ(fresh.restore(store), LV2_STATE_SUCCESS);
    EXPECT_TRUE(bankOf(fresh) == saved);
    EXPECT_EQ(fresh.plugin().instance().getCurrentProgram(), 5);
    fresh.run(128);
    EXPECT_TRUE(bankOf(fresh) == saved) << "ports that show the state's values leave it exact";

    // A port the user moved after the state was taken (the host saved it, no block ran
    // in between) is not lost at the next load.
    Lv2Host later(map);
    later.controls = ports;
    later.control("wetMix") = 80.0f;
    ASSERT_EQ(later.restore(store), LV2_STATE_SUCCESS);
    later.run(128);
    EXPECT_FALSE(bankOf(later) == saved);
    EXPECT_FLOAT_EQ(later.plugin().instance().parameterValue(Param::wetMix), 0.8f);
}

TEST(Lv2Plugin, BrokenStateIsRefusedAndChangesNothing) {
    UridMap map;
    Lv2Host host(map);
    host.control("wetMix") = 10.0f;
    host.run(64);
    const std::string before = bankOf(host);
    const LV2_URID key = map.map("urn:marlinworks:tidewake#state");
    std::string good;
    {
        StateStore store;
        ASSERT_EQ(host.save(store), LV2_STATE_SUCCESS);
        good = store.values[key].bytes;
    }
    std::string flipped = good;
    flipped[0] = static_cast<char>(flipped[0] ^ 0x5a);
    for (const std::string& broken : {std::string(), std::string("not a chunk at all"), flipped, good.substr(0, 7)}) {
        StateStore store;
        store.values[key] = {broken, map.map(LV2_ATOM__Chunk), LV2_STATE_IS_POD};
        EXPECT_NE(host.restore(store), LV2_STATE_SUCCESS) << broken.size() << " bytes";
        EXPECT_TRUE(bankOf(host) == before);
    }
    StateStore empty;
    EXPECT_EQ(host.restore(empty), LV2_STATE_ERR_NO_PROPERTY);
    EXPECT_TRUE(bankOf(host) == before);
}

TEST(Lv2Plugin, APresetsProgramReplacesOnlyTheCurrentProgram) {
    UridMap map;
    Lv2Host host(map);
    Instance& instance = host.plugin().instance();
    instance.setCurrentProgram(2);
    const std::string program = instance.saveState(true);
    instance.setCurrentProgram(7);
    const std::string otherBefore = instance.clonePatch(3)->getName();
    StateStore store;
    store.values[map.map("urn:marlinworks:tidewake#program")] = {program, map.map(LV2_ATOM__Chunk), LV2_STATE_IS_POD};
    ASSERT_EQ(host.restore(store), LV2_STATE_SUCCESS);
    EXPECT_EQ(instance.getCurrentProgram(), 7);
    EXPECT_EQ(instance.clonePatch(7)->getName(), instance.clonePatch(2)->getName());
    EXPECT_EQ(instance.clonePatch(3)->getName(), otherBefore);
}

TEST(Lv2Plugin, AMidiNoteInTheEventsReachesTheEngine) {
    UridMap map;
    Lv2Host host(map);
    const std::uint8_t note[3] = {0x90, 60, 100};
    lv2_atom_forge_frame_time(&host.forge, 17);
    lv2_atom_forge_atom(&host.forge, 3, map.map(LV2_MIDI__MidiEvent));
    lv2_atom_forge_write(&host.forge, note, 3);
    host.run(256);
    EXPECT_GT(host.plugin().instance().getFeedback().values[Feedback::midiActivity], 0.0f) << "the MIDI lamp lights";
}

}  // namespace
}  // namespace tw::test
