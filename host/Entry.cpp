// Creation of an instance for a host: the check of the host's callback, then the
// instance with its product factory.
#include <memory>
#include <stdexcept>

#include "host/Entry.h"

namespace tw {

vst2::AEffect* createEffect(vst2::HostCallback host, std::unique_ptr<ModelFactory> factory) {
    if (host == nullptr || host(nullptr, vst2::audioMasterVersion, 0, 0, nullptr, 0.0f) == 0)
        throw std::runtime_error("audioMaster returned 0");
    auto* instance = new PluginInstance(host, std::move(factory));
    return instance->effect();
}

}  // namespace tw
