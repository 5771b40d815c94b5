// Creation of an instance for a host, shared by the exported entry and the tests.
#pragma once

#include <memory>

#include "host/PluginInstance.h"
#include "host/Vst2.h"
#include "model/ModelFactory.h"

namespace tw {

// Checks that the host answers, then builds an instance; throws std::runtime_error
// "audioMaster returned 0" when it does not.
vst2::AEffect* createEffect(vst2::HostCallback host, std::unique_ptr<ModelFactory> factory);

}  // namespace tw

extern "C" vst2::AEffect* VSTPluginMain(vst2::HostCallback host);
