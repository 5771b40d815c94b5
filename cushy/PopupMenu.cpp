#include "cushy/PopupMenu.h"

#include <algorithm>

namespace tw {

namespace {

// The strips with the arrows of a menu that scrolls keep this pace under the pointer.
constexpr std::uint32_t arrowRepeatMs = 40;

char lowerAscii(char32_t c) { return c < 128 ? char(c >= 'A' && c <= 'Z' ? c + 32 : c) : '\0'; }

}  // namespace

std::string PopupMenu::plainCaption(const std::string& caption, std::int32_t& accessIndex) {
    std::string out;
    accessIndex = -1;
    for (std::size_t i = 0; i < caption.size(); ++i) {
        if (caption[i] == '&' && i + 1 < caption.size()) {
            ++i;
            if (caption[i] != '&' && accessIndex < 0) accessIndex = std::int32_t(out.size());
        }
        out += caption[i];
    }
    return out;
}

PopupMenu::Sizes PopupMenu::Sizes::at(const HelperFonts& f) {
    return Sizes{f.px(20), f.px(7), f.px(20), f.px(16), f.px(3), f.px(14)};
}

PopupMenu::PopupMenu(HelperFonts fonts, std::vector<MenuItem> items)
    : fonts_(std::move(fonts)), sizes_(Sizes::at(fonts_)), items_(std::move(items)) {
    std::int32_t y = sizes_.border;
    std::int32_t widest = fonts_.px(60);
    for (const MenuItem& item : items_) {
        tops_.push_back(y);
        y += item.separator ? sizes_.separatorHeight : sizes_.itemHeight;
        std::int32_t access;
        if (!item.separator) widest = std::max(widest, textWidth(*fonts_.regular, plainCaption(item.caption, access)));
    }
    width_ = sizes_.checkColumn + widest + sizes_.rightMargin;
    height_ = y + sizes_.border;
    shownHeight_ = height_;
}

void PopupMenu::fitHeight(std::int32_t available) {
    offset_ = 0;
    shownHeight_ = height_ <= available ? height_ : std::max(available, 2 * sizes_.arrowHeight + 2 * sizes_.border + sizes_.itemHeight);
}

std::int32_t PopupMenu::listTop() const { return scrolls() ? sizes_.arrowHeight : 0; }

std::int32_t PopupMenu::listBottom() const { return scrolls() ? shownHeight_ - sizes_.arrowHeight : shownHeight_; }

int PopupMenu::arrowAt(std::int32_t y) const {
    if (!scrolls()) return 0;
    return y < listTop() ? -1 : y >= listBottom() ? 1 : 0;
}

IntRect PopupMenu::itemRect(std::size_t index) const {
    const MenuItem& item = items_[index];
    return {sizes_.border, tops_[index] - offset_ + listTop(), width_ - 2 * sizes_.border, item.separator ? sizes_.separatorHeight : sizes_.itemHeight};
}

void PopupMenu::scrollBy(std::int32_t pixels) {
    const std::int32_t most = std::max(0, height_ - (listBottom() - listTop()));
    const std::int32_t next = std::clamp(offset_ + pixels, 0, most);
    if (next == offset_) return;
    offset_ = next;
    repaint();
}

void PopupMenu::showItem(std::int32_t index) {
    if (!scrolls() || index < 0) return;
    const IntRect r = itemRect(std::size_t(index));
    if (r.top < listTop())
        scrollBy(r.top - listTop() - (index == 0 ? sizes_.border : 0));
    else if (r.bottom() > listBottom())
        scrollBy(std::int32_t(r.bottom() - listBottom()) + (std::size_t(index) + 1 == items_.size() ? sizes_.border : 0));
}

std::int32_t PopupMenu::itemAt(std::int32_t x, std::int32_t y) const {
    if (arrowAt(y) != 0) return -1;
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const IntRect r = itemRect(i);
        if (!items_[i].separator && x >= r.left && x < r.right() && y >= r.top && y < r.bottom()) return std::int32_t(i);
    }
    return -1;
}

std::int32_t PopupMenu::track(Window& window, std::int32_t x, std::int32_t y) {
    std::int32_t areaLeft, areaTop, areaWidth, areaHeight;
    window.workArea(areaLeft, areaTop, areaWidth, areaHeight);
    fitHeight(areaHeight);
    const std::unique_ptr<Window> popup = window.openPopup(*this, x, y, width_, shownHeight_);
    popup_ = popup.get();
    timers_ = &window.timers();
    popup->holdInput();
    try {
        window.runModal([&] { return closed_; });
    } catch (...) {
        timers_->cancel(this);
        popup_ = nullptr;
        throw;
    }
    timers_->cancel(this);
    popup_ = nullptr;
    return choice_;
}

