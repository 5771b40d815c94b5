#include "graphics/AngelCodeFont.h"

#include "graphics/Clipper.h"
#include "graphics/Multiplier.h"
#include "graphics/Offsetter.h"
#include "graphics/Rasterize.h"
#include "graphics/Solid.h"
#include "graphics/TextPen.h"

#include <algorithm>

namespace tw {

template <class Visit>
std::int64_t AngelCodeFont::walk(std::int64_t x, std::u16string_view text, Visit visit) const {
    const FontFile& file = face_->file;
    std::int32_t previous = -1;
    for (char16_t c : text) {
        std::int32_t code = c;
        auto glyph = file.chars.find(code);
        if (glyph == file.chars.end() && unknown_ != 0) {
            code = unknown_;
            glyph = file.chars.find(code);
        }
        if (glyph == file.chars.end()) continue;
        if (previous >= 0) {
            const auto kern = file.kerning.find({previous, code});
            if (kern != file.kerning.end()) x += kern->second;
        }
        visit(glyph->second, x);
        x += std::int64_t(file.info.spacing[0]) + glyph->second.xadvance;
        previous = code;
    }
    return x;
}

void AngelCodeFont::getMetrics(std::int32_t& height, std::int32_t& ascent) const {
    height = clampToInt32(std::int64_t(face_->file.common.lineHeight) + 1);
    ascent = face_->file.common.base;
}

IntRect AngelCodeFont::measure(Point point, std::u16string_view text, bool includeAdvance) const {
    const FontFile::Common& common = face_->file.common;
    const std::int64_t x = roundPen(point.x);
    std::int64_t left = x;
    std::int64_t width = 0;
    const std::int64_t end = walk(x, text, [&](const FontFile::Char& glyph, std::int64_t pen) {
        left = std::min(left, pen + glyph.xoffset);
        width = std::max(width, pen + glyph.xoffset + glyph.width - left);
    });
    if (includeAdvance) width = std::max(width, end - left);
    return IntRect{clampToInt32(left), clampToInt32(roundPen(point.y) - common.base), clampToInt32(width),
                   clampToInt32(std::int64_t(common.lineHeight) + 1)};
}

Point AngelCodeFont::draw(Raster32& canvas, Point point, std::u16string_view text) {
    const std::int64_t y = roundPen(point.y);
    const std::int64_t top = y - face_->file.common.base;
    Solid32 ink(color_);
    const std::int64_t end = walk(roundPen(point.x), text, [&](const FontFile::Char& glyph, std::int64_t pen) {
        if (glyph.width <= 0 || glyph.height <= 0) return;
        const auto page = face_->pages.find(glyph.page);
        if (page == face_->pages.end()) return;
        Renderer8* mask = page->second->getMask();
        if (!mask) return;
        const std::int64_t gx = pen + glyph.xoffset;
        const std::int64_t gy = top + glyph.yoffset;
        if (!nearOrigin(gx) || !nearOrigin(gy) || !nearOrigin(glyph.x) || !nearOrigin(glyph.y)) return;
        Clipper8 cut(*mask, IntRect{glyph.x, glyph.y, glyph.width, glyph.height});
        Offsetter8 placed(cut, std::int32_t(gx - glyph.x), std::int32_t(gy - glyph.y));
        Multiplier32x8 inked(ink, placed);
        blend32(inked, canvas, inked.calcBounds());
    });
    return Point{double(clampToInt32(end)), double(clampToInt32(y))};
}

}  // namespace tw
