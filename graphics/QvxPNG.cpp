#include "graphics/QvxPNG.h"

#include "graphics/PixelMath.h"

#include <png.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace tw {

// libpng reports a failure by calling the error function, which must not return: ours
// keeps the message and jumps back to the setjmp of the operation that is running. So
// that the jump skips no destructor, each operation that calls into libpng runs in a
// function of its own (the `try...` functions below) that holds nothing but plain data,
// and answers false when libpng failed; the caller then throws with the kept message.
struct QvxPNG::Decoder {
    png_structp png = nullptr;
    png_infop info = nullptr;
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
    std::size_t position = 0;
    char message[256] = {};

    ~Decoder() { png_destroy_read_struct(&png, info ? &info : nullptr, nullptr); }
};

namespace {

// Pictures beyond these sides are refused before any pixel is allocated. Films stack
// their frames vertically, so a strip may be far taller than wide.
constexpr png_uint_32 maxWidth = 16384;
constexpr png_uint_32 maxHeight = 65536;

[[noreturn]] void fail(const std::string& what) {
    throw QvxPNG::Exception("Error reading PNG image : " + what);
}

void onError(png_structp png, png_const_charp message) {
    auto* d = static_cast<QvxPNG::Decoder*>(png_get_error_ptr(png));
    std::snprintf(d->message, sizeof d->message, "%s", message);
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

void onRead(png_structp png, png_bytep out, png_size_t length) {
    auto* d = static_cast<QvxPNG::Decoder*>(png_get_io_ptr(png));
    if (length > d->size - d->position) png_error(png, "Read Error");
    std::memcpy(out, d->data + d->position, length);
    d->position += length;
}

bool tryReadInfo(QvxPNG::Decoder& d) {
    if (setjmp(png_jmpbuf(d.png))) return false;
    png_set_user_limits(d.png, maxWidth, maxHeight);
    png_set_read_fn(d.png, &d, onRead);
    png_read_info(d.png, d.info);
    return true;
}

bool trySetGamma(QvxPNG::Decoder& d, double gamma) {
    if (setjmp(png_jmpbuf(d.png))) return false;
    double fileGamma;
    if (!png_get_gAMA(d.png, d.info, &fileGamma)) fileGamma = 0.45454545454545453;
    png_set_gamma(d.png, gamma, fileGamma);
    return true;
}

bool tryRead32(QvxPNG::Decoder& d, std::uint32_t* const* rows, bool& shapeOk) {
    if (setjmp(png_jmpbuf(d.png))) return false;
    png_set_expand(d.png);
    png_set_strip_16(d.png);
    png_set_gray_to_rgb(d.png);
    png_set_bgr(d.png);
    png_set_filler(d.png, 0xFF, PNG_FILLER_AFTER);
    png_set_interlace_handling(d.png);
    png_read_update_info(d.png, d.info);
    shapeOk = png_get_rowbytes(d.png, d.info) == png_get_image_width(d.png, d.info) * 4;
    if (shapeOk) png_read_image(d.png, reinterpret_cast<png_bytepp>(const_cast<std::uint32_t**>(rows)));
    return true;
}

bool tryRead8(QvxPNG::Decoder& d, std::uint8_t* const* rows, bool& shapeOk) {
    if (setjmp(png_jmpbuf(d.png))) return false;
    png_set_palette_to_rgb(d.png);
    png_set_expand_gray_1_2_4_to_8(d.png);
    png_set_strip_16(d.png);
    if (png_get_color_type(d.png, d.info) & PNG_COLOR_MASK_COLOR)
        png_set_rgb_to_gray_fixed(d.png, PNG_ERROR_ACTION_NONE, -1, -1);
    // Over black, whatever is transparent (alpha or a transparency chunk) has no coverage.
    png_color_16 black = {};
    png_set_background_fixed(d.png, &black, PNG_BACKGROUND_GAMMA_SCREEN, 0, PNG_FP_1);
    png_set_interlace_handling(d.png);
    png_read_update_info(d.png, d.info);
    shapeOk = png_get_rowbytes(d.png, d.info) == png_get_image_width(d.png, d.info);
    if (shapeOk) png_read_image(d.png, const_cast<png_bytepp>(rows));
    return true;
}

}  // namespace

QvxPNG::QvxPNG(const std::uint8_t* data, std::size_t size) : decoder_(std::make_unique<Decoder>()) {
    if (size < 8 || png_sig_cmp(data, 0, 8) != 0) fail("invalid format");
    Decoder& d = *decoder_;
    d.data = data;
    d.size = size;
    d.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &d, onError, onWarning);
    if (d.png) d.info = png_create_info_struct(d.png);
    if (!d.png || !d.info) fail("could not initialize");
    if (!tryReadInfo(d)) fail(d.message);
}

QvxPNG::~QvxPNG() = default;

std::int32_t QvxPNG::width() const {
    return std::int32_t(png_get_image_width(decoder_->png, decoder_->info));
}

std::int32_t QvxPNG::height() const {
    return std::int32_t(png_get_image_height(decoder_->png, decoder_->info));
}

std::int32_t QvxPNG::channels() const {
    const bool transparency = png_get_valid(decoder_->png, decoder_->info, PNG_INFO_tRNS) != 0;
    return png_get_channels(decoder_->png, decoder_->info) + (transparency ? 1 : 0);
}

void QvxPNG::setGamma(double gamma) {
    if (!trySetGamma(*decoder_, gamma)) fail(decoder_->message);
}

void QvxPNG::read32(std::uint32_t* const* rows) {
    bool shapeOk = false;
    if (!tryRead32(*decoder_, rows, shapeOk)) fail(decoder_->message);
    if (!shapeOk) fail("unsupported pixel model");
    const std::int32_t w = width(), h = height();
    for (std::int32_t y = 0; y < h; ++y) {
        std::uint32_t* row = rows[y];
        for (std::int32_t x = 0; x < w; ++x) {
            const std::uint32_t p = row[x];
            const std::uint32_t a = p >> 24;
            if (a == 255) continue;
            const std::uint32_t m = a256(a);
            row[x] = (p & 0xFF000000u) | ((((p >> 16) & 0xFF) * m >> 8) << 16) |
                     ((((p >> 8) & 0xFF) * m >> 8) << 8) | ((p & 0xFF) * m >> 8);
        }
    }
}

void QvxPNG::read8(std::uint8_t* const* rows) {
    if (png_get_color_type(decoder_->png, decoder_->info) == PNG_COLOR_TYPE_GRAY_ALPHA)
        fail("unsupported pixel model");
    bool shapeOk = false;
    if (!tryRead8(*decoder_, rows, shapeOk)) fail(decoder_->message);
    if (!shapeOk) fail("unsupported pixel model");
}

}  // namespace tw
