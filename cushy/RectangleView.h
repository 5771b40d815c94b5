// The view type "rectangle": a shape filled with a colour and framed by a stroke, with
// square or rounded corners, met with what lies below by a blend mode.
#pragma once

#include <cstdint>

#include "cushy/HintedView.h"
#include "cushy/Rounded.h"
#include "cushy/Stroke.h"
#include "graphics/BlendMode.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class RectangleView : public HintedView {
public:
    // Reads `fill`, `frame`, `blend` and `rounded`. Throws the readers' faults.
    RectangleView(const IntRect& rect, const SpecMap& spec);

    void paint(Raster32& canvas, const IntRect& clip) override;

private:
    std::uint32_t fill_;
    Stroke frame_;
    BlendMode blend_;
    Rounded rounded_;
};

}  // namespace tw
