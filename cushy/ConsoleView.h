// The view type "console": a text terminal of fixed columns and rows in a fixed-width
// font. It shows the end of its output (a variable, or an array of line variables) and a
// blinking cursor; a click gives it the keys, and a typed line goes to its input variable
// and action when Enter is pressed.
//
// Choices where the layouts leave room: the screen is the last `rows` lines of the output
// with the line being typed after it, where the output stops (after its prompt), long lines wrapped at `columns`, tabs to the next stop
// of `tabSize`; the cursor is the `character` (default '_') or the `image`, at the end of
// the typed line, shown and hidden every `blinkRate` seconds while the console has the
// keys. An output array is read from `name[0]` on to the first empty entry.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cushy/HintedView.h"
#include "platform/TimerQueue.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;
class Font;
class Image;

class ConsoleView : public HintedView, public TimerHandler {
public:
    static constexpr int blinkTimer = 1;

    // Throws FormatException "Console view has negative or zero dimensions".
    ConsoleView(CushyView& layout, const SpecMap& spec);
    ~ConsoleView() override;

    void paint(Raster32& canvas, const IntRect& clip) override;
    bool mouseDown(const MouseEvent& event) override;
    bool keyDown(const KeyEvent& event) override;
    // Reads the output; a change repaints.
    void refresh() override;
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;
    void attached(Window& window) override;
    void detached(Window& window) override;

    // The screen as it is drawn: `rows` lines at most, each at most `columns` long.
    std::vector<std::u16string> screen() const;
    const std::u16string& typedLine() const { return input_; }
    bool cursorShown() const { return cursorOn_; }

private:
    std::string readOutput();

    CushyView& layout_;
    std::int32_t columns_, rows_;
    std::shared_ptr<Font> font_;
    std::int32_t marginLeft_ = 0, marginTop_ = 0;
    std::u16string cursorChar_ = u"_";
    std::shared_ptr<Image> cursorImage_;
    std::int32_t cursorX_ = 0, cursorY_ = 0;
    std::uint32_t blinkMs_;
    std::string outputArray_, outputVariable_;
    std::string inputAction_, inputParams_, inputVariable_;
    std::int32_t tabSize_;
    std::uint32_t background_;
    std::string output_;
    std::u16string input_;
    bool cursorOn_ = true;
};

}  // namespace tw