void PopupMenu::paint(const PixelTile& tile) {
    const IntRect tileRect{tile.left, tile.top, tile.width, tile.height};
    Raster32 whole(tile.pixels, tile.stride, tileRect);
    look::drawPanel(whole, IntRect{0, 0, width_, shownHeight_}, fonts_.line());
    if (scrolls()) {
        // Each arrow a small triangle of rows, greyed at its end of the list.
        const std::int32_t most = std::max(0, height_ - (listBottom() - listTop()));
        for (int side : {-1, 1}) {
            const bool live = side < 0 ? offset_ > 0 : offset_ < most;
            const std::uint32_t colour = live ? look::text : look::dimText;
            const std::int32_t middle = side < 0 ? sizes_.arrowHeight / 2 : shownHeight_ - sizes_.arrowHeight / 2;
            for (std::int32_t row = 0; row < 4; ++row) {
                const std::int32_t y = side < 0 ? middle - 2 + row : middle + 1 - row;
                look::fillRect(whole, {width_ / 2 - row, y, 2 * row + 1, 1}, colour);
            }
        }
    }
    // The items are clipped to the band between the arrows.
    const IntRect band = intersectionOf(tileRect, IntRect{0, listTop(), width_, listBottom() - listTop()});
    if (band.isEmpty()) return;
    Raster32 canvas(tile.pixels + std::ptrdiff_t(band.top - tile.top) * tile.stride + (band.left - tile.left), tile.stride,
                    band);
    std::int32_t fontHeight, ascent;
    fonts_.regular->getMetrics(fontHeight, ascent);
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const MenuItem& item = items_[i];
        const IntRect r = itemRect(i);
        if (r.bottom() <= band.top || r.top >= band.bottom()) continue;
        if (item.separator) {
            look::fillRect(canvas, {r.left + fonts_.px(4), r.top + sizes_.separatorHeight / 2, r.width - fonts_.px(8), fonts_.line()},
                           look::panelEdge);
            continue;
        }
        const bool lit = std::int32_t(i) == highlight_ && item.enabled;
        if (std::int32_t(i) == highlight_) look::fillRect(canvas, r, item.enabled ? look::accent : look::selection);
        Font& font = lit ? *fonts_.onAccent : item.enabled ? *fonts_.regular : *fonts_.dim;
        const std::int32_t baseline = r.top + (sizes_.itemHeight - fontHeight) / 2 + ascent;
        if (item.checked) {
            // A small tick drawn as two strokes of square pixels.
            const std::uint32_t colour = lit ? look::accentText : item.enabled ? look::accent : look::dimText;
            const std::int32_t cx = r.left + fonts_.px(6), cy = r.top + sizes_.itemHeight / 2, dot = fonts_.px(2);
            const std::int32_t unit = std::max(fonts_.px(1), 1);
            for (std::int32_t k = 0; k < 3; ++k) look::fillRect(canvas, {cx + k * unit, cy + (k - 1) * unit, dot, dot}, colour);
            for (std::int32_t k = 0; k < 6; ++k)
                look::fillRect(canvas, {cx + (3 + k) * unit, cy + (1 - k) * unit, dot, dot}, colour);
        }
        std::int32_t access;
        const std::string plain = plainCaption(item.caption, access);
        const std::int32_t left = r.left + sizes_.checkColumn - sizes_.border;
        drawText(canvas, font, left, baseline, plain);
        if (access >= 0) {
            const std::int32_t before = textWidth(font, plain.substr(0, std::size_t(access)));
            std::size_t length = 1;
            while (std::size_t(access) + length < plain.size() && (plain[std::size_t(access) + length] & 0xC0) == 0x80) ++length;
            const std::int32_t letter = textWidth(font, plain.substr(std::size_t(access), length));
            const std::uint32_t colour = lit ? look::accentText : item.enabled ? look::text : look::dimText;
            look::fillRect(canvas, {left + before, baseline + fonts_.px(2), std::max(letter - 1, 1), fonts_.line()}, colour);
        }
    }
}

void PopupMenu::repaint() {
    if (popup_ != nullptr) popup_->invalidate(0, 0, width_, shownHeight_);
}

void PopupMenu::timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int) {
    if (hoveredArrow_ == 0) return;
    scrollBy(hoveredArrow_ * sizes_.itemHeight);
    queue.schedule(this, 0, due + arrowRepeatMs);
}

