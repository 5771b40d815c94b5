// What the host hears of the editor's gestures, without a window: the instance is driven
// as the editor drives it (begin, values, end), and the plug-in must hand the host the
// gesture's events in order, through the flush it asks for while nothing processes, or
// through process while the host processes, keeping what a full list could not take.
#include <gtest/gtest.h>

#include <vector>

#include <clap/ext/params.h>
#include <clap/ext/state.h>

#include "clap/ClapParameter.h"
#include "clap/ClapPlugin.h"
#include "product/TidewakeClap.h"
#include "product/TidewakeDescriptor.h"

namespace tw::clap {
namespace {

struct Heard {
    std::uint16_t type;
    clap_id id;
    double value;
};

// A host that counts its calls and keeps what the plug-in pushes.
struct Host {
    clap_host_t clap{};
    int flushRequests = 0, rescans = 0, dirty = 0;
    std::vector<Heard> heard;
    std::size_t room = 1000;  // events the output list takes per call

    Host() {
        clap.clap_version = CLAP_VERSION;
        clap.host_data = this;
        clap.name = "test";
        clap.vendor = clap.url = clap.version = "";
        clap.get_extension = [](const clap_host_t*, const char* id) -> const void* {
            static const clap_host_params_t params{
                [](const clap_host_t* h, clap_param_rescan_flags) { ++of(h).rescans; },
                [](const clap_host_t*, clap_id, clap_param_clear_flags) {},
                [](const clap_host_t* h) { ++of(h).flushRequests; }};
            static const clap_host_state_t state{[](const clap_host_t* h) { ++of(h).dirty; }};
            if (std::string_view(id) == CLAP_EXT_PARAMS) return &params;
            if (std::string_view(id) == CLAP_EXT_STATE) return &state;
            return nullptr;
        };
        clap.request_restart = clap.request_process = clap.request_callback = [](const clap_host_t*) {};
    }
    static Host& of(const clap_host_t* h) { return *static_cast<Host*>(h->host_data); }

    clap_output_events_t output() {
        return {this, [](const clap_output_events_t* l, const clap_event_header_t* e) {
                    Host& h = *static_cast<Host*>(l->ctx);
                    if (h.room == 0) return false;
                    --h.room;
                    const clap_id id = e->type == CLAP_EVENT_PARAM_VALUE
                                           ? reinterpret_cast<const clap_event_param_value_t*>(e)->param_id
                                           : reinterpret_cast<const clap_event_param_gesture_t*>(e)->param_id;
                    const double value =
                        e->type == CLAP_EVENT_PARAM_VALUE ? reinterpret_cast<const clap_event_param_value_t*>(e)->value : 0.0;
                    h.heard.push_back({e->type, id, value});
                    return true;
                }};
    }
};

clap_input_events_t noEvents() {
    return {nullptr, [](const clap_input_events_t*) -> std::uint32_t { return 0; },
            [](const clap_input_events_t*, std::uint32_t) -> const clap_event_header_t* { return nullptr; }};
}

class ClapGesture : public ::testing::Test {
protected:
    void SetUp() override {
        const Product& product = tidewakeClap();
        ASSERT_TRUE(entryInit(product, "/nonexistent/Tidewake.clap"));
        const auto* factory = static_cast<const clap_plugin_factory_t*>(entryFactory(product, CLAP_PLUGIN_FACTORY_ID));
        ASSERT_NE(factory, nullptr);
        plugin = factory->create_plugin(factory, &host.clap, product.descriptor.id);
        ASSERT_NE(plugin, nullptr);
        ASSERT_TRUE(plugin->init(plugin));
        params = static_cast<const clap_plugin_params_t*>(plugin->get_extension(plugin, CLAP_EXT_PARAMS));
    }
    void TearDown() override {
        if (plugin) plugin->destroy(plugin);
    }

