// A coverage turned into colours through a table of 256 premultiplied colours: the
// gradients of colour paints, whose ramps answer positions as bytes.
#pragma once

#include <cstring>

#include "graphics/Filter.h"

namespace tw {

class Lookup8to32 : public Filter<std::uint8_t, std::uint32_t> {
public:
    Lookup8to32(Renderer8& source, const std::uint32_t (&table)[256], bool allOpaque) : Filter(source), allOpaque_(allOpaque) {
        std::memcpy(table_, table, sizeof table_);
    }

    void filterSpan(std::int32_t length, const std::uint8_t* source, std::uint32_t* destination, bool& opaqueOut) override {
        for (std::int32_t i = 0; i < length; ++i) destination[i] = table_[source[i]];
        opaqueOut = allOpaque_;
    }

private:
    std::uint32_t table_[256];
    bool allOpaque_;
};

}  // namespace tw
