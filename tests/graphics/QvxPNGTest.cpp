#include "graphics/QvxPNG.h"

#include "tests/Failure.h"
#include "graphics/PngEncoder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tw;
using tw::test::encodePng;
using tw::test::formatFailure;
using tw::test::PngPicture;

namespace {

std::vector<std::uint8_t> png(std::uint32_t width, int colorType, int bitDepth, std::vector<std::uint8_t> rows) {
    PngPicture p;
    p.width = width;
    p.colorType = colorType;
    p.bitDepth = bitDepth;
    p.rows = std::move(rows);
    return encodePng(p);
}

// Reads a file as colour (Pixel = uint32) or as a mask (uint8), with a gamma if not 0.
template <class Pixel>
std::vector<Pixel> read(const std::vector<std::uint8_t>& file, double gamma = 0) {
    QvxPNG reader(file.data(), file.size());
    if (gamma != 0) reader.setGamma(gamma);
    std::vector<Pixel> pixels(std::size_t(reader.width()) * std::size_t(reader.height()));
    std::vector<Pixel*> rows;
    for (std::int32_t y = 0; y < reader.height(); ++y) rows.push_back(pixels.data() + y * reader.width());
    if constexpr (sizeof(Pixel) == 4) {
        reader.read32(rows.data());
    } else {
        reader.read8(rows.data());
    }
    return pixels;
}

std::int32_t channels(const std::vector<std::uint8_t>& file) {
    return QvxPNG(file.data(), file.size()).channels();
}

using Pixels32 = std::vector<std::uint32_t>;
using Pixels8 = std::vector<std::uint8_t>;

}  // namespace

TEST(QvxPNG, ColourIsPremultipliedArgb) {
    const auto rgb = png(2, PNG_COLOR_TYPE_RGB, 8, {255, 0, 0, 1, 2, 3});
    EXPECT_EQ(channels(rgb), 3);
    EXPECT_EQ(read<std::uint32_t>(rgb), (Pixels32{0xFFFF0000, 0xFF010203}));
    // (c * (a + 1)) >> 8: 200 * 129 >> 8 = 100; alpha 1 weighs 2, so 128 becomes 1.
    const auto rgba = png(3, PNG_COLOR_TYPE_RGB_ALPHA, 8, {200, 100, 50, 128, 255, 255, 255, 0, 255, 128, 1, 1});
    EXPECT_EQ(channels(rgba), 4);
    EXPECT_EQ(read<std::uint32_t>(rgba), (Pixels32{0x80643219, 0x00000000, 0x01010100}));
    const auto deep = png(1, PNG_COLOR_TYPE_RGB, 16, {0xAB, 0, 0xCD, 0, 0x01, 0xFF});
    EXPECT_EQ(read<std::uint32_t>(deep), (Pixels32{0xFFABCD01}));
}

TEST(QvxPNG, GrayPaletteAndTransparencyExpand) {
    const auto bits = png(10, PNG_COLOR_TYPE_GRAY, 1, {0b10110000, 0b01000000});
    EXPECT_EQ(read<std::uint8_t>(bits), (Pixels8{255, 0, 255, 255, 0, 0, 0, 0, 0, 255}));
    EXPECT_EQ(read<std::uint32_t>(bits)[1], 0xFF000000u);
    EXPECT_EQ(read<std::uint8_t>(png(2, PNG_COLOR_TYPE_GRAY, 16, {0x12, 0x34, 0xFF, 0xFF})), (Pixels8{0x12, 0xFF}));

    PngPicture palette;
    palette.width = 3;
    palette.colorType = PNG_COLOR_TYPE_PALETTE;
    palette.bitDepth = 4;
    palette.rows = {0x01, 0x20};
    palette.palette = {{255, 255, 255}, {255, 0, 0}, {0, 0, 0}};
    palette.paletteAlpha = {255, 128, 0};
    EXPECT_EQ(channels(encodePng(palette)), 2);
    EXPECT_EQ(read<std::uint32_t>(encodePng(palette)), (Pixels32{0xFFFFFFFF, 0x80800000, 0x00000000}));
    // As a mask: white covers, half-transparent red is dark and half, transparent nothing.
    EXPECT_EQ(read<std::uint8_t>(encodePng(palette)), (Pixels8{255, 27, 0}));

    PngPicture keyed;
    keyed.width = 2;
    keyed.colorType = PNG_COLOR_TYPE_GRAY;
    keyed.rows = {10, 20};
    keyed.transparentColor = png_color_16{0, 0, 0, 0, 20};
    EXPECT_EQ(read<std::uint32_t>(encodePng(keyed)), (Pixels32{0xFF0A0A0A, 0}));
    EXPECT_EQ(read<std::uint8_t>(encodePng(keyed)), (Pixels8{10, 0}));
}

