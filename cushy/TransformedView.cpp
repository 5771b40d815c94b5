#include "cushy/TransformedView.h"

#include "cushy/CushyView.h"
#include "cushy/TagExpansion.h"
#include "cushy/ViewFactory.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <numbers>

namespace tw {

TransformedView::TransformedView(CushyView& layout, const IntRect& rect, const SpecMap& spec)
    : layout_(layout), views_(lookup(spec, "views")), opacity_(unquote(lookup(spec, "opacity"))),
      scale_(unquote(lookup(spec, "scale"))), rotation_(unquote(lookup(spec, "rotation"))) {
    resize(rect);
    SpecList offset = parseList(lookup(spec, "offset"));
    offset.resize(2);
    offsetX_ = unquote(offset[0]), offsetY_ = unquote(offset[1]);
}

void TransformedView::buildChildren() {
    for (const std::string& item : parseList(views_)) createView(layout_, *this, parseMap(item));
}

void TransformedView::refresh() {
    // Texts with variables are read again; numbers alone cost one evaluation.
    const auto number = [&](const std::string& raw, double fallback) {
        return raw.empty() ? fallback : evaluateDouble(expand(raw, layout_.host(), layout_), fallback);
    };
    const double opacity = number(opacity_, 100) / 100;
    const double scale = number(scale_, 100) / 100;
    const double rotation = number(rotation_, 0) * std::numbers::pi / 180;
    setTransform(aroundCentre(size_, scale, rotation, number(offsetX_, 0), number(offsetY_, 0)), opacity);
    TransformView::refresh();
}

}  // namespace tw
