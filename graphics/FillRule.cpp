#include "graphics/FillRule.h"

#include <cstdlib>

namespace tw {

namespace {

class NonZeroRule : public FillRule {
public:
    void process(std::int32_t count, const std::int32_t* values, std::uint8_t* out) const override {
        for (std::int32_t i = 0; i < count; ++i) {
            const std::int64_t c = std::llabs(values[i]) >> 8;
            out[i] = std::uint8_t(c > 255 ? 255 : c);
        }
    }
};

class EvenOddRule : public FillRule {
public:
    void process(std::int32_t count, const std::int32_t* values, std::uint8_t* out) const override {
        for (std::int32_t i = 0; i < count; ++i) {
            const std::uint32_t acc = std::uint32_t(values[i]);
            const std::uint32_t c = (acc & 0x10000u) == 0 ? (acc & 0xFFFFu) : (~acc & 0xFFFFu) + 1;
            out[i] = std::uint8_t((c >> 8) > 255 ? 255 : (c >> 8));
        }
    }
};

const NonZeroRule kNonZero;
const EvenOddRule kEvenOdd;

}  // namespace

const FillRule& FillRule::nonZero() { return kNonZero; }
const FillRule& FillRule::evenOdd() { return kEvenOdd; }

}  // namespace tw
