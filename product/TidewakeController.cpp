#include "product/TidewakeController.h"

#include "patch/Patch.h"
#include "product/TidewakeDescriptor.h"
#include "product/TidewakeParameterText.h"
#include "speclang/SpecNumber.h"

namespace tw {

namespace {

constexpr std::string_view needlePrefix = "feedbacks.lfoNeedlePositions[";

}  // namespace

bool TidewakeController::isEnabled(CushyView& view, const std::string& action, const std::string& params) {
    if (action == "turnOffDelaySync") return isOn(cachedPatch().getParameter(Param::delaySync));
    return ModelController::isEnabled(view, action, params);
}

void TidewakeController::perform(CushyView& view, const std::string& action, const std::string& params) {
    if (action == "turnOffDelaySync") return turnOffDelaySync();
    ModelController::perform(view, action, params);
}

std::string TidewakeController::getVariable(CushyView& view, const std::string& name) {
    // "feedbacks.lfoNeedlePositions[n]" with n one digit from 0 to 9.
    if (name.size() == needlePrefix.size() + 2 && name.starts_with(needlePrefix) && name.back() == ']') {
        const char digit = name[needlePrefix.size()];
        if (digit >= '0' && digit <= '9') {
            return formatDouble(cachedFeedback().needles[static_cast<std::size_t>(digit - '0')], 7);
        }
    }
    return ModelController::getVariable(view, name);
}

void TidewakeController::turnOffDelaySync() {
    if (!isOn(cachedPatch().getParameter(Param::delaySync))) return;
    const float time = turnOffDelaySyncValue(cachedPatch(), services().getTempo());
    std::unique_ptr<Patch> patch = cachedPatch().clone();
    patch->storeParameter(Param::delaySync, 0.0f);
    patch->storeParameter(Param::delayTime, time);
    pushUndo("Turn Off Sync", false);
    install(std::move(patch));
    services().beginEnd(Param::delaySync, true);
    services().beginEnd(Param::delayTime, true);
    writeParameter(Param::delaySync, 0.0f);
    writeParameter(Param::delayTime, time);
    services().beginEnd(Param::delayTime, false);
    services().beginEnd(Param::delaySync, false);
    refresh();
}

}  // namespace tw
