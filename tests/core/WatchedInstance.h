// Test support for the instance core with the product's processor: a host that answers
// nothing, and a factory whose processors start from one fixed seed and record what each
// audio call offered them and what they answered. The process gets a store of its own.
#pragma once

#include "core/Instance.h"
#include "product/TidewakeFactory.h"

#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace tw::test {

// Every instance reads the user's store at start-up: this process gets a configuration
// folder of its own, so that no store on the machine decides the programs.
inline const bool privateStore = [] {
    std::string folder = "/tmp/tidewake-core-test-" + std::to_string(::getpid());
    ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    ::setenv("XDG_DOCUMENTS_DIR", (folder + "/Documents").c_str(), 1);
    return true;
}();

class QuietHost final : public HostPort {
public:
    void beginGesture(int) override {}
    void endGesture(int) override {}
    void automate(int, float) override {}
    void updateDisplay() override {}
};

struct AudioCallRecord {
    int offered;  // frames
    int done;
    bool silentBefore;  // what the previous call reported
};

// Each instance gets a seed of its own; renderings to compare must share one.
class WatchedProcessor final : public Processor {
public:
    WatchedProcessor(std::unique_ptr<Processor> inner, std::vector<AudioCallRecord>& calls)
        : inner_(std::move(inner)), calls_(calls) {}
    void reset(float rate, std::uint32_t) override {
        inner_->reset(rate, 0x1234567u);
        lastSilent_ = true;
    }
    int latency(float rate) override { return inner_->latency(rate); }
    void suspend(FeedbackSink& sink) override { inner_->suspend(sink); }
    void process(ProcessContext& context) override {
        inner_->process(context);
        calls_.push_back({context.framesOffered / context.frames, context.framesDone / context.frames, lastSilent_});
        lastSilent_ = *context.silence != 0;
    }

private:
    std::unique_ptr<Processor> inner_;
    std::vector<AudioCallRecord>& calls_;
    bool lastSilent_ = true;
};

class WatchedFactory final : public TidewakeFactory {
public:
    mutable std::vector<AudioCallRecord> calls;
    std::unique_ptr<Processor> createProcessor(int instanceNumber) const override {
        return std::make_unique<WatchedProcessor>(TidewakeFactory::createProcessor(instanceNumber), calls);
    }
};

}  // namespace tw::test
