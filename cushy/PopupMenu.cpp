#include "cushy/PopupMenu.h"

#include <algorithm>

namespace tw {

namespace {

constexpr std::int32_t itemHeight = 20;
constexpr std::int32_t separatorHeight = 7;
constexpr std::int32_t checkColumn = 20;
constexpr std::int32_t rightMargin = 16;
constexpr std::int32_t border = 3;

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

PopupMenu::PopupMenu(HelperFonts fonts, std::vector<MenuItem> items) : fonts_(std::move(fonts)), items_(std::move(items)) {
    std::int32_t y = border;
    std::int32_t widest = 60;
    for (const MenuItem& item : items_) {
        tops_.push_back(y);
        y += item.separator ? separatorHeight : itemHeight;
        std::int32_t access;
        if (!item.separator) widest = std::max(widest, textWidth(*fonts_.regular, plainCaption(item.caption, access)));
    }
    width_ = checkColumn + widest + rightMargin;
    height_ = y + border;
}

IntRect PopupMenu::itemRect(std::size_t index) const {
    const MenuItem& item = items_[index];
    return {border, tops_[index], width_ - 2 * border, item.separator ? separatorHeight : itemHeight};
}

std::int32_t PopupMenu::itemAt(std::int32_t x, std::int32_t y) const {
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const IntRect r = itemRect(i);
        if (!items_[i].separator && x >= r.left && x < r.right() && y >= r.top && y < r.bottom()) return std::int32_t(i);
    }
    return -1;
}

std::int32_t PopupMenu::track(Window& window, std::int32_t x, std::int32_t y) {
    const std::unique_ptr<Window> popup = window.openPopup(*this, x, y, width_, height_);
    popup_ = popup.get();
    try {
        window.runModal([&] { return closed_; });
    } catch (...) {
        popup_ = nullptr;
        throw;
    }
    popup_ = nullptr;
    return choice_;
}

void PopupMenu::paint(const PixelTile& tile) {
    Raster32 canvas(tile.pixels, tile.stride, IntRect{tile.left, tile.top, tile.width, tile.height});
    look::drawPanel(canvas, IntRect{0, 0, width_, height_});
    std::int32_t fontHeight, ascent;
    fonts_.regular->getMetrics(fontHeight, ascent);
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const MenuItem& item = items_[i];
        const IntRect r = itemRect(i);
        if (item.separator) {
            look::fillRect(canvas, {r.left + 4, r.top + separatorHeight / 2, r.width - 8, 1}, look::panelEdge);
            continue;
        }
        const bool lit = std::int32_t(i) == highlight_ && item.enabled;
        if (std::int32_t(i) == highlight_) look::fillRect(canvas, r, item.enabled ? look::accent : look::selection);
        Font& font = lit ? *fonts_.onAccent : item.enabled ? *fonts_.regular : *fonts_.dim;
        const std::int32_t baseline = r.top + (itemHeight - fontHeight) / 2 + ascent;
        if (item.checked) {
            // A small tick drawn as two strokes of square pixels.
            const std::uint32_t colour = lit ? look::accentText : item.enabled ? look::accent : look::dimText;
            const std::int32_t cx = r.left + 6, cy = r.top + itemHeight / 2;
            for (std::int32_t k = 0; k < 3; ++k) look::fillRect(canvas, {cx + k, cy + k - 1, 2, 2}, colour);
            for (std::int32_t k = 0; k < 6; ++k) look::fillRect(canvas, {cx + 3 + k, cy + 1 - k, 2, 2}, colour);
        }
        std::int32_t access;
        const std::string plain = plainCaption(item.caption, access);
        const std::int32_t left = r.left + checkColumn - border;
        drawText(canvas, font, left, baseline, plain);
        if (access >= 0) {
            const std::int32_t before = textWidth(font, plain.substr(0, std::size_t(access)));
            std::size_t length = 1;
            while (std::size_t(access) + length < plain.size() && (plain[std::size_t(access) + length] & 0xC0) == 0x80) ++length;
            const std::int32_t letter = textWidth(font, plain.substr(std::size_t(access), length));
            const std::uint32_t colour = lit ? look::accentText : item.enabled ? look::text : look::dimText;
            look::fillRect(canvas, {left + before, baseline + 2, std::max(letter - 1, 1), 1}, colour);
        }
    }
}

void PopupMenu::repaint() {
    if (popup_ != nullptr) popup_->invalidate(0, 0, width_, height_);
}

void PopupMenu::mouseMove(const MouseEvent& event) {
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
    repaint();
}

void PopupMenu::choose(std::int32_t index) {
    choice_ = index;
    closed_ = true;
}

void PopupMenu::closeRequested() { closed_ = true; }

}  // namespace tw
