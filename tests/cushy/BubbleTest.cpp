#include "cushy/BubbleText.h"
#include "cushy/BubbleView.h"

#include "cushy/Editor.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

using namespace tw;
using tw::test::Editor;
using tw::test::formatFailure;

namespace {

const char* font = "{ fnt: Tidewake_sans_11, color: white }";

// A bubble of `width` with the page texts given (as spec values) and extra keys.
BubbleView& loadBubble(Editor& editor, const std::string& pages, std::int32_t width = 180, const std::string& keys = "") {
    editor.load("views: { { type: bubble, bounds: { 0, 0, " + std::to_string(width) +
                ", 100 }, fill: white, frame: black, corners: { 6, 6 }, paddings: { 4, 4, 4, 4 }, pages: " + pages +
                ", styles: { default: { font: " + font + " }, red: { font: " + font + " }, u: { font: " + font +
                ", underline: white } }" + (keys.empty() ? "" : ", " + keys) + " } }");
    editor.attach();
    return dynamic_cast<BubbleView&>(*editor.root->children().at(0));
}

std::string laidOut(const std::string& page, std::int32_t width = 180) {
    Editor editor;
    BubbleView& bubble = loadBubble(editor, "{ " + page + " }", width);
    bubble.layOut();
    return bubble.layoutText();
}

std::string scanFault(const std::string& text) {
    return formatFailure([&] {
        scanBubbleText(text, 0, [](const std::string& name) { return name == "red" ? 1 : name == "u" ? 2 : -1; });
    });
}

}  // namespace

TEST(BubbleText, TagsEntitiesAndBreaks) {
    const auto styles = [](const std::string& name) { return name == "b" ? 3 : -1; };
    const std::vector<BubbleItem> items = scanBubbleText("A <b>bold</b> co-op&amp;x<br><pause delay=0.5>", 0, styles);
    ASSERT_EQ(items.size(), 8u);
    EXPECT_EQ(items[0].text, u"A");
    EXPECT_EQ(items[1].kind, BubbleItem::blank);
    EXPECT_EQ(items[2].text, u"bold");
    EXPECT_EQ(items[2].style, 3);
    EXPECT_EQ(items[4].text, u"co-");
    EXPECT_EQ(items[5].text, u"op&x");
    EXPECT_EQ(items[6].kind, BubbleItem::lineBreak);
    EXPECT_EQ(items[7].seconds, 0.5);
    const std::vector<BubbleItem> kept = scanBubbleText("a&foo;b &#65;&nbsp;&nbhp; <", 0, styles);
    ASSERT_EQ(kept.size(), 5u);
    EXPECT_EQ(kept[0].text, u"a&foo;b");
    EXPECT_EQ(kept[2].text, u"A -");
    EXPECT_EQ(kept[4].text, u"<");
    const std::vector<BubbleItem> click =
        scanBubbleText("<click action='go' params=\"say \\\"hi\\\"\" auto>x</click><do action=ping>", 0, styles);
    ASSERT_EQ(click.size(), 4u);
    EXPECT_EQ(click[0].params, "say \"hi\"");
    EXPECT_TRUE(click[0].automatic);
    EXPECT_EQ(click[3].kind, BubbleItem::doAction);
}

TEST(BubbleText, EachTagFaultHasItsMessage) {
    EXPECT_EQ(scanFault("<click>x</click>"), "not a FormatException: Missing action in click or do tag");
    EXPECT_EQ(scanFault("<do params=1>"), "not a FormatException: Missing action in click or do tag");
    EXPECT_EQ(scanFault("x</click>"), "not a FormatException: Unbalanced click tag");
    EXPECT_EQ(scanFault("<click action=a><click action=b>"), "not a FormatException: Unbalanced click tag");
    EXPECT_EQ(scanFault("<pause>"), "not a FormatException: Missing delay in pause tag");
    EXPECT_EQ(scanFault("<move time=1>"), "not a FormatException: Missing bounds in move tag");
    EXPECT_EQ(scanFault("<red>x</u>"), "not a FormatException: Unbalanced style tags: red and u");
    EXPECT_EQ(scanFault("<blue>x"), "not a FormatException: Unrecognized style tag: blue");
    EXPECT_EQ(scanFault("x</blue>"), "not a FormatException: Unrecognized style tag: blue");
}

TEST(Bubble, LineEdgeCases) {
    EXPECT_EQ(laidOut("\"one<br><br>two\""), "one\n\ntwo");
    // A narrow bubble breaks at blanks, but not at a non-breaking one.
    EXPECT_EQ(laidOut("\"Click&nbsp;here now\"", 70), "Click here\nnow");
    EXPECT_EQ(laidOut("\"Click here now\"", 70), "Click here\nnow");
    EXPECT_EQ(laidOut("\"Click here now\"", 50), "Click\nhere\nnow");
    EXPECT_EQ(laidOut("\"Clickhere&nbsp;now\"", 50), "Clickhere now");
    EXPECT_EQ(laidOut("\"odd &foo; entity <\""), "odd &foo; entity <");
}

TEST(Bubble, AClickRunOverALineBreakIsClickableOnBothLines) {
    Editor editor;
    BubbleView& bubble = loadBubble(editor, "{ \"<click action=go params=1>first second</click>\" }", 60);
    editor.window.paintAll();
    ASSERT_EQ(bubble.layoutText(), "first\nsecond");
    ASSERT_EQ(bubble.clickRuns().size(), 1u);
    const auto& areas = bubble.clickRuns()[0].areas;
    ASSERT_GE(areas.size(), 2u);
    editor.window.mouseDown(areas.front().left + 2, areas.front().top + 2);
    editor.window.mouseDown(areas.back().left + 2, areas.back().top + 2);
    EXPECT_EQ(editor.host.performed, (std::vector<std::string>{"go 1", "go 1"}));
}

