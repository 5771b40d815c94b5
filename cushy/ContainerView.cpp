#include "cushy/ContainerView.h"

#include "cushy/FocusRing.h"

#include <algorithm>

namespace tw {

void ContainerView::paint(Raster32& canvas, const IntRect& clip) {
    const IntRect area = intersectionOf(clip, canvas.bounds());
    const View* focus = focusHolder();
    if (focus != nullptr && (focus->parent() != this || !focus->visible() || focus->stopped())) focus = nullptr;
    const View* ringAfter = focus != nullptr ? focus->focusRingAfter() : nullptr;
    for (std::size_t i = 0; i < children_.size(); ++i) {
        // Hold the child: a paint may run nothing that changes the tree, but a view's
        // paint is not ours to trust.
        const ViewRef child = children_[i];
        paintChild(canvas, area, *child);
        if (child.get() == ringAfter) paintFocusRing(canvas, area, *focus);
    }
}

void ContainerView::paintChild(Raster32& canvas, const IntRect& area, View& child) {
    if (!child.visible() || child.stopped()) return;
    const IntRect& frame = child.frame();
    const IntRect part = intersectionOf(area, frame);
    if (part.isEmpty()) return;
    Raster32 sub(canvas.at(part.left, part.top), canvas.stride(),
                 IntRect{part.left - frame.left, part.top - frame.top, part.width, part.height});
    try {
        child.paint(sub, sub.bounds());
    } catch (const std::exception& e) {
        child.stopOnFault(e.what());
    }
}

void ContainerView::paintFocusRing(Raster32& canvas, const IntRect& area, const View& focus) {
    double radius = 0;
    const IntRect outline = focus.focusOutline(radius);
    const IntRect part = intersectionOf(area, focusRingBounds(outline));
    if (part.isEmpty()) return;
    Raster32 sub(canvas.at(part.left, part.top), canvas.stride(), part);
    tw::paintFocusRing(sub, outline, radius);
}

void ContainerView::faultBelow(const std::string& message) {
    if (parent_ != nullptr) parent_->faultBelow(message);
}

template <class Ask>
bool ContainerView::offerPress(const MouseEvent& event, Ask ask) {
    for (std::size_t i = children_.size(); i-- > 0;) {
        if (i >= children_.size()) continue;
        const ViewRef child = children_[i];
        if (!child->visible() || !frameHolds(child->frame(), event.x, event.y)) continue;
        if (ask(*child, offsetEvent(event, child->frame().left, child->frame().top))) return true;
    }
    return false;
}

bool ContainerView::mouseDown(const MouseEvent& event) {
    return offerPress(event, [](View& child, const MouseEvent& e) { return child.mouseDown(e); });
}

bool ContainerView::rightMouseDown(const MouseEvent& event) {
    return offerPress(event, [](View& child, const MouseEvent& e) { return child.rightMouseDown(e); });
}

bool ContainerView::mouseWheel(const MouseEvent& event) {
    return offerPress(event, [](View& child, const MouseEvent& e) { return child.mouseWheel(e); });
}

View* ContainerView::hitTest(ViewPoint point) {
    for (std::size_t i = children_.size(); i-- > 0;) {
        View& child = *children_[i];
        if (!child.visible() || !frameHolds(child.frame(), point.x, point.y)) continue;
        if (View* hit = child.hitTest({point.x - child.frame().left, point.y - child.frame().top})) return hit;
    }
    return this;
}

void ContainerView::mouseMove(const MouseEvent& event) {
    View::mouseMove(event);
    // Copies, since a child's move may run an action that changes the tree.
    const std::vector<ViewRef> children = children_;
    for (const ViewRef& child : children) {
        if (child->mouseInside() && (!child->visible() || !frameHolds(child->frame(), event.x, event.y)))
            child->mouseLeave(event.time);
    }
    for (const ViewRef& child : children) {
        if (child->parent() != this || !child->visible() || !frameHolds(child->frame(), event.x, event.y)) continue;
        if (!child->mouseInside()) child->mouseEnter(event.time);
        child->mouseMove(offsetEvent(event, child->frame().left, child->frame().top));
    }
}

void ContainerView::mouseLeave(std::uint32_t time) {
    View::mouseLeave(time);
    const std::vector<ViewRef> children = children_;
    for (const ViewRef& child : children)
        if (child->mouseInside()) child->mouseLeave(time);
}

void ContainerView::refresh() {
    // A refresh changes no tree but the refreshing view's own (a layout that loads another),
    // so the children are walked in place: the idle refresh of a whole screen stays cheap.
    for (std::size_t i = 0; i < children_.size(); ++i) {
        View& child = *children_[i];
        if (child.stopped()) continue;
        try {
            child.refresh();
        } catch (const std::exception& e) {
            child.stopOnFault(e.what());
        }
    }
}

void ContainerView::setWindow(Window* window) {
    if (window == window_) return;
    View::setWindow(window);
    const std::vector<ViewRef> children = children_;
    for (const ViewRef& child : children) child->setWindow(window);
}

void ContainerView::resize(const IntRect& frame) {
    View::resize(frame);
    deriveChildFrames();
}

void ContainerView::moveTo(ViewPoint point) {
    View::moveTo(point);
    deriveChildFrames();
}

void ContainerView::deriveChildFrames() {
    for (const ViewRef& child : children_) {
        child->deriveScreenFrame();
        if (auto* container = dynamic_cast<ContainerView*>(child.get())) container->deriveChildFrames();
    }
}

void ContainerView::addChild(ViewRef child) {
    child->parent_ = this;
    child->deriveScreenFrame();
    children_.push_back(child);
    child->setWindow(window_);
    if (auto* container = dynamic_cast<ContainerView*>(child.get())) container->deriveChildFrames();
    if (child->visible()) invalidate(child->frame());
}

void ContainerView::removeChild(View* child) {
    const auto found = std::find_if(children_.begin(), children_.end(), [&](const ViewRef& c) { return c.get() == child; });
    if (found == children_.end()) return;
    const ViewRef held = *found;
    if (held->visible()) invalidate(held->frame());
    held->setWindow(nullptr);
    held->parent_ = nullptr;
    children_.erase(found);
    childRemoved(*held);
    held->dispose();
}

void ContainerView::removeAllChildren() {
    while (!children_.empty()) removeChild(children_.back().get());
}

void ContainerView::childRemoved(View&) {}

}  // namespace tw
