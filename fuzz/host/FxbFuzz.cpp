// FXB banks: any bytes are loaded or refused with the container's or the chunk's own
// exception.
#include "fuzz/host/FuzzInstance.h"
#include "platform/Exception.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    tw::Instance* instance = &tw::Vst2Plugin::of(tw::fuzz::instance())->instance();
    try {
        instance->loadFxb(data, size);
    } catch (const tw::Exception&) {
    }
    return 0;
}
