// A coverage passed through a table of 256 bytes: the anti-aliasing gamma of shapes, and
// the colour table of gradients drawn into masks.
#pragma once

#include <cstring>

#include "graphics/Filter.h"

namespace tw {

class GammaFilter8 : public Filter<std::uint8_t, std::uint8_t> {
public:
    GammaFilter8(Renderer8& source, const std::uint8_t (&table)[256]) : Filter(source) {
        std::memcpy(table_, table, sizeof table_);
    }

    // A table that lifts 0 paints outside its source.
    IntRect calcBounds() const override { return table_[0] == 0 ? source_.calcBounds() : FullRect; }
    void filterSpan(std::int32_t length, const std::uint8_t* source, std::uint8_t* destination, bool& opaqueOut) override {
        bool opaque = true;
        for (std::int32_t i = 0; i < length; ++i) {
            destination[i] = table_[source[i]];
            opaque &= destination[i] == 255;
        }
        opaqueOut = opaque;
    }

private:
    std::uint8_t table_[256];
};

}  // namespace tw
