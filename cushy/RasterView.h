// The view type "raster": a picture, copied straight onto the window when it is opaque and
// unblended, else met with what lies below by its blend mode and opacity.
#pragma once

#include <cstdint>
#include <memory>

#include "cushy/HintedView.h"
#include "graphics/BlendMode.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;
class Image;

class RasterView : public HintedView {
public:
    // Reads `image`, `blend` and `opacity` (percent).
    RasterView(CushyView& layout, const SpecMap& spec);

    void paint(Raster32& canvas, const IntRect& clip) override;

    std::uint8_t opacity() const { return opacity_; }

private:
    std::shared_ptr<Image> image_;
    BlendMode blend_;
    std::uint8_t opacity_;
};

}  // namespace tw
