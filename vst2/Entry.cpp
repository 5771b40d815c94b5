// Creation of an instance for a host: the check of the host's callback, then the
// instance with its product factory.
#include <memory>
#include <stdexcept>

#include "vst2/Entry.h"

namespace tw {

vst2::AEffect* createEffect(vst2::HostCallback host, std::unique_ptr<ModelFactory> factory,
                            const EditorFactory* editor) {
    if (host == nullptr || host(nullptr, vst2::audioMasterVersion, 0, 0, nullptr, 0.0f) == 0)
        throw std::runtime_error("audioMaster returned 0");
    auto* instance = new Vst2Plugin(host, std::move(factory), editor);
    return instance->effect();
}

}  // namespace tw
