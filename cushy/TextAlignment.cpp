#include "cushy/TextAlignment.h"

#include "speclang/SpecQuote.h"
#include "platform/Exception.h"

namespace tw {

TextAlignment parseTextAlignment(const std::string& raw, TextAlignment defaultValue) {
    if (raw.empty()) return defaultValue;
    const std::string word = unquote(raw);
    if (word == "left") return TextAlignment::left;
    if (word == "center") return TextAlignment::center;
    if (word == "right") return TextAlignment::right;
    throw FormatException("Invalid text alignment: " + quote(word));
}

}  // namespace tw
