// The editor's own text entry dialog: a prompt, one line of text and OK and Cancel, painted
// in the editor's look in a dialog window. It takes typing, a selection made with Shift or
// the mouse, the cursor keys, Home and End, Enter, Escape and paste. The "edit" action
// shows it.
#pragma once

#include <cstdint>
#include <string>

#include "cushy/HelperLook.h"
#include "platform/Window.h"

namespace tw {

class TextEntryDialog : public WindowClient {
public:
    TextEntryDialog(HelperFonts fonts, std::string prompt, const std::string& value);

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    bool closed() const { return closed_; }
    bool accepted() const { return accepted_; }
    // The text as UTF-8.
    std::string value() const;
    std::size_t cursor() const { return cursor_; }
    std::size_t anchor() const { return anchor_; }
    IntRect fieldRect() const;
    IntRect okRect() const;
    IntRect cancelRect() const;

    // Opens the dialog over the window and runs it until it closes; true for OK.
    bool run(Window& window, const std::string& title);

    void paint(const PixelTile& tile) override;
    void mouseDown(const MouseEvent& event) override;
    void mouseMove(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;
    bool keyDown(const KeyEvent& event) override;
    void closeRequested() override;

private:
    // The character index nearest to x in the field.
    std::size_t indexAt(std::int32_t x) const;
    std::int32_t offsetOf(std::size_t index) const;
    void replaceSelection(const std::u16string& text);
    void moveTo(std::size_t index, bool extend);
    void repaint();

    HelperFonts fonts_;
    // The window's lengths at its zoom.
    struct Sizes {
        std::int32_t margin, fieldHeight, buttonWidth, buttonHeight, promptHeight, textInset;
    } sizes_;
    std::string prompt_;
    std::u16string text_;
    std::size_t cursor_ = 0;
    std::size_t anchor_ = 0;
    std::int32_t width_ = 320, height_ = 0;
    bool selecting_ = false;
    std::int32_t pressedButton_ = -1;   // 0 OK, 1 Cancel
    bool closed_ = false;
    bool accepted_ = false;
    Window* dialog_ = nullptr;
    Window* owner_ = nullptr;
};

}  // namespace tw
