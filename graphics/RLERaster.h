// A picture compressed by rows into runs, for large images and glyph pages that are
// mostly transparent or flat. Reading remembers where it stopped, so that the strips of
// one row continue from there; it is therefore not shareable across threads.
#pragma once

#include <vector>

#include "graphics/Renderer.h"

namespace tw {

template <class Pixel>
class RLERaster : public Renderer<Pixel> {
public:
    // Run word: bit 15 solid, bit 14 opaque, 14-bit length.
    static constexpr std::uint16_t kRunSolid = 0x8000;
    static constexpr std::uint16_t kRunOpaque = 0x4000;
    static constexpr std::int32_t kMaxRun = 0x3FFF;

    struct Row {
        std::uint32_t firstRun;
        std::uint32_t firstPixel;
    };

    // An empty raster.
    RLERaster() = default;
    // Compresses what `source` answers over `bounds`.
    RLERaster(Renderer<Pixel>& source, const IntRect& bounds);

    void swap(RLERaster& other) noexcept;

    IntRect calcBounds() const override { return bounds_; }
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) override;

    const IntRect& bounds() const { return bounds_; }
    const std::vector<std::uint16_t>& runs() const { return runs_; }
    const std::vector<Pixel>& pixels() const { return pixels_; }

private:
    void restart(std::int32_t y);

    IntRect bounds_;
    std::vector<Row> rows_;
    std::vector<std::uint16_t> runs_;
    std::vector<Pixel> pixels_;
    // Read position: the run that starts at cursorX_ on row cursorY_.
    std::int32_t cursorX_ = 0;
    std::int32_t cursorY_ = 0;
    std::uint32_t cursorRun_ = 0;
    std::uint32_t cursorPixel_ = 0;
    bool cursorValid_ = false;
};

using RLERaster32 = RLERaster<std::uint32_t>;
using RLERaster8 = RLERaster<std::uint8_t>;

extern template class RLERaster<std::uint32_t>;
extern template class RLERaster<std::uint8_t>;

}  // namespace tw
