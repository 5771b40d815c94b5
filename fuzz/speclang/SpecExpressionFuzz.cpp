// Feeds arbitrary texts to the three evaluators, the pair readers and the bounds reader.
// A fault must come out as the evaluator's exception, never as a crash or a deep stack.
#include "speclang/SpecExpression.h"
#include "platform/Exception.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    auto guarded = [](auto evaluate) {
        try {
            evaluate();
        } catch (const tw::Exception&) {
        }
    };
    guarded([&] { tw::evaluateDouble(text, 1.5); });
    guarded([&] { tw::evaluateFloat(text, -2.5f); });
    guarded([&] { tw::evaluateInt(text, 7); });
    guarded([&] { tw::parsePair(text, {3.0, 4.0}); });
    guarded([&] { tw::parseIntPair(text, {0, 22}); });
    guarded([&] { tw::parseBounds(text, {0, 0, 525, 475}); });
    guarded([&] { tw::parseBounds(text, {-2147483647 - 1, 0, 2147483647, 1}); });
    return 0;
}
