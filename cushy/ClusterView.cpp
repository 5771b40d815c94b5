#include "cushy/ClusterView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/VariableReading.h"
#include "graphics/Image.h"
#include "platform/Exception.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <algorithm>
#include <cmath>

namespace tw {

ClusterView::ClusterView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), array_(unquote(lookup(spec, "array"))), readOnly_(toBool(lookup(spec, "readonly"), false)) {
    for (const std::string& image : parseList(lookup(spec, "images"))) images_.push_back(layout.host().image(layout, image));
    if (images_.empty()) throw FormatException("No images declared for cluster view");
    const std::string& rects = lookup(spec, "rects");
    const SpecList items = parseList(rects);
    const bool grid = items.size() == 4 && std::none_of(items.begin(), items.end(), [](const std::string& i) {
        return i.starts_with("{");
    });
    if (grid) {
        const std::int32_t columns = evaluateInt(items[0], 0), rows = evaluateInt(items[1], 0);
        const std::int32_t w = evaluateInt(items[2], 0), h = evaluateInt(items[3], 0);
        if (columns <= 0 || rows <= 0 || w <= 0 || h <= 0 || std::int64_t(columns) * rows > 4096)
            throw FormatException("Invalid rects specification in cluster view");
        for (std::int32_t r = 0; r < rows; ++r)
            for (std::int32_t c = 0; c < columns; ++c) rects_.push_back(IntRect{c * w, r * h, w, h});
    } else {
        for (const std::string& item : items) {
            const SpecList numbers = parseList(item);
            if (!item.starts_with("{") || numbers.size() != 4)
                throw FormatException("Invalid rects specification in cluster view");
            rects_.push_back(IntRect{evaluateInt(numbers[0], 0), evaluateInt(numbers[1], 0), evaluateInt(numbers[2], 0),
                                     evaluateInt(numbers[3], 0)});
        }
    }
    if (rects_.empty()) throw FormatException("Invalid rects specification in cluster view");
    std::tie(lower_, upper_) = parsePair(lookup(spec, "range"), {0, 1});
    const std::string method = unquote(lookup(spec, "paintMethod"));
    if (method == "slide") method_ = Method::slide;
    else if (method == "toggle") method_ = Method::toggle;
    else if (method == "exclusive") method_ = Method::exclusive;
    else if (!method.empty() && method != "set") throw FormatException("Unrecognized cluster paint method: " + quote(method));
    paintValue_ = evaluateDouble(lookup(spec, "paintValue"), upper_);
    for (const std::string& item : parseList(lookup(spec, "paintValues")))
        paintValues_.push_back(unquote(item) == "toggle" ? std::nullopt : std::optional<double>(evaluateDouble(item, 0)));
    values_.assign(rects_.size(), lower_);
}

ClusterView::~ClusterView() = default;

std::size_t ClusterView::pictureOf(std::size_t n) const {
    const double span = upper_ - lower_;
    const double f = span == 0 ? 0 : std::clamp((values_[n] - lower_) / span, 0.0, 1.0);
    return std::size_t(std::floor(f * double(images_.size() - 1) + 0.5));
}

void ClusterView::paint(Raster32& canvas, const IntRect& clip) {
    for (std::size_t n = 0; n < rects_.size(); ++n) {
        const IntRect part = intersectionOf(intersectionOf(rects_[n], clip), canvas.bounds());
        if (part.isEmpty()) continue;
        Raster32 cell(canvas.at(part.left, part.top), canvas.stride(),
                      IntRect{part.left - rects_[n].left, part.top - rects_[n].top, part.width, part.height});
        images_[pictureOf(n)]->draw(cell, 0, 0);
    }
}

std::optional<std::size_t> ClusterView::switchAt(std::int32_t x, std::int32_t y) const {
    for (std::size_t n = 0; n < rects_.size(); ++n)
        if (frameHolds(rects_[n], x, y)) return n;
    return std::nullopt;
}

void ClusterView::write(std::size_t n, double value) {
    value = std::clamp(value, std::min(lower_, upper_), std::max(lower_, upper_));
    if (touched_.insert(n).second) layout_.host().beginEnd(layout_, variable(n), true);
    if (value == values_[n]) return;
    values_[n] = value;
    invalidate(rects_[n]);
    layout_.host().setVariable(layout_, variable(n), formatVariableNumber(value), true);
}

void ClusterView::paintAt(std::int32_t x, std::int32_t y) {
    const std::optional<std::size_t> n = switchAt(x, y);
    if (!n) return;
    switch (method_) {
        case Method::slide: {
            const IntRect& r = rects_[*n];
            const double f = r.height <= 1 ? 1 : std::clamp(double(r.bottom() - 1 - y) / (r.height - 1), 0.0, 1.0);
            write(*n, lower_ + f * (upper_ - lower_));
            break;
        }
        case Method::exclusive:
            for (std::size_t i = 0; i < rects_.size(); ++i) write(i, i == *n ? stroke_ : lower_);
            break;
        default: write(*n, stroke_); break;
    }
}

bool ClusterView::mouseDown(const MouseEvent& event) {
    if (readOnly_ || event.button != leftButton) return false;
    const std::optional<std::size_t> n = switchAt(event.x, event.y);
    if (!n) return false;
    hideHint();
    const double opposite = values_[*n] == upper_ ? lower_ : upper_;
    stroke_ = method_ == Method::toggle ? opposite : paintValue_;
    if (pictureOf(*n) < paintValues_.size()) stroke_ = paintValues_[pictureOf(*n)].value_or(opposite);
    painting_ = true;
    captureMouse();
    paintAt(event.x, event.y);
    return true;
}

void ClusterView::mouseMove(const MouseEvent& event) {
    if (painting_) paintAt(event.x, event.y);
    else HintedView::mouseMove(event);
}

void ClusterView::mouseUp(const MouseEvent& event) {
    if (painting_) releaseCapture();
    else HintedView::mouseUp(event);
}

void ClusterView::releaseCapture() {
    const bool ending = painting_ && captureHolder() == this;
    HintedView::releaseCapture();
    if (!ending) return;
    painting_ = false;
    for (std::size_t n : touched_) layout_.host().beginEnd(layout_, variable(n), false);
    touched_.clear();
    refresh();
}

void ClusterView::refresh() {
    if (painting_) return;
    for (std::size_t n = 0; n < rects_.size(); ++n) {
        const double v = std::clamp(variableNumber(layout_.host().getVariable(layout_, variable(n)), lower_),
                                    std::min(lower_, upper_), std::max(lower_, upper_));
        if (v == values_[n]) continue;
        values_[n] = v;
        invalidate(rects_[n]);
    }
}

}  // namespace tw
