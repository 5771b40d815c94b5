#include "graphics/ImageKey.h"

#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"
#include "platform/Exception.h"

#include <tuple>

namespace tw {

bool ImageKey::hasClip() const {
    return !(clip.left == clip.top && clip.top == clip.right && clip.right == clip.bottom);
}

ImageKey ImageKey::whole() const {
    ImageKey key = *this;
    key.clip = SpecRect{0, 0, 0, 0};
    key.offsetX = 0;
    key.offsetY = 0;
    return key;
}

bool operator<(const ImageKey& a, const ImageKey& b) {
    return std::tie(a.name, a.rle, a.mask, a.gamma, a.opacity, a.clip.left, a.clip.top, a.clip.right,
                    a.clip.bottom, a.offsetX, a.offsetY, a.blend) <
           std::tie(b.name, b.rle, b.mask, b.gamma, b.opacity, b.clip.left, b.clip.top, b.clip.right,
                    b.clip.bottom, b.offsetX, b.offsetY, b.blend);
}

ImageKey parseImageSpec(const std::string& text, const ImageSizeLookup& imageSize) {
    ImageKey key;
    if (text.empty() || text[0] != '{') {
        key.name = unquote(text);
        return key;
    }
    const SpecMap map = parseMap(text);
    key.name = unquote(lookup(map, "name"));

    const std::string format = unquote(lookup(map, "format"));
    if (format == "rle") {
        key.rle = true;
    } else if (format == "mask") {
        key.mask = true;
    } else if (format == "rlemask") {
        key.rle = key.mask = true;
    } else if (!format.empty()) {
        throw FormatException("Invalid image format specification: " + quote(format));
    }

    // Written so that a NaN from 0/0 falls to the neutral end.
    const double gamma = evaluateDouble(lookup(map, "gamma"), 0);
    key.gamma = gamma > 4 ? 4 : gamma > 0 ? gamma : 0;
    const double opacity = evaluateDouble(lookup(map, "opacity"), 100) / 100;
    key.opacity = opacity > 1 ? 1 : opacity > 0 ? opacity : 0;
    key.blend = parseBlendMode(lookup(map, "blend"));

    const std::pair<std::int32_t, std::int32_t> offset = parseIntPair(lookup(map, "offset"), {0, 0});
    key.offsetX = offset.first;
    key.offsetY = offset.second;

    const std::string& clip = lookup(map, "clip");
    if (!clip.empty()) {
        const auto [width, height] = imageSize(key.whole());
        key.clip = parseBounds(clip, SpecRect{0, 0, width, height});
    }
    return key;
}

}  // namespace tw
