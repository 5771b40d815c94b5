// A bitmap font described by an AngelCode .fnt file, its glyphs cut from coverage pages
// that are kept compressed: the fonts of the editor's layouts, and on Linux the system
// font too.
#pragma once

#include "graphics/Font.h"
#include "graphics/Image.h"
#include "graphics/QvxAngelCode.h"

#include <map>
#include <memory>

namespace tw {

// A .fnt file with its pages loaded, shared by every font spec that names the file with
// the same gamma.
struct AngelCodeFace {
    FontFile file;
    std::map<std::int32_t, std::shared_ptr<Image>> pages;  // by page id, masks compressed into runs
};

class AngelCodeFont : public Font {
public:
    // `unknown` stands in for characters the font lacks (0: none); `color` is the ink,
    // premultiplied.
    AngelCodeFont(std::shared_ptr<const AngelCodeFace> face, char16_t unknown, std::uint32_t color)
        : face_(std::move(face)), unknown_(unknown), color_(color) {}

    // A line is lineHeight + 1 high, and its baseline is `base` below its top.
    void getMetrics(std::int32_t& height, std::int32_t& ascent) const override;
    IntRect measure(Point point, std::u16string_view text, bool includeAdvance) const override;
    Point draw(Raster32& canvas, Point point, std::u16string_view text) override;

private:
    // Calls visit(glyph, pen x) for each character that has a glyph, the replacement
    // taking the place of missing ones, with kerning between successive glyphs; answers
    // the pen's end. Characters with no glyph at all neither move the pen nor kern.
    template <class Visit>
    std::int64_t walk(std::int64_t x, std::u16string_view text, Visit visit) const;

    std::shared_ptr<const AngelCodeFace> face_;
    char16_t unknown_;
    std::uint32_t color_;
};

}  // namespace tw
