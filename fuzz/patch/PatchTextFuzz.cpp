// Patch text from anywhere (a file, the clipboard, a chunk): any bytes either make a
// patch whose own text reads back, or raise the text's own exceptions.
#include "product/TidewakeFactory.h"
#include "platform/Exception.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const tw::TidewakeFactory factory;
    std::string_view text(reinterpret_cast<const char*>(data), size);
    std::unique_ptr<tw::Patch> patch;
    try {
        patch = factory.patchFromText(text);
    } catch (const tw::Exception&) {
        return 0;
    }
    for (int id = 0; id < patch->getParameterCount(); ++id) {
        float v = patch->getParameter(id);
        if (!(v >= 0.0f && v <= 1.0f)) std::abort();
    }
    try {
        factory.patchFromText(factory.patchToText(*patch, false));
    } catch (const tw::Exception&) {
        std::abort();
    }
    return 0;
}
