#include "cushy/doubles/WindowDouble.h"

#include "graphics/Rasterize.h"
#include "platform/Exception.h"

#include <algorithm>

namespace tw {

namespace {

// A modal loop whose user never finishes stops here rather than hang a test.
constexpr int maxModalTurns = 1000;

}  // namespace

WindowDouble::WindowDouble(WindowClient& client, std::int32_t width, std::int32_t height, std::uint32_t startTick)
    : client_(client), width_(width), height_(height), clock_(startTick),
      timers_(std::make_unique<TimerQueue>([this] { return clock_; })) {
    resizeCanvas();
}

WindowDouble::WindowDouble(WindowDouble& parent, WindowClient& client, const std::string& title, std::int32_t x,
                           std::int32_t y, std::int32_t width, std::int32_t height)
    : client_(client), parent_(&parent), width_(width), height_(height), title_(title), clock_(0) {
    parent.toScreen(x, y);
    screenX_ = x, screenY_ = y;
    resizeCanvas();
    root().helpers_.push_back(this);
    paintAll();
}

WindowDouble::~WindowDouble() {
    // Helpers that outlive their editor are left on their own.
    for (WindowDouble* helper : helpers_) helper->parent_ = nullptr;
    if (parent_ != nullptr) {
        auto& list = root().helpers_;
        list.erase(std::remove(list.begin(), list.end(), this), list.end());
    }
}

void WindowDouble::resizeCanvas() {
    canvas_ = Raster32(IntRect{0, 0, std::max(width_, 1), std::max(height_, 1)}, true);
}

TimerQueue& WindowDouble::timers() { return parent_ != nullptr ? root().timers() : *timers_; }

void WindowDouble::toScreen(std::int32_t& x, std::int32_t& y) const {
    x += screenX_;
    y += screenY_;
}

void WindowDouble::invalidate(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) {
    const IntRect r = intersectionOf(IntRect{left, top, width, height}, IntRect{0, 0, width_, height_});
    if (!r.isEmpty()) invalidations_.push_back(r);
}

std::unique_ptr<Window> WindowDouble::openPopup(WindowClient& client, std::int32_t x, std::int32_t y,
                                                std::int32_t width, std::int32_t height) {
    return std::unique_ptr<Window>(new WindowDouble(*this, client, {}, x, y, width, height));
}

std::unique_ptr<Window> WindowDouble::openDialog(WindowClient& client, const std::string& title, std::int32_t x,
                                                 std::int32_t y, std::int32_t width, std::int32_t height) {
    return std::unique_ptr<Window>(new WindowDouble(*this, client, title, x, y, width, height));
}

void WindowDouble::setVisible(bool visible) {
    visible_ = visible;
    if (visible) paintAll();
}

void WindowDouble::setScreenBounds(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    screenX_ = x, screenY_ = y;
    if (width != width_ || height != height_) {
        width_ = width, height_ = height;
        resizeCanvas();
    }
    paintAll();
}

void WindowDouble::runModal(const std::function<bool()>& done) {
    WindowDouble& editor = root();
    for (int turn = 0; turn < maxModalTurns && !done(); ++turn) {
        if (editor.lost_ || !editor.user) throw LostWindowException();
        editor.user(editor);
        editor.timers().run();
        for (WindowDouble* helper : std::vector<WindowDouble*>(editor.helpers_)) helper->paintInvalid();
    }
    if (!done()) throw LostWindowException();
}

void WindowDouble::advance(std::uint32_t ms) {
    TimerQueue& queue = timers();
    const std::uint32_t target = clock_ + ms;
    for (;;) {
        const std::int64_t wait = queue.waitTime(clock_);
        if (wait < 0 || std::int64_t(target - clock_) < wait) break;
        clock_ += std::uint32_t(wait);
        queue.run(clock_);
    }
    clock_ = target;
}

void WindowDouble::paintAll() {
    invalidations_.clear();
    client_.paint(PixelTile{canvas_.at(0, 0), canvas_.stride(), 0, 0, width_, height_});
}

void WindowDouble::paintInvalid() {
    IntRect area;
    for (const IntRect& r : invalidations_) area = unionOf(area, r);
    invalidations_.clear();
    area = intersectionOf(area, IntRect{0, 0, width_, height_});
    if (area.isEmpty()) return;
    client_.paint(PixelTile{canvas_.at(area.left, area.top), canvas_.stride(), area.left, area.top, area.width, area.height});
}

MouseEvent WindowDouble::event(std::int32_t x, std::int32_t y) const {
    MouseEvent e;
    e.x = x, e.y = y;
    e.buttons = buttons_;
    e.shift = shift_, e.ctrl = ctrl_, e.alt = alt_;
    e.time = root().clock_;
    return e;
}

void WindowDouble::mouseMove(std::int32_t x, std::int32_t y, std::uint32_t buttons) {
    buttons_ = buttons;
    client_.mouseMove(event(x, y));
}

void WindowDouble::mouseDown(std::int32_t x, std::int32_t y, int button) {
    buttons_ |= 1u << button;
    MouseEvent e = event(x, y);
    e.button = button;
    client_.mouseDown(e);
}

void WindowDouble::mouseUp(std::int32_t x, std::int32_t y, int button) {
    buttons_ &= ~(1u << button);
    MouseEvent e = event(x, y);
    e.button = button;
    client_.mouseUp(e);
}

void WindowDouble::mouseWheel(std::int32_t x, std::int32_t y, std::int32_t notches) {
    MouseEvent e = event(x, y);
    e.wheel = notches;
    client_.mouseWheel(e);
}

void WindowDouble::mouseLeave() { client_.mouseLeave(root().clock_); }

bool WindowDouble::key(Key key, char32_t character, bool shift, bool ctrl) {
    KeyEvent e;
    e.key = key;
    e.character = character;
    e.shift = shift;
    e.ctrl = ctrl;
    e.time = root().clock_;
    return client_.keyDown(e);
}

void WindowDouble::type(const std::u32string& text) {
    for (char32_t c : text) key(Key::character, c);
}

void WindowDouble::setModifiers(bool shift, bool ctrl, bool alt) {
    shift_ = shift, ctrl_ = ctrl, alt_ = alt;
}

WindowDouble* WindowDouble::topHelper() const {
    const auto& list = root().helpers_;
    for (auto it = list.rbegin(); it != list.rend(); ++it)
        if ((*it)->visible_) return *it;
    return nullptr;
}

Raster32 WindowDouble::screenshot() {
    paintInvalid();
    std::int32_t right = screenX_ + width_, bottom = screenY_ + height_;
    for (WindowDouble* helper : helpers_) {
        if (!helper->visible_) continue;
        helper->paintInvalid();
        right = std::max(right, helper->screenX_ + helper->width_);
        bottom = std::max(bottom, helper->screenY_ + helper->height_);
    }
    Raster32 shot(IntRect{0, 0, right, bottom}, true);
    const auto put = [&](WindowDouble& w) {
        Raster32 target(shot.at(w.screenX_, w.screenY_), shot.stride(), IntRect{0, 0, w.width_, w.height_});
        Raster32 source(w.canvas_.at(0, 0), w.canvas_.stride(), IntRect{0, 0, w.width_, w.height_}, true);
        rasterize32(source, target);
    };
    put(*this);
    for (WindowDouble* helper : helpers_)
        if (helper->visible_) put(*helper);
    return shot;
}

}  // namespace tw
