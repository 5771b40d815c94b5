#include "graphics/BlendMode.h"

#include "speclang/SpecQuote.h"

namespace tw {

BlendMode parseBlendMode(const std::string& raw) {
    const std::string word = unquote(raw);
    if (word == "add") return BlendMode::add;
    if (word == "multiply") return BlendMode::multiply;
    return BlendMode::normal;
}

}  // namespace tw
