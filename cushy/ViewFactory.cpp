#include "cushy/ViewFactory.h"

#include "cushy/AnimationView.h"
#include "cushy/BubbleView.h"
#include "cushy/ButtonView.h"
#include "cushy/CaptionView.h"
#include "cushy/ClickView.h"
#include "cushy/ClusterView.h"
#include "cushy/ConsoleView.h"
#include "cushy/ContainerView.h"
#include "cushy/Cursor.h"
#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/DebugOverlay.h"
#include "cushy/GradientView.h"
#include "cushy/GroupView.h"
#include "cushy/HintedView.h"
#include "cushy/HoverView.h"
#include "cushy/KnobView.h"
#include "cushy/MarkerView.h"
#include "cushy/PagedView.h"
#include "cushy/RasterView.h"
#include "cushy/RectangleView.h"
#include "cushy/SliderView.h"
#include "cushy/TagExpansion.h"
#include "cushy/TransformedView.h"
#include "cushy/TransitionLayout.h"
#include "cushy/VariableReading.h"
#include "cushy/VectorView.h"
#include "platform/Exception.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <cmath>
#include <optional>

namespace tw {

namespace {

using Maker = ViewRef (*)(CushyView& layout, const IntRect& rect, const SpecMap& spec);

ViewRef makeCaption(CushyView& layout, const IntRect&, const SpecMap& spec) {
    return std::make_shared<CaptionView>(layout, spec);
}

ViewRef makeRaster(CushyView& layout, const IntRect&, const SpecMap& spec) {
    return std::make_shared<RasterView>(layout, spec);
}

ViewRef makeClick(CushyView& layout, const IntRect&, const SpecMap& spec) {
    return std::make_shared<ClickView>(layout, spec);
}

ViewRef makeHover(CushyView& layout, const IntRect&, const SpecMap& spec) {
    return std::make_shared<HoverView>(layout, spec);
}

ViewRef makeButton(CushyView& layout, const IntRect& rect, const SpecMap& spec) {
    return std::make_shared<ButtonView>(layout, rect, spec);
}

ViewRef makeKnob(CushyView& layout, const IntRect& rect, const SpecMap& spec) {
    return std::make_shared<KnobView>(layout, rect, spec);
}

ViewRef makeAnimation(CushyView& layout, const IntRect&, const SpecMap& spec) {
    return std::make_shared<AnimationView>(layout, spec);
}

ViewRef makeGroup(CushyView& layout, const IntRect& rect, const SpecMap& spec) {
    return std::make_shared<GroupView>(layout, rect, spec);
}

ViewRef makePaged(CushyView& layout, const IntRect& rect, const SpecMap& spec) {
    return std::make_shared<PagedView>(layout, rect, spec);
}

ViewRef makeGradient(CushyView&, const IntRect& rect, const SpecMap& spec) {
    return std::make_shared<GradientView>(rect, spec);
}

ViewRef makeVector(CushyView& layout, const IntRect&, const SpecMap& spec) {
    return std::make_shared<VectorView>(layout, spec);
}

ViewRef makeTransformed(CushyView& layout, const IntRect& rect, const SpecMap& spec) {
    return std::make_shared<TransformedView>(layout, rect, spec);
}

ViewRef makeSlider(CushyView& layout, const IntRect& rect, const SpecMap& spec) {
    return std::make_shared<SliderView>(layout, rect, spec);
}

ViewRef makeBubble(CushyView& layout, const IntRect&, const SpecMap& spec) {
    return std::make_shared<BubbleView>(layout, spec);
}

ViewRef makeCluster(CushyView& layout, const IntRect&, const SpecMap& spec) {
    return std::make_shared<ClusterView>(layout, spec);
}

ViewRef makeMarker(CushyView&, const IntRect& rect, const SpecMap& spec) {
    return std::make_shared<MarkerView>(rect, spec);
}

ViewRef makeConsole(CushyView& layout, const IntRect&, const SpecMap& spec) {
    return std::make_shared<ConsoleView>(layout, spec);
}

ViewRef makeRectangle(CushyView&, const IntRect& rect, const SpecMap& spec) {
    return std::make_shared<RectangleView>(rect, spec);
}

// A layout that shows itself in a "cushy" child would nest without end.
constexpr int maxNestedLayouts = 16;

ViewRef makeCushy(CushyView& layout, const IntRect& rect, const SpecMap& spec) {
    int depth = 0;
    for (View* v = &layout; v != nullptr; v = v->parent())
        if (dynamic_cast<CushyView*>(v) != nullptr && ++depth >= maxNestedLayouts)
            throw FormatException("Layouts nested too deeply");
    const std::string variable = unquote(lookup(spec, "layoutVariable"));
    if (toBool(lookup(spec, "transitions"), false)) {
        // The layout comes and goes through the transform of the view that holds it.
        auto frame = std::make_shared<TransformView>();
        frame->resize(rect);
        auto view = std::make_shared<TransitionLayout>(layout.host(), IntRect{0, 0, rect.width, rect.height}, variable);
        view->setZoom(layout.zoom());
        view->setHintWindow(layout.hintWindow());
        view->setDebugOverlay(layout.debugOverlay());
        frame->addChild(view);
        return frame;
    }
    auto view = std::make_shared<CushyView>(layout.host(), rect);
    view->setLayoutVariable(variable);
    view->setZoom(layout.zoom());
    view->setHintWindow(layout.hintWindow());
    view->setDebugOverlay(layout.debugOverlay());
    return view;
}

struct ViewType {
    std::string_view name;
    Maker make;   // null: a type whose view is not part of this build yet
};

constexpr ViewType viewTypes[] = {
    {"raster", makeRaster},  {"rectangle", makeRectangle}, {"gradient", makeGradient}, {"vector", makeVector},
    {"caption", makeCaption}, {"click", makeClick},   {"hover", makeHover},  {"button", makeButton},
    {"slider", makeSlider},  {"knob", makeKnob},     {"cluster", makeCluster},  {"animation", makeAnimation},
    {"bubble", makeBubble},  {"marker", makeMarker},    {"group", makeGroup},  {"paged", makePaged},
    {"transformed", makeTransformed}, {"console", makeConsole}, {"cushy", makeCushy},
};

const ViewType* findType(std::string_view name) {
    for (const ViewType& t : viewTypes)
        if (t.name == name) return &t;
    return nullptr;
}

// Updates a second as a period in milliseconds; an empty value is 30 a second. A period
// below one millisecond would be due again within its own run, so it is one.
std::int32_t refreshPeriod(const std::string& raw) {
    const double rate = raw.empty() ? 30 : evaluateDouble(raw, 30);
    const double period = std::floor(1000 / rate + 0.5);
    if (!(period >= 1)) return 1;
    return period >= 2147483647.0 ? 2147483647 : std::int32_t(period);
}

// The keys many types share, read before the view joins the tree, so that a fault leaves
// nothing registered for a view that never joined it.
struct SharedKeys {
    bool hinted = false;
    std::string hintRaw;
    std::string hintText;
    bool hintWatched = false;
    std::optional<std::int32_t> refreshPeriod;
};

SharedKeys readSharedKeys(CushyView& layout, View& view, const SpecMap& spec) {
    SharedKeys keys;
    if (const auto hint = spec.find("hint"); hint != spec.end() && dynamic_cast<HintedView*>(&view) != nullptr) {
        keys.hinted = true;
        keys.hintRaw = unquote(hint->second);
        keys.hintWatched = hasVar(keys.hintRaw);
        keys.hintText = expand(keys.hintRaw, layout.host(), layout);
    }
    if (const auto cursor = spec.find("cursor"); cursor != spec.end()) {
        const std::string& raw = cursor->second;
        const std::string name = raw.starts_with("{") ? lookup(parseMap(raw), "windows") : raw;
        view.setCursor(parseCursor(name, Cursor::arrow));
    }
    if (const auto rate = spec.find("autoRefresh"); rate != spec.end()) keys.refreshPeriod = refreshPeriod(rate->second);
    return keys;
}

void registerSharedKeys(CushyView& layout, View& view, SharedKeys& keys) {
    if (keys.hinted) {
        auto& hinted = static_cast<HintedView&>(view);
        const bool pattern = !keys.hintWatched && keys.hintText.find('%') != std::string::npos;
        hinted.setHint(layout.hintWindow(), std::move(keys.hintText), pattern);
        if (keys.hintWatched) layout.watchHint(hinted, keys.hintRaw);
    }
    if (keys.refreshPeriod) layout.addAutoRefresh(view, *keys.refreshPeriod);
}

}  // namespace

bool isViewTypeName(std::string_view type) { return findType(type) != nullptr; }

ViewRef createView(CushyView& layout, ContainerView& parent, const SpecMap& spec) {
    const std::string type = unquote(lookup(spec, "type"));
    if (type.empty()) throw FormatException("Missing view type");
    IntRect rect = parent.size();
    if (const std::string& bounds = lookup(spec, "bounds"); !bounds.empty()) {
        const SpecRect r = parseBounds(bounds, SpecRect{rect.left, rect.top, std::int32_t(rect.right()),
                                                        std::int32_t(rect.bottom())});
        const std::int64_t width = std::int64_t(r.right) - r.left, height = std::int64_t(r.bottom) - r.top;
        if (width < 0 || height < 0) throw FormatException("View bounds has negative width and/or height");
        rect = IntRect{r.left, r.top, std::int32_t(std::min<std::int64_t>(width, 0x7FFFFFFF)),
                       std::int32_t(std::min<std::int64_t>(height, 0x7FFFFFFF))};
    }
    ViewRef view = layout.host().createView(layout, rect, type, spec);
    if (!view) {
        const ViewType* known = findType(type);
        if (known == nullptr || known->make == nullptr) throw FormatException("Unrecognized view type : " + quote(type));
        view = known->make(layout, rect, spec);
    }
    view->resize(rect);
    SharedKeys keys = readSharedKeys(layout, *view, spec);
    parent.addChild(view);
    registerSharedKeys(layout, *view, keys);
    if (auto* control = dynamic_cast<ValueControl*>(view.get())) layout.addControl(*view, control->variableName());
    if (auto* container = dynamic_cast<ContainerView*>(view.get())) container->buildChildren();
    if (const auto edit = spec.find("edit"); edit != spec.end() && layout.debugOverlay())
        layout.debugOverlay()->add(edit->second, *view);
    return view;
}

}  // namespace tw
