#include "cushy/ConsoleView.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/HelperLook.h"
#include "graphics/Font.h"
#include "graphics/Image.h"
#include "platform/Exception.h"
#include "speclang/SpecColor.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecQuote.h"

#include <algorithm>
#include <cmath>

namespace tw {

ConsoleView::ConsoleView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), font_(layout.host().font(layout, lookup(spec, "font"))),
      outputArray_(unquote(lookup(spec, "outputArray"))), outputVariable_(unquote(lookup(spec, "outputVariable"))),
      inputAction_(unquote(lookup(spec, "inputAction"))), inputParams_(unquote(lookup(spec, "inputParams"))),
      inputVariable_(unquote(lookup(spec, "inputVariable"))),
      tabSize_(std::max(evaluateInt(lookup(spec, "tabSize"), 8), 1)), background_(parseColor(lookup(spec, "background"), 0)) {
    std::tie(columns_, rows_) = parseIntPair(lookup(spec, "dimensions"), {0, 0});
    if (columns_ <= 0 || rows_ <= 0) throw FormatException("Console view has negative or zero dimensions");
    SpecList margins = parseList(lookup(spec, "margins"));
    margins.resize(2);
    marginLeft_ = evaluateInt(margins[0], 0), marginTop_ = evaluateInt(margins[1], 0);
    const SpecMap cursor = parseMap(lookup(spec, "cursor"));
    if (const std::string& c = lookup(cursor, "character"); !c.empty()) cursorChar_ = unquoteWide(c);
    if (const std::string& image = lookup(cursor, "image"); !image.empty()) cursorImage_ = layout.host().image(layout, image);
    std::tie(cursorX_, cursorY_) = parseIntPair(lookup(cursor, "offset"), {0, 0});
    const double blink = std::floor(evaluateDouble(lookup(cursor, "blinkRate"), 0.5) * 1000 + 0.5);
    blinkMs_ = blink >= 1 && blink < 1e9 ? std::uint32_t(blink) : 500;
}

ConsoleView::~ConsoleView() = default;

std::string ConsoleView::readOutput() {
    CushyHost& host = layout_.host();
    if (!outputVariable_.empty()) return host.getVariable(layout_, outputVariable_);
    std::string out;
    if (outputArray_.empty()) return out;
    // At most a screenful of history is worth reading back.
    for (std::int32_t i = 0; i < 4096; ++i) {
        const std::string line = host.getVariable(layout_, outputArray_ + "[" + std::to_string(i) + "]");
        if (line.empty()) break;
        if (i > 0) out += '\n';
        out += line;
    }
    return out;
}

std::vector<std::u16string> ConsoleView::screen() const {
    std::vector<std::u16string> lines(1);
    const auto add = [&](char16_t c) {
        if (lines.back().size() >= std::size_t(columns_)) lines.emplace_back();
        lines.back() += c;
    };
    const auto put = [&](char16_t c) {
        if (c == u'\n') {
            lines.emplace_back();
        } else if (c == u'\t') {
            do add(u' ');
            while (lines.back().size() % std::size_t(tabSize_) != 0);
        } else if (c != u'\r') {
            add(c);
        }
    };
    // The typed line follows the output where it stands, after a prompt.
    for (char16_t c : fromUtf8(output_)) put(c);
    for (char16_t c : input_) put(c);
    if (lines.size() > std::size_t(rows_)) lines.erase(lines.begin(), lines.end() - rows_);
    return lines;
}

void ConsoleView::paint(Raster32& canvas, const IntRect& clip) {
    if (background_ != 0) look::fillRect(canvas, intersectionOf(clip, size_), background_);
    std::int32_t height, ascent;
    font_->getMetrics(height, ascent);
    const std::vector<std::u16string> lines = screen();
    double y = marginTop_ + ascent;
    double endX = marginLeft_;
    for (const std::u16string& line : lines) {
        const Point end = font_->draw(canvas, Point{double(marginLeft_), y}, line);
        endX = end.x;
        y += height;
    }
    if (!cursorOn_ || focusHolder() != this) return;
    const double cursorY = y - height;
    if (cursorImage_) {
        cursorImage_->draw(canvas, std::int32_t(endX) + cursorX_, std::int32_t(cursorY - ascent) + cursorY_);
    } else {
        font_->draw(canvas, Point{endX + cursorX_, cursorY + cursorY_}, cursorChar_);
    }
}

bool ConsoleView::mouseDown(const MouseEvent& event) {
    HintedView::mouseDown(event);
    takeFocus();
    cursorOn_ = true;
    if (window_ != nullptr) {
        timerPending_ = true;
        window_->timers().cancel(this, blinkTimer);
        window_->timers().add(this, blinkTimer, blinkMs_);
    }
    invalidateAll();
    return true;
}

bool ConsoleView::keyDown(const KeyEvent& event) {
    switch (event.key) {
        case Key::character:
            if (event.character >= 0x20 && event.character < 0x10000) input_ += char16_t(event.character);
            break;
        case Key::backspace:
            if (!input_.empty()) input_.pop_back();
            break;
        case Key::enter: {
            const std::string line = toUtf8(input_);
            input_.clear();
            try {
                if (!inputVariable_.empty()) layout_.host().setVariable(layout_, inputVariable_, line, false);
                if (!inputAction_.empty()) layout_.runAction(inputAction_, inputParams_);
            } catch (const std::exception& e) {
                layout_.showError(e.what());
            }
            break;
        }
        default: return false;
    }
    cursorOn_ = true;
    invalidateAll();
    return true;
}

void ConsoleView::refresh() {
    std::string output = readOutput();
    if (output == output_) return;
    output_ = std::move(output);
    invalidateAll();
}

void ConsoleView::timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t, int id) {
    if (id != blinkTimer) return;
    cursorOn_ = !cursorOn_;
    invalidateAll();
    if (focusHolder() == this) queue.schedule(this, blinkTimer, due + blinkMs_);
    else timerPending_ = false;
}

void ConsoleView::attached(Window& window) {
    HintedView::attached(window);
    refresh();
}

void ConsoleView::detached(Window& window) {
    window.timers().cancel(this);
    timerPending_ = false;
    HintedView::detached(window);
}

}  // namespace tw
