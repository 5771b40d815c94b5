#include "cushy/MessageBox.h"

#include "cushy/CushyView.h"

#include <algorithm>

namespace tw {

namespace {


// Lines of the text: its own line ends, then words wrapped to the width.
std::vector<std::string> wrap(const Font& font, const std::string& text, std::int32_t maxTextWidth) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string line;
        std::size_t p = start;
        while (p < end) {
            std::size_t wordEnd = text.find(' ', p);
            if (wordEnd == std::string::npos || wordEnd > end) wordEnd = end;
            const std::string word = text.substr(p, wordEnd - p);
            const std::string joined = line.empty() ? word : line + " " + word;
            if (!line.empty() && textWidth(font, joined) > maxTextWidth) {
                lines.push_back(line);
                line = word;
            } else {
                line = joined;
            }
            p = wordEnd + 1;
        }
        lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

std::uint32_t iconColour(AlertType type) {
    switch (type) {
        case AlertType::question: return 0xFF39D1C6;
        case AlertType::warning: return 0xFFFFB040;
        case AlertType::info: return 0xFF7FA7C2;
        case AlertType::error: return 0xFFFF6B5A;
        case AlertType::plain: break;
    }
    return 0;
}

const char* iconGlyph(AlertType type) {
    switch (type) {
        case AlertType::question: return "?";
        case AlertType::warning: return "!";
        case AlertType::info: return "i";
        case AlertType::error: return "x";
        case AlertType::plain: break;
    }
    return "";
}

}  // namespace

std::vector<AlertButton> buttonsOf(AlertButtons set) {
    using B = AlertButton;
    switch (set) {
        case AlertButtons::ok: return {B::ok};
        case AlertButtons::okCancel: return {B::ok, B::cancel};
        case AlertButtons::retryCancel: return {B::retry, B::cancel};
        case AlertButtons::yesNo: return {B::yes, B::no};
        case AlertButtons::yesNoCancel: return {B::yes, B::no, B::cancel};
        case AlertButtons::abortRetryIgnore: return {B::abort, B::retry, B::ignore};
    }
    return {B::ok};
}

std::string_view buttonName(AlertButton button) {
    constexpr std::string_view names[] = {"ok", "cancel", "retry", "yes", "no", "abort", "ignore"};
    return names[int(button)];
}

std::string_view buttonLabel(AlertButton button) {
    constexpr std::string_view labels[] = {"OK", "Cancel", "Retry", "Yes", "No", "Abort", "Ignore"};
    return labels[int(button)];
}

MessageBox::MessageBox(HelperFonts fonts, std::string text, AlertType type, AlertButtons buttons,
                       AlertButton defaultButton)
    : fonts_(std::move(fonts)),
      sizes_{fonts_.px(14), fonts_.px(15), fonts_.px(28), fonts_.px(72), fonts_.px(22), fonts_.px(8), fonts_.px(360)},
      type_(type), buttons_(buttonsOf(buttons)) {
    lines_ = wrap(*fonts_.regular, text, sizes_.maxTextWidth);
    // The default is the button of that name in the set, else the first.
    const auto found = std::find(buttons_.begin(), buttons_.end(), defaultButton);
    focus_ = found == buttons_.end() ? 0 : std::size_t(found - buttons_.begin());
    std::int32_t textWidthMax = 0;
    for (const std::string& line : lines_) textWidthMax = std::max(textWidthMax, textWidth(*fonts_.regular, line));
    const std::int32_t iconSpace = type_ == AlertType::plain ? 0 : sizes_.iconSize + sizes_.margin;
    const std::int32_t rowWidth = std::int32_t(buttons_.size()) * (sizes_.buttonWidth + sizes_.buttonGap) - sizes_.buttonGap;
    width_ = std::max(sizes_.margin * 2 + iconSpace + textWidthMax, sizes_.margin * 2 + rowWidth);
    width_ = std::max(width_, fonts_.px(200));
    const std::int32_t textHeight = std::max<std::int32_t>(std::int32_t(lines_.size()) * sizes_.lineHeight,
                                                           type_ == AlertType::plain ? 0 : sizes_.iconSize);
    height_ = sizes_.margin + textHeight + sizes_.margin + sizes_.buttonHeight + sizes_.margin;
}

IntRect MessageBox::buttonRect(AlertButton button) const {
    const auto found = std::find(buttons_.begin(), buttons_.end(), button);
    if (found == buttons_.end()) return {};
    const std::int32_t index = std::int32_t(found - buttons_.begin());
    const std::int32_t count = std::int32_t(buttons_.size());
    const std::int32_t left = width_ - sizes_.margin - count * (sizes_.buttonWidth + sizes_.buttonGap) + sizes_.buttonGap;
    return {left + index * (sizes_.buttonWidth + sizes_.buttonGap), height_ - sizes_.margin - sizes_.buttonHeight, sizes_.buttonWidth, sizes_.buttonHeight};
}

void MessageBox::paint(const PixelTile& tile) {
    Raster32 canvas(tile.pixels, tile.stride, IntRect{tile.left, tile.top, tile.width, tile.height});
    look::drawPanel(canvas, IntRect{0, 0, width_, height_}, fonts_.line());
    std::int32_t textLeft = sizes_.margin;
    if (type_ != AlertType::plain) {
        const IntRect icon{sizes_.margin, sizes_.margin, sizes_.iconSize, sizes_.iconSize};
        look::fillRect(canvas, icon, iconColour(type_));
        std::int32_t glyphHeight, glyphAscent;
        fonts_.onAccent->getMetrics(glyphHeight, glyphAscent);
        drawText(canvas, *fonts_.onAccent, icon.left + (sizes_.iconSize - textWidth(*fonts_.onAccent, iconGlyph(type_))) / 2,
                 icon.top + (sizes_.iconSize - glyphHeight) / 2 + glyphAscent, iconGlyph(type_));
        textLeft += sizes_.iconSize + sizes_.margin;
    }
    std::int32_t height, ascent;
    fonts_.regular->getMetrics(height, ascent);
    for (std::size_t i = 0; i < lines_.size(); ++i)
        drawText(canvas, *fonts_.regular, textLeft, sizes_.margin + std::int32_t(i) * sizes_.lineHeight + ascent, lines_[i]);
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        look::drawButton(canvas, buttonRect(buttons_[i]), std::string(buttonLabel(buttons_[i])), i == focus_, fonts_);
}

void MessageBox::mouseDown(const MouseEvent& event) {
    pressed_ = -1;
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const IntRect r = buttonRect(buttons_[i]);
        if (event.x >= r.left && event.x < r.right() && event.y >= r.top && event.y < r.bottom()) pressed_ = std::int32_t(i);
    }
}

