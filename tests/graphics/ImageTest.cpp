#include "graphics/BlendImage.h"
#include "graphics/Film.h"
#include "graphics/ImageDecoder.h"
#include "graphics/InterpolatedFilm.h"
#include "graphics/PixelMath.h"
#include "graphics/PlainImage.h"
#include "graphics/SubImage.h"

#include "graphics/PngEncoder.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

using namespace tw;
using Pixels = std::vector<std::uint32_t>;

namespace {

// A picture whose pixel (x, y) is the straight (not premultiplied) ARGB pixel(x, y).
std::vector<std::uint8_t> rgbaPng(std::uint32_t width, std::uint32_t height,
                                  const std::function<std::uint32_t(std::uint32_t, std::uint32_t)>& pixel) {
    tw::test::PngPicture p;
    p.width = width;
    p.height = height;
    p.colorType = PNG_COLOR_TYPE_RGB_ALPHA;
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::uint32_t c = pixel(x, y);
            p.rows.insert(p.rows.end(), {std::uint8_t(c >> 16), std::uint8_t(c >> 8), std::uint8_t(c), std::uint8_t(c >> 24)});
        }
    return tw::test::encodePng(p);
}

std::shared_ptr<Image> decode(const std::vector<std::uint8_t>& png, const std::string& spec = "x") {
    const auto noSize = [](const ImageKey&) { return std::pair<std::int32_t, std::int32_t>(0, 0); };
    return decodeImage(png.data(), png.size(), parseImageSpec(spec, noSize));
}

// Pixel (x, y) = 0xFF0000yx, for telling where pixels came from.
std::shared_ptr<Image> numbered(std::uint32_t width, std::uint32_t height) {
    return decode(rgbaPng(width, height, [](std::uint32_t x, std::uint32_t y) { return 0xFF000000u | (y * 16 + x); }));
}

Raster32 canvas(std::int32_t width, std::int32_t height, std::uint32_t fill) {
    Raster32 r(IntRect{0, 0, width, height});
    for (std::int32_t y = 0; y < height; ++y) std::fill_n(r.at(0, y), width, fill);
    return r;
}

Pixels row(const Raster32& r, std::int32_t y) {
    return Pixels(r.at(0, y), r.at(0, y) + r.bounds().width);
}

// Every pixel of an image, drawn over transparent.
Pixels pixelsOf(Image& image) {
    const IntRect b = image.getBounds();
    Raster32 c = canvas(b.width, b.height, 0);
    image.draw(c, 0, 0);
    Pixels all;
    for (std::int32_t y = 0; y < b.height; ++y) all.insert(all.end(), c.at(0, y), c.at(0, y) + b.width);
    return all;
}

// A film strip 3 wide: `frames` frames of `frameHeight` rows, frame k an opaque grey of
// 10 * (k + 1), and `extra` rows of white below them.
std::shared_ptr<Image> strip(std::uint32_t frames, std::uint32_t frameHeight, std::uint32_t extra) {
    return decode(rgbaPng(3, frames * frameHeight + extra, [=](std::uint32_t, std::uint32_t y) {
        return y / frameHeight >= frames ? 0xFFFFFFFFu : 0xFF000000u | (10u * (y / frameHeight + 1)) * 0x010101u;
    }));
}

std::uint32_t grey(std::uint32_t frame) {
    return 0xFF000000u | (10u * (frame + 1)) * 0x010101u;
}

}  // namespace

TEST(Image, OpacityIsBakedAtLoad) {
    const auto png = rgbaPng(2, 1, [](std::uint32_t x, std::uint32_t) { return x == 0 ? 0x80C86432u : 0xFFFFFFFFu; });
    EXPECT_EQ(pixelsOf(*decode(png)), (Pixels{0x80643219, 0xFFFFFFFF}));
    EXPECT_EQ(pixelsOf(*decode(png, "{ name: x, opacity: 50 }")),
              (Pixels{scale32(0x80643219, 128), scale32(0xFFFFFFFF, 128)}));
    // Nothing is left at 0%, and that is a picture, not an error.
    EXPECT_EQ(pixelsOf(*decode(png, "{ name: x, opacity: 0 }")), (Pixels{0, 0}));
}

