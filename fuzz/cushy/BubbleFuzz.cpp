// Feeds arbitrary page texts to the bubble's tag scan. Every fault must be the system's own
// Exception, and the scan must hand back only items it can describe: words with text,
// styles from the table, and click runs that open before they close.
#include "cushy/BubbleText.h"
#include "platform/Exception.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto styles = [](const std::string& name) { return name == "red" ? 1 : name == "b" ? 2 : -1; };
    try {
        bool open = false;
        for (const tw::BubbleItem& item : tw::scanBubbleText(text, 0, styles)) {
            if (item.kind == tw::BubbleItem::word && item.text.empty()) std::abort();
            if (item.style < 0 || item.style > 2) std::abort();
            if (item.kind == tw::BubbleItem::clickStart) {
                if (open) std::abort();
                open = true;
            }
            if (item.kind == tw::BubbleItem::clickEnd) {
                if (!open) std::abort();
                open = false;
            }
        }
    } catch (const tw::Exception&) {
    }
    return 0;
}
