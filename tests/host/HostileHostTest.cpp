// The plug-in as a careless or broken host meets it: wild parameter values, rates and
// tempos, NaN in the audio, a broken file in the resource folder, a store held by a stuck
// process. None of it may crash, hang, or leave the output anything but finite numbers.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <vector>

#include "product/TidewakeEditorFactory.h"
#include "vst2/Entry.h"
#include "product/TidewakeDescriptor.h"
#include "product/TidewakeFactory.h"
#include "platform/FileLock.h"
#include "platform/Folders.h"
#include "platform/SharedStore.h"
#include "tests/platform/TempFolder.h"

namespace tw {
namespace {

constexpr float kRate = 48000.0f;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// The real plug-in behind a host that answers time information from `time` when asked.
class Hosted {
public:
    Hosted() : effect_(VSTPluginMain(&callback)) {
        if (effect_ == nullptr) return;
        effect_->user = this;
        effect_->dispatcher(effect_, vst2::effSetSampleRate, 0, 0, nullptr, kRate);
        start();
    }
    ~Hosted() {
        if (effect_) effect_->dispatcher(effect_, vst2::effClose, 0, 0, nullptr, 0.0f);
    }
    Hosted(const Hosted&) = delete;
    Hosted& operator=(const Hosted&) = delete;

    vst2::AEffect* effect() { return effect_; }
    vst2::intptr dispatch(vst2::int32 opcode, vst2::int32 index = 0, vst2::intptr value = 0, float opt = 0.0f) {
        return effect_->dispatcher(effect_, opcode, index, value, nullptr, opt);
    }
    void set(int id, float value) { effect_->setParameter(effect_, hostIndex(id), value); }
    float get(int id) { return effect_->getParameter(effect_, hostIndex(id)); }
    void program(int p) { dispatch(vst2::effSetProgram, 0, p); }
    // Stops and starts the audio, which starts the engine afresh from the same seed.
    void start() {
        dispatch(vst2::effMainsChanged, 0, 0);
        dispatch(vst2::effMainsChanged, 0, 1);
    }

    // Runs a mono signal into both inputs; returns both outputs, interleaved.
    std::vector<float> run(const std::vector<float>& input, int block = 128) {
        std::vector<float> out;
        std::vector<float> inL(block), inR(block), outL(block), outR(block);
        for (size_t at = 0; at < input.size(); at += block) {
            int n = static_cast<int>(std::min<size_t>(block, input.size() - at));
            std::copy_n(input.begin() + at, n, inL.begin());
            std::copy_n(input.begin() + at, n, inR.begin());
            float* ins[2] = {inL.data(), inR.data()};
            float* outs[2] = {outL.data(), outR.data()};
            effect_->processReplacing(effect_, ins, outs, n);
            for (int k = 0; k < n; ++k) {
                out.push_back(outL[k]);
                out.push_back(outR[k]);
            }
        }
        return out;
    }

    vst2::VstTimeInfo time{};
    bool giveTime = false;

private:
    static int hostIndex(int id) {
        const std::vector<int>& order = tidewakeDescriptor().hostOrder;
        return static_cast<int>(std::find(order.begin(), order.end(), id) - order.begin());
    }
    static vst2::intptr callback(vst2::AEffect* e, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
        if (opcode == vst2::audioMasterVersion) return 2400;
        auto* self = e ? static_cast<Hosted*>(e->user) : nullptr;
        if (self && self->giveTime && opcode == vst2::audioMasterGetTime) return reinterpret_cast<vst2::intptr>(&self->time);
        return 0;
    }

