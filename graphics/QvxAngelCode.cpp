#include "graphics/QvxAngelCode.h"

#include <limits>
#include <optional>
#include <vector>

namespace tw {

namespace {

struct Pair {
    std::string_view key;
    std::string_view value;
};

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

// The pairs of one line behind its tag. A token without '=' is passed over.
void splitPairs(std::string_view line, std::size_t i, std::vector<Pair>& out) {
    out.clear();
    const std::size_t n = line.size();
    while (i < n) {
        while (i < n && isBlank(line[i])) ++i;
        const std::size_t keyStart = i;
        while (i < n && !isBlank(line[i]) && line[i] != '=') ++i;
        const std::string_view key = line.substr(keyStart, i - keyStart);
        if (i >= n || line[i] != '=') continue;
        ++i;
        std::size_t valueStart = i;
        if (i < n && line[i] == '"') {
            valueStart = ++i;
            while (i < n && line[i] != '"') ++i;
            out.push_back({key, line.substr(valueStart, i - valueStart)});
            if (i < n) ++i;
        } else {
            while (i < n && !isBlank(line[i])) ++i;
            out.push_back({key, line.substr(valueStart, i - valueStart)});
        }
    }
}

// Reads a decimal integer as "%d" does: white space, a sign, digits, held to 32 bits.
// Answers the position behind it, or nothing when no digit is there.
std::optional<std::size_t> scanInt(std::string_view text, std::size_t i, std::int32_t& out) {
    while (i < text.size() && (isBlank(text[i]) || text[i] == '\n' || text[i] == '\r')) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
    const std::size_t digits = i;
    std::int64_t value = 0;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
        if (value < (std::int64_t(1) << 32)) value = value * 10 + (text[i] - '0');
        ++i;
    }
    if (i == digits) return std::nullopt;
    if (negative) value = -value;
    constexpr std::int64_t low = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t high = std::numeric_limits<std::int32_t>::max();
    out = std::int32_t(value < low ? low : value > high ? high : value);
    return i;
}

// One line's pairs, looked up by key; the first occurrence of a key counts.
class Line {
public:
    explicit Line(const std::vector<Pair>& pairs) : pairs_(pairs) {}

    const std::string_view* find(std::string_view key) const {
        for (const Pair& p : pairs_)
            if (p.key == key) return &p.value;
        return nullptr;
    }
    std::int32_t required(std::string_view key) const {
        const std::string_view* value = find(key);
        if (!value) throw QvxAngelCode::Exception("Missing '" + std::string(key) + "' value in AngelCode Font File");
        return toInt(*value);
    }
    void optional(std::string_view key, std::int32_t& field) const {
        if (const std::string_view* value = find(key)) field = toInt(*value);
    }
    void optional(std::string_view key, bool& field) const {
        if (const std::string_view* value = find(key)) field = toInt(*value) != 0;
    }
    void optional(std::string_view key, std::string& field) const {
        if (const std::string_view* value = find(key)) field = std::string(*value);
    }
    // Up to `count` integers separated by commas, as "%d,%d" reads them: the fields
    // before the first mismatch are set.
    void optionalList(std::string_view key, std::int32_t* fields, int count) const {
        const std::string_view* value = find(key);
        if (!value) return;
        std::size_t i = 0;
        for (int k = 0; k < count; ++k) {
            if (k > 0) {
                if (i >= value->size() || (*value)[i] != ',') return;
                ++i;
            }
            const std::optional<std::size_t> next = scanInt(*value, i, fields[k]);
            if (!next) return;
            i = *next;
        }
    }

private:
    static std::int32_t toInt(std::string_view text) {
        std::int32_t value = 0;
        scanInt(text, 0, value);
        return value;
    }

    const std::vector<Pair>& pairs_;
};

void readInfo(const Line& line, FontFile::Info& info) {
    line.optional("face", info.face);
    line.optional("size", info.size);
    line.optional("bold", info.bold);
    line.optional("italic", info.italic);
    line.optional("charset", info.charset);
    line.optional("unicode", info.unicode);
    line.optional("stretchH", info.stretchH);
    line.optional("smooth", info.smooth);
    line.optional("aa", info.aa);
    line.optionalList("padding", info.padding, 4);
    line.optionalList("spacing", info.spacing, 2);
}

void readCommon(const Line& line, FontFile::Common& common) {
    common.lineHeight = line.required("lineHeight");
    common.base = line.required("base");
    line.optional("scaleW", common.scaleW);
    line.optional("scaleH", common.scaleH);
    line.optional("packed", common.packed);
}

void readPage(const Line& line, FontFile& font) {
    const std::int32_t id = line.required("id");
    std::string file;
    line.optional("file", file);
    if (!font.pages.emplace(id, std::move(file)).second)
        throw QvxAngelCode::Exception("Duplicate page id found in AngelCode Font File");
}

void readChar(const Line& line, FontFile& font) {
    const std::int32_t id = line.required("id");
    FontFile::Char c;
    c.x = line.required("x");
    c.y = line.required("y");
    c.width = line.required("width");
    c.height = line.required("height");
    c.xoffset = line.required("xoffset");
    c.yoffset = line.required("yoffset");
    c.xadvance = line.required("xadvance");
    c.page = line.required("page");
    // Font tools write this key as "chnl"; asking for "channel" keeps the field at its
    // default, and nothing uses it.
    line.optional("channel", c.channel);
    if (!font.chars.emplace(id, c).second)
        throw QvxAngelCode::Exception("Duplicate character id found in AngelCode Font File");
}

void readKerning(const Line& line, FontFile& font) {
    const std::int32_t first = line.required("first");
    const std::int32_t second = line.required("second");
    const std::int32_t amount = line.required("amount");
    const auto [entry, added] = font.kerning.emplace(std::pair(first, second), amount);
    if (!added && entry->second != amount)
        throw QvxAngelCode::Exception("Duplicate kerning pair (with different amount) found in AngelCode Font File");
}

}  // namespace

FontFile readAngelCodeFont(std::string_view text) {
    FontFile font;
    bool haveCommon = false;
    std::vector<Pair> pairs;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = start;
        while (end < text.size() && text[end] != '\n' && text[end] != '\r') ++end;
        const std::string_view line = text.substr(start, end - start);
        start = end + 1;

        std::size_t i = 0;
        while (i < line.size() && isBlank(line[i])) ++i;
        const std::size_t tagStart = i;
        while (i < line.size() && !isBlank(line[i])) ++i;
        const std::string_view tag = line.substr(tagStart, i - tagStart);
        if (tag != "info" && tag != "common" && tag != "page" && tag != "char" && tag != "kerning") continue;

        splitPairs(line, i, pairs);
        const Line fields(pairs);
        if (tag == "info") {
            readInfo(fields, font.info);
        } else if (tag == "common") {
            readCommon(fields, font.common);
            haveCommon = true;
        } else if (tag == "page") {
            readPage(fields, font);
        } else if (tag == "char") {
            readChar(fields, font);
        } else {
            readKerning(fields, font);
        }
    }
    if (!haveCommon) throw QvxAngelCode::Exception("Missing common tag in AngelCode Font File");
    return font;
}

}  // namespace tw
