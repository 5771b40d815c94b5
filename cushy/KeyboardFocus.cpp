#include "cushy/KeyboardFocus.h"

#include "cushy/CushyView.h"
#include "cushy/HoverView.h"

#include <algorithm>

namespace tw {

namespace keyboardFocus {

namespace {

void collect(ContainerView& container, std::vector<View*>& out, bool& modal) {
    for (const ViewRef& child : container.children()) {
        if (!child->visible() || child->stopped()) continue;
        if (child->acceptsFocus()) out.push_back(child.get());
        auto* inner = dynamic_cast<ContainerView*>(child.get());
        if (inner == nullptr) continue;
        // A nested layout that shows something is the modal layer over all before it.
        if (dynamic_cast<CushyView*>(inner) != nullptr && !inner->children().empty()) {
            std::vector<View*> own;
            bool innerModal = false;
            collect(*inner, own, innerModal);
            out = std::move(own);
            modal = true;
            continue;
        }
        collect(*inner, out, modal);
    }
}

// The hover areas beside `view` that hold its centre: the smallest names the control,
// the largest is what the status line shows over no control at all.
HoverView* hoverFor(const View& view, bool smallest) {
    HoverView* best = nullptr;
    std::int64_t bestArea = 0;
    const IntRect& f = view.frame();
    const std::int32_t x = f.left + f.width / 2, y = f.top + f.height / 2;
    for (const ContainerView* parent = view.parent(); parent != nullptr && best == nullptr; parent = parent->parent()) {
        for (const ViewRef& child : parent->children()) {
            auto* hover = dynamic_cast<HoverView*>(child.get());
            if (hover == nullptr || !frameHolds(hover->frame(), x, y)) continue;
            const std::int64_t area = std::int64_t(hover->frame().width) * hover->frame().height;
            if (best == nullptr || (smallest ? area < bestArea : area > bestArea)) best = hover, bestArea = area;
        }
        if (!smallest) break;
    }
    return best;
}

}  // namespace

bool isUnder(const View& view, const View& root) {
    for (const View* v = &view; v != nullptr; v = v->parent())
        if (v == &root) return true;
    return false;
}

std::vector<View*> stops(View& root) {
    std::vector<View*> out;
    bool modal = false;
    if (auto* container = dynamic_cast<ContainerView*>(&root)) collect(*container, out, modal);
    return out;
}

bool step(View& root, int direction) {
    const std::vector<View*> list = stops(root);
    if (list.empty()) return false;
    View* current = View::focusHolder();
    const auto at = std::find(list.begin(), list.end(), current);
    std::size_t next;
    if (at == list.end()) {
        next = direction > 0 ? 0 : list.size() - 1;
    } else {
        const auto i = std::size_t(at - list.begin());
        next = direction > 0 ? (i + 1) % list.size() : (i + list.size() - 1) % list.size();
    }
    give(*list[next]);
    return true;
}

void give(View& view) {
    const ViewRef keep = view.weak_from_this().lock();
    view.takeFocus();
    if (HoverView* hover = hoverFor(view, true)) hover->writeVariables();
}

bool clear(View& root) {
    View* holder = View::focusHolder();
    if (holder == nullptr || !isUnder(*holder, root)) return false;
    const ViewRef keep = holder->weak_from_this().lock();
    HoverView* hover = hoverFor(*holder, false);
    holder->releaseFocus();
    if (hover != nullptr) hover->writeVariables();
    return true;
}

}  // namespace keyboardFocus

}  // namespace tw
