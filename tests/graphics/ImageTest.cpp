#include "graphics/BlendImage.h"
#include "graphics/Film.h"
#include "graphics/ImageDecoder.h"
#include "graphics/InterpolatedFilm.h"
#include "graphics/PixelMath.h"
#include "graphics/PlainImage.h"
#include "graphics/SubImage.h"

#include "graphics/PngEncoder.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace tw;
using tw::test::encodePng;
using tw::test::PngPicture;

namespace {

// A picture of `width` by `height` whose pixel (x, y) is pixel(x, y), as RGBA bytes.
template <class Pixel>
std::vector<std::uint8_t> rgbaPng(std::uint32_t width, std::uint32_t height, Pixel pixel) {
    PngPicture p;
    p.width = width;
    p.height = height;
    p.colorType = PNG_COLOR_TYPE_RGB_ALPHA;
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::uint32_t argb = pixel(x, y);  // not premultiplied
            p.rows.insert(p.rows.end(), {std::uint8_t(argb >> 16), std::uint8_t(argb >> 8), std::uint8_t(argb),
                                         std::uint8_t(argb >> 24)});
        }
    return encodePng(p);
}

std::shared_ptr<Image> decode(const std::vector<std::uint8_t>& png, const std::string& spec = "x") {
    return decodeImage(png.data(), png.size(),
                       parseImageSpec(spec, [](const ImageKey&) { return std::pair<std::int32_t, std::int32_t>(0, 0); }));
}

struct Canvas {
    Raster32 raster;
    Canvas(std::int32_t width, std::int32_t height, std::uint32_t fill) : raster(IntRect{0, 0, width, height}) {
        for (std::int32_t y = 0; y < height; ++y)
            for (std::int32_t x = 0; x < width; ++x) *raster.at(x, y) = fill;
    }
    std::uint32_t at(std::int32_t x, std::int32_t y) { return *raster.at(x, y); }
    // The pixels of one row, left to right.
    std::vector<std::uint32_t> row(std::int32_t y) {
        const IntRect b = raster.bounds();
        return std::vector<std::uint32_t>(raster.at(0, y), raster.at(0, y) + b.width);
    }
};

// Every pixel of an image, drawn over transparent.
std::vector<std::uint32_t> pixelsOf(Image& image) {
    const IntRect b = image.getBounds();
    Canvas c(b.width, b.height, 0);
    image.draw(c.raster, 0, 0);
    std::vector<std::uint32_t> all;
    for (std::int32_t y = 0; y < b.height; ++y) {
        const auto r = c.row(y);
        all.insert(all.end(), r.begin(), r.end());
    }
    return all;
}

// A strip of `frames` frames of 3 by `frameHeight`, each filled with an opaque grey of
// 10 * (frame + 1), and `extra` rows of white below.
std::vector<std::uint8_t> stripPng(std::uint32_t frames, std::uint32_t frameHeight, std::uint32_t extra) {
    return rgbaPng(3, frames * frameHeight + extra, [=](std::uint32_t, std::uint32_t y) {
        const std::uint32_t frame = y / frameHeight;
        if (frame >= frames) return 0xFFFFFFFFu;
        return 0xFF000000u | (10u * (frame + 1)) * 0x010101u;
    });
}

}  // namespace

TEST(Image, OpacityIsBakedAtLoad) {
    const auto png = rgbaPng(2, 1, [](std::uint32_t x, std::uint32_t) { return x == 0 ? 0x80C86432u : 0xFFFFFFFFu; });
    EXPECT_EQ(pixelsOf(*decode(png)), (std::vector<std::uint32_t>{0x80643219, 0xFFFFFFFF}));
    // 50% is 128: every channel scaled by 129 / 256.
    EXPECT_EQ(pixelsOf(*decode(png, "{ name: x, opacity: 50 }")),
              (std::vector<std::uint32_t>{scale32(0x80643219, 128), scale32(0xFFFFFFFF, 128)}));
    // Nothing is left at 0%, and that is a picture, not an error.
    const auto gone = decode(png, "{ name: x, opacity: 0 }");
    EXPECT_EQ(gone->getBounds(), (IntRect{0, 0, 2, 1}));
    EXPECT_EQ(pixelsOf(*gone), (std::vector<std::uint32_t>{0, 0}));
}

