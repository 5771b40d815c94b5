#include "cushy/PagedView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/ViewFactory.h"
#include "speclang/SpecQuote.h"

namespace tw {

PagedView::PagedView(CushyView& layout, const IntRect& rect, const SpecMap& spec)
    : layout_(layout), index_(unquote(lookup(spec, "index"))), pages_(parseMap(lookup(spec, "pages"))) {
    resize(rect);
}

void PagedView::buildChildren() {
    for (const auto& [label, views] : pages_) {
        for (const std::string& item : parseList(views)) {
            const ViewRef child = createView(layout_, *this, parseMap(item));
            child->setVisible(false);
            pageOf_.emplace_back(label, child.get());
        }
    }
}

void PagedView::showPage(const std::string& label, bool shown) {
    for (const auto& [page, view] : pageOf_) {
        if (page != label) continue;
        if (!shown && view->mouseInside()) view->mouseLeave(0);
        view->setVisible(shown);
    }
}

void PagedView::refresh() {
    std::string page = layout_.host().getVariable(layout_, index_);
    if (!shown_ || page != *shown_) {
        if (shown_) showPage(*shown_, false);
        showPage(page, true);
        shown_ = std::move(page);
    }
    ContainerView::refresh();
}

}  // namespace tw
