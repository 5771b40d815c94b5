// Turns the bytes of a PNG file into the picture that an image key asks for, with its
// gamma, opacity and format baked in once at load, so that drawing does none of it.
// The resource manager calls it for every picture it does not hold yet.
#pragma once

#include "graphics/Image.h"
#include "graphics/ImageKey.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tw {

// Throws QvxPNG::Exception (a FormatException) with the reader's messages.
std::shared_ptr<Image> decodeImage(const std::uint8_t* data, std::size_t size, const ImageKey& key);

}  // namespace tw
