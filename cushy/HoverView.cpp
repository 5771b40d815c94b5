#include "cushy/HoverView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "speclang/SpecQuote.h"

namespace tw {

HoverView::HoverView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), enterAction_(unquote(lookup(spec, "enterAction"))),
      enterParams_(unquote(lookup(spec, "enterParams"))), leaveAction_(unquote(lookup(spec, "leaveAction"))),
      leaveParams_(unquote(lookup(spec, "leaveParams"))) {
    if (const auto variable = spec.find("variable"); variable != spec.end())
        writes_.emplace_back(unquote(variable->second), unquote(lookup(spec, "value")));
    for (const std::string& item : parseList(lookup(spec, "variables"))) {
        SpecList pair = parseList(item);
        pair.resize(2);
        writes_.emplace_back(unquote(pair[0]), unquote(pair[1]));
    }
}

void HoverView::mouseEnter(std::uint32_t time) {
    HintedView::mouseEnter(time);
    if (enterAction_.empty()) return;
    try {
        layout_.execute(enterAction_, enterParams_);
    } catch (const std::exception& e) {
        layout_.showError(e.what());
    }
}

void HoverView::mouseLeave(std::uint32_t time) {
    HintedView::mouseLeave(time);
    if (leaveAction_.empty()) return;
    try {
        layout_.execute(leaveAction_, leaveParams_);
    } catch (const std::exception& e) {
        layout_.showError(e.what());
    }
}

void HoverView::mouseMove(const MouseEvent& event) {
    writeVariables();
    HintedView::mouseMove(event);
}

void HoverView::writeVariables() {
    for (const auto& [name, value] : writes_) layout_.host().setVariable(layout_, name, value, false);
}

}  // namespace tw
