// Writes rasters as PNG files (through libpng), so that tests and tools can show what
// was drawn. Colour rasters are un-premultiplied into RGBA; masks become grey images.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "graphics/Raster.h"

namespace tw {

std::vector<std::uint8_t> encodePNG(const Raster32& raster);
std::vector<std::uint8_t> encodePNG(const Raster8& raster);
// Throws tw::Exception when the file cannot be written.
void writePNG(const std::string& path, const Raster32& raster);
void writePNG(const std::string& path, const Raster8& raster);

}  // namespace tw
