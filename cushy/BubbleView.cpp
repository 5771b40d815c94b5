#include "cushy/BubbleView.h"

#include "cushy/AnimationView.h"
#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/ShapeFill.h"
#include "cushy/TagExpansion.h"
#include "graphics/Font.h"
#include "platform/Exception.h"
#include "speclang/SpecColor.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecNumber.h"
#include "speclang/SpecQuote.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tw {

namespace {

struct Insets {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;
};

Insets readInsets(const std::string& raw) {
    SpecList parts = parseList(raw);
    parts.resize(4);
    return Insets{evaluateInt(parts[0], 0), evaluateInt(parts[1], 0), evaluateInt(parts[2], 0), evaluateInt(parts[3], 0)};
}

BubbleView::Style readStyle(CushyView& layout, const SpecMap& spec) {
    BubbleView::Style style;
    style.font = layout.host().font(layout, lookup(spec, "font"));
    std::tie(style.offsetX, style.offsetY) = parsePair(lookup(spec, "offset"), {0, 0});
    style.lineSpacing = evaluateDouble(lookup(spec, "lineSpacing"), 0);
    style.typingRate = evaluateDouble(lookup(spec, "typingRate"), 0);
    style.align = parseTextAlignment(lookup(spec, "align"), TextAlignment::left);
    if (const std::string& raw = lookup(spec, "underline"); !raw.empty()) {
        style.underline = parseStroke(raw, 0xFF000000);
        if (raw.starts_with("{")) style.underlineOffset = evaluateDouble(lookup(parseMap(raw), "offset"), 0);
    }
    if (const std::string& raw = lookup(spec, "frame"); !raw.empty()) {
        style.frame = parseStroke(raw, 0xFF000000);
        if (raw.starts_with("{")) {
            const SpecMap frame = parseMap(raw);
            style.framePadding = evaluateDouble(lookup(frame, "padding"), 0);
            style.frameMargin = evaluateDouble(lookup(frame, "margin"), 0);
        }
    }
    return style;
}

double textAdvance(const Font& font, std::u16string_view text) { return double(font.measure(Point{0, 0}, text, true).right()); }

}  // namespace

BubbleView::BubbleView(CushyView& layout, const SpecMap& spec)
    : layout_(layout), minHeight_(evaluateInt(lookup(spec, "minHeight"), 0)),
      maxHeight_(evaluateInt(lookup(spec, "maxHeight"), 0)),
      fill_(parseColor(lookup(spec, "fill"), 0)), outline_(parseStroke(lookup(spec, "frame"), 0xFF000000)), gamma_(readShapeGamma(spec)),
      tailPosition_(lookup(spec, "tailPosition")), clickAction_(unquote(lookup(spec, "clickAction"))),
      clickParams_(unquote(lookup(spec, "clickParams"))), fullPageAction_(unquote(lookup(spec, "fullPageAction"))),
      fullPageParams_(unquote(lookup(spec, "fullPageParams"))), margins_(lookup(spec, "margins")),
      paddings_(lookup(spec, "paddings")) {
    std::tie(cornerX_, cornerY_) = parsePair(lookup(spec, "corners"), {0, 0});
    std::tie(tailWidth_, tailHeight_) = parsePair(lookup(spec, "tailSize"), {0, 0});
    const SpecMap move = parseMap(lookup(spec, "moveResize"));
    moveFps_ = evaluateDouble(lookup(move, "fps"), 20);
    moveTime_ = evaluateDouble(lookup(move, "time"), 0);
    moveCurve_ = evaluateDouble(lookup(move, "curve"), 0.5);
    for (const std::string& page : parseList(lookup(spec, "pages"))) pages_.push_back(unquote(page));

    const SpecMap styles = parseMap(lookup(spec, "styles"));
    for (const auto& [name, raw] : styles) {
        styleNames_.push_back(name);
        styles_.push_back(readStyle(layout, parseMap(raw)));
    }
    if (const auto found = styles.find("default"); found != styles.end()) {
        defaultStyle_ = std::int32_t(std::distance(styles.begin(), found));
    } else if (const auto style = spec.find("style"); style != spec.end()) {
        defaultStyle_ = std::int32_t(styles_.size());
        styleNames_.push_back("default");
        styles_.push_back(readStyle(layout, parseMap(style->second)));
    } else {
        throw FormatException("Missing (default) style specification for bubble view");
    }
    if (const auto page = spec.find("pageVariable"); page != spec.end())
        pageVariable_ = WatchedVariable(unquote(page->second));
    if (const auto rate = spec.find("typingRateVariable"); rate != spec.end())
        typingRateVariable_ = WatchedVariable(unquote(rate->second));
}

