// The one exported symbol of Tidewake.so: the host hands over its callback and gets back
// the effect record of a new Tidewake instance, or null when that fails.
#include "core/EntryFault.h"
#include "product/TidewakeEditorFactory.h"
#include "product/TidewakeFactory.h"
#include "vst2/Entry.h"

extern "C" __attribute__((visibility("default"))) vst2::AEffect* VSTPluginMain(vst2::HostCallback host) {
    try {
        return tw::createEffect(host, std::make_unique<tw::TidewakeFactory>(), &tw::tidewakeEditor());
    } catch (...) {
        tw::reportEntryFault("Tidewake", "VSTPluginMain");
        return nullptr;
    }
}
