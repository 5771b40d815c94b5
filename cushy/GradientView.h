// The view type "gradient": a rectangle, square or rounded, filled with a linear gradient
// (when `start` is given) or a radial one, and framed by a stroke. Panels and glows.
#pragma once

#include <memory>
#include <vector>

#include "cushy/HintedView.h"
#include "cushy/Rounded.h"
#include "cushy/Stroke.h"
#include "graphics/BlendMode.h"
#include "graphics/GradientTable.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class Paint;

class GradientView : public HintedView {
public:
    // Reads `stops`, `start` and `end` or `center`, `size`, `width` and `height`, `frame`,
    // `blend` and `rounded`. Throws FormatException "No stops defined for gradient".
    GradientView(const IntRect& rect, const SpecMap& spec);
    ~GradientView() override;

    void paint(Raster32& canvas, const IntRect& clip) override;

    const std::vector<GradientStop>& stops() const { return stops_; }

private:
    std::vector<GradientStop> stops_;
    std::shared_ptr<const Paint> paint_;
    Stroke frame_;
    BlendMode blend_;
    Rounded rounded_;
};

}  // namespace tw
