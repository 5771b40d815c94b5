// How accumulated signed coverage becomes a coverage byte: non-zero winding or even-odd.
// An accumulated value of 0x10000 stands for one full coverage.
#pragma once

#include <cstdint>

namespace tw {

class FillRule {
public:
    virtual void process(std::int32_t count, const std::int32_t* values, std::uint8_t* out) const = 0;
    virtual ~FillRule() = default;

    static const FillRule& nonZero();
    static const FillRule& evenOdd();
};

}  // namespace tw
