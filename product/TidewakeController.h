// Tidewake's editor controller: the generic controller plus the one action of its own
// ("turnOffDelaySync") and the needle history the LFO display draws its trail from.
#pragma once

#include "editor/ModelController.h"

namespace tw {

class TidewakeController final : public ModelController {
public:
    using ModelController::ModelController;

    bool isEnabled(CushyView& view, const std::string& action, const std::string& params) override;
    void perform(CushyView& view, const std::string& action, const std::string& params) override;
    std::string getVariable(CushyView& view, const std::string& name) override;

    // Turns the delay's tempo sync off, keeping the delay where it is in absolute time.
    void turnOffDelaySync();
};

}  // namespace tw
