// Feeds arbitrary texts to the tag expansion. Every fault must be the system's own
// FormatException; a text without '[' must come back unchanged, and a value that lands in
// an open quote must read back as itself.
#include "cushy/CushyView.h"
#include "cushy/TagExpansion.h"
#include "cushy/doubles/MapHost.h"
#include "platform/Exception.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static tw::MapHost host;
    static const auto view = std::make_shared<tw::CushyView>(host, tw::IntRect{0, 0, 10, 10});
    const std::string text(reinterpret_cast<const char*>(data), size);
    // The first line is a variable's value, the rest the text that may use it as "v".
    const std::size_t line = text.find('\n');
    host.variables["v"] = text.substr(0, line);
    const std::string body = line == std::string::npos ? text : text.substr(line + 1);
    host.strings.read(text.substr(0, line));
    try {
        const std::string out = tw::expand(body, host, *view);
        if (body.find('[') == std::string::npos && out != body) std::abort();
    } catch (const tw::FormatException&) {
    }
    return 0;
}
