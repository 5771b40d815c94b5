#include "cushy/CaptionView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "graphics/Font.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <cmath>

namespace tw {

CaptionView::CaptionView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), text_(unquote(lookup(spec, "text")), layout.host(), layout),
      font_(layout.host().font(layout, lookup(spec, "font"))),
      align_(parseTextAlignment(lookup(spec, "align"), TextAlignment::left)) {
    const auto [x, y] = parseIntPair(lookup(spec, "offset"), {0, 0});
    offsetX_ = x, offsetY_ = y;
    const std::string& ellipsis = lookup(spec, "ellipsis");
    ellipsisText_ = u"...";
    if (ellipsis.starts_with("{")) {
        SpecList parts = parseList(ellipsis);
        parts.resize(2);
        ellipsis_ = parseEllipsisSide(parts[0], EllipsisSide::right);
        if (!parts[1].empty()) ellipsisText_ = unquoteWide(parts[1]);
    } else {
        ellipsis_ = parseEllipsisSide(ellipsis, EllipsisSide::right);
    }
}

std::u16string CaptionView::fittedText() const {
    const std::u16string text = fromUtf8(text_.text());
    const auto fits = [&](const std::u16string& t) {
        return font_->measure(Point{0, 0}, t, true).right() <= size_.width;
    };
    if (ellipsis_ == EllipsisSide::none || fits(text)) return text;
    const std::u16string& e = ellipsisText_;
    // Fewer and fewer characters are kept, cut from the chosen side, until one fits.
    for (std::size_t keep = text.size(); keep-- > 0;) {
        const std::size_t cut = text.size() - keep;
        std::u16string candidate;
        switch (ellipsis_) {
            case EllipsisSide::right: candidate = text.substr(0, keep) + e; break;
            case EllipsisSide::left: candidate = e + text.substr(cut); break;
            case EllipsisSide::both: candidate = e + text.substr(cut / 2, keep) + e; break;
            default: candidate = text.substr(0, (keep + 1) / 2) + e + text.substr(text.size() - keep / 2); break;
        }
        if (fits(candidate)) return candidate;
    }
    return e;
}

void CaptionView::paint(Raster32& canvas, const IntRect&) {
    const std::u16string text = fittedText();
    std::int32_t height, ascent;
    font_->getMetrics(height, ascent);
    const std::int64_t width = font_->measure(Point{0, 0}, text, true).right();
    double x = offsetX_;
    if (align_ == TextAlignment::center) x += double(size_.width - width) / 2;
    if (align_ == TextAlignment::right) x += double(size_.width - width);
    const double baseline = (size_.height - height) / 2 + ascent + offsetY_;
    font_->draw(canvas, Point{std::floor(x), double(baseline)}, text);
}

void CaptionView::refresh() {
    if (text_.renew(layout_.host(), layout_)) invalidateAll();
}

}  // namespace tw