TEST(QvxPNG, MaskWeighsColoursAndAlpha) {
    EXPECT_EQ(read<std::uint8_t>(png(4, PNG_COLOR_TYPE_RGB, 8, {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255})),
              (Pixels8{54, 182, 18, 255}));
    EXPECT_EQ(read<std::uint8_t>(png(2, PNG_COLOR_TYPE_RGB_ALPHA, 8, {255, 255, 255, 128, 0, 255, 0, 0})),
              (Pixels8{128, 0}));
    const auto grayAlpha = png(1, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {100, 128});
    EXPECT_EQ(read<std::uint32_t>(grayAlpha), (Pixels32{0x80323232}));
    EXPECT_EQ(formatFailure([&] { read<std::uint8_t>(grayAlpha); }), "Error reading PNG image : unsupported pixel model");
}

TEST(QvxPNG, InterlacedReadsAlike) {
    PngPicture p;
    p.width = 9;
    p.height = 7;
    for (int i = 0; i < 9 * 7 * 3; ++i) p.rows.push_back(std::uint8_t(i * 7));
    const Pixels32 plain = read<std::uint32_t>(encodePng(p));
    p.interlaced = true;
    EXPECT_EQ(read<std::uint32_t>(encodePng(p)), plain);
}

TEST(QvxPNG, GammaAgainstTheFileGamma) {
    PngPicture p;
    p.width = 3;
    p.colorType = PNG_COLOR_TYPE_GRAY;
    p.rows = {0, 128, 255};
    // A display gamma of 2.2 undoes the file gamma of 1/2.2 assumed without a gAMA chunk.
    EXPECT_EQ(read<std::uint8_t>(encodePng(p), 2.2), (Pixels8{0, 128, 255}));
    const Pixels8 dark = read<std::uint8_t>(encodePng(p), 1.0);
    EXPECT_NEAR(dark[1], 56, 1);  // 255 * (128 / 255)^2.2
    EXPECT_EQ(dark[2], 255);
    p.gamma = 1.0;
    EXPECT_NEAR(read<std::uint8_t>(encodePng(p), 2.0)[1], 181, 1);  // 255 * sqrt(128 / 255)
}

TEST(QvxPNG, Failures) {
    const std::string gif = "GIF89a....";
    const auto open = [](const std::vector<std::uint8_t>& bytes) { QvxPNG reader(bytes.data(), bytes.size()); };
    EXPECT_EQ(formatFailure([&] { open(std::vector<std::uint8_t>(gif.begin(), gif.end())); }),
              "Error reading PNG image : invalid format");
    EXPECT_EQ(formatFailure([&] { open({}); }), "Error reading PNG image : invalid format");

    const auto file = png(16, PNG_COLOR_TYPE_RGB, 8, std::vector<std::uint8_t>(16 * 3, 77));
    EXPECT_EQ(formatFailure([&] { open({file.begin(), file.begin() + 20}); }), "Error reading PNG image : Read Error");
    auto damaged = file;
    damaged[29] ^= 1;
    EXPECT_EQ(formatFailure([&] { open(damaged); }), "Error reading PNG image : IHDR: CRC error");
    // Cut inside the pixels: the header reads, the pixels do not.
    const std::string cut = formatFailure([&] { read<std::uint32_t>({file.begin(), file.end() - 20}); });
    EXPECT_EQ(cut.rfind("Error reading PNG image : ", 0), 0u) << cut;
    // Sides beyond the limits are refused before any pixel is allocated.
    const auto wide = png(20000, PNG_COLOR_TYPE_GRAY, 1, std::vector<std::uint8_t>(2500, 0));
    const std::string refused = formatFailure([&] { open(wide); });
    EXPECT_EQ(refused.rfind("Error reading PNG image : ", 0), 0u) << refused;
}