TEST(Image, MultiplyFadesToWhite) {
    const auto png = rgbaPng(1, 1, [](std::uint32_t, std::uint32_t) { return 0xFF204080u; });
    auto image = decode(png, "{ name: x, blend: multiply, opacity: 25 }");
    ASSERT_NE(image->getRenderer(), nullptr);
    // What multiplies the canvas is the colour faded towards white: ~scale32(~p, o).
    const std::uint32_t faded = ~scale32(~0xFF204080u, 64);
    Canvas c(1, 1, 0xFF808080);
    image->draw(c.raster, 0, 0);
    EXPECT_EQ(c.at(0, 0), mul32(faded, 0xFF808080));
    // At 0% the picture is white, which leaves the canvas alone.
    Canvas d(1, 1, 0xFF336699);
    decode(png, "{ name: x, blend: multiply, opacity: 0 }")->draw(d.raster, 0, 0);
    EXPECT_EQ(d.at(0, 0), 0xFF336699u);
}

TEST(Image, FormatsDrawAlike) {
    const auto png = rgbaPng(300, 3, [](std::uint32_t x, std::uint32_t y) {
        return x < 100 ? 0u : x < 200 ? 0xFF102030u : (0x80000000u | (x + y));
    });
    const auto plain = decode(png);
    const auto rle = decode(png, "{ name: x, format: rle }");
    EXPECT_NE(dynamic_cast<RasterImage*>(plain.get()), nullptr);
    EXPECT_NE(dynamic_cast<RLEImage*>(rle.get()), nullptr);
    EXPECT_EQ(pixelsOf(*rle), pixelsOf(*plain));

    const auto mask = decode(png, "{ name: x, format: mask }");
    const auto rleMask = decode(png, "{ name: x, format: rlemask }");
    EXPECT_NE(dynamic_cast<MaskImage*>(mask.get()), nullptr);
    EXPECT_NE(dynamic_cast<RLEMaskImage*>(rleMask.get()), nullptr);
    EXPECT_EQ(mask->getRenderer(), nullptr);
    ASSERT_NE(mask->getMask(), nullptr);
    // A mask draws as white of its coverage: the grey of the colour, times its alpha.
    const auto pixels = pixelsOf(*mask);
    EXPECT_EQ(pixels[0], 0u);
    EXPECT_EQ(pixels[150], 29 * 0x01010101u);
    EXPECT_EQ(pixelsOf(*rleMask), pixels);
}

TEST(Image, DrawsWithinTheCanvas) {
    const auto image = decode(rgbaPng(3, 2, [](std::uint32_t x, std::uint32_t y) { return 0xFF000000u | (y * 16 + x); }));
    Canvas c(4, 3, 0xFF777777);
    image->draw(c.raster, 2, 2);  // only the top-left 2 by 1 pixels land on the canvas
    EXPECT_EQ(c.row(1), (std::vector<std::uint32_t>(4, 0xFF777777)));
    EXPECT_EQ(c.row(2), (std::vector<std::uint32_t>{0xFF777777, 0xFF777777, 0xFF000000, 0xFF000001}));
    image->draw(c.raster, -2, -1);
    EXPECT_EQ(c.row(0), (std::vector<std::uint32_t>{0xFF000012, 0xFF777777, 0xFF777777, 0xFF777777}));
    // A part, placed by its own corner.
    Canvas d(2, 1, 0);
    image->drawPart(d.raster, IntRect{1, 1, 2, 1}, 0, 0);
    EXPECT_EQ(d.row(0), (std::vector<std::uint32_t>{0xFF000011, 0xFF000012}));
}

