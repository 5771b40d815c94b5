// What the editor window shows until the editor has its layouts: a picture drawn once by
// the raster core (the night-sea gradient, a panel, knob-like rings and the product's
// name in its own font), copied into whatever tile the window asks for. It proves the
// whole path from the raster core to the screen.
#pragma once

#include <cstdint>
#include <string>

#include "graphics/Raster.h"
#include "platform/Window.h"

namespace tw {

class TestPicture final : public WindowClient {
public:
    // `productName` is drawn in the title; fonts come from the resources of `modelName`
    // beside `binaryFolder`.
    TestPicture(std::int32_t width, std::int32_t height, const std::string& modelName, const std::string& productName,
                const std::string& binaryFolder);

    const Raster32& picture() const { return picture_; }
    void paint(const PixelTile& tile) override;

private:
    Raster32 picture_;
};

}  // namespace tw