TEST(Image, FormatsDrawAlike) {
    const auto png = rgbaPng(300, 2, [](std::uint32_t x, std::uint32_t y) {
        return x < 100 ? 0u : x < 200 ? 0xFF102030u : (0x80000000u | (x + y));
    });
    const auto plain = decode(png);
    EXPECT_NE(dynamic_cast<RasterImage*>(plain.get()), nullptr);
    const auto rle = decode(png, "{ name: x, format: rle }");
    EXPECT_NE(dynamic_cast<RLEImage*>(rle.get()), nullptr);
    EXPECT_EQ(pixelsOf(*rle), pixelsOf(*plain));
    // A mask is the grey of the colour times its alpha, and draws as white of that coverage.
    const auto mask = decode(png, "{ name: x, format: mask }");
    EXPECT_EQ(mask->getRenderer(), nullptr);
    EXPECT_EQ(pixelsOf(*mask)[150], 29 * 0x01010101u);
    const auto rleMask = decode(png, "{ name: x, format: rlemask }");
    EXPECT_NE(dynamic_cast<RLEMaskImage*>(rleMask.get()), nullptr);
    EXPECT_EQ(pixelsOf(*rleMask), pixelsOf(*mask));
}

TEST(Image, DrawsWithinTheCanvas) {
    const auto image = numbered(3, 2);
    Raster32 c = canvas(4, 3, 0xFF777777);
    image->draw(c, 2, 2);  // only the top-left 2 by 1 pixels land on the canvas
    EXPECT_EQ(row(c, 2), (Pixels{0xFF777777, 0xFF777777, 0xFF000000, 0xFF000001}));
    image->draw(c, -2, -1);
    EXPECT_EQ(row(c, 0), (Pixels{0xFF000012, 0xFF777777, 0xFF777777, 0xFF777777}));
    image->drawPart(c, IntRect{1, 1, 2, 1}, 0, 1);  // a part, placed by its own corner
    EXPECT_EQ(row(c, 1), (Pixels{0xFF000011, 0xFF000012, 0xFF777777, 0xFF777777}));
}

TEST(Image, BlendModes) {
    const auto png = rgbaPng(1, 1, [](std::uint32_t, std::uint32_t) { return 0xFF80A0F0u; });
    auto drawn = [&](const std::string& spec, std::uint32_t below) {
        Raster32 c = canvas(1, 1, below);
        decode(png, spec)->draw(c, 0, 0);
        return *c.at(0, 0);
    };
    EXPECT_EQ(drawn("x", 0xFF406080), 0xFF80A0F0u);
    EXPECT_EQ(drawn("{ name: x, blend: add }", 0xFF406080), 0xFFC0FFFFu);  // saturating per channel
    EXPECT_EQ(drawn("{ name: x, blend: multiply }", 0xFF406080), mul32(0xFF80A0F0, 0xFF406080));
    EXPECT_EQ(drawn("{ name: x, blend: add, opacity: 50 }", 0xFF000000), add32(0xFF000000, scale32(0xFF80A0F0, 128)));
    // Below full opacity a multiplied picture fades to white, which leaves the canvas alone.
    EXPECT_EQ(drawn("{ name: x, blend: multiply, opacity: 25 }", 0xFF808080),
              mul32(~scale32(~0xFF80A0F0u, 64), 0xFF808080));
    EXPECT_EQ(drawn("{ name: x, blend: multiply, opacity: 0 }", 0xFF336699), 0xFF336699u);
}

TEST(SubImage, ClipAndOffset) {
    const auto whole = numbered(4, 4);
    SubImage middle(whole, IntRect{1, 1, 2, 2});
    EXPECT_EQ(middle.getBounds(), (IntRect{0, 0, 2, 2}));
    EXPECT_EQ(pixelsOf(middle), (Pixels{0xFF000011, 0xFF000012, 0xFF000021, 0xFF000022}));
    SubImage corner(whole, IntRect{3, 3, 10, 10});  // cut to the parent
    EXPECT_EQ(pixelsOf(corner), (Pixels{0xFF000033}));
    // drawPart of a clip reaches only inside the clip.
    Raster32 c = canvas(3, 1, 0);
    middle.drawPart(c, IntRect{1, 0, 5, 1}, 1, 0);
    EXPECT_EQ(row(c, 0), (Pixels{0, 0xFF000012, 0}));
    // An offset alone moves the whole picture.
    SubImage moved(whole, whole->getBounds(), 1, 2);
    EXPECT_EQ(moved.getBounds(), (IntRect{0, 0, 4, 4}));
    Raster32 d = canvas(6, 6, 0);
    moved.draw(d, 0, 0);
    EXPECT_EQ(row(d, 2), (Pixels{0, 0xFF000000, 0xFF000001, 0xFF000002, 0xFF000003, 0}));
}

