// The base of every view of a Cushy screen: a rectangle in its parent that paints, takes
// the mouse and refreshes itself from variables. Views are shared (the tree holds its
// children, a view running an action holds itself); a child never holds its parent.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "graphics/IntRect.h"
#include "graphics/Raster.h"
#include "platform/Window.h"

namespace tw {

class ContainerView;

struct ViewPoint {
    std::int32_t x = 0, y = 0;
};

class View : public std::enable_shared_from_this<View> {
public:
    View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    virtual ~View();

    // The default title of an alert box: the product's name, from the layout's host.
    virtual std::string title();
    // Leaves the window and the parent.
    virtual void dispose();
    // Paints the part `clip` (in this view's coordinates) on a canvas whose bounds are in
    // this view's coordinates too and never reach beyond its size.
    virtual void paint(Raster32& canvas, const IntRect& clip);
    // Points and events are in this view's coordinates. Answer whether the press was taken.
    virtual bool mouseDown(const MouseEvent& event);
    virtual void mouseUp(const MouseEvent& event);
    virtual void mouseMove(const MouseEvent& event);
    virtual bool mouseWheel(const MouseEvent& event);
    virtual void moveTo(ViewPoint point);
    // Places the view at `frame` in its parent's coordinates.
    virtual void resize(const IntRect& frame);
    virtual void refresh();
    virtual void invalidate(const IntRect& rect);
    virtual View* hitTest(ViewPoint point);
    virtual void captureMouse();
    virtual void releaseCapture();
    virtual void mouseEnter(std::uint32_t time);
    virtual void mouseLeave(std::uint32_t time);
    virtual bool rightMouseDown(const MouseEvent& event);
    // Keys reach the view that holds the keyboard focus; answer whether the key was used.
    virtual bool keyDown(const KeyEvent& event);
    virtual bool keyUp(const KeyEvent& event);
    // Whether Tab stops at this view (a control the user can work from the keyboard).
    virtual bool acceptsFocus() const { return false; }
    // The outline the focus ring follows, in the parent's coordinates, with its corner
    // radius: the frame with small rounded corners unless the control is shaped otherwise.
    virtual IntRect focusOutline(double& radius) const;
    // The sibling after which the ring is painted, so that it lies over the whole control
    // (a selector's last segment) and under whatever comes later (the modal layer).
    virtual const View* focusRingAfter() const { return this; }
    // The keyboard focus arrives or leaves: a run of keys in progress ends.
    virtual void focusChanged(bool focused) { (void)focused; }
    // Takes the keyboard focus (a console that was clicked), or gives it up.
    void takeFocus();
    void releaseFocus();
    virtual void attached(Window& window);
    virtual void detached(Window& window);
    virtual void setWindow(Window* window);

    Window* window() const { return window_; }
    ContainerView* parent() const { return parent_; }
    bool visible() const { return visible_; }
    void setVisible(bool visible);
    const IntRect& size() const { return size_; }
    const IntRect& frame() const { return frame_; }
    const IntRect& screenFrame() const { return screenFrame_; }
    bool mouseInside() const { return mouseInside_; }
    std::optional<Cursor> cursor() const { return cursor_; }
    void setCursor(std::optional<Cursor> cursor) { cursor_ = cursor; }
    void invalidateAll() { invalidate(size_); }

    // The one rule for a fault in a view's drawing or animation: the view stops (it paints,
    // refreshes and animates no more) and the message goes up once to the layout, which
    // shows it after the walk. A view repainted every frame would otherwise raise the same
    // box every frame, for ever. A stopped view stays stopped until it is built again.
    void stopOnFault(const std::string& message);
    bool stopped() const { return stopped_; }

    // The view that holds the mouse, in the whole process, or null.
    static View* captureHolder();
    // The view that takes the keys, in the whole process, or null.
    static View* focusHolder();

protected:
    friend class ContainerView;
    // The parent's screen origin plus the frame's corner.
    void deriveScreenFrame();
    // Asks the parent to repaint where this view's focus ring lies.
    void invalidateFocusRing();

    Window* window_ = nullptr;
    ContainerView* parent_ = nullptr;
    bool visible_ = true;
    IntRect size_;
    std::optional<Cursor> cursor_;
    bool mouseInside_ = false;
    IntRect frame_;
    IntRect screenFrame_;
    bool timerPending_ = false;
    bool stopped_ = false;
};

using ViewRef = std::shared_ptr<View>;

// The frame test of hit testing and the hover walk: right and bottom edges are outside.
inline bool frameHolds(const IntRect& frame, std::int32_t x, std::int32_t y) {
    return x >= frame.left && y >= frame.top && x < frame.right() && y < frame.bottom();
}

// An event moved into a child's coordinates.
inline MouseEvent offsetEvent(const MouseEvent& event, std::int32_t dx, std::int32_t dy) {
    MouseEvent moved = event;
    moved.x -= dx;
    moved.y -= dy;
    return moved;
}

}  // namespace tw