TEST(Image, BlendModes) {
    const auto png = rgbaPng(1, 1, [](std::uint32_t, std::uint32_t) { return 0xFF80A0F0u; });
    Canvas over(1, 1, 0xFF406080);
    decode(png)->draw(over.raster, 0, 0);
    EXPECT_EQ(over.at(0, 0), 0xFF80A0F0u);

    const auto add = decode(png, "{ name: x, blend: add }");
    EXPECT_NE(dynamic_cast<BlendImage*>(add.get()), nullptr);
    Canvas sum(1, 1, 0xFF406080);
    add->draw(sum.raster, 0, 0);
    EXPECT_EQ(sum.at(0, 0), 0xFFC0FFFFu);  // saturating per channel

    Canvas product(1, 1, 0xFF406080);
    decode(png, "{ name: x, blend: multiply }")->draw(product.raster, 0, 0);
    EXPECT_EQ(product.at(0, 0), mul32(0xFF80A0F0, 0xFF406080));

    // A half-transparent added picture adds its scaled colour.
    Canvas half(1, 1, 0xFF000000);
    decode(png, "{ name: x, blend: add, opacity: 50 }")->draw(half.raster, 0, 0);
    EXPECT_EQ(half.at(0, 0), add32(0xFF000000, scale32(0xFF80A0F0, 128)));
}

TEST(SubImage, ClipAndOffset) {
    std::shared_ptr<Image> whole =
        decode(rgbaPng(4, 4, [](std::uint32_t x, std::uint32_t y) { return 0xFF000000u | (y * 16 + x); }));
    SubImage middle(whole, IntRect{1, 1, 2, 2});
    EXPECT_EQ(middle.getBounds(), (IntRect{0, 0, 2, 2}));
    EXPECT_EQ(pixelsOf(middle), (std::vector<std::uint32_t>{0xFF000011, 0xFF000012, 0xFF000021, 0xFF000022}));

    // Cut to the parent: only the corner pixel is left.
    SubImage corner(whole, IntRect{3, 3, 10, 10});
    EXPECT_EQ(corner.getBounds(), (IntRect{0, 0, 1, 1}));
    EXPECT_EQ(pixelsOf(corner), (std::vector<std::uint32_t>{0xFF000033}));

    // An offset alone moves the whole picture.
    SubImage moved(whole, whole->getBounds(), 1, 2);
    EXPECT_EQ(moved.getBounds(), (IntRect{0, 0, 4, 4}));
    Canvas c(6, 6, 0);
    moved.draw(c.raster, 0, 0);
    EXPECT_EQ(c.at(1, 2), 0xFF000000u);
    EXPECT_EQ(c.at(4, 5), 0xFF000033u);
    EXPECT_EQ(c.at(0, 0), 0u);

    // drawPart of a clip reaches only inside the clip.
    Canvas d(3, 1, 0);
    middle.drawPart(d.raster, IntRect{1, 0, 5, 1}, 1, 0);
    EXPECT_EQ(d.row(0), (std::vector<std::uint32_t>{0, 0xFF000012, 0}));
}

TEST(SubImage, EmptyClipDrawsNothing) {
    std::shared_ptr<Image> whole = decode(rgbaPng(4, 4, [](std::uint32_t, std::uint32_t) { return 0xFFFFFFFFu; }));
    for (const IntRect rect : {IntRect{2, 0, 0, 4}, IntRect{2, 0, -1, 4}, IntRect{0, 0, 4, 0}, IntRect{9, 9, 2, 2}}) {
        SubImage empty(whole, rect);
        EXPECT_TRUE(empty.getBounds().isEmpty());
        Canvas c(4, 4, 0xFF123456);
        empty.draw(c.raster, 0, 0);
        empty.drawPart(c.raster, IntRect{0, 0, 4, 4}, 0, 0);
        for (std::int32_t y = 0; y < 4; ++y) EXPECT_EQ(c.row(y), (std::vector<std::uint32_t>(4, 0xFF123456)));
    }
}

