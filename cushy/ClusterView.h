// The view type "cluster": a row or grid of switches, each a variable `array[n]` shown as
// one of a set of pictures, that the mouse paints across like the steps of a sequencer.
//
// Choices where the layouts leave room: switch n shows the picture whose index is its
// value's place in `range` spread over the pictures; `rects` of four numbers is a grid of
// { columns, rows, cell width, cell height } from the view's corner. The paint methods:
// "set" writes the paint value to every switch the drag crosses; "toggle" writes to them
// the opposite of the switch first pressed; "slide" writes the pointer's height in each
// switch's rectangle (bottom the lower end); "exclusive" writes the paint value to the
// switch under the pointer and the range's lower end to all others. `paintValues`, in
// step with the pictures, picks the value by the pressed switch's picture ("toggle" there
// meaning the opposite); else `paintValue`, by default the range's upper end.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cushy/HintedView.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;
class Image;

class ClusterView : public HintedView {
public:
    enum class Method { set, slide, toggle, exclusive };

    // Throws FormatException "No images declared for cluster view", "Invalid rects
    // specification in cluster view" or "Unrecognized cluster paint method: " with the name.
    ClusterView(CushyView& layout, const SpecMap& spec);
    ~ClusterView() override;

    void paint(Raster32& canvas, const IntRect& clip) override;
    bool mouseDown(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;
    void releaseCapture() override;
    // Reads the switches' variables, except while the mouse paints them.
    void refresh() override;

    std::size_t switchCount() const { return rects_.size(); }
    double value(std::size_t n) const { return values_.at(n); }
    std::size_t pictureOf(std::size_t n) const;

private:
    std::optional<std::size_t> switchAt(std::int32_t x, std::int32_t y) const;
    void write(std::size_t n, double value);
    void paintAt(std::int32_t x, std::int32_t y);
    std::string variable(std::size_t n) const { return array_ + "[" + std::to_string(n) + "]"; }

    CushyView& layout_;
    std::string array_;
    bool readOnly_;
    std::vector<std::shared_ptr<Image>> images_;
    std::vector<IntRect> rects_;
    double lower_, upper_;
    Method method_ = Method::set;
    double paintValue_;
    std::vector<std::optional<double>> paintValues_;  // none: toggle
    std::vector<double> values_;
    bool painting_ = false;
    double stroke_ = 0;  // what a set or toggle drag writes
    std::set<std::size_t> touched_;
};

}  // namespace tw
