// Tidewake.clap as a host sees it, loaded by the command-line host's own loader: what it
// says of itself, its parameters and their text both ways, its state through streams that
// move a byte at a time, and a broken state refused without a change.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "product/TidewakeDescriptor.h"
#include "tools/claphost/HostedClap.h"

namespace tw {
namespace {

std::string pluginPath() { return std::string(TIDEWAKE_BINARY_DIR) + "/Tidewake.clap"; }

std::unique_ptr<HostedClap> load() { return std::make_unique<HostedClap>(pluginPath(), ""); }

clap_param_info_t infoNamed(HostedClap& plugin, const std::string& name) {
    for (const clap_param_info_t& p : plugin.parameters())
        if (name == p.name) return p;
    ADD_FAILURE() << "no parameter " << name;
    return {};
}

TEST(ClapPlugin, DescribesItselfAsAStereoDelayWithNotesAndAnEditor) {
    auto plugin = load();
    const clap_plugin_descriptor_t& d = plugin->descriptor();
    EXPECT_STREQ(d.id, "com.marlinworks.tidewake");
    EXPECT_STREQ(d.name, "Tidewake");
    EXPECT_STREQ(d.vendor, "Marlin Works");
    EXPECT_STREQ(d.version, "1.0.0");
    std::set<std::string> features;
    for (const char* const* f = d.features; f && *f; ++f) features.insert(*f);
    for (const char* wanted : {"audio-effect", "delay", "stereo"}) EXPECT_TRUE(features.count(wanted)) << wanted;

    const clap_plugin_t* p = &plugin->plugin();
    ASSERT_NE(plugin->audioPorts(), nullptr);
    for (bool input : {true, false}) {
        ASSERT_EQ(plugin->audioPorts()->count(p, input), 1u);
        clap_audio_port_info_t info{};
        ASSERT_TRUE(plugin->audioPorts()->get(p, 0, input, &info));
        EXPECT_EQ(info.id, 0u);
        EXPECT_EQ(info.channel_count, 2u);
        EXPECT_TRUE(info.flags & CLAP_AUDIO_PORT_IS_MAIN);
        EXPECT_STREQ(info.port_type, CLAP_PORT_STEREO);
        EXPECT_FALSE(plugin->audioPorts()->get(p, 1, input, &info));
    }
    ASSERT_NE(plugin->notePorts(), nullptr);
    EXPECT_EQ(plugin->notePorts()->count(p, false), 0u);
    ASSERT_EQ(plugin->notePorts()->count(p, true), 1u);
    clap_note_port_info_t notes{};
    ASSERT_TRUE(plugin->notePorts()->get(p, 0, true, &notes));
    EXPECT_EQ(notes.supported_dialects, static_cast<std::uint32_t>(CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI));

    EXPECT_EQ(plugin->latencyFrames(), 8u);
    ASSERT_NE(plugin->gui(), nullptr);
    ASSERT_NE(plugin->timerSupport(), nullptr);
    EXPECT_TRUE(plugin->gui()->is_api_supported(p, CLAP_WINDOW_API_X11, false));
    EXPECT_FALSE(plugin->gui()->is_api_supported(p, CLAP_WINDOW_API_X11, true));
    EXPECT_FALSE(plugin->gui()->is_api_supported(p, CLAP_WINDOW_API_WAYLAND, false));
}

TEST(ClapPlugin, ListsTheProductsParametersInHostOrderWithStableIdsAndHonestRanges) {
    auto plugin = load();
    const ModelDescriptor& d = tidewakeDescriptor();
    const std::vector<clap_param_info_t> list = plugin->parameters();
    ASSERT_EQ(list.size(), d.hostOrder.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
        const clap_param_info_t& info = list[i];
        SCOPED_TRACE(info.name);
        ASSERT_EQ(info.id, static_cast<clap_id>(d.hostOrder[i]));
        const ParameterSpec& row = d.parameters[info.id];
        EXPECT_EQ(row.label, info.name);
        EXPECT_TRUE(info.flags & CLAP_PARAM_IS_AUTOMATABLE);
        const bool stepped = row.kind == ParameterKind::discrete || row.kind == ParameterKind::boolean;
        EXPECT_EQ((info.flags & CLAP_PARAM_IS_STEPPED) != 0, stepped);
        EXPECT_EQ(info.min_value, 0.0);
        EXPECT_EQ(info.max_value, row.kind == ParameterKind::discrete ? double(row.displayMax) : 1.0);
        EXPECT_GE(info.default_value, info.min_value);
        EXPECT_LE(info.default_value, info.max_value);
        if (stepped) {
            EXPECT_EQ(info.default_value, std::floor(info.default_value));
        }
        const double v = plugin->value(info.id);
        EXPECT_GE(v, info.min_value);
        EXPECT_LE(v, info.max_value);
    }
    clap_param_info_t none{};
    EXPECT_FALSE(plugin->params()->get_info(&plugin->plugin(), static_cast<std::uint32_t>(list.size()), &none));
    double v = 0;
    EXPECT_FALSE(plugin->params()->get_value(&plugin->plugin(), 999, &v));
}

TEST(ClapPlugin, ParameterTextReadsBackEveryWay) {
    auto plugin = load();
    // Every parameter's text at a spread of values reads back to a value of the same text.
    for (const clap_param_info_t& info : plugin->parameters()) {
        for (double at : {0.0, 0.25, 0.5, 0.75, 1.0}) {
            const double value = info.min_value + at * (info.max_value - info.min_value);
            const std::string text = plugin->text(info.id, value);
            SCOPED_TRACE(std::string(info.name) + " at " + text);
            ASSERT_FALSE(text.empty());
            double back = -1;
            ASSERT_TRUE(plugin->fromText(info.id, text, back));
            EXPECT_EQ(plugin->text(info.id, back), text);
        }
    }
    // Words as a user types them, and the selector's step by its label.
    const clap_id delay = infoNamed(*plugin, "Delay Time").id;
    double v = -1;
    ASSERT_TRUE(plugin->fromText(delay, "250 ms", v));
    EXPECT_EQ(plugin->text(delay, v), "250.00 ms");
    const clap_id range = infoNamed(*plugin, "Frequency Shift Range").id;
    ASSERT_TRUE(plugin->fromText(range, "Midi", v));
    EXPECT_EQ(v, 3.0);
    EXPECT_EQ(plugin->text(range, 2.0), "Sync");
    // A unit the text shows is read back with it.
    const clap_id feedback = infoNamed(*plugin, "Feedback Amount").id;
    const std::string shown = plugin->text(feedback, 0.5);
    EXPECT_NE(shown.find("dB"), std::string::npos) << shown;
    ASSERT_TRUE(plugin->fromText(feedback, shown, v));
    EXPECT_EQ(plugin->text(feedback, v), shown);
    // Words that name no value leave the value alone.
    v = 42;
    EXPECT_FALSE(plugin->fromText(delay, "soon", v));
    EXPECT_EQ(v, 42);
    EXPECT_FALSE(plugin->fromText(999, "1", v));
}

TEST(ClapPlugin, SettingsThroughFlushChangeTheValueTheHostReadsAndTheState) {
    auto plugin = load();
    const std::vector<unsigned char> before = plugin->saveState();
    plugin->apply({{"freqShiftRange", "Midi", true}, {"delayTime", "250 ms", true}, {"lfoShape", "2", false}});
    EXPECT_EQ(plugin->currentText(infoNamed(*plugin, "Frequency Shift Range").id), "Midi");
    EXPECT_EQ(plugin->currentText(infoNamed(*plugin, "Delay Time").id), "250.00 ms");
    EXPECT_EQ(plugin->value(infoNamed(*plugin, "LFO Shape").id), 2.0);
    EXPECT_NE(plugin->saveState(), before);
    // Settings made before a block come with it as events.
    plugin->activate(48000, 256);
    plugin->apply({{"lfoShape", "Random", true}});
    std::vector<float> buffer(256 * 4, 0.0f);
    float* in[2] = {buffer.data(), buffer.data() + 256};
    float* out[2] = {buffer.data() + 512, buffer.data() + 768};
    plugin->process(in, out, 256);
    EXPECT_EQ(plugin->currentText(infoNamed(*plugin, "LFO Shape").id), "Random");
    plugin->deactivate();
}

TEST(ClapPlugin, StateRoundTripsThroughStreamsOfAnyStep) {
    auto source = load();
    source->apply({{"delayTime", "333 ms", true}, {"lfoTarget", "Delay Time", true}});
    const std::vector<unsigned char> whole = source->saveState();
    ASSERT_FALSE(whole.empty());
    // The host may take one byte a call: the same bytes arrive.
    EXPECT_EQ(source->saveState(1), whole);
    EXPECT_EQ(source->saveState(7), whole);

    for (std::size_t step : {std::size_t(0), std::size_t(1), std::size_t(3)}) {
        SCOPED_TRACE(step);
        auto target = load();
        ASSERT_TRUE(target->loadState(whole, step));
        EXPECT_EQ(target->saveState(), whole);
        EXPECT_EQ(target->currentText(infoNamed(*target, "Delay Time").id), "333.00 ms");
        EXPECT_EQ(target->currentText(infoNamed(*target, "LFO Target").id), "Delay Time");
    }
}

TEST(ClapPlugin, ABrokenStateIsRefusedAndChangesNothing) {
    auto source = load();
    source->apply({{"delayTime", "120 ms", true}});
    const std::vector<unsigned char> good = source->saveState();
    ASSERT_GT(good.size(), 40u);

    auto plugin = load();
    plugin->apply({{"delayTime", "480 ms", true}, {"wetMix", "0.25", false}});
    const std::vector<unsigned char> before = plugin->saveState();

    std::vector<std::vector<unsigned char>> broken;
    broken.push_back({});                                                      // nothing
    broken.emplace_back(good.begin(), good.begin() + 10);                      // inside the header
    broken.emplace_back(good.begin(), good.begin() + good.size() / 2);         // inside the stream
    broken.emplace_back(good.begin(), good.end() - 9);  // the chunk one byte short, the program record gone
    broken.push_back(good);
    broken.back()[0] ^= 0xFF;                                                  // another magic
    broken.push_back(good);
    for (std::size_t i = 24; i < broken.back().size(); i += 5) broken.back()[i] ^= 0x5A;  // damaged stream
    for (std::size_t k = 0; k < broken.size(); ++k) {
        for (std::size_t step : {std::size_t(0), std::size_t(1)}) {
            SCOPED_TRACE("broken state " + std::to_string(k) + ", step " + std::to_string(step));
            EXPECT_FALSE(plugin->loadState(broken[k], step));
            EXPECT_EQ(plugin->saveState(), before);
        }
    }
    EXPECT_EQ(plugin->currentText(infoNamed(*plugin, "Delay Time").id), "480.00 ms");
    // And the good one still loads after all that.
    EXPECT_TRUE(plugin->loadState(good, 1));
    EXPECT_EQ(plugin->currentText(infoNamed(*plugin, "Delay Time").id), "120.00 ms");
}

}  // namespace
}  // namespace tw
