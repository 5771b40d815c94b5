#include "cushy/TagExpansion.h"

#include "cushy/CushyHost.h"
#include "platform/Exception.h"
#include "speclang/SpecQuote.h"

namespace tw {

namespace {

enum class Tag { var, windows, mac, xlate, uppercase, lowercase };

struct TagName {
    std::string_view open, close;
    Tag tag;
};

constexpr TagName tags[] = {
    {"[var]", "[/var]", Tag::var},          {"[windows]", "[/windows]", Tag::windows},
    {"[mac]", "[/mac]", Tag::mac},          {"[xlate]", "[/xlate]", Tag::xlate},
    {"[uppercase]", "[/uppercase]", Tag::uppercase}, {"[lowercase]", "[/lowercase]", Tag::lowercase},
};

// One expansion: the position is shared by all levels of the scan, the open quote is not.
class Expander {
public:
    Expander(std::string_view text, CushyHost& host, CushyView& view) : text_(text), host_(host), view_(view) {}

    void scan(std::string& out, std::string_view closing) {
        char quoteByte = 0;
        while (pos_ < text_.size()) {
            const std::size_t next = text_.find_first_of("[\"'\\", pos_);
            if (next == std::string_view::npos) {
                out.append(text_.substr(pos_));
                pos_ = text_.size();
                return;
            }
            out.append(text_.substr(pos_, next - pos_));
            pos_ = next;
            const char c = text_[pos_];
            if (c == '"' || c == '\'') {
                if (quoteByte == 0 || quoteByte == c) quoteByte = char(quoteByte ^ c);
                out += c;
                ++pos_;
            } else if (c == '\\') {
                const char escaped = pos_ + 1 < text_.size() ? text_[pos_ + 1] : '\0';
                if (escaped == '"' || escaped == '\'' || escaped == '\\') {
                    out += escaped;
                    pos_ += 2;
                } else {
                    out += '\\';
                    ++pos_;
                }
            } else if (tagAt(out, closing, quoteByte)) {
                return;
            }
        }
    }

private:
    // With the position on '[': copies plain text or runs a tag. True when the tag was the
    // closing one that ends this level.
    bool tagAt(std::string& out, std::string_view closing, char quoteByte) {
        const std::size_t bracket = text_.find_first_of("[]", pos_ + 1);
        if (bracket == std::string_view::npos || text_[bracket] == '[') {
            const std::size_t end = bracket == std::string_view::npos ? text_.size() : bracket;
            out.append(text_.substr(pos_, end - pos_));
            pos_ = end;
            return false;
        }
        const std::string_view candidate = text_.substr(pos_, bracket + 1 - pos_);
        pos_ = bracket + 1;
        for (const TagName& t : tags) {
            if (candidate == t.close) {
                if (candidate == closing) return true;
                throw FormatException("Unexpected meta tag: " + std::string(candidate));
            }
            if (candidate != t.open) continue;
            if (t.tag == Tag::windows) {
                scan(out, t.close);
                return false;
            }
            std::string inner;
            scan(inner, t.close);
            apply(t.tag, inner, out, quoteByte);
            return false;
        }
        out.append(candidate);
        return false;
    }

    void apply(Tag tag, std::string& inner, std::string& out, char quoteByte) {
        switch (tag) {
            case Tag::var: {
                const std::string value = host_.getVariable(view_, inner);
                if (quoteByte == 0) {
                    out += value;
                } else {
                    const std::string quoted = quote(value);
                    out.append(quoted, 1, quoted.size() - 2);
                }
                break;
            }
            case Tag::xlate: out += host_.translate(view_, inner); break;
            case Tag::uppercase: out += toUpperLatin1(std::move(inner)); break;
            case Tag::lowercase: out += toLowerLatin1(std::move(inner)); break;
            case Tag::mac:
            case Tag::windows: break;
        }
    }

    std::string_view text_;
    std::size_t pos_ = 0;
    CushyHost& host_;
    CushyView& view_;
};

}  // namespace

std::string expand(std::string_view text, CushyHost& host, CushyView& view) {
    if (text.find('[') == std::string_view::npos) return std::string(text);
    std::string out;
    Expander(text, host, view).scan(out, {});
    return out;
}

bool hasVar(std::string_view text) { return text.find("[var]") != std::string_view::npos; }

std::string toUpperLatin1(std::string text) {
    for (char& c : text) {
        const unsigned char b = static_cast<unsigned char>(c);
        if ((b >= 'a' && b <= 'z') || (b >= 0xE0 && b <= 0xFE && b != 0xF7)) c = char(b - 0x20);
    }
    return text;
}

std::string toLowerLatin1(std::string text) {
    for (char& c : text) {
        const unsigned char b = static_cast<unsigned char>(c);
        if ((b >= 'A' && b <= 'Z') || (b >= 0xC0 && b <= 0xDE && b != 0xD7)) c = char(b + 0x20);
    }
    return text;
}

}  // namespace tw
