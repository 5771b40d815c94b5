// Pictures to look at, in build/pictures/graphics: text in the generated fonts over a
// gradient, and the frames of a film strip, plain and interpolated.
#include "SavePicture.h"
#include "graphics/Blender.h"
#include "graphics/Film.h"
#include "graphics/ImageDecoder.h"
#include "graphics/InterpolatedFilm.h"
#include "graphics/Multiplier.h"
#include "graphics/PolygonMask.h"
#include "graphics/Rasterize.h"
#include "graphics/ResourceManager.h"
#include "graphics/Solid.h"

#include "platform/TempFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

using namespace tw;

namespace {

// A vertical gradient from a dark blue to a pale grey, opaque.
Raster32 gradient(std::int32_t width, std::int32_t height) {
    Raster32 r(IntRect{0, 0, width, height}, true);
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint32_t t = std::uint32_t(y * 255 / (height - 1));
        const std::uint32_t red = 0x10 + (0xE0 - 0x10) * t / 255, green = 0x20 + (0xE8 - 0x20) * t / 255,
                            blue = 0x50 + (0xF0 - 0x50) * t / 255;
        for (std::int32_t x = 0; x < width; ++x) *r.at(x, y) = 0xFF000000u | red << 16 | green << 8 | blue;
    }
    return r;
}

void fill(Raster32& canvas, const VectorPath& path, std::uint32_t colour) {
    PolygonMask mask(path, canvas.bounds(), FillRule::nonZero());
    Solid32 ink(colour);
    Multiplier32x8 inked(ink, mask);
    Blender32 over(inked, canvas);
    rasterize32(over, canvas, inked.calcBounds());
}

// A knob of `frames` frames of 40 by 40, its pointer turning through 270 degrees.
std::vector<std::uint8_t> knobStrip(std::int32_t frames) {
    Raster32 strip(IntRect{0, 0, 40, 40 * frames});
    for (std::int32_t k = 0; k < frames; ++k) {
        const double cx = 20, cy = 20 + 40.0 * k;
        VectorPath body;
        body.addCircle(cx, cy, 17, 1);
        fill(strip, body, 0xFF303840);
        VectorPath ring;
        ring.addCircle(cx, cy, 14, 1);
        fill(strip, ring, 0xFF505A66);
        const double angle = (-135 + 270.0 * k / (frames - 1)) * M_PI / 180;
        const double s = std::sin(angle), c = std::cos(angle);
        VectorPath pointer;  // a bar from near the centre to the rim
        pointer.moveTo(cx + 4 * s - 1.5 * c, cy - 4 * c - 1.5 * s);
        pointer.lineTo(cx + 15 * s - 1.5 * c, cy - 15 * c - 1.5 * s);
        pointer.lineTo(cx + 15 * s + 1.5 * c, cy - 15 * c + 1.5 * s);
        pointer.lineTo(cx + 4 * s + 1.5 * c, cy - 4 * c + 1.5 * s);
        pointer.close();
        fill(strip, pointer, 0xFFFFB040);
    }
    return encodePNG(strip);
}

}  // namespace

TEST(Pictures, TextOverAGradient) {
    tw::test::TempFolder binary;
    ResourceManager resources("Tidewake", binary.str());
    Raster32 canvas = gradient(440, 230);
    const Raster32 background = gradient(440, 230);
    const char16_t* line = u"Tidewake 0.25 Hz \u00C9t\u00E9 \u00E0 Z\u00FCrich: AVATAR, Type, \u00BD \u00A9 \u00B5s";
    const char* fonts[] = {"Tidewake_sans_11", "Tidewake_sans_11_bold", "Tidewake_sans_14", "Tidewake_sans_14_bold"};
    double y = 20;
    for (const char* name : fonts) {
        const auto font = resources.getFont(std::string("{ fnt: ") + name + ", color: white }");
        font->draw(canvas, Point{8, y}, line);
        y += 24;
    }
    for (const char* name : fonts) {
        const auto font = resources.getFont(std::string("{ fnt: ") + name + ", color: { 20, 20, 30 } }");
        font->draw(canvas, Point{8, y}, line);
        y += 24;
    }
    // The system font, and a replacement character for what the fonts lack.
    resources.getFont("{ color: 0x80800000 }")->draw(canvas, Point{8, y + 4}, u"System font \u20AC \u2603");
    test::savePicture("text.png", canvas);

    // Every line left ink in its own band of rows, and nothing reached the far margins.
    for (std::int32_t band = 0; band < 9; ++band) {
        std::int32_t changed = 0;
        for (std::int32_t y = band * 24 + 4; y < band * 24 + 24; ++y)
            for (std::int32_t x = 0; x < 440; ++x) changed += *canvas.at(x, y) != *background.at(x, y);
        EXPECT_GT(changed, 100) << band;
    }
    for (std::int32_t y = 0; y < 230; ++y) EXPECT_EQ(*canvas.at(0, y), *background.at(0, y));
}

TEST(Pictures, FilmFrames) {
    const std::vector<std::uint8_t> png = knobStrip(8);
    ImageKey key;
    key.name = "knob";
    key.rle = true;
    auto image = decodeImage(png.data(), png.size(), key);
    Film film(image, 8);
    InterpolatedFilm smooth(image, 8);
    Raster32 canvas = gradient(8 + 14 * 44, 110);
    for (std::int32_t i = 0; i < 8; ++i) film.drawFrame(canvas, i, 8 + 44 * i, 8);
    // Fourteen steps over the whole turn, and one beyond the last frame, which blends back
    // towards the first.
    for (std::int32_t i = 0; i < 13; ++i) smooth.drawFrame(canvas, i * (smooth.frameCount() - 1) / 12, 8 + 44 * i, 60);
    smooth.drawFrame(canvas, (7 << 8) + 128, 8 + 44 * 13, 60);
    test::savePicture("films.png", canvas);

    // Frame 3 drawn plainly and at index 3 << 8 of the interpolated film are the same.
    Raster32 a(IntRect{0, 0, 40, 40}), b(IntRect{0, 0, 40, 40});
    film.drawFrame(a, 3, 0, 0);
    smooth.drawFrame(b, 3 << 8, 0, 0);
    for (std::int32_t y = 0; y < 40; ++y)
        for (std::int32_t x = 0; x < 40; ++x) ASSERT_EQ(*a.at(x, y), *b.at(x, y)) << x << "," << y;
}
