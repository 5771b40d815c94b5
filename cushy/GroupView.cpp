#include "cushy/GroupView.h"

#include "cushy/CushyView.h"
#include "cushy/TagExpansion.h"
#include "cushy/ViewFactory.h"
#include "platform/Exception.h"
#include "speclang/SpecQuote.h"

namespace tw {

GroupView::GroupView(CushyView& layout, const IntRect& rect, const SpecMap& spec)
    : layout_(layout), views_(lookup(spec, "views")), varExpansion_(toBool(lookup(spec, "varExpansion"), false)) {
    resize(rect);
    if (const auto visibility = spec.find("visibility"); visibility != spec.end()) {
        visibility_ = WatchedVariable(unquote(visibility->second));
        // Hidden until the variable says otherwise: a name nobody set hides.
        shown_ = false;
    }
    if (const auto offset = spec.find("offset"); offset != spec.end()) {
        const SpecList names = parseList(offset->second);
        if (!offset->second.starts_with("{") || names.size() != 2)
            throw FormatException("Invalid offset: " + quote(offset->second));
        offsetX_ = WatchedVariable(unquote(names[0]));
        offsetY_ = WatchedVariable(unquote(names[1]));
    }
}

void GroupView::buildChildren() {
    expanded_ = varExpansion_ ? expand(views_, layout_.host(), layout_) : views_;
    for (const std::string& item : parseList(expanded_)) {
        const ViewRef child = createView(layout_, *this, parseMap(item));
        if (!shown_) child->setVisible(false);
    }
}

void GroupView::showChildren(bool shown) {
    shown_ = shown;
    for (const ViewRef& child : children_) {
        if (!shown && child->mouseInside()) child->mouseLeave(0);
        child->setVisible(shown);
    }
}

void GroupView::refresh() {
    if (!visibility_.name().empty()) {
        visibility_.renew(layout_.host(), layout_);
        const bool shown = variableBool(visibility_.value());
        if (shown != shown_) showChildren(shown);
    }
    const bool movedX = offsetX_.renew(layout_.host(), layout_);
    const bool movedY = offsetY_.renew(layout_.host(), layout_);
    if (movedX || movedY) {
        const std::int32_t x = variableInteger(offsetX_.value()), y = variableInteger(offsetY_.value());
        const std::int32_t dx = x - lastX_, dy = y - lastY_;
        lastX_ = x, lastY_ = y;
        if (dx != 0 || dy != 0)
            for (const ViewRef& child : children_) child->moveTo({child->frame().left + dx, child->frame().top + dy});
    }
    if (varExpansion_) {
        const std::string text = expand(views_, layout_.host(), layout_);
        if (text != expanded_) {
            removeAllChildren();
            buildChildren();
        }
    }
    ContainerView::refresh();
}

}  // namespace tw