void PopupMenu::mouseWheel(const MouseEvent& event) {
    scrollBy(-event.wheel * 3 * sizes_.itemHeight);
    mouseMove(event);
}

void PopupMenu::mouseLeave(std::uint32_t) {
    hoveredArrow_ = 0;
    if (timers_ != nullptr) timers_->cancel(this);
}

void PopupMenu::mouseMove(const MouseEvent& event) {
    // Resting on an arrow scrolls an item at a time, as long as the pointer stays.
    const bool inside = event.x >= 0 && event.x < width_ && event.y >= 0 && event.y < shownHeight_;
    const int arrow = inside ? arrowAt(event.y) : 0;
    if (arrow != hoveredArrow_) {
        hoveredArrow_ = arrow;
        if (timers_ != nullptr) timers_->cancel(this);
        if (arrow != 0) {
            scrollBy(arrow * sizes_.itemHeight);
            if (timers_ != nullptr) timers_->add(this, 0, arrowRepeatMs);
        }
    }
    const std::int32_t index = itemAt(event.x, event.y);
    if (index != highlight_) {
        highlight_ = index;
        repaint();
    }
}

void PopupMenu::mouseDown(const MouseEvent& event) {
    pressed_ = true;
    mouseMove(event);
}

void PopupMenu::mouseUp(const MouseEvent& event) {
    // Either button chooses; a release off every item (or on a greyed one) keeps the menu.
    if (!pressed_) return;
    pressed_ = false;
    const std::int32_t index = itemAt(event.x, event.y);
    if (index >= 0 && items_[std::size_t(index)].enabled) choose(index);
}

bool PopupMenu::keyDown(const KeyEvent& event) {
    switch (event.key) {
        case Key::up: step(-1); return true;
        case Key::down: step(1); return true;
        case Key::home: highlight_ = -1; step(1); return true;
        case Key::end: highlight_ = std::int32_t(items_.size()); step(-1); return true;
        case Key::pageUp:
        case Key::pageDown: {
            // A screenful of items at a time; at least one.
            const std::int32_t page = std::max<std::int32_t>(1, (listBottom() - listTop()) / sizes_.itemHeight - 1);
            const int direction = event.key == Key::pageUp ? -1 : 1;
            for (std::int32_t k = 0; k < page; ++k) {
                const std::int32_t before = highlight_;
                step(direction);
                if ((direction < 0 && highlight_ > before && before >= 0) || (direction > 0 && highlight_ < before)) {
                    highlight_ = before;  // no wrapping round by the page
                    break;
                }
            }
            showItem(highlight_);
            repaint();
            return true;
        }
        case Key::enter:
            if (highlight_ >= 0 && items_[std::size_t(highlight_)].enabled) choose(highlight_);
            return true;
        case Key::escape: closeRequested(); return true;
        case Key::character: {
            const char wanted = lowerAscii(event.character);
            std::vector<std::int32_t> matches;
            for (std::size_t i = 0; i < items_.size(); ++i) {
                std::int32_t access;
                const std::string plain = plainCaption(items_[i].caption, access);
                if (!items_[i].separator && access >= 0 && wanted != '\0' &&
                    lowerAscii(char32_t(static_cast<unsigned char>(plain[std::size_t(access)]))) == wanted)
                    matches.push_back(std::int32_t(i));
            }
            // One item with the key chooses it; several take turns in the highlight.
            if (matches.size() == 1) {
                highlight_ = matches[0];
                if (items_[std::size_t(matches[0])].enabled) choose(matches[0]);
            } else if (!matches.empty()) {
                const auto next = std::upper_bound(matches.begin(), matches.end(), highlight_);
                highlight_ = next == matches.end() ? matches[0] : *next;
                showItem(highlight_);
            }
            repaint();
            return true;
        }
        default: return false;
    }
}

void PopupMenu::step(int direction) {
    const std::int32_t count = std::int32_t(items_.size());
    if (count == 0) return;
    std::int32_t index = highlight_;
    for (std::int32_t tries = 0; tries < count; ++tries) {
        index += direction;
        if (index < 0) index = count - 1;
        if (index >= count) index = 0;
        if (!items_[std::size_t(index)].separator) {
            highlight_ = index;
            break;
        }
    }
    showItem(highlight_);
    repaint();
}

void PopupMenu::choose(std::int32_t index) {
    choice_ = index;
    closed_ = true;
}

void PopupMenu::closeRequested() { closed_ = true; }

}  // namespace tw