TEST(SubImage, EmptyClipDrawsNothing) {
    const auto whole = numbered(4, 4);
    for (const IntRect rect : {IntRect{2, 0, 0, 4}, IntRect{2, 0, -1, 4}, IntRect{9, 9, 2, 2}}) {
        SubImage empty(whole, rect);
        EXPECT_TRUE(empty.getBounds().isEmpty());
        Raster32 c = canvas(4, 1, 0xFF123456);
        empty.draw(c, 0, 0);
        empty.drawPart(c, IntRect{0, 0, 4, 4}, 0, 0);
        EXPECT_EQ(row(c, 0), Pixels(4, 0xFF123456));
    }
}

TEST(SubImage, ClipOfABlendKeepsTheBlend) {
    const auto png = rgbaPng(2, 1, [](std::uint32_t x, std::uint32_t) { return x ? 0xFF010101u : 0xFF020202u; });
    SubImage clipped(decode(png, "{ name: x, blend: add }"), IntRect{1, 0, 1, 1});
    Raster32 c = canvas(1, 1, 0xFF101010);
    clipped.draw(c, 0, 0);
    EXPECT_EQ(*c.at(0, 0), 0xFF111111u);
}

TEST(Film, FrameCountThatDoesNotDivideTheHeight) {
    // 4 frames of 5 rows, and 3 rows left over that no frame shows.
    Film film(strip(4, 5, 3), 4);
    EXPECT_EQ(film.frameHeight(), 5);
    for (std::uint32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(pixelsOf(*film.getFrame(std::int32_t(i))), Pixels(15, grey(i))) << i;
        Raster32 c = canvas(3, 1, 0);
        film.drawFrame(c, std::int32_t(i), 0, -4);
        EXPECT_EQ(row(c, 0), Pixels(3, grey(i)));
    }
    EXPECT_TRUE(film.getFrame(4)->getBounds().isEmpty());
    EXPECT_TRUE(film.getFrame(-1)->getBounds().isEmpty());
    // 23 rows in 3 frames are 7 rows each: the last frame is rows 14 to 20, and row 21
    // and 22 are never shown.
    Film thirds(strip(4, 5, 3), 3);
    const Pixels third = pixelsOf(*thirds.getFrame(2));
    EXPECT_EQ(third.front(), grey(2));
    EXPECT_EQ(third.size(), 21u);
}

TEST(Film, InterpolatedFramesBlendTowardsTheNext) {
    InterpolatedFilm film(strip(3, 2, 0), 3);
    EXPECT_EQ(film.frameCount(), (3 << 8) - 255);
    EXPECT_EQ(pixelsOf(*film.getFrame(0)), Pixels(6, grey(0)));
    EXPECT_EQ(pixelsOf(*film.getFrame(512)), Pixels(6, grey(2)));
    // Between: each frame weighed by its share, summed with saturation.
    EXPECT_EQ(pixelsOf(*film.getFrame(64)), Pixels(6, add32(scale32(grey(1), 64), scale32(grey(0), 191))));
    // Past the last frame the film blends towards the first.
    const std::uint32_t wrapped = add32(scale32(grey(0), 128), scale32(grey(2), 127));
    EXPECT_EQ(pixelsOf(*film.getFrame(512 + 128)), Pixels(6, wrapped));
    Raster32 c = canvas(3, 2, 0);
    film.drawFrame(c, 512 + 128, 0, 0);
    EXPECT_EQ(row(c, 1), Pixels(3, wrapped));
    EXPECT_TRUE(pixelsOf(*film.getFrame(-300)).empty());  // far outside: nothing
}
