// Reads a raster through an affine matrix, with bilinear sampling where needed: the
// repeating patterns of the vector painter. The matrix maps source coordinates to the
// destination. One of seven modes is chosen at construction so that the frequent cases
// (whole-pixel offset, no scaling) cost no more than reading the raster itself.
#pragma once

#include "graphics/Matrix.h"
#include "graphics/Raster.h"

namespace tw {

template <class Pixel>
class Transformer : public Renderer<Pixel> {
public:
    enum Mode : std::int32_t {
        nothing = 0,           // the matrix cannot be inverted
        offset = 1,            // identity with a whole-pixel offset: spans point into the source
        nearest = 2,           // whole-pixel steps
        magnified = 3,         // horizontal step below one source pixel, rows held per source pixel
        horizontal = 4,        // bilinear in x only
        vertical = 5,          // bilinear in y only
        bilinear = 6,
    };

    Transformer(const Raster<Pixel>& source, bool wrap, const Matrix& matrix);

    IntRect calcBounds() const override { return bounds_; }
    void render(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out) override;

    Mode mode() const { return mode_; }

private:
    struct Sample {
        std::int64_t x, y;  // 32.32 source index coordinates
    };
    Sample sampleAt(std::int32_t x, std::int32_t y) const;
    std::uint32_t sides(const Sample& s) const;
    bool inside(const Sample& s) const;
    Pixel pixelOrZero(std::int64_t ix, std::int64_t iy) const;
    Pixel careful(const Sample& s) const;
    Pixel wrapped(const Sample& s) const;
    void fast(Sample s, std::int32_t n, Pixel* out) const;
    void renderWrapped(std::int32_t x, std::int32_t y, std::int32_t length, SpanBuffer<Pixel>& out);

    const Raster<Pixel>& source_;
    std::int64_t dxx_ = 0, dyx_ = 0, dxy_ = 0, dyy_ = 0, offX_ = 0, offY_ = 0;
    std::int64_t pixelStep_ = 0;
    Mode mode_ = nothing;
    bool wrap_;
    std::int32_t reachX_ = 0, reachY_ = 0;  // how many neighbours to the right and below a sample reads
    IntRect bounds_;
};

using Transformer32 = Transformer<std::uint32_t>;

// The 8-bit form always wraps.
class Transformer8 : public Transformer<std::uint8_t> {
public:
    Transformer8(const Raster8& source, const Matrix& matrix) : Transformer(source, true, matrix) {}
};

extern template class Transformer<std::uint32_t>;
extern template class Transformer<std::uint8_t>;

}  // namespace tw
