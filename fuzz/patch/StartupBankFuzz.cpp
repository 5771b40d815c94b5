// The startup bank as the shared store hands it over: any blob is refused, raises, or
// gives texts that are each parsed or skipped.
#include "patch/StartupBank.h"
#include "product/TidewakeFactory.h"
#include "platform/Exception.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const tw::TidewakeFactory factory;
    std::string_view blob(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> texts;
    int current = 0;
    try {
        if (!tw::parseStartupBank(factory.getDescriptor(), blob, texts, current)) return 0;
    } catch (const tw::Exception&) {
        return 0;
    }
    for (const std::string& text : texts) {
        try {
            factory.patchFromText(text);
        } catch (const tw::Exception&) {
        }
    }
    return 0;
}
