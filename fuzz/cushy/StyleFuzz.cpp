// Feeds arbitrary text to every style value reader: colours, strokes, corners, alignment,
// ellipsis sides, cursors, blend modes and click masks.
#include "graphics/BlendMode.h"
#include "speclang/SpecColor.h"
#include "cushy/ClickMask.h"
#include "cushy/Cursor.h"
#include "cushy/EllipsisSide.h"
#include "cushy/Rounded.h"
#include "cushy/Stroke.h"
#include "cushy/TextAlignment.h"

#include "platform/Exception.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

template <typename Step>
void attempt(Step step) {
    try {
        step();
    } catch (const tw::Exception&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string raw(reinterpret_cast<const char*>(data), size);
    attempt([&] { tw::parseColor(raw, 0xFF102030); });
    attempt([&] { tw::parseStroke(raw, 0xFF000000); });
    attempt([&] { tw::parseRounded(raw, tw::IntRect{0, 0, 200, 100}); });
    attempt([&] { tw::parseTextAlignment(raw, tw::TextAlignment::left); });
    attempt([&] { tw::parseEllipsisSide(raw, tw::EllipsisSide::none); });
    attempt([&] { tw::parseCursor(raw, tw::Cursor::arrow); });
    attempt([&] { tw::parseClickMask(raw); });
    tw::parseBlendMode(raw);
    return 0;
}
