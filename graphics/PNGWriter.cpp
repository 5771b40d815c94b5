#include "graphics/PNGWriter.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <fstream>

#include "platform/Exception.h"

namespace tw {

namespace {

void appendData(png_structp png, png_bytep data, png_size_t length) {
    auto* out = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + length);
}

// libpng reports errors by a long jump back into encode; the message is kept here.
struct WriteState {
    char message[200];
};

void fail(png_structp png, png_const_charp message) {
    auto* state = static_cast<WriteState*>(png_get_error_ptr(png));
    std::snprintf(state->message, sizeof state->message, "%s", message);
    png_longjmp(png, 1);
}

// Rows already in PNG order, `rowBytes` apart.
std::vector<std::uint8_t> encode(std::int32_t width, std::int32_t height, int colourType, const std::vector<std::uint8_t>& pixels,
                                 std::size_t rowBytes) {
    std::vector<std::uint8_t> out;
    WriteState state{};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &state, fail, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        throw Exception("Error writing PNG image : could not initialize");
    }
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        throw Exception(std::string("Error writing PNG image : ") + state.message);
    }
    png_set_write_fn(png, &out, appendData, nullptr);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), 8, colourType, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (std::int32_t y = 0; y < height; ++y) png_write_row(png, pixels.data() + std::size_t(y) * rowBytes);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return out;
}

void save(const std::string& path, const std::vector<std::uint8_t>& data) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(data.data()), std::streamsize(data.size()));
    if (!file) throw Exception("Could not write file " + path);
}

}  // namespace

std::vector<std::uint8_t> encodePNG(const Raster32& raster) {
    const IntRect& b = raster.bounds();
    if (b.isEmpty()) throw Exception("Error writing PNG image : empty raster");
    std::vector<std::uint8_t> rgba(std::size_t(b.width) * std::size_t(b.height) * 4);
    std::uint8_t* o = rgba.data();
    for (std::int32_t y = b.top; y < b.bottom(); ++y) {
        const std::uint32_t* p = raster.at(b.left, y);
        for (std::int32_t x = 0; x < b.width; ++x, o += 4) {
            const std::uint32_t v = p[x], a = v >> 24;
            for (int c = 0; c < 3; ++c) {
                const std::uint32_t channel = (v >> (16 - 8 * c)) & 0xFF;
                o[c] = std::uint8_t(a == 0 ? 0 : std::min<std::uint32_t>(255, (channel * 255 + a / 2) / a));
            }
            o[3] = std::uint8_t(a);
        }
    }
    return encode(b.width, b.height, PNG_COLOR_TYPE_RGB_ALPHA, rgba, std::size_t(b.width) * 4);
}

std::vector<std::uint8_t> encodePNG(const Raster8& raster) {
    const IntRect& b = raster.bounds();
    if (b.isEmpty()) throw Exception("Error writing PNG image : empty raster");
    std::vector<std::uint8_t> grey(std::size_t(b.width) * std::size_t(b.height));
    for (std::int32_t y = b.top; y < b.bottom(); ++y) {
        std::copy_n(raster.at(b.left, y), b.width, grey.data() + std::size_t(y - b.top) * std::size_t(b.width));
    }
    return encode(b.width, b.height, PNG_COLOR_TYPE_GRAY, grey, std::size_t(b.width));
}

void writePNG(const std::string& path, const Raster32& raster) { save(path, encodePNG(raster)); }
void writePNG(const std::string& path, const Raster8& raster) { save(path, encodePNG(raster)); }

}  // namespace tw
