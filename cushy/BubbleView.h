// The view type "bubble": a speech bubble that types out a page of tagged text character
// by character, in inline styles, with clickable runs, pauses, actions fired by the typing,
// moves of the bubble itself, and pages chosen by a variable. The message layouts and the
// editor's tour are built on it.
//
// Choices where the layouts leave room: lines fill word by word and break after a blank or
// a hyphen; the tail is a triangle below the lower edge, its tip `tailSize` below, centred
// at `tailPosition`; a style's `frame` is drawn round each word of the style, `padding`
// outside the glyphs and `margin` added to the word's advance on both sides. `gamma` is not
// applied (the raster core's own edges are used), and `auto` changes nothing.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cushy/BubbleText.h"
#include "cushy/HintedView.h"
#include "cushy/Stroke.h"
#include "cushy/TextAlignment.h"
#include "cushy/VariableReading.h"
#include "graphics/GammaTable.h"
#include "platform/TimerQueue.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;
class Font;

class BubbleView : public HintedView, public TimerHandler {
public:
    static constexpr int typingTimer = 5432;
    static constexpr int moveTimer = 5434;

    struct Style {
        std::shared_ptr<Font> font;
        double offsetX = 0, offsetY = 0;
        double lineSpacing = 0;
        double typingRate = 0;  // seconds a character
        TextAlignment align = TextAlignment::left;
        Stroke underline;
        double underlineOffset = 0;
        Stroke frame;
        double framePadding = 0, frameMargin = 0;
    };

    // One typed step: its area (may be empty), what it runs and how long typing waits.
    struct Step {
        IntRect area;
        enum Kind { plain, doAction, move } kind = plain;
        std::string action, params;
        std::string time, curve;
        std::int32_t delay = 0;
    };

    // Throws FormatException "Missing (default) style specification for bubble view" or
    // the readers' faults.
    BubbleView(CushyView& layout, const SpecMap& spec);
    ~BubbleView() override;

    void paint(Raster32& canvas, const IntRect& clip) override;
    bool mouseDown(const MouseEvent& event) override;
    // Follows the page and typing-rate variables.
    void refresh() override;
    void timerFired(TimerQueue& queue, std::uint32_t due, std::uint32_t now, int id) override;
    void detached(Window& window) override;

    // Starts a page from its beginning. Throws Exception "Invalid page number: " with it.
    void setPage(std::int32_t page);
    std::int32_t page() const { return page_; }
    std::size_t pageCount() const { return pages_.size(); }
    // The steps of the laid-out page and how many have been typed.
    const std::vector<Step>& steps() const { return steps_; }
    std::size_t typed() const { return typed_; }
    bool laidOut() const { return laidOut_; }
    // The laid-out lines as text, for tests and hints: words and blanks, lines by '\n'.
    std::string layoutText() const;
    // Areas of the click runs, each run's rectangles with its action.
    struct ClickRun {
        std::string action, params;
        std::vector<IntRect> areas;
    };
    const std::vector<ClickRun>& clickRuns() const { return clickRuns_; }
    // Lays the page out now if it hasn't been; tag faults throw.
    void layOut();

private:
    struct Placed {
        std::int32_t style;
        double x, baseline;
        std::u16string text;
        std::size_t firstStep;
        std::int32_t line;
    };

    IntRect bubbleArea() const;
    IntRect textArea() const;
    void tick(std::uint32_t now);
    void startMove(const Step& step);
    void moveTick(std::uint32_t due);
    void paintShape(Raster32& canvas);
    std::int32_t styleIndex(const std::string& name) const;

    CushyView& layout_;
    std::vector<Style> styles_;
    std::vector<std::string> styleNames_;
    std::int32_t defaultStyle_ = 0;
    std::int32_t minHeight_, maxHeight_;
    std::uint32_t fill_;
    Stroke outline_;
    std::optional<GammaTable> gamma_;  // of the bubble's edges
    double cornerX_, cornerY_;
    double tailWidth_, tailHeight_;
    std::string tailPosition_;
    std::string clickAction_, clickParams_, fullPageAction_, fullPageParams_;
    std::string margins_, paddings_;
    double moveFps_, moveTime_, moveCurve_;
    std::vector<std::string> pages_;
    WatchedVariable pageVariable_;
    WatchedVariable typingRateVariable_;

    std::int32_t page_ = 0;
    bool laidOut_ = false;
    std::vector<Step> steps_;
    std::size_t typed_ = 0;
    std::int32_t override_ = -1;
    std::vector<Placed> placed_;
    std::vector<std::int32_t> lineEnds_;  // placed_ index after each line
    std::vector<ClickRun> clickRuns_;
    bool typingPending_ = false;
    // The move in progress.
    IntRect moveFrom_, moveTo_;
    double moveProgress_ = 1, moveStep_ = 0, moveCurveNow_ = 0.5;
    std::int32_t movePeriod_ = 50;
};

}  // namespace tw
