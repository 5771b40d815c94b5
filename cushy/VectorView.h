// The view type "vector": a Keel drawing, from the layout's own text, a variable or a
// file. It runs again when its text or a GUI variable the program read has changed; an
// unchanged picture is kept off-screen from its sixth paint on, so that a still drawing
// costs a copy and a drawing that changes often costs no copies.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cushy/HintedView.h"
#include "cushy/VariableCache.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;

class VectorView : public HintedView {
public:
    // The paints after a change that draw direct; the next one keeps the picture.
    static constexpr int directPaints = 5;

    // Reads the first of `source`, `variable` and `file`, `scale` and `guiVariables`. Throws
    // FormatException "Missing Keel source, variable or file definition for vector view".
    VectorView(CushyView& layout, const SpecMap& spec);

    void paint(Raster32& canvas, const IntRect& clip) override;
    // Fetches the text; a new text or a changed variable of the last run repaints.
    void refresh() override;

    const std::string& text() const { return text_; }
    std::uint32_t generation() const { return generation_; }
    bool cached() const { return cache_.has_value(); }
    int runs() const { return runs_; }

private:
    enum class Source { text, variable, file };

    std::string fetch();
    // Runs the program onto `canvas`; a fault goes to the layout's error path.
    void run(Raster32& canvas);

    CushyView& layout_;
    Source source_;
    std::string sourceName_;
    std::string text_;
    double scale_;
    bool guiVariables_;
    VariableCache variables_;
    std::uint32_t generation_ = 0;
    int paintsSinceChange_ = 0;
    std::optional<Raster32> cache_;
    int runs_ = 0;
};

}  // namespace tw
