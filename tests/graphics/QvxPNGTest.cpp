#include "graphics/QvxPNG.h"

#include "graphics/Failure.h"
#include "graphics/PngEncoder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tw;
using tw::test::encodePng;
using tw::test::formatFailure;
using tw::test::PngPicture;

namespace {

PngPicture picture(std::uint32_t width, std::uint32_t height, int colorType, int bitDepth,
                   std::vector<std::uint8_t> rows) {
    PngPicture p;
    p.width = width;
    p.height = height;
    p.colorType = colorType;
    p.bitDepth = bitDepth;
    p.rows = std::move(rows);
    return p;
}

std::vector<std::uint32_t> read32(const std::vector<std::uint8_t>& file, double gamma = 0) {
    QvxPNG png(file.data(), file.size());
    if (gamma != 0) png.setGamma(gamma);
    std::vector<std::uint32_t> pixels(std::size_t(png.width()) * std::size_t(png.height()));
    std::vector<std::uint32_t*> rows;
    for (std::int32_t y = 0; y < png.height(); ++y) rows.push_back(pixels.data() + y * png.width());
    png.read32(rows.data());
    return pixels;
}

std::vector<std::uint8_t> read8(const std::vector<std::uint8_t>& file, double gamma = 0) {
    QvxPNG png(file.data(), file.size());
    if (gamma != 0) png.setGamma(gamma);
    std::vector<std::uint8_t> pixels(std::size_t(png.width()) * std::size_t(png.height()));
    std::vector<std::uint8_t*> rows;
    for (std::int32_t y = 0; y < png.height(); ++y) rows.push_back(pixels.data() + y * png.width());
    png.read8(rows.data());
    return pixels;
}

std::int32_t channels(const std::vector<std::uint8_t>& file) {
    return QvxPNG(file.data(), file.size()).channels();
}

using Pixels32 = std::vector<std::uint32_t>;
using Pixels8 = std::vector<std::uint8_t>;

}  // namespace

TEST(QvxPNG, RgbIsOpaqueArgb) {
    const auto file = encodePng(picture(3, 2, PNG_COLOR_TYPE_RGB, 8,
                                        {255, 0, 0, 0, 255, 0, 0, 0, 255,  //
                                         1, 2, 3, 0, 0, 0, 255, 255, 255}));
    QvxPNG png(file.data(), file.size());
    EXPECT_EQ(png.width(), 3);
    EXPECT_EQ(png.height(), 2);
    EXPECT_EQ(png.channels(), 3);
    EXPECT_EQ(read32(file), (Pixels32{0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFF010203, 0xFF000000, 0xFFFFFFFF}));
}

TEST(QvxPNG, AlphaIsPremultipliedPerChannel) {
    const auto file = encodePng(picture(4, 1, PNG_COLOR_TYPE_RGB_ALPHA, 8,
                                        {200, 100, 50, 128, 255, 255, 255, 0, 9, 8, 7, 255, 255, 128, 1, 1}));
    EXPECT_EQ(channels(file), 4);
    // (c * (a + 1)) >> 8: 200 * 129 >> 8 = 100; alpha 1 weighs 2, so 128 becomes 1.
    EXPECT_EQ(read32(file), (Pixels32{0x80643219, 0x00000000, 0xFF090807, 0x01010100}));
}

TEST(QvxPNG, GrayAndLowBitDepthsExpand) {
    const auto gray = encodePng(picture(2, 1, PNG_COLOR_TYPE_GRAY, 8, {0x40, 0xC0}));
    EXPECT_EQ(channels(gray), 1);
    EXPECT_EQ(read32(gray), (Pixels32{0xFF404040, 0xFFC0C0C0}));
    EXPECT_EQ(read8(gray), (Pixels8{0x40, 0xC0}));

    const auto bits = encodePng(picture(10, 1, PNG_COLOR_TYPE_GRAY, 1, {0b10110000, 0b01000000}));
    EXPECT_EQ(read8(bits), (Pixels8{255, 0, 255, 255, 0, 0, 0, 0, 0, 255}));
    EXPECT_EQ(read32(bits)[0], 0xFFFFFFFFu);
    EXPECT_EQ(read32(bits)[1], 0xFF000000u);

    const auto deep = encodePng(picture(2, 1, PNG_COLOR_TYPE_GRAY, 16, {0x12, 0x34, 0xFF, 0xFF}));
    EXPECT_EQ(read8(deep), (Pixels8{0x12, 0xFF}));
    const auto deepRgb = encodePng(picture(1, 1, PNG_COLOR_TYPE_RGB, 16, {0xAB, 0, 0xCD, 0, 0x01, 0xFF}));
    EXPECT_EQ(read32(deepRgb), (Pixels32{0xFFABCD01}));
}

TEST(QvxPNG, PaletteWithTransparency) {
    PngPicture p = picture(3, 1, PNG_COLOR_TYPE_PALETTE, 4, {0x01, 0x20});
    p.palette = {{255, 255, 255}, {255, 0, 0}, {0, 0, 0}};
    p.paletteAlpha = {255, 128, 0};
    const auto file = encodePng(p);
    EXPECT_EQ(channels(file), 2);
    EXPECT_EQ(read32(file), (Pixels32{0xFFFFFFFF, 0x80800000, 0x00000000}));
    // As a mask: white covers, half-transparent red is dark and half, transparent nothing.
    const Pixels8 mask = read8(file);
    EXPECT_EQ(mask[0], 255);
    EXPECT_EQ(mask[1], 27);
    EXPECT_EQ(mask[2], 0);

    p.paletteAlpha.clear();
    EXPECT_EQ(channels(encodePng(p)), 1);
}

