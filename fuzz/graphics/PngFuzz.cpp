// Feeds arbitrary bytes to the PNG reader: as a colour picture or as a mask, with or
// without a gamma, chosen by the input's length so that real files stay valid seeds.
#include "graphics/QvxPNG.h"

#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        tw::QvxPNG png(data, size);
        const std::size_t w = std::size_t(png.width()), h = std::size_t(png.height());
        if (w * h > (1u << 22)) return 0;  // valid, but too big to be worth decoding here
        png.channels();
        if (size % 2) png.setGamma(0.5 + double(size % 7));
        if ((size / 2) % 2) {
            std::vector<std::uint8_t> pixels(w * h);
            std::vector<std::uint8_t*> rows(h);
            for (std::size_t y = 0; y < h; ++y) rows[y] = pixels.data() + y * w;
            png.read8(rows.data());
        } else {
            std::vector<std::uint32_t> pixels(w * h);
            std::vector<std::uint32_t*> rows(h);
            for (std::size_t y = 0; y < h; ++y) rows[y] = pixels.data() + y * w;
            png.read32(rows.data());
        }
    } catch (const tw::Exception&) {
    }
    return 0;
}