TEST(Bubble, TypingStepsRepaintOnlyTheirOwnArea) {
    Editor editor;
    editor.load(std::string("views: { { type: bubble, bounds: { 0, 0, 180, 60 }, pages: { \"ab<do action=ping>c\" },"
                            " fullPageAction: done, style: { font: ") + font + ", typingRate: 0.05 } } }");
    editor.attach();
    BubbleView& bubble = dynamic_cast<BubbleView&>(*editor.root->children().at(0));
    editor.window.paintAll();
    ASSERT_EQ(bubble.steps().size(), 4u);
    EXPECT_EQ(bubble.typed(), 0u);
    editor.window.clearInvalidations();
    editor.window.advance(0);
    EXPECT_EQ(bubble.typed(), 1u);
    EXPECT_EQ(editor.window.invalidations(),
              (std::vector<IntRect>{intersectionOf(bubble.steps()[0].area, IntRect{0, 0, 200, 100})}));
    EXPECT_LT(bubble.steps()[0].area.width, 12);
    editor.window.advance(49);
    EXPECT_EQ(bubble.typed(), 1u);
    editor.window.advance(1);
    EXPECT_EQ(bubble.typed(), 2u);
    EXPECT_TRUE(editor.host.performed.empty());
    editor.window.advance(50);
    // The do step has no delay of its own: typing goes straight on to the "c".
    EXPECT_EQ(editor.host.performed, (std::vector<std::string>{"ping "}));
    EXPECT_EQ(bubble.typed(), 4u);
    editor.window.advance(50);
    EXPECT_EQ(editor.host.performed.back(), "done ");
}

TEST(Bubble, RateOverridePausePagesAndTheTypedText) {
    Editor editor;
    editor.host.variables["name"] = "Ann";
    BubbleView& bubble = loadBubble(editor, "{ \"[var]name[/var]<pause delay=1>!\", \"second\" }", 180,
                                    "pageVariable: page, typingRateVariable: rate");
    editor.window.paintAll();
    editor.window.advance(0);
    // Typed at once up to the pause.
    EXPECT_EQ(bubble.typed(), 4u);
    // The page was laid out with "Ann" and keeps it.
    editor.host.variables["name"] = "Bob";
    editor.root->refresh();
    EXPECT_EQ(bubble.layoutText(), "Ann !");
    // The override replaces every delay, the pause's too: one now, then each 0 ms.
    editor.host.variables["rate"] = "0";
    editor.root->refresh();
    EXPECT_EQ(bubble.typed(), bubble.steps().size());
    editor.host.variables["page"] = "7.9";
    editor.root->refresh();
    EXPECT_EQ(bubble.page(), 1);
    EXPECT_FALSE(bubble.laidOut());
    editor.window.paintAll();
    EXPECT_EQ(bubble.layoutText(), "second");
    EXPECT_EQ(formatFailure([&] { bubble.setPage(2); }), "not a FormatException: Invalid page number: 2");
}

TEST(Bubble, MovesWithItsAnimation) {
    Editor editor;
    editor.load(std::string("views: { { type: bubble, bounds: { 0, 0, 100, 40 }, moveResize: { fps: 20, time: 0.1 },"
                            " pages: { \"<move bounds='{ 50, 20, 150, 60 }'>x\" }, style: { font: ") + font + " } } }");
    editor.attach();
    BubbleView& bubble = dynamic_cast<BubbleView&>(*editor.root->children().at(0));
    editor.window.paintAll();
    editor.window.advance(0);
    EXPECT_EQ(bubble.frame(), (IntRect{0, 0, 100, 40}));
    editor.window.advance(50);
    EXPECT_EQ(bubble.frame(), (IntRect{25, 10, 125, 50}));
    editor.window.advance(50);
    EXPECT_EQ(bubble.frame(), (IntRect{50, 20, 150, 60}));
}

// The bubble's gamma bends the coverage of its rounded edges, nothing inside them.
TEST(Bubble, GammaBendsItsEdges) {
    auto greens = [](const std::string& gamma) {
        Editor editor;
        editor.load("views: { { type: bubble, bounds: { 0, 0, 80, 40 }, fill: white, corners: { 12, 12 }" + gamma +
                    ", style: { font: " + font + " } } }");
        editor.attach();
        editor.window.paintAll();
        std::vector<std::uint32_t> out;
        for (std::int32_t y = 0; y < 40; ++y)
            for (std::int32_t x = 0; x < 80; ++x) out.push_back(*editor.window.canvas().at(x, y) >> 8 & 0xFF);
        return out;
    };
    const std::vector<std::uint32_t> plain = greens(""), bent = greens(", gamma: 2.2");
    int raised = 0;
    for (std::size_t i = 0; i < plain.size(); ++i) {
        if (plain[i] == 0 || plain[i] == 0xFF) EXPECT_EQ(bent[i], plain[i]) << "at " << i;
        else if (bent[i] > plain[i]) ++raised;
    }
    EXPECT_GT(raised, 8) << "the four corners' edge pixels";
}

TEST(Bubble, ConstructionFaults) {
    Editor editor;
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: bubble, gamma: 0 } }"); }), "Value out of range");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: bubble, styles: { red: { } } } }"); }),
              "Missing (default) style specification for bubble view");
    EXPECT_EQ(formatFailure([&] { editor.load("views: { { type: bubble, style: { }, pages: { \"<wobble>\" } } }"); }),
              "");
    editor.attach();
    editor.window.paintAll();
    editor.window.paintAll();
    editor.window.advance(20);
    ASSERT_EQ(editor.host.errors.size(), 1u) << "shown once, after the paint";
    EXPECT_EQ(editor.host.errors[0], "Unrecognized style tag: wobble");
}
