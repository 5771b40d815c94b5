// A view with children, bottom first: it paints them in order, clipped to their frames (and
// the keyboard focus's ring after the focused child),
// offers presses to the top one first, and lets every child under the pointer see a move.
#pragma once

#include <vector>

#include "cushy/View.h"

namespace tw {

class ContainerView : public View {
public:
    void paint(Raster32& canvas, const IntRect& clip) override;
    bool mouseDown(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    bool mouseWheel(const MouseEvent& event) override;
    void refresh() override;
    View* hitTest(ViewPoint point) override;
    void mouseLeave(std::uint32_t time) override;
    bool rightMouseDown(const MouseEvent& event) override;
    void setWindow(Window* window) override;
    void resize(const IntRect& frame) override;
    void moveTo(ViewPoint point) override;

    // Builds the children a layout gives the container, once it has joined the tree, so
    // that a fault in a child leaves nothing registered for a container that never joined.
    virtual void buildChildren() {}
    virtual void addChild(ViewRef child);
    virtual void removeChild(View* child);
    virtual void removeAllChildren();

    const std::vector<ViewRef>& children() const { return children_; }

    // A view below stopped on a fault: the message travels up to the layout that shows it.
    virtual void faultBelow(const std::string& message);

protected:
    // Called for each child on its way out, before it is disposed.
    virtual void childRemoved(View& child);
    // The walk of presses: top child first, the first that answers true wins.
    template <class Ask>
    bool offerPress(const MouseEvent& event, Ask ask);
    // Keeps the children's screen frames after this view moved.
    void deriveChildFrames();
    void paintChild(Raster32& canvas, const IntRect& area, View& child);
    // The ring of the child that holds the keyboard focus, over the children before it.
    void paintFocusRing(Raster32& canvas, const IntRect& area, const View& focus);

    std::vector<ViewRef> children_;
};

}  // namespace tw
