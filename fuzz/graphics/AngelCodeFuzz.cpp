// Feeds arbitrary text to the AngelCode .fnt reader.
#include "graphics/QvxAngelCode.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        tw::readAngelCodeFont(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const tw::Exception&) {
    }
    return 0;
}
