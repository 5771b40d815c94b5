// The view type "transformed": a container whose children are drawn scaled, turned, moved
// and faded, by values that may hold variables and are evaluated again at each refresh.
// Mouse points reach the children through the inverse transform, so a turned button is
// pressed where it is seen.
#pragma once

#include <string>

#include "cushy/TransformView.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;

class TransformedView : public TransformView {
public:
    // Keeps `opacity`, `scale`, `rotation` and `offset` as texts.
    TransformedView(CushyView& layout, const IntRect& rect, const SpecMap& spec);

    void buildChildren() override;
    // Evaluates the texts; a change repaints. Then refreshes the children.
    void refresh() override;

private:
    CushyView& layout_;
    std::string views_;
    std::string opacity_, scale_, rotation_, offsetX_, offsetY_;
};

}  // namespace tw
