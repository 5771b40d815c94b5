// The bitwise complement of a source: inverted masks, and the fade-to-white of pictures
// drawn with the "multiply" blend.
#pragma once

#include "graphics/Filter.h"

namespace tw {

template <class Pixel>
class Inverter : public Filter<Pixel, Pixel> {
public:
    explicit Inverter(Renderer<Pixel>& source) : Filter<Pixel, Pixel>(source) {}

    // Transparent input becomes fully set, so there is no bound.
    IntRect calcBounds() const override { return FullRect; }
    void filterSpan(std::int32_t length, const Pixel* source, Pixel* destination, bool& opaqueOut) override {
        for (std::int32_t i = 0; i < length; ++i) destination[i] = Pixel(~source[i]);
        opaqueOut = false;
    }
};

using Inverter32 = Inverter<std::uint32_t>;
using Inverter8 = Inverter<std::uint8_t>;

}  // namespace tw
