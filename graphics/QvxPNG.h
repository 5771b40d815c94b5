// Reading PNG pictures from memory through libpng, with its gamma, palette, bit-depth and
// gray transformations. The resource manager builds every picture and glyph page with it.
#pragma once

#include "platform/Exception.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tw {

class QvxPNG {
public:
    // Every failure: "Error reading PNG image : " and what went wrong.
    class Exception : public FormatException {
    public:
        using FormatException::FormatException;
    };

    // libpng's state, known only to the reader's own code.
    struct Decoder;

    // Opens the PNG held in `data`, which must outlive this object, and reads its header.
    QvxPNG(const std::uint8_t* data, std::size_t size);
    ~QvxPNG();
    QvxPNG(const QvxPNG&) = delete;
    QvxPNG& operator=(const QvxPNG&) = delete;

    std::int32_t width() const;
    std::int32_t height() const;
    // The file's channel count, one more when a transparency chunk is there: 1 and 3 are
    // opaque pictures.
    std::int32_t channels() const;

    // Converts the pixels to `gamma` from the file's gamma (its gAMA chunk, else 1 / 2.2).
    void setGamma(double gamma);

    // Reads the picture as premultiplied 0xAARRGGBB words, `width` to each of the `height`
    // rows; gray and palette pictures are expanded and missing alpha is opaque.
    void read32(std::uint32_t* const* rows);

    // Reads the picture as 8-bit gray, colours weighted as libpng does by default. Only
    // gray, palette, RGB and RGBA pictures can be read so; the alpha of an RGBA picture
    // scales its gray, so that a transparent pixel never covers.
    void read8(std::uint8_t* const* rows);

private:
    std::unique_ptr<Decoder> decoder_;
};

}  // namespace tw
