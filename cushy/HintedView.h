// The base of every view that can show a hint: the hint's text (expanded once, or again at
// each refresh when it holds a variable), `%` standing for the view's value, and the
// hover rules that arm and hide the shared hint window.
#pragma once

#include <memory>
#include <string>

#include "cushy/View.h"

namespace tw {

class HintWindow;

class HintedView : public View {
public:
    ~HintedView() override;

    // The text that `%` stands for in a hint pattern.
    virtual std::string valueText();
    // Whether the point (in this view's coordinates) shows the hint: inside the size.
    virtual bool hitsHint(ViewPoint point);
    // The hint as it reads now: with `%%` as '%' and `%` as valueText() for a pattern.
    virtual std::string hintTextNow();

    void mouseMove(const MouseEvent& event) override;
    void mouseLeave(std::uint32_t time) override;
    bool mouseDown(const MouseEvent& event) override;
    void captureMouse() override;
    void detached(Window& window) override;

    // Gives the view its hint; a view without one leaves the hint window alone.
    void setHint(std::shared_ptr<HintWindow> hintWindow, std::string text, bool isPattern);
    // A renewed text, from the layout's refresh: the shown hint follows at once.
    void replaceHint(std::string text);
    const std::string& hintText() const { return hintText_; }
    bool hintIsPattern() const { return hintIsPattern_; }
    const std::shared_ptr<HintWindow>& hintWindow() const { return hintWindow_; }

protected:
    void hideHint();

    std::shared_ptr<HintWindow> hintWindow_;
    std::string hintText_;
    bool hintIsPattern_ = false;
};

// A pattern's text: `%%` gives '%', a single `%` gives `value`.
std::string expandHintPattern(const std::string& pattern, const std::string& value);

}  // namespace tw
