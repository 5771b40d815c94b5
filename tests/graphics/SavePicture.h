// Pictures that tests leave for a person to look at, in the build's pictures/graphics.
#pragma once

#include "graphics/PNGWriter.h"

#include <filesystem>
#include <string>

namespace tw::test {

inline void savePicture(const std::string& name, const Raster32& raster) {
    const std::filesystem::path folder = std::filesystem::path(TIDEWAKE_BINARY_DIR) / "pictures" / "graphics";
    std::filesystem::create_directories(folder);
    writePNG((folder / name).string(), raster);
}

}  // namespace tw::test
