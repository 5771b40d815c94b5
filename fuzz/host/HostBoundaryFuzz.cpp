// A hostile host: the bytes are a script of dispatcher calls, parameter writes, time
// information and audio calls, with any float a host could send (NaN and the infinities
// included). A fresh instance takes each script, so a finding replays alone. Fails on a
// crash, on a hang (libFuzzer's time-out), and on any output sample that is not finite.
#include "product/TidewakeEditorFactory.h"
#include "vst2/Entry.h"
#include "vst2/VendorProtocol.h"
#include "product/TidewakeFactory.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

struct Script {
    const unsigned char* at;
    const unsigned char* end;

    bool done() const { return at >= end; }
    unsigned byte() { return at < end ? *at++ : 0; }
    template <class T>
    T bits() {
        T value{};
        unsigned char raw[sizeof(T)] = {};
        for (unsigned char& b : raw) b = static_cast<unsigned char>(byte());
        std::memcpy(&value, raw, sizeof(T));
        return value;
    }
    // A float that is usually sensible and sometimes anything at all.
    float value() {
        unsigned kind = byte();
        return kind < 192 ? static_cast<float>(kind) / 160.0f : bits<float>();
    }
};

vst2::VstTimeInfo timeInfo;
bool giveTime = false;

vst2::intptr host(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    if (opcode == vst2::audioMasterVersion) return 2400;
    if (opcode == vst2::audioMasterGetTime && giveTime) return reinterpret_cast<vst2::intptr>(&timeInfo);
    return 0;
}

void processAndCheck(vst2::AEffect* e, Script& s) {
    const int frames = static_cast<int>(s.byte() % 200) + 1;
    const bool accumulate = s.byte() & 1;
    std::vector<float> in[2], out[2];
    for (int c = 0; c < 2; ++c) {
        in[c].resize(static_cast<std::size_t>(frames));
        out[c].assign(static_cast<std::size_t>(frames), 0.0f);
        for (float& x : in[c]) x = s.done() ? 0.1f : s.value() - 0.5f;
    }
    float* ins[2] = {in[0].data(), in[1].data()};
    float* outs[2] = {out[0].data(), out[1].data()};
    (accumulate ? e->process : e->processReplacing)(e, ins, outs, frames);
    for (int c = 0; c < 2; ++c)
        for (float y : out[c])
            if (!std::isfinite(y)) __builtin_trap();
}

void dispatch(vst2::AEffect* e, Script& s) {
    char text[512] = {};
    switch (s.byte() % 10) {
        case 0:
            e->dispatcher(e, vst2::effSetSampleRate, 0, 0, nullptr, s.byte() & 1 ? s.bits<float>() : 48000.0f);
            break;
        case 1:
            e->dispatcher(e, vst2::effSetBlockSize, 0, s.bits<vst2::intptr>(), nullptr, 0);
            break;
        case 2:
            e->dispatcher(e, vst2::effMainsChanged, 0, s.byte() & 1, nullptr, 0);
            break;
        case 3:
            e->dispatcher(e, vst2::effSetProgram, 0, static_cast<int>(s.bits<std::int32_t>() % 20), nullptr, 0);
            break;
        case 4:
            e->dispatcher(e, vst2::effSetBypass, 0, s.byte() & 1, nullptr, 0);
            break;
        case 5:
            e->dispatcher(e, vst2::effGetParamDisplay, static_cast<int>(s.byte() % 22) - 1, 0, text, 0);
            break;
        case 6: {
            // A chunk of the script's own bytes, program or bank.
            std::size_t length = std::min<std::size_t>(s.byte() * 8u, static_cast<std::size_t>(s.end - s.at));
            std::vector<unsigned char> chunk(s.at, s.at + length);
            s.at += length;
            e->dispatcher(e, vst2::effSetChunk, s.byte() & 1, static_cast<vst2::intptr>(chunk.size()), chunk.data(), 0);
            break;
        }
        case 7: {
            void* data = nullptr;
            e->dispatcher(e, vst2::effGetChunk, s.byte() & 1, 0, &data, 0);
            break;
        }
        case 8: {
            tw::vendor::ParameterText record{s.value(), {}};
            for (std::size_t i = 0; i + 1 < sizeof record.text && !s.done(); ++i) {
                char c = static_cast<char>(s.byte());
                if (c == 0) break;
                record.text[i] = c;
            }
            e->dispatcher(e, vst2::effVendorSpecific, s.byte() & 1 ? tw::vendor::textToValueCode : tw::vendor::valueToTextCode,
                          static_cast<int>(s.byte() % 22) - 1, &record, 0);
            break;
        }
        default: {
            vst2::VstMidiEvent midi{};
            midi.type = vst2::kVstMidiType;
            midi.byteSize = sizeof midi;
            midi.deltaFrames = s.bits<std::int32_t>() % 600;
            for (int i = 0; i < 3; ++i) midi.midiData[i] = static_cast<char>(s.byte());
            vst2::VstEvents list{};
            list.numEvents = 1;
            list.events[0] = reinterpret_cast<vst2::VstEvent*>(&midi);
            e->dispatcher(e, vst2::effProcessEvents, 0, 0, &list, 0);
            break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const bool privateStore = [] { return ::setenv("XDG_CONFIG_HOME", "/nonexistent/tidewake-fuzz", 1) == 0; }();
    (void)privateStore;
    Script s{data, data + size};
    giveTime = false;
    vst2::AEffect* e = tw::createEffect(&host, std::make_unique<tw::TidewakeFactory>(), &tw::tidewakeEditor());
    e->dispatcher(e, vst2::effSetSampleRate, 0, 0, nullptr, 48000.0f);
    e->dispatcher(e, vst2::effMainsChanged, 0, 1, nullptr, 0);
    for (int step = 0; step < 64 && !s.done(); ++step) {
        switch (s.byte() % 5) {
            case 0:
                e->setParameter(e, static_cast<int>(s.byte() % 22) - 1, s.value());
                break;
            case 1: {
                float v = e->getParameter(e, static_cast<int>(s.byte() % 22) - 1);
                if (!(v >= 0.0f && v <= 1.0f)) __builtin_trap();
                break;
            }
            case 2:
                giveTime = s.byte() & 1;
                timeInfo = {};
                timeInfo.flags = static_cast<vst2::int32>(s.bits<std::uint16_t>());
                timeInfo.tempo = s.byte() & 1 ? s.bits<double>() : s.byte() + 1.0;
                timeInfo.ppqPos = s.byte() & 1 ? s.bits<double>() : s.byte() * 0.25;
                break;
            case 3:
                dispatch(e, s);
                break;
            default:
                processAndCheck(e, s);
                break;
        }
    }
    processAndCheck(e, s);
    e->dispatcher(e, vst2::effClose, 0, 0, nullptr, 0);
    return 0;
}