BubbleView::~BubbleView() = default;

std::int32_t BubbleView::styleIndex(const std::string& name) const {
    for (std::size_t i = 0; i < styleNames_.size(); ++i)
        if (styleNames_[i] == name) return std::int32_t(i);
    return -1;
}

IntRect BubbleView::bubbleArea() const {
    const Insets m = readInsets(margins_);
    const std::int32_t tail = std::int32_t(std::ceil(tailHeight_));
    return IntRect{m.left, m.top, std::max(size_.width - m.left - m.right, 0),
                   std::max(size_.height - m.top - m.bottom - tail, 0)};
}

IntRect BubbleView::textArea() const {
    const IntRect b = bubbleArea();
    const Insets p = readInsets(paddings_);
    return IntRect{b.left + p.left, b.top + p.top, std::max(b.width - p.left - p.right, 0),
                   std::max(b.height - p.top - p.bottom, 0)};
}

void BubbleView::setPage(std::int32_t page) {
    if (page < 0 || std::size_t(page) >= pages_.size()) throw Exception("Invalid page number: " + std::to_string(page));
    invalidateAll();
    page_ = page;
    override_ = -1;
    laidOut_ = false;
    steps_.clear();
    placed_.clear();
    lineEnds_.clear();
    clickRuns_.clear();
    typed_ = 0;
    if (window_ != nullptr) window_->timers().cancel(this, typingTimer);
    typingPending_ = false;
}

