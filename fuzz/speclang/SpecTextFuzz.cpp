// Feeds arbitrary texts to the map and list scanners and to the quoting routines. The
// scanners must end on any text, in linear time; quoting must read back what it wrote.
#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

// Walks a few levels down, as the view code does; each level is scanned once more by the
// level below, so the walk stops short of the nesting a hostile text could have.
void walk(const std::string& text, int levels) {
    if (levels == 0) return;
    for (const auto& [label, value] : tw::parseMap(text)) {
        tw::unquote(value);
        walk(value, levels - 1);
    }
    for (const std::string& item : tw::parseList(text)) {
        tw::unquoteWide(item);
        tw::toInt(item, 0);
        tw::toBool(item, false);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    walk(text, 3);
    if (tw::unquote(tw::quote(text)) != text) std::abort();
    const std::u16string wide = tw::unquoteWide(text);
    if (tw::unquoteWide(tw::quoteWide(wide)) != wide) std::abort();
    return 0;
}