    vst2::AEffect* effect_;
};

std::vector<float> tones(size_t samples) {
    std::vector<float> x(samples);
    for (size_t n = 0; n < samples; ++n)
        x[n] = 0.4f * static_cast<float>(std::sin(2 * M_PI * 330.0 * n / kRate) * std::exp(-double(n % 12000) / 3000.0));
    return x;
}

size_t firstNonFinite(const std::vector<float>& x) {
    for (size_t n = 0; n < x.size(); ++n)
        if (!std::isfinite(x[n])) return n;
    return x.size();
}

double energy(const std::vector<float>& x) {
    double e = 0;
    for (float v : x) e += double(v) * v;
    return e;
}

TEST(HostileHost, ParameterValuesAreMadeSafeWhereTheyEnter) {
    Hosted p;
    const ModelDescriptor& d = tidewakeDescriptor();
    for (int id = 0; id < Param::count; ++id) {
        const float fallback = d.parameters[static_cast<size_t>(id)].defaultValue;
        const std::pair<float, float> cases[] = {{kNaN, fallback}, {2.0f, 1.0f},  {-1.0f, 0.0f},
                                                 {kInf, 1.0f},     {-kInf, 0.0f}, {0.25f, 0.25f}};
        for (auto [given, kept] : cases) {
            p.set(id, given);
            EXPECT_EQ(p.get(id), kept) << d.parameters[static_cast<size_t>(id)].name << " given " << given;
        }
    }

    // The worst a host can send, synced delay and LFO included, then sane values again:
    // the output is finite throughout and sounds again afterwards.
    for (int program : {0, 6, 15}) {
        p.program(program);
        p.set(Param::delaySync, 1.0f);
        p.set(Param::lfoSync, 1.0f);
        for (int id = 0; id < Param::count; ++id)
            if (id != Param::delaySync && id != Param::lfoSync) p.set(id, id % 3 == 0 ? kNaN : id % 3 == 1 ? 2.0f : -1.0f);
        std::vector<float> wild = p.run(tones(24000));
        EXPECT_EQ(firstNonFinite(wild), wild.size()) << "program " << program;
        for (int id = 0; id < Param::count; ++id) p.set(id, 0.5f);
        std::vector<float> tame = p.run(tones(48000));
        EXPECT_EQ(firstNonFinite(tame), tame.size()) << "program " << program;
        EXPECT_GT(energy(tame), 1.0) << "program " << program;
    }
}

TEST(HostileHost, RatesThatAreNoRateAreRefusedAndTheLastGoodOneKept) {
    // Run in a child that an alarm ends: a rate of zero once made the audio call spin.
    int code = test::runInChild([] {
        ::alarm(20);
        Hosted p;
        p.program(6);
        const vst2::int32 latency = p.effect()->initialDelay;
        const std::vector<float> reference = p.run(tones(9600));
        for (float rate : {0.0f, -48000.0f, kNaN, kInf, -kInf, 1e-30f, 1e30f}) {
            p.dispatch(vst2::effSetSampleRate, 0, 0, rate);
            p.start();
            if (p.effect()->initialDelay != latency) return 2;
            if (p.run(tones(9600)) != reference) return 3;  // the same sound, at the kept rate
        }
        for (vst2::intptr size : {vst2::intptr(0), vst2::intptr(-1), vst2::intptr(1) << 40})
            p.dispatch(vst2::effSetBlockSize, 0, size);
        p.start();
        return p.run(tones(9600)) == reference ? 0 : 4;
    });
    EXPECT_EQ(code, 0);
}

TEST(HostileHost, InputThatIsNoNumberIsHeardAsSilence) {
    Hosted p;
    for (int program : {1, 3, 6, 8}) {
        p.program(program);
        std::vector<float> clean = tones(48000), poisoned = clean;
        for (size_t n : {100, 2001, 2002, 30000}) clean[n] = 0.0f;
        poisoned[100] = kNaN;
        poisoned[2001] = kInf;
        poisoned[2002] = -kInf;
        poisoned[30000] = -kNaN;
        p.start();
        std::vector<float> heard = p.run(poisoned);
        p.start();
        EXPECT_EQ(heard, p.run(clean)) << "program " << program;
        EXPECT_EQ(firstNonFinite(heard), heard.size());
    }
}

TEST(HostileHost, ATempoOrPositionThatIsNoNumberCountsAsNoTimeInformation) {
    Hosted p;
    p.program(6);
    p.set(Param::delaySync, 1.0f);
    p.set(Param::lfoSync, 1.0f);
    p.set(Param::lfoAmount, 0.9f);
    p.start();
    const std::vector<float> without = p.run(tones(24000));
    const double wild[] = {std::nan(""), HUGE_VAL, -HUGE_VAL, 0.0, -120.0, 1e300};
    for (double tempo : wild) {
        for (bool badPosition : {false, true}) {
            p.giveTime = true;
            p.time = {};
            p.time.flags = vst2::kVstPpqPosValid | vst2::kVstTempoValid | vst2::kVstTransportPlaying;
            p.time.tempo = badPosition ? 120.0 : tempo;
            p.time.ppqPos = badPosition ? tempo : 0.0;
            p.start();
            std::vector<float> heard = p.run(tones(24000));
            if (badPosition && (tempo == 0.0 || tempo == -120.0 || tempo == 1e300)) continue;  // a usable position
            EXPECT_EQ(heard, without) << "tempo " << p.time.tempo << " position " << p.time.ppqPos;
        }
    }
    p.giveTime = false;
}

// A product whose resource folder belongs to this test alone, so that a broken factory
// bank in it can't disturb the other tests of this process or folder.
class OverriddenFactory final : public TidewakeFactory {
public:
    OverriddenFactory() : descriptor_(tidewakeDescriptor()) { descriptor_.modelName = "TidewakeHostileTest"; }
    const ModelDescriptor& getDescriptor() const override { return descriptor_; }

private:
    ModelDescriptor descriptor_;
};

vst2::intptr answeringHost(vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*, float) {
    return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

TEST(HostileHost, ABrokenFactoryBankInTheResourceFolderSaysWhyOnce) {
    const std::filesystem::path folder = binaryDir() + "TidewakeHostileTest Resources";
    std::filesystem::create_directories(folder);
    struct Cleanup {
        std::filesystem::path folder;
        ~Cleanup() { std::filesystem::remove_all(folder); }
    } cleanup{folder};
    const std::string file = (folder / "FactoryBank.fxb").string();
    for (const char* content : {"", "CcnK but not a bank at all"}) {
        std::ofstream(file, std::ios::binary) << content;
        testing::internal::CaptureStderr();
        EXPECT_ANY_THROW(createEffect(&answeringHost, std::make_unique<OverriddenFactory>(), &tidewakeEditor()));
        EXPECT_ANY_THROW(createEffect(&answeringHost, std::make_unique<OverriddenFactory>(), &tidewakeEditor()));
        std::string said = testing::internal::GetCapturedStderr();
        if (*content == 0) {
            EXPECT_NE(said.find("Tidewake: the resource file \"" + file + "\""), std::string::npos) << said;
            EXPECT_NE(said.find("could not be used: "), std::string::npos) << said;
            EXPECT_EQ(said.find('\n'), said.size() - 1) << "said once, on one line: " << said;
        } else {
            EXPECT_EQ(said, "") << "once per file and process";
        }
    }
}

TEST(HostileHost, AStoreLockHeldByAStuckProcessDoesNotStallInstanceCreation) {
    test::TempFolder config;
    const std::string old = std::getenv("XDG_CONFIG_HOME");
    ::setenv("XDG_CONFIG_HOME", config.path.c_str(), 1);
    std::filesystem::create_directories(config.path / "Marlin Works");
    const Path lockFile = Path::parse((config.path / "Marlin Works/MarlinWorks.store.lock").string());
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    pid_t holder = ::fork();
    if (holder == 0) {
        FileLock held(lockFile, 1000);
        char c = 1;
        (void)!::write(ready[1], &c, 1);
        ::sleep(30);
        ::_exit(0);
    }
    char c;
    ASSERT_EQ(::read(ready[0], &c, 1), 1);

    auto before = std::chrono::steady_clock::now();
    {
        Hosted p;
        ASSERT_NE(p.effect(), nullptr);
        EXPECT_EQ(p.dispatch(vst2::effGetProgram), 0) << "the factory programs, as without a store";
    }
    auto waited = std::chrono::steady_clock::now() - before;
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
    ::setenv("XDG_CONFIG_HOME", old.c_str(), 1);
    // Far below the full wait that other accesses of the store allow.
    EXPECT_LT(waited, std::chrono::milliseconds(SharedStore::lockMilliseconds / 5));
}

}  // namespace
}  // namespace tw