void BubbleView::layOut() {
    if (laidOut_) return;
    laidOut_ = true;
    if (pages_.empty()) return;
    const std::string text = expand(pages_[std::size_t(page_)], layout_.host(), layout_);
    const std::vector<BubbleItem> items =
        scanBubbleText(text, defaultStyle_, [this](const std::string& name) { return styleIndex(name); });
    const IntRect area = textArea();

    // Items are gathered into a line until a word does not fit; then the line is placed.
    struct Entry {
        const BubbleItem* item;
        double x, width;
    };
    std::vector<Entry> line;
    double x = 0, y = area.top;
    std::int32_t lineNumber = 0;
    std::int32_t currentStyle = defaultStyle_;
    std::optional<std::size_t> openRun;
    const auto place = [&] {
        double ascent = 0, descent = 0, spacing = 0, width = 0;
        TextAlignment align = styles_[std::size_t(currentStyle)].align;
        bool first = true;
        for (const Entry& e : line) {
            if (e.item->kind != BubbleItem::word && e.item->kind != BubbleItem::blank) continue;
            const Style& s = styles_[std::size_t(e.item->style)];
            std::int32_t h, a;
            s.font->getMetrics(h, a);
            ascent = std::max(ascent, double(a)), descent = std::max(descent, double(h - a));
            spacing = std::max(spacing, s.lineSpacing);
            if (first) align = s.align;
            first = false;
            if (e.item->kind == BubbleItem::word) width = e.x + e.width;
        }
        if (first) {
            std::int32_t h, a;
            styles_[std::size_t(currentStyle)].font->getMetrics(h, a);
            ascent = a, descent = h - a;
        }
        const double shift = align == TextAlignment::right ? area.width - width
                             : align == TextAlignment::center ? (area.width - width) / 2 : 0;
        const double baseline = y + ascent;
        for (const Entry& e : line) {
            const BubbleItem& item = *e.item;
            Step step;
            if (item.kind == BubbleItem::word || item.kind == BubbleItem::blank) {
                const Style& s = styles_[std::size_t(item.style)];
                const double left = area.left + shift + e.x + s.offsetX;
                const std::int32_t top = std::int32_t(std::floor(y + s.offsetY));
                const std::int32_t height = std::int32_t(std::ceil(ascent + descent));
                const std::int32_t delay = std::int32_t(std::floor(s.typingRate * 1000 + 0.5));
                if (openRun)
                    clickRuns_[*openRun].areas.push_back(IntRect{std::int32_t(std::floor(left)), top,
                                                                 std::int32_t(std::ceil(e.width)) + 1, height});
                if (item.kind == BubbleItem::blank) {
                    step.area = IntRect{std::int32_t(std::floor(left)), top, std::int32_t(std::ceil(e.width)), height};
                    step.delay = delay;
                    steps_.push_back(step);
                    continue;
                }
                placed_.push_back(Placed{item.style, left + s.frameMargin, baseline + s.offsetY, item.text, steps_.size(),
                                         lineNumber});
                double before = s.frameMargin;
                for (std::size_t k = 1; k <= item.text.size(); ++k) {
                    const double after = s.frameMargin + textAdvance(*s.font, std::u16string_view(item.text).substr(0, k));
                    // The glyph may reach a little past its advance: the area takes a pixel more each side.
                    step.area = IntRect{std::int32_t(std::floor(left + before)) - 1, top,
                                        std::int32_t(std::ceil(after - before)) + 3, height};
                    step.delay = delay;
                    steps_.push_back(step);
                    before = after;
                }
                continue;
            }
            switch (item.kind) {
                case BubbleItem::pause:
                    step.delay = std::int32_t(std::floor(item.seconds * 1000 + 0.5));
                    steps_.push_back(step);
                    break;
                case BubbleItem::doAction:
                    step.kind = Step::doAction, step.action = item.action, step.params = item.params;
                    steps_.push_back(step);
                    break;
                case BubbleItem::move:
                    step.kind = Step::move, step.action = item.action, step.time = item.time, step.curve = item.curve;
                    steps_.push_back(step);
                    break;
                case BubbleItem::clickStart:
                    clickRuns_.push_back(ClickRun{item.action, item.params, {}});
                    openRun = clickRuns_.size() - 1;
                    break;
                case BubbleItem::clickEnd: openRun.reset(); break;
                default: break;
            }
        }
        lineEnds_.push_back(std::int32_t(placed_.size()));
        y += ascent + descent + spacing;
        ++lineNumber;
        line.clear();
        x = 0;
    };
    for (const BubbleItem& item : items) {
        if (item.kind == BubbleItem::lineBreak) {
            place();
            continue;
        }
        if (item.kind == BubbleItem::word || item.kind == BubbleItem::blank) {
            const Style& s = styles_[std::size_t(item.style)];
            currentStyle = item.style;
            const double width = item.kind == BubbleItem::blank ? textAdvance(*s.font, u" ")
                                                                : textAdvance(*s.font, item.text) + 2 * s.frameMargin;
            const bool hasWord = std::any_of(line.begin(), line.end(), [](const Entry& e) {
                return e.item->kind == BubbleItem::word;
            });
            if (item.kind == BubbleItem::word && hasWord && x + width > area.width) {
                // Blanks at the end of the line go with it; the new line starts with the word.
                place();
            }
            if (item.kind == BubbleItem::blank && !hasWord && !line.empty() && x == 0 && lineNumber > 0) continue;
            line.push_back(Entry{&item, x, width});
            x += width;
            continue;
        }
        line.push_back(Entry{&item, x, 0});
    }
    if (!line.empty() || lineEnds_.empty()) place();

    // The bubble's height follows the text within its limits.
    const Insets m = readInsets(margins_), p = readInsets(paddings_);
    std::int32_t height = std::int32_t(std::ceil(y - area.top)) + m.top + m.bottom + p.top + p.bottom +
                          std::int32_t(std::ceil(tailHeight_));
    if (minHeight_ > 0) height = std::max(height, minHeight_);
    if (maxHeight_ > 0) height = std::min(height, maxHeight_);
    if ((minHeight_ > 0 || maxHeight_ > 0) && height != frame_.height)
        resize(IntRect{frame_.left, frame_.top, frame_.width, height});
}

