#include "cushy/EllipsisSide.h"

#include "speclang/SpecQuote.h"
#include "platform/Exception.h"

namespace tw {

EllipsisSide parseEllipsisSide(const std::string& raw, EllipsisSide defaultValue) {
    if (raw.empty()) return defaultValue;
    const std::string word = unquote(raw);
    if (word == "none") return EllipsisSide::none;
    if (word == "left") return EllipsisSide::left;
    if (word == "right") return EllipsisSide::right;
    if (word == "both") return EllipsisSide::both;
    if (word == "middle") return EllipsisSide::middle;
    throw FormatException("Invalid ellipsis side: " + quote(word));
}

}  // namespace tw
