// AngelCode bitmap font descriptions: the .fnt text that names a font's glyph pages and
// says where each character sits in them, how far it advances and how pairs kern. The
// AngelCode fonts of the editor are built from it; the build's font generator writes it.
#pragma once

#include "platform/Exception.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace tw {

struct FontFile {
    struct Info {
        std::string face;
        std::int32_t size = 0;
        bool bold = false;
        bool italic = false;
        std::string charset;
        bool unicode = false;
        std::int32_t stretchH = 0;
        std::int32_t smooth = 0;
        std::int32_t aa = 0;
        std::int32_t padding[4] = {};
        std::int32_t spacing[2] = {};
    };
    struct Common {
        std::int32_t lineHeight = 0;
        std::int32_t base = 0;
        std::int32_t scaleW = 0;
        std::int32_t scaleH = 0;
        std::int32_t packed = 0;
    };
    // Where one character is in its page, and how it sits on the pen.
    struct Char {
        std::int32_t x = 0;
        std::int32_t y = 0;
        std::int32_t width = 0;
        std::int32_t height = 0;
        std::int32_t xoffset = 0;
        std::int32_t yoffset = 0;
        std::int32_t xadvance = 0;
        std::int32_t page = 0;
        std::int32_t channel = 0;
    };

    Info info;
    Common common;
    std::map<std::int32_t, std::string> pages;                        // page id to file name
    std::map<std::int32_t, Char> chars;                               // by character code
    std::map<std::pair<std::int32_t, std::int32_t>, std::int32_t> kerning;  // (first, second) to amount
};

namespace QvxAngelCode {

class Exception : public FormatException {
public:
    using FormatException::FormatException;
};

}  // namespace QvxAngelCode

// Reads a .fnt text: lines of a tag and blank-separated key=value pairs, values possibly
// in double quotes. The tags info, common, page, char and kerning are read, other lines
// skipped. Throws QvxAngelCode::Exception for a missing required key, a duplicate page,
// character or (differing) kerning pair, and a file without a common line.
FontFile readAngelCodeFont(std::string_view text);

}  // namespace tw