std::string BubbleView::layoutText() const {
    std::string out;
    std::size_t next = 0;
    for (std::size_t line = 0; line < lineEnds_.size(); ++line) {
        if (line > 0) out += '\n';
        for (bool first = true; next < std::size_t(lineEnds_[line]); ++next, first = false)
            out += (first ? "" : " ") + toUtf8(placed_[next].text);
    }
    return out;
}

void BubbleView::paintShape(Raster32& canvas) {
    const IntRect b = bubbleArea();
    if (b.isEmpty()) return;
    const GammaTable* gamma = gamma_ ? &*gamma_ : nullptr;
    const double inset = outline_.width / 2;
    VectorPath body;
    body.addRoundedRect(b.left + inset, b.top + inset, b.width - 2 * inset, b.height - 2 * inset, cornerX_, cornerY_, 1);
    fillShape(canvas, body, fill_, BlendMode::normal, gamma);
    strokeShape(canvas, body, outline_, BlendMode::normal, gamma);
    if (tailWidth_ <= 0 || tailHeight_ <= 0) return;
    const double at = b.left + evaluateDouble(tailPosition_, b.width * 0.75);
    const double bottom = b.bottom() - inset;
    VectorPath tail;
    tail.moveTo(at - tailWidth_ / 2, bottom - outline_.width - 1);
    tail.lineTo(at + tailWidth_ / 2, bottom - outline_.width - 1);
    tail.lineTo(at, bottom + tailHeight_);
    tail.close();
    fillShape(canvas, tail, fill_, BlendMode::normal, gamma);
    // Only the two slanted sides are outlined, so the tail opens into the body.
    VectorPath sides;
    sides.moveTo(at - tailWidth_ / 2, bottom);
    sides.lineTo(at, bottom + tailHeight_);
    sides.lineTo(at + tailWidth_ / 2, bottom);
    strokeShape(canvas, sides, outline_, BlendMode::normal, gamma);
}

void BubbleView::paint(Raster32& canvas, const IntRect&) {
    layOut();
    paintShape(canvas);
    for (const Placed& word : placed_) {
        if (word.firstStep >= typed_) break;
        const std::size_t shown = std::min(word.text.size(), typed_ - word.firstStep);
        const Style& s = styles_[std::size_t(word.style)];
        const std::u16string_view text = std::u16string_view(word.text).substr(0, shown);
        s.font->draw(canvas, Point{std::floor(word.x), std::floor(word.baseline)}, text);
        const double width = textAdvance(*s.font, text);
        if (s.underline.width > 0) {
            VectorPath line;
            const double y = word.baseline + 1 + s.underlineOffset + s.underline.width / 2;
            line.moveTo(word.x, y);
            line.lineTo(word.x + width, y);
            strokeShape(canvas, line, s.underline, BlendMode::normal);
        }
        if (s.frame.width > 0) {
            std::int32_t h, a;
            s.font->getMetrics(h, a);
            VectorPath box;
            const double pad = s.framePadding;
            box.addRect(word.x - pad, word.baseline - a - pad, width + 2 * pad, h + 2 * pad);
            strokeShape(canvas, box, s.frame, BlendMode::normal);
        }
    }
    if (typed_ < steps_.size() && !typingPending_ && window_ != nullptr) {
        typingPending_ = true;
        timerPending_ = true;
        window_->timers().add(this, typingTimer, 0);
    }
}

void BubbleView::tick(std::uint32_t now) {
    const ViewRef keep = weak_from_this().lock();
    while (typed_ < steps_.size()) {
        const Step step = steps_[typed_++];
        if (!step.area.isEmpty()) invalidate(step.area);
        if (step.kind == Step::doAction) {
            try {
                layout_.execute(step.action, step.params);
            } catch (const std::exception& e) {
                stopOnFault(e.what());
                return;
            }
        } else if (step.kind == Step::move) {
            startMove(step);
        }
        const std::int32_t delay = override_ >= 0 ? override_ : step.delay;
        if (delay != 0 && window_ != nullptr) {
            typingPending_ = true;
            timerPending_ = true;
            window_->timers().schedule(this, typingTimer, now + std::uint32_t(delay));
            return;
        }
    }
    if (!fullPageAction_.empty()) {
        try {
            layout_.execute(fullPageAction_, fullPageParams_);
        } catch (const std::exception& e) {
            stopOnFault(e.what());
        }
    }
}