void MessageBox::mouseUp(const MouseEvent& event) {
    if (pressed_ < 0) return;
    const IntRect r = buttonRect(buttons_[std::size_t(pressed_)]);
    if (event.x >= r.left && event.x < r.right() && event.y >= r.top && event.y < r.bottom())
        choose(buttons_[std::size_t(pressed_)]);
    pressed_ = -1;
}

bool MessageBox::keyDown(const KeyEvent& event) {
    switch (event.key) {
        case Key::enter: choose(buttons_[focus_]); return true;
        case Key::escape: closeRequested(); return true;
        case Key::left: focus_ = focus_ == 0 ? buttons_.size() - 1 : focus_ - 1; return true;
        case Key::right:
        case Key::tab: focus_ = (focus_ + 1) % buttons_.size(); return true;
        case Key::character:
            // The first letter of a label presses it, as on the system's boxes.
            for (AlertButton b : buttons_) {
                if (char32_t(buttonLabel(b)[0] | 0x20) == (event.character | 0x20)) {
                    choose(b);
                    return true;
                }
            }
            return false;
        default: return false;
    }
}

void MessageBox::closeRequested() {
    // Closing the box answers Cancel where there is one, and the only button of a box of one.
    const auto cancel = std::find(buttons_.begin(), buttons_.end(), AlertButton::cancel);
    if (cancel != buttons_.end()) choose(AlertButton::cancel);
    else if (buttons_.size() == 1) choose(buttons_[0]);
}

void MessageBox::choose(AlertButton button) {
    closed_ = true;
    result_ = button;
}

AlertButton showMessageBox(CushyView& view, const std::string& title, const std::string& text, AlertType type,
                           AlertButtons buttons, AlertButton defaultButton) {
    const std::vector<AlertButton> set = buttonsOf(buttons);
    const bool inSet = std::find(set.begin(), set.end(), defaultButton) != set.end();
    Window* window = view.window();
    if (window == nullptr) return inSet ? defaultButton : set[0];
    MessageBox box(HelperFonts::load(view.host(), view), text, type, buttons, defaultButton);
    const std::int32_t x = (window->width() - box.width()) / 2, y = (window->height() - box.height()) / 2;
    const std::unique_ptr<Window> dialog = window->openDialog(box, title, x, y, box.width(), box.height());
    window->runModal([&] { return box.closed(); });
    return box.result();
}

}  // namespace tw
