// Feeds arbitrary text to the image spec reader, against a picture of 64 by 48.
#include "graphics/ImageKey.h"

#include "platform/Exception.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const tw::ImageKey key = tw::parseImageSpec(
            text, [](const tw::ImageKey&) { return std::pair<std::int32_t, std::int32_t>(64, 48); });
        (void)(key < key);
    } catch (const tw::Exception&) {
    }
    return 0;
}
