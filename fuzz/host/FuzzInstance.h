// One Tidewake instance for the fuzz targets of the host boundary, made once per process
// with a configuration folder of its own, so that no user's store takes part.
#pragma once

#include "vst2/Entry.h"
#include "product/TidewakeEditorFactory.h"
#include "product/TidewakeFactory.h"

#include <cstdlib>

namespace tw::fuzz {

inline vst2::AEffect* instance() {
    static vst2::AEffect* effect = [] {
        ::setenv("XDG_CONFIG_HOME", "/nonexistent/tidewake-fuzz", 1);
        return createEffect([](vst2::AEffect*, vst2::int32 opcode, vst2::int32, vst2::intptr, void*,
                               float) -> vst2::intptr { return opcode == vst2::audioMasterVersion ? 2400 : 0; },
                            std::make_unique<TidewakeFactory>(), &tidewakeEditor());
    }();
    return effect;
}

}  // namespace tw::fuzz
