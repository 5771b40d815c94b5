#include "cushy/TextEntryDialog.h"

#include "speclang/SpecQuote.h"

#include <algorithm>

namespace tw {

namespace {


bool inside(const IntRect& r, std::int32_t x, std::int32_t y) {
    return x >= r.left && x < r.right() && y >= r.top && y < r.bottom();
}

}  // namespace

TextEntryDialog::TextEntryDialog(HelperFonts fonts, std::string prompt, const std::string& value)
    : fonts_(std::move(fonts)), sizes_{fonts_.px(12), fonts_.px(22), fonts_.px(72), fonts_.px(22), fonts_.px(18), fonts_.px(5)},
      prompt_(std::move(prompt)), text_(fromUtf8(value)) {
    width_ = std::max(fonts_.px(320), textWidth(*fonts_.regular, prompt_) + 2 * sizes_.margin);
    height_ = sizes_.margin + sizes_.promptHeight + sizes_.fieldHeight + sizes_.margin + sizes_.buttonHeight + sizes_.margin;
    // The whole value starts selected, so that typing replaces it.
    anchor_ = 0;
    cursor_ = text_.size();
}

std::string TextEntryDialog::value() const { return toUtf8(text_); }

IntRect TextEntryDialog::fieldRect() const { return {sizes_.margin, sizes_.margin + sizes_.promptHeight, width_ - 2 * sizes_.margin, sizes_.fieldHeight}; }

IntRect TextEntryDialog::okRect() const {
    return {width_ - sizes_.margin - 2 * sizes_.buttonWidth - 8, height_ - sizes_.margin - sizes_.buttonHeight, sizes_.buttonWidth, sizes_.buttonHeight};
}

IntRect TextEntryDialog::cancelRect() const {
    return {width_ - sizes_.margin - sizes_.buttonWidth, height_ - sizes_.margin - sizes_.buttonHeight, sizes_.buttonWidth, sizes_.buttonHeight};
}

bool TextEntryDialog::run(Window& window, const std::string& title) {
    owner_ = &window;
    const std::int32_t x = (window.width() - width_) / 2, y = (window.height() - height_) / 2;
    const std::unique_ptr<Window> dialog = window.openDialog(*this, title, x, y, width_, height_);
    dialog_ = dialog.get();
    try {
        window.runModal([&] { return closed_; });
    } catch (...) {
        dialog_ = nullptr;
        throw;
    }
    dialog_ = nullptr;
    return accepted_;
}

std::int32_t TextEntryDialog::offsetOf(std::size_t index) const {
    const std::u16string head = text_.substr(0, index);
    return std::int32_t(fonts_.regular->measure(Point{0, 0}, head, true).right());
}

std::size_t TextEntryDialog::indexAt(std::int32_t x) const {
    const std::int32_t local = x - fieldRect().left - sizes_.textInset;
    std::size_t best = 0;
    std::int32_t bestDistance = 1 << 30;
    for (std::size_t i = 0; i <= text_.size(); ++i) {
        const std::int32_t distance = std::abs(offsetOf(i) - local);
        if (distance < bestDistance) bestDistance = distance, best = i;
    }
    return best;
}

void TextEntryDialog::paint(const PixelTile& tile) {
    Raster32 canvas(tile.pixels, tile.stride, IntRect{tile.left, tile.top, tile.width, tile.height});
    look::drawPanel(canvas, IntRect{0, 0, width_, height_}, fonts_.line());
    std::int32_t fontHeight, ascent;
    fonts_.regular->getMetrics(fontHeight, ascent);
    drawText(canvas, *fonts_.regular, sizes_.margin, sizes_.margin + ascent, prompt_);
    const IntRect field = fieldRect();
    look::fillRect(canvas, field, look::field);
    look::frameRect(canvas, field, look::accent, fonts_.line());
    const std::int32_t textLeft = field.left + sizes_.textInset;
    const std::int32_t top = field.top + (sizes_.fieldHeight - fontHeight) / 2;
    if (anchor_ != cursor_) {
        const std::int32_t a = offsetOf(std::min(anchor_, cursor_)), b = offsetOf(std::max(anchor_, cursor_));
        look::fillRect(canvas, {textLeft + a, top, b - a, fontHeight}, look::selection);
    }
    Raster32 inner(canvas.at(std::max(field.left + 1, canvas.bounds().left), std::max(field.top + 1, canvas.bounds().top)),
                   canvas.stride(),
                   intersectionOf(canvas.bounds(), IntRect{field.left + 1, field.top + 1, field.width - 2, field.height - 2}));
    if (!inner.bounds().isEmpty()) fonts_.regular->draw(inner, Point{double(textLeft), double(top + ascent)}, text_);
    look::fillRect(canvas, {textLeft + offsetOf(cursor_), top, fonts_.line(), fontHeight}, look::text);
    look::drawButton(canvas, okRect(), "OK", true, fonts_);
    look::drawButton(canvas, cancelRect(), "Cancel", false, fonts_);
}

void TextEntryDialog::repaint() {
    if (dialog_ != nullptr) dialog_->invalidate(0, 0, width_, height_);
}

void TextEntryDialog::moveTo(std::size_t index, bool extend) {
    cursor_ = std::min(index, text_.size());
    if (!extend) anchor_ = cursor_;
    repaint();
}

void TextEntryDialog::replaceSelection(const std::u16string& text) {
    const std::size_t from = std::min(anchor_, cursor_), to = std::max(anchor_, cursor_);
    text_.replace(from, to - from, text);
    cursor_ = anchor_ = from + text.size();
    repaint();
}

void TextEntryDialog::mouseDown(const MouseEvent& event) {
    if (inside(fieldRect(), event.x, event.y)) {
        moveTo(indexAt(event.x), event.shift);
        selecting_ = true;
    } else if (inside(okRect(), event.x, event.y)) {
        pressedButton_ = 0;
    } else if (inside(cancelRect(), event.x, event.y)) {
        pressedButton_ = 1;
    }
}

void TextEntryDialog::mouseMove(const MouseEvent& event) {
    if (selecting_) moveTo(indexAt(event.x), true);
}

void TextEntryDialog::mouseUp(const MouseEvent& event) {
    selecting_ = false;
    if (pressedButton_ == 0 && inside(okRect(), event.x, event.y)) {
        accepted_ = closed_ = true;
    } else if (pressedButton_ == 1 && inside(cancelRect(), event.x, event.y)) {
        closed_ = true;
    }
    pressedButton_ = -1;
}

bool TextEntryDialog::keyDown(const KeyEvent& event) {
    const bool hasSelection = anchor_ != cursor_;
    switch (event.key) {
        case Key::enter: accepted_ = closed_ = true; return true;
        case Key::escape: closed_ = true; return true;
        case Key::left:
            if (hasSelection && !event.shift) moveTo(std::min(anchor_, cursor_), false);
            else moveTo(cursor_ == 0 ? 0 : cursor_ - 1, event.shift);
            return true;
        case Key::right:
            if (hasSelection && !event.shift) moveTo(std::max(anchor_, cursor_), false);
            else moveTo(cursor_ + 1, event.shift);
            return true;
        case Key::home: moveTo(0, event.shift); return true;
        case Key::end: moveTo(text_.size(), event.shift); return true;
        case Key::backspace:
            if (!hasSelection && cursor_ > 0) anchor_ = cursor_ - 1;
            replaceSelection(u"");
            return true;
        case Key::del:
            if (!hasSelection && cursor_ < text_.size()) anchor_ = cursor_ + 1;
            replaceSelection(u"");
            return true;
        case Key::character: {
            const char32_t c = event.character;
            if (event.ctrl && (c == 'a' || c == 'A')) {
                anchor_ = 0;
                moveTo(text_.size(), true);
            } else if (event.ctrl && (c == 'v' || c == 'V')) {
                std::string pasted = owner_ != nullptr ? owner_->clipboardText() : std::string();
                // One line only: a pasted line end ends the text.
                pasted = pasted.substr(0, pasted.find_first_of("\r\n"));
                replaceSelection(fromUtf8(pasted));
            } else if (!event.ctrl && c >= 0x20 && c != 0x7F) {
                std::u16string typed;
                if (c < 0x10000) {
                    typed += char16_t(c);
                } else {
                    typed += char16_t(0xD800 + ((c - 0x10000) >> 10));
                    typed += char16_t(0xDC00 + ((c - 0x10000) & 0x3FF));
                }
                replaceSelection(typed);
            } else {
                return false;
            }
            return true;
        }
        default: return false;
    }
}

void TextEntryDialog::closeRequested() { closed_ = true; }

}  // namespace tw
