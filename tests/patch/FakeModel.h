// The programs of an instance without the instance: a ModelServices that holds one patch
// cell per program, for tests of the formats that read and write them.
#pragma once

#include "patch/ModelFactory.h"
#include "patch/ModelServices.h"
#include "product/TidewakeFactory.h"

#include <vector>

namespace tw::test {

class FakeModel final : public ModelServices {
public:
    explicit FakeModel(std::unique_ptr<ModelFactory> factory = std::make_unique<TidewakeFactory>())
        : factory_(std::move(factory)) {
        for (int i = 0; i < factory_->getDescriptor().programCount; ++i)
            patches_.push_back(std::make_unique<PatchCell>(factory_->createInitPatch()));
    }

    ModelFactory& getFactory() override { return *factory_; }
    int getCurrentProgram() override { return current_; }
    void setCurrentProgram(int program) override { current_ = program; }
    std::uint32_t getPatchStamp(int program) override { return (*acquirePatch(program))->getChangeStamp(); }
    std::unique_ptr<Patch> clonePatch(int program) override { return (*acquirePatch(program))->clone(); }
    void setPatch(int program, const Patch& patch) override {
        patches_.at(std::size_t(program))->publish(patch.clone());
        ++published;
    }
    PatchHandle acquirePatch(int program) override { return patches_.at(std::size_t(program))->acquire(); }
    void getPatchName(int program, std::size_t maxLength, char* buffer) override {
        (*acquirePatch(program))->getName(maxLength, buffer);
    }
    bool setPatchName(int program, std::string_view text) override { return (*acquirePatch(program))->setName(text); }
    void beginEnd(int, bool) override {}
    float getParameter(int program, int parameter) override { return (*acquirePatch(program))->getParameter(parameter); }
    void editParameter(int program, int parameter, float value) override {
        (*acquirePatch(program))->storeParameter(parameter, value);
    }
    FeedbackSink::Snapshot getFeedback() override { return {}; }
    bool isEnabled() override { return true; }
    double getTempo() override { return 120.0; }
    void setEditPatch(const Patch*) override {}
    void updateDisplay() override {}

    std::string name(int program) { return (*acquirePatch(program))->getName(); }

    int published = 0;

private:
    std::unique_ptr<ModelFactory> factory_;
    std::vector<std::unique_ptr<PatchCell>> patches_;
    int current_ = 0;
};

}  // namespace tw::test