TEST(QvxPNG, TransparentColorOfAGrayPicture) {
    PngPicture p = picture(2, 1, PNG_COLOR_TYPE_GRAY, 8, {10, 20});
    p.transparentColor = png_color_16{0, 0, 0, 0, 20};
    const auto file = encodePng(p);
    EXPECT_EQ(channels(file), 2);
    EXPECT_EQ(read32(file), (Pixels32{0xFF0A0A0A, 0}));
    EXPECT_EQ(read8(file), (Pixels8{10, 0}));
}

TEST(QvxPNG, MaskWeighsColoursAndAlpha) {
    const auto rgb = encodePng(picture(5, 1, PNG_COLOR_TYPE_RGB, 8,
                                       {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0}));
    EXPECT_EQ(read8(rgb), (Pixels8{54, 182, 18, 255, 0}));
    const auto rgba = encodePng(picture(3, 1, PNG_COLOR_TYPE_RGB_ALPHA, 8,
                                        {255, 255, 255, 128, 255, 255, 255, 0, 0, 255, 0, 255}));
    EXPECT_EQ(read8(rgba), (Pixels8{128, 0, 182}));
}

TEST(QvxPNG, GrayAlphaIsNoMask) {
    const auto file = encodePng(picture(1, 1, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {100, 128}));
    EXPECT_EQ(channels(file), 2);
    EXPECT_EQ(read32(file), (Pixels32{0x80323232}));
    EXPECT_EQ(formatFailure([&] { read8(file); }), "Error reading PNG image : unsupported pixel model");
}

TEST(QvxPNG, InterlacedReadsAlike) {
    std::vector<std::uint8_t> rows;
    for (int i = 0; i < 9 * 7 * 3; ++i) rows.push_back(std::uint8_t(i * 7));
    PngPicture p = picture(9, 7, PNG_COLOR_TYPE_RGB, 8, rows);
    const Pixels32 plain = read32(encodePng(p));
    p.interlaced = true;
    EXPECT_EQ(read32(encodePng(p)), plain);
    EXPECT_EQ(plain[10], 0xFF000000u | (210u << 16) | (217u << 8) | 224u);
}

TEST(QvxPNG, GammaAgainstTheFileGamma) {
    PngPicture p = picture(3, 1, PNG_COLOR_TYPE_GRAY, 8, {0, 128, 255});
    const auto noChunk = encodePng(p);
    // A display gamma of 2.2 undoes a file gamma of 1/2.2: nothing changes.
    EXPECT_EQ(read8(noChunk, 2.2), (Pixels8{0, 128, 255}));
    // Against 1, the mid tone darkens and the ends stay.
    const Pixels8 dark = read8(noChunk, 1.0);
    EXPECT_EQ(dark[0], 0);
    EXPECT_NEAR(dark[1], 56, 1);
    EXPECT_EQ(dark[2], 255);
    // A file without gAMA counts as 1/2.2.
    p.gamma = 0.45455;
    EXPECT_EQ(read8(encodePng(p), 1.0), dark);
    p.gamma = 1.0;
    EXPECT_NEAR(read8(encodePng(p), 2.0)[1], 181, 1);  // 255 * sqrt(128 / 255)
    EXPECT_EQ(read32(encodePng(p), 1.0), (Pixels32{0xFF000000, 0xFF808080, 0xFFFFFFFF}));
}

TEST(QvxPNG, Failures) {
    const std::string notPng = "GIF89a....";
    const auto open = [](const std::vector<std::uint8_t>& bytes) { QvxPNG png(bytes.data(), bytes.size()); };
    EXPECT_EQ(formatFailure([&] { open(std::vector<std::uint8_t>(notPng.begin(), notPng.end())); }),
              "Error reading PNG image : invalid format");
    EXPECT_EQ(formatFailure([&] { open({}); }), "Error reading PNG image : invalid format");

    const auto file = encodePng(picture(16, 16, PNG_COLOR_TYPE_RGB, 8, std::vector<std::uint8_t>(16 * 16 * 3, 77)));
    // Cut inside the header: the constructor fails with libpng's words.
    EXPECT_EQ(formatFailure([&] { open({file.begin(), file.begin() + 20}); }),
              "Error reading PNG image : Read Error");
    // A damaged chunk checksum.
    auto damaged = file;
    damaged[29] ^= 1;
    EXPECT_EQ(formatFailure([&] { open(damaged); }), "Error reading PNG image : IHDR: CRC error");
    // Cut inside the pixels: the header reads, the pixels do not.
    const std::vector<std::uint8_t> cut(file.begin(), file.end() - 30);
    QvxPNG png(cut.data(), cut.size());
    std::vector<std::uint32_t> pixels(256);
    std::vector<std::uint32_t*> rows;
    for (int y = 0; y < 16; ++y) rows.push_back(pixels.data() + y * 16);
    const std::string message = formatFailure([&] { png.read32(rows.data()); });
    EXPECT_EQ(message.rfind("Error reading PNG image : ", 0), 0u) << message;
    EXPECT_GT(message.size(), std::string("Error reading PNG image : ").size());
}

TEST(QvxPNG, HugePicturesAreRefusedAtTheHeader) {
    PngPicture p = picture(20000, 1, PNG_COLOR_TYPE_GRAY, 1, std::vector<std::uint8_t>(2500, 0));
    const auto file = encodePng(p);
    const std::string message = formatFailure([&] { QvxPNG png(file.data(), file.size()); });
    EXPECT_EQ(message.rfind("Error reading PNG image : ", 0), 0u) << message;
}
