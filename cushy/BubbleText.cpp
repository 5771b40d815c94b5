#include "cushy/BubbleText.h"

#include "platform/Exception.h"
#include "speclang/SpecNumber.h"
#include "speclang/SpecQuote.h"

#include <cstdlib>
#include <map>

namespace tw {

namespace {

bool blankByte(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

struct Tag {
    std::string name;
    std::map<std::string, std::string> attributes;
};

// The tag between `<` at `start` and its `>`; npos when there is no `>`, and the text
// stays as it is.
std::size_t readTag(const std::string& text, std::size_t start, Tag& tag) {
    std::size_t p = start + 1;
    while (p < text.size() && !blankByte(text[p]) && text[p] != '>') tag.name += text[p++];
    for (;;) {
        while (p < text.size() && blankByte(text[p])) ++p;
        if (p >= text.size()) return std::string::npos;
        if (text[p] == '>') return p + 1;
        std::string name;
        while (p < text.size() && !blankByte(text[p]) && text[p] != '=' && text[p] != '>') name += text[p++];
        std::string value = "true";
        if (p < text.size() && text[p] == '=') {
            ++p;
            value.clear();
            if (p < text.size() && (text[p] == '"' || text[p] == '\'')) {
                const char quoteChar = text[p++];
                while (p < text.size() && text[p] != quoteChar) {
                    if (text[p] == '\\' && p + 1 < text.size()) ++p;
                    value += text[p++];
                }
                if (p >= text.size()) return std::string::npos;
                ++p;
            } else {
                while (p < text.size() && !blankByte(text[p]) && text[p] != '>') value += text[p++];
            }
        }
        tag.attributes[name] = value;
    }
}

// The character an entity stands for, with whether it may break; false: no entity.
bool readEntity(const std::string& name, char32_t& c) {
    if (name == "amp") c = U'&';
    else if (name == "gt") c = U'>';
    else if (name == "lt") c = U'<';
    else if (name == "quot") c = U'"';
    else if (name == "nbsp") c = U' ';
    else if (name == "nbhp") c = U'-';
    else if (name.size() > 1 && name[0] == '#' && name.find_first_not_of("0123456789", 1) == std::string::npos &&
             name.size() < 9)
        c = char32_t(std::strtoul(name.c_str() + 1, nullptr, 10));
    else
        return false;
    return true;
}

void appendUtf16(std::u16string& out, char32_t c) {
    if (c >= 0x10000 && c <= 0x10FFFF) {
        c -= 0x10000;
        out += char16_t(0xD800 + (c >> 10));
        out += char16_t(0xDC00 + (c & 0x3FF));
    } else if (c < 0x10000) {
        out += char16_t(c);
    }
}

}  // namespace

std::vector<BubbleItem> scanBubbleText(const std::string& text, std::int32_t defaultStyle,
                                       const BubbleStyleIndex& styleIndex) {
    std::vector<BubbleItem> items;
    std::vector<std::pair<std::string, std::int32_t>> styles{{"default", defaultStyle}};
    bool inClick = false;
    std::string word;  // UTF-8 bytes of the word being read
    const auto flush = [&] {
        if (word.empty()) return;
        BubbleItem item;
        item.kind = BubbleItem::word;
        item.text = fromUtf8(word);
        item.style = styles.back().second;
        word.clear();
        // Bytes that are no text at all make no word.
        if (!item.text.empty()) items.push_back(std::move(item));
    };
    const auto push = [&](BubbleItem item) {
        flush();
        items.push_back(std::move(item));
    };
    for (std::size_t p = 0; p < text.size();) {
        const char c = text[p];
        if (c == '<') {
            Tag tag;
            const std::size_t end = readTag(text, p, tag);
            if (end == std::string::npos || tag.name.empty()) {
                word += c;
                ++p;
                continue;
            }
            p = end;
            const auto attribute = [&](const char* name) {
                const auto found = tag.attributes.find(name);
                return found == tag.attributes.end() ? std::string() : found->second;
            };
            BubbleItem item;
            item.automatic = attribute("auto") == "true";
            if (tag.name == "br" || tag.name == "br/") {
                item.kind = BubbleItem::lineBreak;
                push(std::move(item));
            } else if (tag.name == "click" || tag.name == "do") {
                item.action = attribute("action");
                if (item.action.empty()) throw Exception("Missing action in click or do tag");
                item.params = attribute("params");
                if (tag.name == "click") {
                    if (inClick) throw Exception("Unbalanced click tag");
                    inClick = true;
                    item.kind = BubbleItem::clickStart;
                } else {
                    item.kind = BubbleItem::doAction;
                }
                push(std::move(item));
            } else if (tag.name == "/click") {
                if (!inClick) throw Exception("Unbalanced click tag");
                inClick = false;
                item.kind = BubbleItem::clickEnd;
                push(std::move(item));
            } else if (tag.name == "pause") {
                const std::string delay = attribute("delay");
                if (delay.empty()) throw Exception("Missing delay in pause tag");
                item.kind = BubbleItem::pause;
                item.seconds = leadingDouble(delay, 0.0);
                push(std::move(item));
            } else if (tag.name == "move") {
                item.action = attribute("bounds");
                if (item.action.empty()) throw Exception("Missing bounds in move tag");
                item.kind = BubbleItem::move;
                item.time = attribute("time");
                item.curve = attribute("curve");
                push(std::move(item));
            } else if (tag.name[0] == '/') {
                const std::string name = tag.name.substr(1);
                if (styleIndex(name) < 0) throw Exception("Unrecognized style tag: " + name);
                if (styles.size() < 2 || styles.back().first != name)
                    throw Exception("Unbalanced style tags: " + styles.back().first + " and " + name);
                flush();
                styles.pop_back();
            } else {
                const std::int32_t index = styleIndex(tag.name);
                if (index < 0) throw Exception("Unrecognized style tag: " + tag.name);
                flush();
                styles.emplace_back(tag.name, index);
            }
        } else if (c == '&') {
            const std::size_t semicolon = text.find(';', p + 1);
            char32_t entity = 0;
            if (semicolon != std::string::npos && readEntity(text.substr(p + 1, semicolon - p - 1), entity)) {
                std::u16string wide;
                appendUtf16(wide, entity);
                word += toUtf8(wide);
                p = semicolon + 1;
            } else {
                word += c;
                ++p;
            }
        } else if (blankByte(c)) {
            BubbleItem item;
            item.kind = BubbleItem::blank;
            item.style = styles.back().second;
            push(std::move(item));
            ++p;
        } else if (c == '-') {
            word += c;
            flush();
            ++p;
        } else {
            word += c;
            ++p;
        }
    }
    flush();
    return items;
}

}  // namespace tw