TEST(SubImage, ClipOfABlendKeepsTheBlend) {
    const auto png = rgbaPng(2, 1, [](std::uint32_t x, std::uint32_t) { return x ? 0xFF010101u : 0xFF020202u; });
    auto clipped = std::make_shared<SubImage>(decode(png, "{ name: x, blend: add }"), IntRect{1, 0, 1, 1});
    EXPECT_EQ(clipped->imageCount(), 1);
    Canvas c(1, 1, 0xFF101010);
    clipped->draw(c.raster, 0, 0);
    EXPECT_EQ(c.at(0, 0), 0xFF111111u);
}

TEST(Film, FramesCutFromTheStrip) {
    // 4 frames of 5 rows, and 3 rows left over that no frame shows.
    Film film(decode(stripPng(4, 5, 3)), 4);
    EXPECT_EQ(film.frameCount(), 4);
    EXPECT_EQ(film.frameHeight(), 5);  // 23 / 4
    for (std::int32_t i = 0; i < 4; ++i) {
        auto frame = film.getFrame(i);
        EXPECT_EQ(frame->getBounds(), (IntRect{0, 0, 3, 5}));
        const std::uint32_t grey = 0xFF000000u | (10u * std::uint32_t(i + 1)) * 0x010101u;
        EXPECT_EQ(pixelsOf(*frame), (std::vector<std::uint32_t>(15, grey))) << i;
        Canvas c(3, 5, 0);
        film.drawFrame(c.raster, i, 0, 0);
        EXPECT_EQ(c.row(4), (std::vector<std::uint32_t>(3, grey)));
    }
    EXPECT_TRUE(film.getFrame(4)->getBounds().isEmpty());
    EXPECT_TRUE(film.getFrame(-1)->getBounds().isEmpty());
    // A count that does not divide: 23 rows in 3 frames are 7 rows each.
    Film thirds(decode(stripPng(4, 5, 3)), 3);
    EXPECT_EQ(thirds.frameHeight(), 7);
    const auto third = pixelsOf(*thirds.getFrame(2));  // rows 14 to 20
    EXPECT_EQ(third.front(), 0xFF1E1E1Eu);
    EXPECT_EQ(third.back(), 0xFFFFFFFFu);
}

TEST(Film, InterpolatedFramesBlend) {
    auto strip = decode(stripPng(3, 2, 0));
    InterpolatedFilm film(strip, 3);
    EXPECT_EQ(film.frameCount(), (3 << 8) - 255);
    const std::uint32_t grey[] = {0xFF0A0A0A, 0xFF141414, 0xFF1E1E1E};
    auto only = [](std::uint32_t value) { return std::vector<std::uint32_t>(6, value); };
    // Whole steps are the frames themselves.
    EXPECT_EQ(pixelsOf(*film.getFrame(0)), only(grey[0]));
    EXPECT_EQ(pixelsOf(*film.getFrame(256)), only(grey[1]));
    EXPECT_EQ(pixelsOf(*film.getFrame(512)), only(grey[2]));
    // Between: each frame weighed by its share, and summed with saturation.
    const std::uint32_t between = add32(scale32(grey[1], 64), scale32(grey[0], 255 - 64));
    EXPECT_EQ(pixelsOf(*film.getFrame(64)), only(between));
    // Past the last frame the film blends towards the first.
    const std::uint32_t wrapped = add32(scale32(grey[0], 128), scale32(grey[2], 127));
    EXPECT_EQ(pixelsOf(*film.getFrame(512 + 128)), only(wrapped));
    Canvas c(3, 2, 0);
    film.drawFrame(c.raster, 512 + 128, 0, 0);
    EXPECT_EQ(c.row(1), (std::vector<std::uint32_t>(3, wrapped)));
    // Far outside the film there is nothing to draw.
    EXPECT_EQ(pixelsOf(*film.getFrame(-300)), std::vector<std::uint32_t>{});
}
