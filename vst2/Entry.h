// Creation of an instance for a host, shared by the exported entry and the tests.
#pragma once

#include <memory>

#include "vst2/Vst2Plugin.h"
#include "vst2/Vst2.h"
#include "editor/EditorFactory.h"
#include "patch/ModelFactory.h"

namespace tw {

// Checks that the host answers, then builds an instance, with an editor when `editor` is
// given; throws std::runtime_error "audioMaster returned 0" when the host does not answer.
vst2::AEffect* createEffect(vst2::HostCallback host, std::unique_ptr<ModelFactory> factory,
                            const EditorFactory* editor);

}  // namespace tw

extern "C" vst2::AEffect* VSTPluginMain(vst2::HostCallback host);
