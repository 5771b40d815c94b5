#include "host/TestPicture.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "graphics/Blender.h"
#include "graphics/Multiplier.h"
#include "graphics/PolygonMask.h"
#include "graphics/Rasterize.h"
#include "graphics/ResourceManager.h"
#include "graphics/Solid.h"

namespace tw {

namespace {

std::uint32_t mix(std::uint32_t a, std::uint32_t b, std::int32_t t, std::int32_t range) {
    std::uint32_t out = 0xFF000000u;
    for (int shift = 0; shift < 24; shift += 8) {
        const std::int32_t ca = std::int32_t((a >> shift) & 0xFF), cb = std::int32_t((b >> shift) & 0xFF);
        out |= std::uint32_t(ca + (cb - ca) * t / range) << shift;
    }
    return out;
}

void fill(Raster32& canvas, const VectorPath& path, std::uint32_t colour) {
    PolygonMask mask(path, canvas.bounds(), FillRule::nonZero());
    Solid32 ink(colour);
    Multiplier32x8 inked(ink, mask);
    Blender32 over(inked, canvas);
    rasterize32(over, canvas, inked.calcBounds());
}

// A ring of a knob: a dim track all round and an arc of `amount` of it, from the lower
// left clockwise, as the editor's knobs will draw theirs.
void knob(Raster32& canvas, double x, double y, double r, double amount, std::uint32_t accent) {
    constexpr double start = 0.75 * M_PI, range = 1.5 * M_PI;
    auto arc = [&](double from, double sweep, std::uint32_t colour) {
        VectorPath p;
        p.moveTo(x + r * std::cos(from), y + r * std::sin(from));
        p.arcSweep(x, y, sweep, 1, 1);
        p.stroke(4, StrokeCaps::round, StrokeJoints::curve, 4, 1);
        fill(canvas, p, colour);
    };
    arc(start, range, 0xFF1E3A4E);
    arc(start, range * amount, accent);
    VectorPath cap;
    cap.addCircle(x, y, r - 7, 1);
    fill(canvas, cap, 0xFF0D1B26);
    const double a = start + range * amount;
    VectorPath pointer;
    pointer.moveTo(x + (r - 18) * std::cos(a), y + (r - 18) * std::sin(a));
    pointer.lineTo(x + (r - 9) * std::cos(a), y + (r - 9) * std::sin(a));
    pointer.stroke(2.5, StrokeCaps::round, StrokeJoints::curve, 4, 1);
    fill(canvas, pointer, 0xFFE8F1F5);
}

}  // namespace

TestPicture::TestPicture(std::int32_t width, std::int32_t height, const std::string& modelName,
                         const std::string& productName, const std::string& binaryFolder)
    : picture_(IntRect{0, 0, width, height}, true) {
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint32_t c = mix(0xFF0B1620, 0xFF102436, y, height > 1 ? height - 1 : 1);
        std::uint32_t* row = picture_.at(0, y);
        for (std::int32_t x = 0; x < width; ++x) row[x] = c;
    }
    VectorPath edge, panel;
    edge.addRoundedRect(16, 56, width - 32, height - 112, 10, 10, 1);
    panel.addRoundedRect(17, 57, width - 34, height - 114, 9, 9, 1);
    fill(picture_, edge, 0xFF2A4A60);
    fill(picture_, panel, 0xFF13293A);
    const double row = 56 + (height - 112) / 2.0;
    knob(picture_, width * 0.22, row, 46, 0.7, 0xFF39D1C6);
    knob(picture_, width * 0.5, row, 34, 0.35, 0xFF39D1C6);
    knob(picture_, width * 0.76, row, 34, 0.55, 0xFFFF8A65);

    ResourceManager resources(modelName, binaryFolder);
    const std::u16string title(productName.begin(), productName.end());
    resources.getFont("{ fnt: " + modelName + "_sans_14_bold, color: { 232, 241, 245 } }")
        ->draw(picture_, Point{20, 34}, title);
    auto label = resources.getFont("{ fnt: " + modelName + "_sans_11, color: { 127, 167, 194 } }");
    label->draw(picture_, Point{20, double(height) - 28}, u"EDITOR WINDOW TEST PICTURE");
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    label->draw(picture_, Point{double(width) - 90, double(height) - 28}, std::u16string(size.begin(), size.end()));
}

void TestPicture::paint(const PixelTile& tile) {
    // A host may make the window larger than the picture: the rest is the ground colour.
    const IntRect& b = picture_.bounds();
    for (std::int32_t y = 0; y < tile.height; ++y) {
        std::uint32_t* row = tile.pixels + std::ptrdiff_t(y) * tile.stride;
        const std::int32_t py = tile.top + y;
        const std::int32_t inside = py < b.height ? std::max(0, std::min(tile.width, b.width - tile.left)) : 0;
        if (inside > 0) std::memcpy(row, picture_.at(tile.left, py), std::size_t(inside) * 4);
        for (std::int32_t x = inside; x < tile.width; ++x) row[x] = 0xFF102436;
    }
}

}  // namespace tw