    Instance& instance() { return ClapPlugin::of(plugin)->instance(); }
    // The user drags a parameter through `values`, as the editor reports it.
    void drag(int id, std::initializer_list<float> values) {
        instance().beginEnd(id, true);
        for (float v : values) instance().editParameter(instance().getCurrentProgram(), id, v);
        instance().beginEnd(id, false);
    }
    void flush() {
        const clap_input_events_t in = noEvents();
        const clap_output_events_t out = host.output();
        params->flush(plugin, &in, &out);
    }
    void process() {
        std::vector<float> buffer(4 * 64, 0.0f);
        float* ins[2] = {buffer.data(), buffer.data() + 64};
        float* outs[2] = {buffer.data() + 128, buffer.data() + 192};
        clap_audio_buffer_t in{ins, nullptr, 2, 0, 0}, out{outs, nullptr, 2, 0, 0};
        const clap_input_events_t inEvents = noEvents();
        const clap_output_events_t outEvents = host.output();
        clap_process_t p{};
        p.frames_count = 64;
        p.audio_inputs = &in;
        p.audio_outputs = &out;
        p.audio_inputs_count = p.audio_outputs_count = 1;
        p.in_events = &inEvents;
        p.out_events = &outEvents;
        ASSERT_EQ(plugin->process(plugin, &p), CLAP_PROCESS_CONTINUE);
    }
    void expectGesture(std::size_t from, int id, std::initializer_list<float> values) {
        const ParameterSpec& row = tidewakeDescriptor().parameters[static_cast<std::size_t>(id)];
        ASSERT_EQ(host.heard.size(), from + values.size() + 2);
        EXPECT_EQ(host.heard[from].type, CLAP_EVENT_PARAM_GESTURE_BEGIN);
        std::size_t k = from + 1;
        for (float v : values) {
            EXPECT_EQ(host.heard[k].type, CLAP_EVENT_PARAM_VALUE);
            EXPECT_EQ(host.heard[k].value, toPlain(row, v));
            ++k;
        }
        EXPECT_EQ(host.heard[k].type, CLAP_EVENT_PARAM_GESTURE_END);
        for (std::size_t i = from; i <= k; ++i) EXPECT_EQ(host.heard[i].id, static_cast<clap_id>(id));
    }

    Host host;
    const clap_plugin_t* plugin = nullptr;
    const clap_plugin_params_t* params = nullptr;
};

constexpr int delayTime = 6, lfoShape = 13;

TEST_F(ClapGesture, WhileNothingProcessesTheGestureLeavesThroughTheFlushItAsksFor) {
    drag(delayTime, {0.3f, 0.35f, 0.4f});
    EXPECT_GT(host.flushRequests, 0);
    EXPECT_TRUE(host.heard.empty());
    EXPECT_GT(host.dirty, 0);
    flush();
    expectGesture(0, delayTime, {0.3f, 0.35f, 0.4f});
    // Taken once: the next flush has nothing.
    flush();
    EXPECT_EQ(host.heard.size(), 5u);
    // A selector's value goes as its step's number.
    drag(lfoShape, {2.0f / 3.0f});
    flush();
    expectGesture(5, lfoShape, {2.0f / 3.0f});
    EXPECT_EQ(host.heard[6].value, 2.0);
}

TEST_F(ClapGesture, WhileTheHostProcessesTheGestureLeavesThroughProcessUnasked) {
    ASSERT_TRUE(plugin->activate(plugin, 48000, 1, 64));
    ASSERT_TRUE(plugin->start_processing(plugin));
    drag(delayTime, {0.6f, 0.7f});
    EXPECT_EQ(host.flushRequests, 0);
    process();
    expectGesture(0, delayTime, {0.6f, 0.7f});
    double value = 0;
    ASSERT_TRUE(params->get_value(plugin, delayTime, &value));
    EXPECT_EQ(value, 0.7f);
    plugin->stop_processing(plugin);
    plugin->deactivate(plugin);
}

TEST_F(ClapGesture, AFullListKeepsTheRestForTheNextCall) {
    drag(delayTime, {0.1f, 0.2f});
    for (int call = 0; call < 4; ++call) {
        host.room = 1;
        flush();
        EXPECT_EQ(host.heard.size(), static_cast<std::size_t>(call + 1));
    }
    expectGesture(0, delayTime, {0.1f, 0.2f});
}

}  // namespace
}  // namespace tw::clap
