// The view type "caption": one line of text in a font, aligned in the view, with an
// ellipsis where it does not fit. A text with a variable is live: it expands at each
// refresh and repaints when it changed.
#pragma once

#include <memory>
#include <string>

#include "cushy/EllipsisSide.h"
#include "cushy/HintedView.h"
#include "cushy/TextAlignment.h"
#include "cushy/VariableReading.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;
class Font;

class CaptionView : public HintedView {
public:
    // Reads `text`, `font`, `align`, `offset` and `ellipsis`. Throws the readers' faults.
    CaptionView(CushyView& layout, const SpecMap& spec);

    void paint(Raster32& canvas, const IntRect& clip) override;
    void refresh() override;
    // `%` in a caption's hint stands for what it shows.
    std::string valueText() override { return text_.text(); }

    const std::string& text() const { return text_.text(); }
    // The text as it is drawn in the view's width: whole, or cut with the ellipsis.
    std::u16string fittedText() const;

private:
    CushyView& layout_;
    WatchedText text_;
    std::shared_ptr<Font> font_;
    TextAlignment align_;
    std::int32_t offsetX_, offsetY_;
    EllipsisSide ellipsis_;
    std::u16string ellipsisText_;
};

}  // namespace tw
