// A coverage seen as a grey premultiplied colour: the byte in all four channels.
#pragma once

#include "graphics/Filter.h"

namespace tw {

class Converter8to32 : public Filter<std::uint8_t, std::uint32_t> {
public:
    explicit Converter8to32(Renderer8& source) : Filter(source) {}

    void filterSpan(std::int32_t length, const std::uint8_t* source, std::uint32_t* destination, bool& opaqueOut) override {
        bool opaque = true;
        for (std::int32_t i = 0; i < length; ++i) {
            destination[i] = source[i] * 0x01010101u;
            opaque &= source[i] == 255;
        }
        opaqueOut = opaque;
    }
};

}  // namespace tw
