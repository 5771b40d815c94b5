// The shared store's file: any bytes either decode to entries that encode back to the
// same bytes, or raise the format's own exceptions.
#include "platform/Exception.h"
#include "platform/SharedStore.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        auto entries = tw::SharedStore::decode(bytes);
        std::string again = tw::SharedStore::encode(entries);
        if (tw::SharedStore::decode(again) != entries) std::abort();
    } catch (const tw::FormatException&) {
    } catch (const tw::EOFException&) {
    }
    return 0;
}