void BubbleView::startMove(const Step& step) {
    const SpecRect r = parseBounds(layout_.zoom().zoomRect(step.action), SpecRect{frame_.left, frame_.top, std::int32_t(frame_.right()),
                                                         std::int32_t(frame_.bottom())});
    const IntRect target{r.left, r.top, std::max(r.right - r.left, 0), std::max(r.bottom - r.top, 0)};
    const double time = step.time.empty() ? moveTime_ : leadingDouble(step.time, 0.0);
    moveCurveNow_ = step.curve.empty() ? moveCurve_ : leadingDouble(step.curve, 0.0);
    if (!(time > 0) || window_ == nullptr) {
        resize(target);
        return;
    }
    moveFrom_ = frame_, moveTo_ = target;
    moveProgress_ = 0;
    const double period = std::floor(1000 / (moveFps_ > 0 ? moveFps_ : 20) + 0.5);
    movePeriod_ = period >= 1 ? std::int32_t(std::min(period, 1e6)) : 1;
    moveStep_ = movePeriod_ / (time * 1000);
    timerPending_ = true;
    window_->timers().cancel(this, moveTimer);
    window_->timers().add(this, moveTimer, std::uint32_t(movePeriod_));
}

void BubbleView::moveTick(std::uint32_t due) {
    moveProgress_ = std::min(1.0, moveProgress_ + moveStep_);
    const double f = curveFactor(moveProgress_, moveCurveNow_);
    const auto side = [f](std::int32_t a, std::int32_t b) { return std::int32_t(std::floor(a + (b - a) * f + 0.5)); };
    const std::int32_t left = side(moveFrom_.left, moveTo_.left), top = side(moveFrom_.top, moveTo_.top);
    const std::int32_t right = side(moveFrom_.right(), moveTo_.right()), bottom = side(moveFrom_.bottom(), moveTo_.bottom());
    const IntRect now{left, top, right - left, bottom - top};
    if (!(now == frame_)) resize(now);
    if (moveProgress_ < 1 && window_ != nullptr) window_->timers().schedule(this, moveTimer, due + std::uint32_t(movePeriod_));
}

void BubbleView::timerFired(TimerQueue&, std::uint32_t due, std::uint32_t, int id) {
    if (stopped()) return;
    if (id == typingTimer) {
        typingPending_ = false;
        tick(due);
    } else if (id == moveTimer) {
        moveTick(due);
    }
}

void BubbleView::detached(Window& window) {
    window.timers().cancel(this);
    typingPending_ = false;
    HintedView::detached(window);
}

bool BubbleView::mouseDown(const MouseEvent& event) {
    for (const ClickRun& run : clickRuns_) {
        for (const IntRect& area : run.areas) {
            if (!frameHolds(area, event.x, event.y)) continue;
            const ClickRun copy = run;
            hideHint();
            layout_.runAction(copy.action, copy.params);
            return true;
        }
    }
    if (clickAction_.empty() || !frameHolds(bubbleArea(), event.x, event.y)) return false;
    hideHint();
    const std::string action = clickAction_, params = clickParams_;
    layout_.runAction(action, params);
    return true;
}

void BubbleView::refresh() {
    if (pageVariable_.renew(layout_.host(), layout_) && !pageVariable_.value().empty() && !pages_.empty()) {
        const double number = std::floor(variableNumber(pageVariable_.value(), 0));
        const std::int32_t page = std::int32_t(std::clamp(number != number ? 0.0 : number, 0.0, double(pages_.size() - 1)));
        if (page != page_) setPage(page);
    }
    if (typingRateVariable_.renew(layout_.host(), layout_) && !typingRateVariable_.value().empty()) {
        const double ms = std::floor(variableNumber(typingRateVariable_.value(), 0) + 0.5);
        const std::int32_t rate = std::int32_t(std::clamp(ms != ms ? 0.0 : ms, -1.0, 2147483647.0));
        if (rate != override_) {
            override_ = rate;
            if (laidOut_ && typed_ < steps_.size() && window_ != nullptr) {
                window_->timers().cancel(this, typingTimer);
                typingPending_ = false;
                tick(window_->timers().now());
            }
        }
    }
}

}  // namespace tw
