#include "cushy/VectorView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "graphics/CanvasTarget.h"
#include "graphics/Image.h"
#include "platform/Exception.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"
#include "vector/KeelPainter.h"
#include "vector/KetchException.h"
#include "vector/KetchFrame.h"
#include "vector/KetchInterpreter.h"
#include "vector/KetchVariables.h"

#include <cstring>
#include <sstream>

namespace tw {

namespace {

// A block written in the layout loses its braces; a quoted text is unquoted.
std::string sourceText(const std::string& raw) {
    if (raw.size() >= 2 && raw.front() == '{' && raw.back() == '}') return raw.substr(1, raw.size() - 2);
    return unquote(raw);
}

}  // namespace

VectorView::VectorView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), scale_(evaluateDouble(lookup(spec, "scale"), 100) / 100),
      guiVariables_(toBool(lookup(spec, "guiVariables"), false)),
      variables_(nullptr, nullptr, guiVariables_ ? &layout.host() : nullptr, guiVariables_ ? &layout : nullptr) {
    if (const auto source = spec.find("source"); source != spec.end()) {
        source_ = Source::text;
        text_ = sourceText(source->second);
    } else if (const auto variable = spec.find("variable"); variable != spec.end()) {
        source_ = Source::variable;
        sourceName_ = unquote(variable->second);
    } else if (const auto file = spec.find("file"); file != spec.end()) {
        source_ = Source::file;
        sourceName_ = unquote(file->second);
    } else {
        throw FormatException("Missing Keel source, variable or file definition for vector view");
    }
    if (source_ != Source::text) text_ = fetch();
}

std::string VectorView::fetch() {
    switch (source_) {
        case Source::text: return text_;
        case Source::variable: return layout_.host().getVariable(layout_, sourceName_);
        case Source::file: return layout_.host().file(layout_, sourceName_);
    }
    return text_;
}

void VectorView::refresh() {
    std::string text = fetch();
    const bool variablesChanged = guiVariables_ && variables_.changed();
    if (text == text_ && !variablesChanged) return;
    text_ = std::move(text);
    ++generation_;
    paintsSinceChange_ = 0;
    cache_.reset();
    invalidateAll();
}

void VectorView::run(Raster32& canvas) {
    ++runs_;
    CanvasTarget target(canvas);
    std::ostringstream trace;
    KeelPainter painter(target, Matrix::scale(scale_, scale_), trace);
    variables_.clear();
    Ketch::VariableMap plain;
    Ketch::Variables& source = guiVariables_ ? static_cast<Ketch::Variables&>(variables_) : plain;
    Ketch::Frame frame(painter, source, 1000000, 100);
    try {
        Ketch::run(frame, text_);
    } catch (const Ketch::Exception& e) {
        stopOnFault(e.describe());
    } catch (const Exception& e) {
        stopOnFault(e.message());
    }
}

void VectorView::paint(Raster32& canvas, const IntRect&) {
    if (cache_) {
        compositeOnto(canvas, *cache_, canvas.bounds(), canvas.bounds().left, canvas.bounds().top, BlendMode::normal, 255);
        return;
    }
    if (++paintsSinceChange_ <= directPaints) {
        run(canvas);
        return;
    }
    // The drawing has stood still: it is kept whole, and every later paint copies it.
    Raster32 picture(size_);
    for (std::int32_t y = 0; y < size_.height; ++y) std::memset(picture.at(0, y), 0, std::size_t(size_.width) * 4);
    run(picture);
    cache_.emplace(std::move(picture));
    compositeOnto(canvas, *cache_, canvas.bounds(), canvas.bounds().left, canvas.bounds().top, BlendMode::normal, 255);
}

}  // namespace tw
