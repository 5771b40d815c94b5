// A host for the tests: answers the plug-in's callback, optionally with time information,
// and records the calls it receives.
#pragma once

#include <memory>
#include <vector>

#include "product/TidewakeEditorFactory.h"
#include "vst2/Entry.h"
#include "tests/host/RecordingFactory.h"

namespace tw::test {

struct HostCall {
    vst2::int32 opcode, index;
    vst2::intptr value;
    float opt;
};

class TestHost {
public:
    explicit TestHost(bool giveTime = false) : giveTime(giveTime) {
        current() = this;
        effect = createEffect(&TestHost::callback, std::make_unique<RecordingFactory>(recording), &tidewakeEditor());
        effect->user = this;
        current() = nullptr;
    }
    ~TestHost() { effect->dispatcher(effect, vst2::effClose, 0, 0, nullptr, 0); }
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    Instance& instance() { return Vst2Plugin::of(effect)->instance(); }
    vst2::intptr dispatch(vst2::int32 opcode, vst2::int32 index = 0, vst2::intptr value = 0, void* ptr = nullptr,
                          float opt = 0) {
        return effect->dispatcher(effect, opcode, index, value, ptr, opt);
    }
    void process(float** in, float** out, int n) { effect->processReplacing(effect, in, out, n); }
    std::vector<HostCall> callsOf(vst2::int32 opcode) const {
        std::vector<HostCall> out;
        for (const HostCall& c : calls)
            if (c.opcode == opcode) out.push_back(c);
        return out;
    }

    Recording recording;
    vst2::AEffect* effect = nullptr;
    bool giveTime;
    vst2::VstTimeInfo time{};
    std::vector<HostCall> calls;
    double sampleRate = 0;
    // Whether the host's window takes the size the editor asks for.
    bool acceptsSize = false;

private:
    static TestHost*& current() {
        static TestHost* host = nullptr;
        return host;
    }
    static vst2::intptr callback(vst2::AEffect* e, vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void*,
                                 float opt) {
        if (opcode == vst2::audioMasterVersion) return 2400;
        TestHost* self = e && e->user ? static_cast<TestHost*>(e->user) : current();
        if (self == nullptr) return 0;
        if (opcode == vst2::audioMasterGetTime)
            return self->giveTime ? reinterpret_cast<vst2::intptr>(&self->time) : 0;
        if (opcode == vst2::audioMasterGetSampleRate) return static_cast<vst2::intptr>(self->sampleRate);
        self->calls.push_back({opcode, index, value, opt});
        if (opcode == vst2::audioMasterSizeWindow) return self->acceptsSize ? 1 : 0;
        return 0;
    }
};

}  // namespace tw::test
