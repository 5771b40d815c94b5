// Feeds arbitrary text to the AngelCode .fnt reader; what reads is then measured and
// drawn, its pages stood in for by one small mask, so that odd numbers in a font file
// (huge offsets, advances, kerning) are tried on the pen arithmetic too.
#include "graphics/AngelCodeFont.h"
#include "graphics/PlainImage.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        auto face = std::make_shared<tw::AngelCodeFace>();
        face->file = tw::readAngelCodeFont(std::string_view(reinterpret_cast<const char*>(data), size));
        tw::Raster8 page(tw::IntRect{0, 0, 32, 32});
        *page.at(3, 4) = 200;
        auto pageImage = std::make_shared<tw::MaskImage>(page);
        for (const auto& entry : face->file.pages) face->pages.emplace(entry.first, pageImage);
        tw::AngelCodeFont font(face, u'?', 0xFF204080);
        const std::u16string_view text = u"AVATAR To? \u00E9\u20AC";
        font.measure(tw::Point{3.5, 12}, text, true);
        tw::Raster32 canvas(tw::IntRect{0, 0, 64, 24});
        font.draw(canvas, tw::Point{2, 14}, text);
    } catch (const tw::Exception&) {
    }
    return 0;
}
