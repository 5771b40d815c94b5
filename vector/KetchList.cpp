#include "vector/KetchList.h"

#include "vector/KetchException.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchScanner.h"

namespace tw::Ketch {

std::vector<std::string> parseList(Frame& frame, std::string_view text, bool expand, bool skipEmpty, int min,
                                   int max) {
    std::vector<std::string> items;
    const char* end = text.data() + text.size();
    const char* p = skipWhiteAndLines(text.data(), end);
    // After a comma an item follows even at the end of the text, so "a," has an empty last one.
    bool itemFollows = p < end;
    while (itemFollows) {
        const char* itemEnd = skipToken(p, end, ',');
        const std::string_view item = between(p, itemEnd);
        if (!item.empty() || !skipEmpty) {
            if (int(items.size()) == max) {
                throw SyntaxException("Too many list elements");
            }
            items.push_back(expand ? expandValue(frame, item) : std::string(item));
        }
        p = skipWhiteAndLines(itemEnd, end);
        itemFollows = p < end;
        if (itemFollows && *p == ',') {
            p = skipWhiteAndLines(p + 1, end);
        }
    }
    if (int(items.size()) < min) {
        throw SyntaxException("Too few list elements");
    }
    return items;
}

}  // namespace tw::Ketch
