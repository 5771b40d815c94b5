// Feeds arbitrary text to the SVG path data reader, then fills what it read: no input may
// crash, hang or leave coverage out of range.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "graphics/PolygonMask.h"
#include "vector/SvgPath.h"
#include "vector/KetchException.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tw::VectorPath path;
    try {
        path = tw::parseSvgPath(std::string_view(reinterpret_cast<const char*>(data), size), 1.0);
    } catch (const tw::Ketch::SyntaxException&) {
        return 0;
    }
    path.closeAll();
    tw::PolygonMask mask(path, tw::IntRect{-8, -8, 80, 48}, tw::FillRule::evenOdd());
    const tw::IntRect b = mask.calcBounds();
    tw::Span8 spans[tw::kMaxSpanLength];
    std::uint8_t pixels[tw::kMaxSpanLength];
    for (std::int32_t y = b.top; y < b.bottom(); ++y) {
        tw::SpanBuffer8 out(spans, pixels);
        mask.render(b.left, y, b.width, out);
        if (out.spanCursor - spans != b.width) __builtin_trap();
    }
    return 0;
}
