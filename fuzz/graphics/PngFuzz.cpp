// Feeds arbitrary bytes to the picture loader: the PNG reader and everything baked at
// load (gamma, opacity, mask, compression, blend), then draws what came out. The form of
// the key is chosen by the input's length, so that real files stay valid seeds.
#include "graphics/ImageDecoder.h"
#include "graphics/QvxPNG.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        {
            // Pictures too big to be worth decoding here are still read up to their header.
            tw::QvxPNG png(data, size);
            if (std::size_t(png.width()) * std::size_t(png.height()) > (1u << 20)) return 0;
        }
        tw::ImageKey key;
        key.mask = size & 1;
        key.rle = size & 2;
        key.gamma = (size & 4) ? 0.5 + double(size % 7) : 0;
        key.opacity = (size & 8) ? double(size % 5) / 4 : 1;
        key.blend = tw::BlendMode((size >> 4) % 3);
        auto image = tw::decodeImage(data, size, key);
        tw::Raster32 canvas(tw::IntRect{0, 0, 300, 20});
        image->draw(canvas, -3, -2);
    } catch (const tw::Exception&) {
    }
    return 0;
}
