// The one exported symbol of Tidewake.clap: the entry a CLAP host reads, handing out the
// factory of Tidewake's plug-in.
#include <clap/entry.h>

#include "product/TidewakeClap.h"

namespace {

bool init(const char* path) { return tw::clap::entryInit(tw::tidewakeClap(), path); }
void deinit() { tw::clap::entryDeinit(tw::tidewakeClap()); }
const void* factory(const char* id) { return tw::clap::entryFactory(tw::tidewakeClap(), id); }

}  // namespace

extern "C" CLAP_EXPORT const clap_plugin_entry_t clap_entry{CLAP_VERSION_INIT, init, deinit, factory};
