// An image spec, read from a layout's `image` value: which picture, and how it
// is prepared at load (compression, mask, gamma, opacity, blend, clip, offset). The
// resource manager caches its images under this key.
#pragma once

#include "speclang/SpecExpression.h"
#include "graphics/BlendMode.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

namespace tw {

struct ImageKey {
    std::string name;
    bool rle = false;
    bool mask = false;
    double gamma = 0;  // 0 leaves the picture as it is in the file
    double opacity = 1;
    BlendMode blend = BlendMode::normal;
    SpecRect clip{0, 0, 0, 0};  // left, top, right, bottom; all four equal: no clip
    std::int32_t offsetX = 0;
    std::int32_t offsetY = 0;
    // Whether the cache keeps the image once made; not part of the order.
    bool keep = true;

    bool hasClip() const;
    bool hasOffset() const { return offsetX != 0 || offsetY != 0; }
    // The same key without clip and offset: the picture that a clipped image cuts from.
    ImageKey whole() const;
};

// By name, then rle, mask, gamma, opacity, clip and offset, and last by blend, so that
// one picture in two blend modes makes two entries.
bool operator<(const ImageKey& a, const ImageKey& b);

// The width and height of the picture that a key without clip and offset names.
using ImageSizeLookup = std::function<std::pair<std::int32_t, std::int32_t>(const ImageKey&)>;

// Reads an image spec: a plain name, or a map with `name`, `format` ("rle",
// "mask", "rlemask"), `gamma` (at most 4), `opacity` (percent), `blend`, `clip` (bounds
// whose `w` and `h` are the picture's size, which `imageSize` is asked for) and `offset`
// (a pair). Throws FormatException "Invalid image format specification: ", and the
// messages of the expression evaluator.
ImageKey parseImageSpec(const std::string& text, const ImageSizeLookup& imageSize);

}  // namespace tw
