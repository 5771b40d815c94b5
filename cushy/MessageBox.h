// The editor's own message box: a title, an icon, a text of one or more lines and a row of
// buttons, painted in the editor's look in a dialog window of the editor's window. The
// "alert" action and showError use it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cushy/HelperLook.h"
#include "platform/Window.h"

namespace tw {

class CushyView;

enum class AlertType { plain, question, warning, info, error };
enum class AlertButtons { ok, okCancel, retryCancel, yesNo, yesNoCancel, abortRetryIgnore };
enum class AlertButton { ok, cancel, retry, yes, no, abort, ignore };

// The buttons of a set, in their order on screen.
std::vector<AlertButton> buttonsOf(AlertButtons set);
// The name of a button as layouts write it ("ok", "cancel" ...) and its label.
std::string_view buttonName(AlertButton button);
std::string_view buttonLabel(AlertButton button);

class MessageBox : public WindowClient {
public:
    MessageBox(HelperFonts fonts, std::string text, AlertType type, AlertButtons buttons, AlertButton defaultButton);

    // The client size the text and buttons need.
    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    // The text as shown, a line each.
    const std::vector<std::string>& lines() const { return lines_; }
    // The button chosen so far, if any.
    bool closed() const { return closed_; }
    AlertButton result() const { return result_; }
    // Where a button is, for a user who clicks it.
    IntRect buttonRect(AlertButton button) const;

    void paint(const PixelTile& tile) override;
    void mouseDown(const MouseEvent& event) override;
    void mouseUp(const MouseEvent& event) override;
    bool keyDown(const KeyEvent& event) override;
    void closeRequested() override;

private:
    void choose(AlertButton button);

    HelperFonts fonts_;
    // The window's lengths at its zoom.
    struct Sizes {
        std::int32_t margin, lineHeight, iconSize, buttonWidth, buttonHeight, buttonGap, maxTextWidth;
    } sizes_;
    std::vector<std::string> lines_;
    AlertType type_;
    std::vector<AlertButton> buttons_;
    std::size_t focus_;
    std::int32_t width_ = 0, height_ = 0;
    std::int32_t pressed_ = -1;
    bool closed_ = false;
    AlertButton result_ = AlertButton::cancel;
};

// Shows the box over the layout's window, task-modal, and answers the pressed button.
// Without a window the default button answers, as a user who only pressed Enter.
AlertButton showMessageBox(CushyView& view, const std::string& title, const std::string& text, AlertType type,
                           AlertButtons buttons, AlertButton defaultButton);

}  // namespace tw
