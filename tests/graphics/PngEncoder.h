// Encodes small PNG files in memory for the reader's tests, in any pixel model libpng
// writes, so that each test shows the exact picture it decodes.
#pragma once

#include <png.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

namespace tw::test {

struct PngPicture {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    int colorType = PNG_COLOR_TYPE_RGB;
    int bitDepth = 8;
    std::vector<std::uint8_t> rows;  // the rows as the file stores them, packed and big-endian
    bool interlaced = false;
    double gamma = 0;  // a gAMA chunk when positive
    std::vector<png_color> palette;
    std::vector<std::uint8_t> paletteAlpha;      // a tRNS chunk for a palette
    std::optional<png_color_16> transparentColor;  // a tRNS chunk for gray or RGB
};

inline std::vector<std::uint8_t> encodePng(const PngPicture& picture) {
    std::vector<std::uint8_t> out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        throw std::runtime_error("cannot encode the test picture");
    }
    png_set_write_fn(
        png, &out,
        [](png_structp p, png_bytep data, png_size_t length) {
            auto* bytes = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(p));
            bytes->insert(bytes->end(), data, data + length);
        },
        nullptr);
    png_set_IHDR(png, info, picture.width, picture.height, picture.bitDepth, picture.colorType,
                 picture.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (picture.gamma > 0) png_set_gAMA(png, info, picture.gamma);
    if (!picture.palette.empty()) png_set_PLTE(png, info, picture.palette.data(), int(picture.palette.size()));
    if (!picture.paletteAlpha.empty())
        png_set_tRNS(png, info, picture.paletteAlpha.data(), int(picture.paletteAlpha.size()), nullptr);
    if (picture.transparentColor) png_set_tRNS(png, info, nullptr, 0, &*picture.transparentColor);
    png_write_info(png, info);
    const std::size_t stride = picture.rows.size() / picture.height;
    std::vector<png_bytep> rowPointers;
    for (std::uint32_t y = 0; y < picture.height; ++y)
        rowPointers.push_back(const_cast<png_bytep>(picture.rows.data() + y * stride));
    png_write_image(png, rowPointers.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return out;
}

}  // namespace tw::test
